#ifndef TTML_COMMON_TCALLBACK_H
#define TTML_COMMON_TCALLBACK_H

#include "ICallback.h"

namespace TTML {

// Binds a member function of an object to the ICallback interface, e.g.
// new (std::nothrow) TCallback<CEngine>(this, &CEngine::m_ProcessQueue).
// The target is not owned and must outlive the callback.
template <class T>
class TCallback : public ICallback {
public:
    typedef void (T::*Method)(void*);

    TCallback(T* pTarget, Method method) : m_pTarget(pTarget), m_Method(method) {}

    void Invoke(void* data) override { (m_pTarget->*m_Method)(data); }

private:
    T* m_pTarget;
    Method m_Method;
};

}  // namespace TTML

#endif
