#ifndef TTML_COMMON_CMUTEX_H
#define TTML_COMMON_CMUTEX_H

#include "IMutex.h"

#include <pthread.h>

namespace TTML {

// IMutex over one POSIX mutex of the recursive type. Obtain instances
// through IMutex::Create(), which also initialises them.
class CMutex : public IMutex {
public:
    CMutex();
    ~CMutex() override;
    CMutex(const CMutex&) = delete;
    CMutex& operator=(const CMutex&) = delete;

    // Sets the mutex up as recursive; false (with a log line) on failure,
    // after which the object may only be deleted.
    bool Initialize();

    void Lock() override;
    void Unlock() override;
    bool TryLock(unsigned long timeoutMs) override;
    void Destroy() override;

private:
    pthread_mutexattr_t m_Attr;
    pthread_mutex_t m_Mutex;
    bool m_AttrReady;
    bool m_MutexReady;
};

}  // namespace TTML

#endif
