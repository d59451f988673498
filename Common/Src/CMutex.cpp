#include "CMutex.h"

#include "TTMLLog.h"

#include <new>

namespace TTML {

IMutex* IMutex::Create()
{
    CMutex* o = new (std::nothrow) CMutex();
    TTML_ASSERT(o);
    if (!o->Initialize()) {
        delete o;
        return nullptr;
    }
    return o;
}

CMutex::CMutex() : m_Attr(), m_Mutex(), m_AttrReady(false), m_MutexReady(false) {}

CMutex::~CMutex()
{
    if (m_AttrReady)
        pthread_mutexattr_destroy(&m_Attr);
    if (m_MutexReady)
        pthread_mutex_destroy(&m_Mutex);
}

bool CMutex::Initialize()
{
    if (m_MutexReady)
        return true;
    int rc = pthread_mutexattr_init(&m_Attr);
    if (rc != 0) {
        TTML_ERROR("pthread_mutexattr_init failed: [%d]", rc);
        return false;
    }
    m_AttrReady = true;
    rc = pthread_mutexattr_settype(&m_Attr, PTHREAD_MUTEX_RECURSIVE);
    if (rc != 0) {
        TTML_ERROR("pthread_mutexattr_settype failed: [%d]", rc);
        return false;
    }
    rc = pthread_mutex_init(&m_Mutex, &m_Attr);
    if (rc != 0) {
        TTML_ERROR("pthread_mutex_init failed: [%d]", rc);
        return false;
    }
    m_MutexReady = true;
    return true;
}

void CMutex::Lock()
{
    int rc = pthread_mutex_lock(&m_Mutex);
    if (rc != 0)
        TTML_ERROR("pthread_mutex_lock failed: [%d]", rc);
}

void CMutex::Unlock()
{
    int rc = pthread_mutex_unlock(&m_Mutex);
    if (rc != 0)
        TTML_ERROR("pthread_mutex_unlock failed: [%d]", rc);
}

bool CMutex::TryLock(unsigned long /*timeoutMs*/)
{
    return pthread_mutex_trylock(&m_Mutex) == 0;
}

void CMutex::Destroy()
{
    delete this;
}

}  // namespace TTML
