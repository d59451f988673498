#ifndef TTML_COMMON_LOCK_H
#define TTML_COMMON_LOCK_H

#include "IMutex.h"

namespace TTML {

// Holds an IMutex for the lifetime of the object. A null mutex makes the
// holder do nothing, so optional locks need no branches at the call site.
// Inside classes derived from CTask write TTML::Lock, because CTask::Lock()
// hides this name there.
class Lock {
public:
    explicit Lock(IMutex* pMutex);
    ~Lock();
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;

private:
    IMutex* m_pMutex;  // not owned
};

}  // namespace TTML

#endif
