#include "CTimer.h"

#include "TTMLLog.h"

namespace TTML {

CTimer::~CTimer()
{
    m_Disarm();
}

void CTimer::Release(CTimer* pTimer)
{
    if (!pTimer)
        return;
    if (pTimer->m_pFiring) {
        // Inside its own callback: the trampoline deletes it on return.
        pTimer->m_Disarm();
        pTimer->m_bReleasePending = true;
        return;
    }
    delete pTimer;
}

bool CTimer::m_CheckThread(const char* operation) const
{
    if (eina_main_loop_is())
        return true;
    TTML_WARN("Timer %s refused: not on the main loop", operation);
    return false;
}

void CTimer::m_Arm(double seconds)
{
    m_Disarm();
    m_seconds = seconds < 0.0 ? 0.0 : seconds;
    m_pTimer = ecore_timer_add(m_seconds, m_OnTimer_Cb, this);
    if (!m_pTimer) {
        TTML_ERROR("ecore_timer_add failed for [%f] seconds", m_seconds);
        return;
    }
    if (m_bPaused)
        ecore_timer_freeze(m_pTimer);
}

void CTimer::m_Disarm()
{
    if (!m_pTimer)
        return;
    // The timer that is firing ends through its callback's result instead.
    if (m_pTimer != m_pFiring)
        ecore_timer_del(m_pTimer);
    m_pTimer = nullptr;
}

void CTimer::Start(Callback callback, double seconds, void* data)
{
    if (!m_CheckThread("Start"))
        return;
    if (!callback) {
        TTML_WARN("callback is null");
        return;
    }
    m_callback = callback;
    m_pData = data;
    m_bPaused = false;
    m_Arm(seconds);
}

void CTimer::Pause()
{
    if (!m_CheckThread("Pause") || !m_pTimer || m_bPaused)
        return;
    m_bPaused = true;
    // A firing timer is replaced by a frozen one when its callback returns.
    if (m_pTimer != m_pFiring)
        ecore_timer_freeze(m_pTimer);
}

void CTimer::Resume()
{
    if (!m_CheckThread("Resume") || !m_bPaused)
        return;
    m_bPaused = false;
    if (m_pTimer)
        ecore_timer_thaw(m_pTimer);
}

void CTimer::Stop()
{
    if (!m_CheckThread("Stop"))
        return;
    m_Disarm();
}

void CTimer::SetInterval(double seconds)
{
    if (!m_CheckThread("SetInterval"))
        return;
    if (!m_callback) {
        TTML_WARN("SetInterval before Start");
        return;
    }
    // A fresh Ecore timer counts from now; changing the interval of the old
    // one would count from its last expiry.
    m_Arm(seconds);
}

Eina_Bool CTimer::m_OnTimer_Cb(void* data)
{
    CTimer* pThis = static_cast<CTimer*>(data);
    Ecore_Timer* pFired = pThis->m_pTimer;
    pThis->m_pFiring = pFired;
    int keep = pThis->m_callback(pThis->m_pData);
    pThis->m_pFiring = nullptr;
    if (pThis->m_bReleasePending) {
        delete pThis;
        return ECORE_CALLBACK_CANCEL;
    }
    if (pThis->m_pTimer != pFired)
        return ECORE_CALLBACK_CANCEL;  // stopped or re-armed inside the callback
    if (!keep) {
        pThis->m_pTimer = nullptr;
        return ECORE_CALLBACK_CANCEL;
    }
    if (pThis->m_bPaused) {
        // Paused inside the callback: the next period waits for Resume.
        pThis->m_pTimer = nullptr;
        pThis->m_Arm(pThis->m_seconds);
        return ECORE_CALLBACK_CANCEL;
    }
    return ECORE_CALLBACK_RENEW;
}

}  // namespace TTML
