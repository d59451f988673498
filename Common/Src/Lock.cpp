#include "Lock.h"

namespace TTML {

Lock::Lock(IMutex* pMutex) : m_pMutex(pMutex)
{
    if (m_pMutex)
        m_pMutex->Lock();
}

Lock::~Lock()
{
    if (m_pMutex)
        m_pMutex->Unlock();
}

}  // namespace TTML
