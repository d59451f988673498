#include "CTimerManager.h"

#include "CController.h"
#include "IGraphics.h"
#include "IMutex.h"
#include "ITimer.h"
#include "Lock.h"
#include "TTMLLog.h"

#include <utility>

namespace TTML {

namespace {

const double kMaxInbandDelaySeconds = 600.0;
const long long kSyncToleranceMs = 10;
const double kFlashIntervalSeconds = 0.3;
const double kFlashIntervalMs = 300.0;

}  // namespace

CTimerManager::CTimerManager(IGraphics* pGraphics, TimerCallback callback, void* pUserData,
                             MediaTimeSource mediaTime)
    : m_pGraphics(pGraphics), m_bBandMode(false), m_pMutex(nullptr), m_pTimer(nullptr),
      m_pCallback(callback), m_timerData(pUserData), m_mediaTime(std::move(mediaTime)), m_bPaused(false)
{
    m_pMutex = IMutex::Create();
    TTML_ASSERT(m_pMutex);
}

CTimerManager::~CTimerManager()
{
    StopTimer();
    m_pMutex->Destroy();
}

bool CTimerManager::m_GetMediaTime(long long* pTime)
{
    if (m_mediaTime) {
        if (!m_mediaTime(pTime)) {
            TTML_WARN("Error in getting current video time");
            return false;
        }
        return true;
    }
    // The controller is the only core there is.
    CController* pCore = static_cast<CController*>(ICore::GetInstance());
    if (!pCore) {
        TTML_WARN("pCore Null pointer");
        return false;
    }
    if (!pCore->GetVideoCurrentTime(pTime)) {
        TTML_WARN("Error in getting current video time");
        return false;
    }
    return true;
}

bool CTimerManager::SetTimer(unsigned long long begin, unsigned long long end, long long timeStamp)
{
    Lock lock(m_pMutex);
    long long mediaTime = 0;
    if (!m_GetMediaTime(&mediaTime))
        return false;

    const long long now = mediaTime + timeStamp;
    TTML_INFO("Timing_Info: videoTime: [%lld] ms, timeToSync : [%llu] ms, eTime : [%llu] ms, tStamp=[%lld]",
              now, begin, end, timeStamp);
    // Signed: with a negative timestamp the document time can be below 0.
    if (static_cast<long long>(end) < now) {
        TTML_WARN("Current time is greater than the end time of subtitle; returning!!!");
        return false;
    }

    double seconds = 0.0;
    if (static_cast<long long>(begin) >= now) {
        seconds = static_cast<double>(static_cast<long long>(begin) - now) / 1000.0;
        // In-band segments this far ahead belong to a stream we are not in step with.
        if (m_bBandMode && seconds > kMaxInbandDelaySeconds) {
            TTML_ERROR("Presentation time of current inband data is very late: [%f seconds]. "
                       "Discarding this subtitle.",
                       seconds);
            return false;
        }
    } else {
        TTML_INFO("Timing_Info: beginTime late by = [%lld]", now - static_cast<long long>(begin));
    }
    return m_SetTimer(begin, timeStamp, seconds);
}

bool CTimerManager::m_SetTimer(unsigned long long time, long long timeStamp, double seconds)
{
    Lock lock(m_pMutex);
    // While paused a late record waits for resume like any other: it goes
    // through a paused timer instead of being handled at once.
    if (seconds == 0.0 && !m_bPaused) {
        TTML_INFO("Special case where time interval is zero, calling timer callback function!");
        if (m_pTimer)
            StopTimer();
        // Runs here, with the mutex held; the engine re-arms from inside.
        if (m_pCallback)
            m_pCallback(&m_timerData);
        return true;
    }

    m_timerData.SetTimingInfo(time, timeStamp);
    if (!m_pTimer) {
        TTML_INFO("Adding timer for: [%f] seconds", seconds);
        return m_StartTimer(seconds);
    }
    TTML_INFO("Updating timer for: [%f] seconds", seconds);
    m_pTimer->SetInterval(seconds);
    return true;
}

bool CTimerManager::m_StartTimer(double seconds)
{
    m_pTimer = m_pGraphics ? static_cast<ITimer*>(m_pGraphics->CreateObject(IGraphics::OBJECT_TIMER)) : nullptr;
    if (!m_pTimer) {
        TTML_ERROR("m_pTimer is Null");
        return false;
    }
    m_pTimer->Start(m_OnTimerExpiry_Cb, seconds, this);
    // The pause belongs to the playback, not to one timer: a timer made while
    // paused (after a seek, a cut or a late record stopped the old one) waits.
    if (m_bPaused)
        m_pTimer->Pause();
    return true;
}

int CTimerManager::m_OnTimerExpiry_Cb(void* pData)
{
    // No lock here: the engine takes its rendering mutex first, then ours.
    CTimerManager* pSelf = static_cast<CTimerManager*>(pData);
    if (!pSelf || !pSelf->m_pCallback)
        return 0;
    return pSelf->m_pCallback(&pSelf->m_timerData);
}

bool CTimerManager::SyncCurrentSubtitles()
{
    Lock lock(m_pMutex);
    long long mediaTime = 0;
    if (!m_GetMediaTime(&mediaTime))
        return false;

    const long long timeStamp = m_timerData.GetTimeStamp();
    const long long now = mediaTime + timeStamp;
    const long long armed = static_cast<long long>(m_timerData.GetTime());
    if (now >= 0 && now + kSyncToleranceMs >= armed)
        return false;

    const double seconds = static_cast<double>(armed - now) / 1000.0;
    m_SetTimer(m_timerData.GetTime(), timeStamp, seconds);
    return true;
}

bool CTimerManager::SetFlashInterval(unsigned long long end, long long timeStamp)
{
    Lock lock(m_pMutex);
    long long mediaTime = 0;
    if (!m_GetMediaTime(&mediaTime))
        return false;

    const double remaining = static_cast<double>(static_cast<long long>(end) - (mediaTime + timeStamp));
    if (remaining < kFlashIntervalMs) {
        TTML_INFO("Remaining time is less than flash interval");
        return false;
    }
    if (!m_pTimer) {
        // A late record was handled at once and its timer stopped: it must
        // flash all the same, so the flash period gets a timer of its own.
        TTML_INFO("Adding timer for: [%f] seconds", kFlashIntervalSeconds);
        if (!m_StartTimer(kFlashIntervalSeconds))
            return false;
    } else {
        m_pTimer->SetInterval(kFlashIntervalSeconds);
    }
    TTML_INFO("Set interval done");
    return true;
}

void CTimerManager::PauseTimer()
{
    m_SetPaused(true);
}

void CTimerManager::ResumeTimer()
{
    m_SetPaused(false);
}

void CTimerManager::m_SetPaused(bool paused)
{
    Lock lock(m_pMutex);
    // Remembered without a timer too: the next one is made paused.
    m_bPaused = paused;
    if (!m_pTimer) {
        TTML_INFO(paused ? "No timer; the next one starts paused" : "No timer to resume");
        return;
    }
    if (paused)
        m_pTimer->Pause();
    else
        m_pTimer->Resume();
}

bool CTimerManager::IsPaused()
{
    Lock lock(m_pMutex);
    return m_bPaused;
}

bool CTimerManager::HasMediaTime()
{
    Lock lock(m_pMutex);
    long long mediaTime = 0;
    return m_GetMediaTime(&mediaTime);
}

void CTimerManager::StopTimer()
{
    Lock lock(m_pMutex);
    if (m_pTimer) {
        TTML_INFO("Stopping timer!");
        m_pTimer->Stop();
        m_pGraphics->DestroyObject(m_pTimer);
        m_pTimer = nullptr;
    }
    m_timerData.SetTimingInfo(0, 0);
    m_timerData.SetRenderedSubData(nullptr);
}

bool CTimerManager::IsTimerAdded()
{
    Lock lock(m_pMutex);
    return m_pTimer != nullptr;
}

unsigned long long CTimerManager::GetTimerTimeInfo()
{
    Lock lock(m_pMutex);
    return m_timerData.GetTime();
}

void* CTimerManager::GetRenderedSubData()
{
    Lock lock(m_pMutex);
    return m_timerData.GetRenderedSubData();
}

void CTimerManager::SetRenderedSubData(void* pSubData)
{
    Lock lock(m_pMutex);
    m_timerData.SetRenderedSubData(pSubData);
}

void CTimerManager::SetBandMode(bool bandMode)
{
    Lock lock(m_pMutex);
    m_bBandMode = bandMode;
}

}  // namespace TTML
