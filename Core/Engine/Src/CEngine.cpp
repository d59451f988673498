#include "CEngine.h"

#include "CGraphicsEngine.h"
#include "CMainThreadUtils.h"
#include "CRenderingData.h"
#include "CSubtitleInfo.h"
#include "CTTMLMenu.h"
#include "CTimerData.h"
#include "IMutex.h"
#include "Lock.h"
#include "SubtitleRenderingInfo.h"
#include "TCallback.h"
#include "TTMLLog.h"
#include "TTMLTypes.h"

#include <new>
#include <set>

namespace TTML {

namespace {

enum MainLoopMessage {
    MSG_DESTROY = 0,
    MSG_RESET = 1,
    MSG_ADD_SUBTITLE_DATA = 2,
    MSG_PAUSE = 3,
    MSG_RESUME = 4,
    MSG_SEEK = 5,
    MSG_SEEK_COMPLETED = 6,
    MSG_UPDATE_CURRENT_SUBTITLE = 7,
    MSG_LAST = MSG_UPDATE_CURRENT_SUBTITLE
};

const int kFontScaleBit = SUBTITLE_MODE_FONT_SCALE;
const int kResyncBit = SUBTITLE_MODE_RESYNC;

}  // namespace

std::atomic<bool> CEngine::m_bCreated{false};

CEngine::CEngine(IGraphics* pGraphics)
    : m_pGraphics(pGraphics), m_pTimerManager(nullptr), m_pGraphicsEngine(nullptr), m_subtitleMode(1),
      m_bSeekPending(false), m_seekPosition(0), m_pSeekMutex(nullptr), m_pSubtitleInfo(nullptr),
      m_bOutOfBand(true), m_documentsInFlight(0), m_bReplayWanted(false), m_pSubtitleInfoMutex(nullptr),
      m_pRenderingData(nullptr), m_pRenderingMutex(nullptr),
      m_bInitialized(false)
{
    m_pTimerManager = new (std::nothrow) CTimerManager(pGraphics, m_OnTimer_Cb, this);
    TTML_ASSERT(m_pTimerManager);
    m_pGraphicsEngine = new (std::nothrow) CGraphicsEngine(pGraphics);
    TTML_ASSERT(m_pGraphicsEngine);
    m_pRenderingData = new (std::nothrow) CRenderingData();
    TTML_ASSERT(m_pRenderingData);
    m_pSeekMutex = IMutex::Create();
    TTML_ASSERT(m_pSeekMutex);
    m_pSubtitleInfoMutex = IMutex::Create();
    TTML_ASSERT(m_pSubtitleInfoMutex);
    m_pRenderingMutex = IMutex::Create();
    TTML_ASSERT(m_pRenderingMutex);
}

CEngine::~CEngine()
{
    if (m_bInitialized) {
        TTML_WARN("Engine object deleted without calling Destroy! Fix this.");
        Destroy();
    }
    m_DestroySubtitleInfo(true, 0);
    for (SubtitleRenderingInfo* pRecord : m_unscheduled)
        m_DeleteRecord(pRecord);
    m_pSeekMutex->Destroy();
    m_pSubtitleInfoMutex->Destroy();
    m_pRenderingMutex->Destroy();
    delete m_pRenderingData;
    delete m_pGraphicsEngine;
    delete m_pTimerManager;
}

bool CEngine::Initialize(int subtitleMode)
{
    TTML_INFO("");
    if (m_bCreated) {
        TTML_ERROR("Already created");
        return false;
    }
    if (!m_pGraphics) {
        TTML_WARN("m_pGraphics is null");
        return false;
    }
    ICallback* pEventCb = new (std::nothrow) TCallback<CEngine>(this, &CEngine::m_ProcessQueue);
    TTML_ASSERT(pEventCb);
    Connect(pEventCb, nullptr);
    m_subtitleMode = subtitleMode;
    if (!CTask::Start("Engine")) {
        TTML_ERROR("Unable to start the engine thread");
        return false;
    }
    CTTMLMenu* pMenu = CTTMLMenu::GetInstance();
    if (pMenu)
        pMenu->RegisterMenuChangeNotify(m_OnMenuUpdateCb, this);
    else
        TTML_WARN("CTTMLMenu Object is NULL");
    m_bCreated = true;
    m_bInitialized = true;
    return true;
}

void CEngine::SetMediaTimeSource(CTimerManager::MediaTimeSource source, void* pUser)
{
    m_pTimerManager->SetMediaTimeSource(source, pUser);
}

bool CEngine::AddToQueue(void* pSubtitleInfo)
{
    // A null event is the task's stop marker, never a document.
    if (!pSubtitleInfo) {
        TTML_WARN("SubtitleInfo is NULL");
        return false;
    }
    {
        TTML::Lock lock(m_pSubtitleInfoMutex);
        ++m_documentsInFlight;
    }
    SendEvent(pSubtitleInfo);
    return true;
}

bool CEngine::Start(bool bandMode)
{
    TTML_INFO("bandMode=%d", bandMode);
    {
        TTML::Lock lock(m_pSubtitleInfoMutex);
        m_bOutOfBand = !bandMode;
    }
    // Outside the document mutex: the main loop takes the timer mutex first
    // and the document mutex inside it (a late record removed at once).
    m_pTimerManager->SetBandMode(bandMode);
    // Playback starts running: documents that came before the media time
    // existed are armed now, and a pause left from before the start ends.
    bool waiting = m_pTimerManager->IsPaused();
    {
        TTML::Lock lock(m_pRenderingMutex);
        waiting = waiting || (!m_pTimerManager->IsTimerAdded() && !m_pRenderingData->GetMap().empty());
    }
    if (waiting)
        m_DoMainLoopThreadSafeCall(nullptr, MSG_RESUME, false);
    return true;
}

bool CEngine::Pause()
{
    m_DoMainLoopThreadSafeCall(nullptr, MSG_PAUSE, false);
    return true;
}

bool CEngine::Resume()
{
    m_DoMainLoopThreadSafeCall(nullptr, MSG_RESUME, false);
    return true;
}

void CEngine::SeekStart(long long milliseconds)
{
    TTML_INFO("milliseconds=%lld", milliseconds);
    long long* pPosition = new (std::nothrow) long long(milliseconds);
    if (!pPosition) {
        TTML_WARN("");
        return;
    }
    if (m_DoMainLoopThreadSafeCall(pPosition, MSG_SEEK, false) != 0) {
        TTML_WARN("Call to main thread for seek operation failed");
        delete pPosition;
    }
}

void CEngine::SeekCompleted()
{
    TTML_INFO("");
    m_DoMainLoopThreadSafeCall(nullptr, MSG_SEEK_COMPLETED, false);
}

void CEngine::Reset()
{
    TTML_INFO("");
    if (!m_bInitialized)
        return;
    m_DoMainLoopThreadSafeCall(nullptr, MSG_RESET, false);
}

void CEngine::Destroy()
{
    TTML_INFO("");
    if (!m_bInitialized)
        return;
    m_DoMainLoopThreadSafeCall(nullptr, MSG_DESTROY, true);
    if (m_bInitialized) {
        // No main loop service (the graphics object is gone or stopped):
        // the thread must end and the one-engine flag be freed all the same.
        TTML_WARN("Destroying outside the main loop service");
        m_Destroy();
    }
}

// --- Main-loop requests ---------------------------------------------------------

int CEngine::m_DoMainLoopThreadSafeCall(void* pData, int msgId, bool sync)
{
    TTML_INFO("Enter for message Id:%d", msgId);
    if (msgId < 0 || msgId > MSG_LAST) {
        TTML_WARN("Invalid message ID");
        return -1;
    }
    CMainThreadUtils* pThreadUtils = CMainThreadUtils::GetInstance();
    if (!pThreadUtils) {
        TTML_WARN("CMainThreadUtils returns null!");
        return -1;
    }
    MainLoopThreadSafCallData* pCallData = new (std::nothrow) MainLoopThreadSafCallData();
    if (!pCallData) {
        TTML_WARN("new has been failed for pData");
        return -1;
    }
    pCallData->m_MsgId = msgId;
    pCallData->m_pData = pData;
    pCallData->m_pEngine = this;
    if (sync) {
        bool ran = false;
        pThreadUtils->RunEflSafeCallFunctionSync("m_DoMainLoopThreadSafeCall", m_MainLoopThreadSafeCall_Cb,
                                                 pCallData, &ran);
        if (!ran) {
            // Released by the stop state: the callback never saw the record.
            delete pCallData;
            return 1;
        }
        return 0;
    }
    int result = pThreadUtils->RunEflSafeCallFunctionAsync("m_DoMainLoopThreadSafeCall",
                                                           m_MainLoopThreadSafeCall_Cb, pCallData,
                                                           m_DropMainLoopCall_Cb);
    if (result != CMainThreadUtils::ASYNC_QUEUED) {
        delete pCallData;
        return result;
    }
    return 0;
}

void CEngine::m_DropMainLoopCall_Cb(void* pData)
{
    MainLoopThreadSafCallData* pCallData = static_cast<MainLoopThreadSafCallData*>(pData);
    if (!pCallData)
        return;
    // Only the seek carries a payload among the asynchronous requests.
    if (pCallData->m_MsgId == MSG_SEEK)
        delete static_cast<long long*>(pCallData->m_pData);
    delete pCallData;
}

void* CEngine::m_MainLoopThreadSafeCall_Cb(void* pData)
{
    MainLoopThreadSafCallData* pCallData = static_cast<MainLoopThreadSafCallData*>(pData);
    if (!pCallData) {
        TTML_WARN("Invalid callback data");
        return nullptr;
    }
    CEngine* pEngine = pCallData->m_pEngine;
    if (!pEngine) {
        TTML_WARN("Engine handel is null");
        delete pCallData;
        return nullptr;
    }
    const int msgId = pCallData->m_MsgId;
    void* pMsgData = pCallData->m_pData;
    delete pCallData;
    switch (msgId) {
    case MSG_DESTROY:
        pEngine->m_Destroy();
        break;
    case MSG_RESET:
        pEngine->m_Reset();
        break;
    case MSG_ADD_SUBTITLE_DATA:
        pEngine->m_AddSubtitleData(static_cast<SubtitleRenderingInfo*>(pMsgData));
        break;
    case MSG_PAUSE:
        pEngine->m_Pause();
        break;
    case MSG_RESUME:
        pEngine->m_Resume();
        break;
    case MSG_SEEK:
        pEngine->m_Seek(static_cast<long long*>(pMsgData));
        break;
    case MSG_SEEK_COMPLETED:
        pEngine->m_SeekCompleted();
        break;
    case MSG_UPDATE_CURRENT_SUBTITLE:
        pEngine->m_UpdateCurrentSubtitle();
        break;
    default:
        TTML_WARN("Invalid message ID");
        break;
    }
    return nullptr;
}

// --- Engine thread ----------------------------------------------------------------

void CEngine::m_ProcessQueue(void* pData)
{
    TTML_INFO("Enter");
    CSubtitleInfo* pSubtitleInfo = static_cast<CSubtitleInfo*>(pData);
    if (!pSubtitleInfo) {
        TTML_WARN("SubtitleInfo is NULL");
        return;
    }
    if (IsTaskIgnored()) {
        TTML_INFO("Ignoring all the subtitleInfos");
        m_DropDocument(pSubtitleInfo);
        return;
    }
    {
        // The main loop rebuilds renderers (menu change, merged record) under
        // the rendering mutex, reading the root geometry set here.
        TTML::Lock lock(m_pRenderingMutex);
        m_pGraphicsEngine->CreateRootSurface(pSubtitleInfo->GetCellResolution(), pSubtitleInfo->GetTTExtent(),
                                             pSubtitleInfo->GetAspectRatio());
    }
    TTML_INFO("timeBase=%s", pSubtitleInfo->GetTimeBase().c_str());

    std::set<CSubtitleInfo::TimeInterval> keys;
    pSubtitleInfo->GetUniqueKeys(keys);
    const bool fontScale = (m_subtitleMode & kFontScaleBit) != 0;
    for (auto it = keys.begin(); it != keys.end(); ++it) {
        if (IsTaskIgnored()) {
            TTML_INFO("Ignoring all the subtitleInfos");
            m_DropDocument(pSubtitleInfo);
            return;
        }
        {
            TTML::Lock lock(m_pSeekMutex);
            if (m_bSeekPending) {
                m_bSeekPending = false;
                // The seek position is a media time; intervals are in document
                // time, which is media time + the document's time stamp.
                const long long docTime = m_seekPosition + pSubtitleInfo->GetTimeStamp();
                const unsigned long long seekTime = docTime < 0 ? 0 : static_cast<unsigned long long>(docTime);
                // Resume from the interval holding the seek position.
                auto at = keys.lower_bound(CSubtitleInfo::TimeInterval(seekTime, seekTime));
                if (at != keys.begin())
                    --at;
                it = at;
            }
        }
        SubtitleRenderingInfo* pRecord = new (std::nothrow) SubtitleRenderingInfo();
        if (!pRecord)
            continue;
        pRecord->m_BeginTime = it->first;
        pRecord->m_EndTime = it->second;
        pRecord->m_TimeStamp = pSubtitleInfo->GetTimeStamp();
        pSubtitleInfo->GetElementListForInterval(*it, pRecord->m_ElementList);
        pRecord->m_pRendererData = m_pGraphicsEngine->CreateRenderer(&pRecord->m_ElementList, fontScale);
        m_ManageSubtitle(pRecord);
    }

    CSubtitleInfo* pReplay = nullptr;
    {
        TTML::Lock lock(m_pSubtitleInfoMutex);
        if (!m_bOutOfBand) {
            m_subtitleInfoList.push_back(pSubtitleInfo);
        } else {
            if (m_pSubtitleInfo != pSubtitleInfo)
                delete m_pSubtitleInfo;
            m_pSubtitleInfo = pSubtitleInfo;
        }
        --m_documentsInFlight;
        // A seek completed while this (newer) document was on its way: it is
        // the one to replay, unless it already started from the seek position.
        if (m_bReplayWanted && m_documentsInFlight == 0) {
            m_bReplayWanted = false;
            TTML::Lock seekLock(m_pSeekMutex);
            if (m_bOutOfBand && m_bSeekPending) {
                pReplay = m_pSubtitleInfo;
                m_pSubtitleInfo = nullptr;
                ++m_documentsInFlight;
            }
        }
    }
    if (pReplay)
        SendEvent(pReplay);
    TTML_INFO("Exit");
}

void CEngine::m_ManageSubtitle(SubtitleRenderingInfo* pRenderingData)
{
    if (!pRenderingData) {
        TTML_WARN("pRenderingData is null");
        return;
    }
    bool bOverlapped = false;
    bool timerAdded = false;
    unsigned long long timerTime = 0;
    {
        TTML::Lock lock(m_pRenderingMutex);
        bOverlapped = m_pRenderingData->IsOverlapping(pRenderingData);
        timerAdded = m_pTimerManager->IsTimerAdded();
        timerTime = m_pTimerManager->GetTimerTimeInfo();
        // The armed timer reaches a later, non-overlapping record by itself.
        if (!bOverlapped && timerAdded && pRenderingData->m_BeginTime > timerTime) {
            m_pRenderingData->AddData(pRenderingData, m_pGraphicsEngine);
            TTML_INFO("Data added through worker thread!");
            return;
        }
    }
    TTML_INFO("Sending to main loop. beginTime[%llu], timerAdded[%d], TimerTimeInfo()[%llu] bOverlapped[%d]",
              pRenderingData->m_BeginTime, timerAdded, timerTime, bOverlapped);
    if (m_DoMainLoopThreadSafeCall(pRenderingData, MSG_ADD_SUBTITLE_DATA, true) != 0) {
        // Stop state: the reset or destroy waiting for us clears it on the main loop.
        TTML::Lock lock(m_pRenderingMutex);
        m_unscheduled.push_back(pRenderingData);
        return;
    }
    TTML_INFO("Data added through main loop!");
}

void CEngine::m_DropDocument(CSubtitleInfo* pSubtitleInfo)
{
    delete pSubtitleInfo;
    TTML::Lock lock(m_pSubtitleInfoMutex);
    --m_documentsInFlight;
}

void CEngine::m_DeleteRecord(SubtitleRenderingInfo* pRecord)
{
    if (!pRecord)
        return;
    m_pGraphicsEngine->DestroyRenderer(pRecord->m_pRendererData);
    pRecord->m_pRendererData = nullptr;
    delete pRecord;
}

// --- Main loop ----------------------------------------------------------------------

void CEngine::m_AddSubtitleData(SubtitleRenderingInfo* pSubData)
{
    if (!pSubData) {
        TTML_WARN("pSubData is null");
        return;
    }
    if (IsTaskIgnored()) {
        TTML_WARN("IsTaskIgnored is in progress, returning");
        m_DeleteRecord(pSubData);
        return;
    }
    TTML::Lock lock(m_pRenderingMutex);
    if (m_pRenderingData->AddData(pSubData, m_pGraphicsEngine))
        m_pTimerManager->StopTimer();
    m_SyncNextSubtitle();
}

bool CEngine::m_SyncNextSubtitle()
{
    TTML::Lock lock(m_pRenderingMutex);
    for (;;) {
        unsigned long long nextTime = 0;
        CRenderingData::RenderingPair entry(nullptr, nullptr);
        if (!m_pRenderingData->GetFront(nextTime, entry)) {
            TTML_INFO("No subtitle left in rendering queue.");
            return false;
        }
        SubtitleRenderingInfo* pNextSubInfo = entry.first ? entry.first : entry.second;
        if (m_pTimerManager->SetTimer(nextTime, pNextSubInfo->m_EndTime, pNextSubInfo->m_TimeStamp)) {
            TTML_INFO("synched timer for time=[%llu]; pNextSubInfo=[%p]", nextTime, static_cast<void*>(pNextSubInfo));
            return true;
        }
        // Without a media time (before the start, after a stop) nothing is
        // over yet: keep the schedule and arm when the time is there.
        if (!m_pTimerManager->HasMediaTime()) {
            TTML_INFO("No media time yet; schedule kept");
            return false;
        }
        TTML_WARN("Updating for next subtitle failed for nextTime=[%llu]; endTime=[%llu]; pNextSubInfo=[%p]", nextTime,
                  pNextSubInfo->m_EndTime, static_cast<void*>(pNextSubInfo));
        if (entry.second) {
            TTML_INFO("Deleting rendering data");
            m_OnTextRemove(entry.second);
        }
        m_pRenderingData->RemoveData(nextTime);
    }
}

unsigned char CEngine::m_OnTimer_Cb(void* pData)
{
    CTimerData* pTimerData = static_cast<CTimerData*>(pData);
    CEngine* pEngine = pTimerData ? static_cast<CEngine*>(pTimerData->GetUserData()) : nullptr;
    if (!pTimerData || !pEngine) {
        TTML_WARN("pTimerData/pEngine is null");
        return 1;
    }
    if ((pEngine->m_subtitleMode & kResyncBit) && pEngine->m_pTimerManager->SyncCurrentSubtitles()) {
        TTML_INFO("Synchronizing timer");
        return 1;
    }
    if (!pEngine->m_OnViewUpdate(pTimerData)) {
        pEngine->m_pTimerManager->StopTimer();
        return 0;
    }
    return 1;
}

bool CEngine::m_OnViewUpdate(CTimerData* /*pTimerData*/)
{
    // The timer data is the manager's own: it is written through the manager,
    // under its mutex.
    TTML::Lock lock(m_pRenderingMutex);
    unsigned long long dataTime = 0;
    CRenderingData::RenderingPair entry(nullptr, nullptr);
    if (!m_pRenderingData->PopNextSubtitleData(dataTime, entry)) {
        TTML_INFO("No data is in rendering queue!");
        return false;
    }
    if (m_pTimerManager->IsTimerAdded()) {
        unsigned long long timerTime = m_pTimerManager->GetTimerTimeInfo();
        if (timerTime != dataTime)
            TTML_WARN("Mismatch in timings. Check this!! dataTime=%llu, timerTime=%llu", dataTime, timerTime);
    }
    SubtitleRenderingInfo* pBegin = entry.first;
    SubtitleRenderingInfo* pEnd = entry.second;
    bool result = false;
    if (pBegin) {
        if (!pBegin->m_bFlashing && pEnd) {
            m_pTimerManager->SetRenderedSubData(nullptr);
            m_OnTextRemove(pEnd);
        }
        m_OnTextRender(pBegin);
        m_pTimerManager->SetRenderedSubData(pBegin);
        if (m_pGraphicsEngine->IsFlashingEnabled(pBegin->m_pRendererData)) {
            pBegin->m_bFlashing = true;
            if (m_pTimerManager->SetFlashInterval(pBegin->m_EndTime, pBegin->m_TimeStamp)) {
                TTML_INFO("SetFlashInterval is successful, re-added rendering data to map again");
                m_pRenderingData->AddData(pBegin, m_pGraphicsEngine);
                return true;
            }
        }
        result = m_SyncNextSubtitle();
    } else if (pEnd) {
        m_pTimerManager->SetRenderedSubData(nullptr);
        m_OnTextRemove(pEnd);
        result = m_SyncNextSubtitle();
    } else {
        result = m_SyncNextSubtitle();
    }
    if (!result)
        m_pTimerManager->StopTimer();
    return result;
}

void CEngine::m_OnTextRender(SubtitleRenderingInfo* pRenderingInfo)
{
    if (!pRenderingInfo) {
        TTML_WARN("pRenderingInfo is null");
        return;
    }
    if (pRenderingInfo->m_bRecreateRenderer) {
        m_pGraphicsEngine->DestroyRenderer(pRenderingInfo->m_pRendererData);
        pRenderingInfo->m_pRendererData = m_pGraphicsEngine->CreateRenderer(
            &pRenderingInfo->m_ElementList, (m_subtitleMode & kFontScaleBit) != 0);
        pRenderingInfo->m_bRecreateRenderer = false;
    }
    if (m_pGraphicsEngine->RenderText(pRenderingInfo->m_pRendererData))
        TTML_INFO("rendering done for pointer pTRenderingInfo->m_pRendererData=%p",
                  static_cast<void*>(pRenderingInfo->m_pRendererData));
    else
        TTML_WARN("m_OnTextRender failed");
}

void CEngine::m_OnTextRemove(SubtitleRenderingInfo* pRenderingInfo)
{
    if (!pRenderingInfo)
        return;
    if (m_pTimerManager->GetRenderedSubData() == pRenderingInfo)
        m_pTimerManager->SetRenderedSubData(nullptr);
    {
        TTML::Lock lock(m_pSubtitleInfoMutex);
        if (!m_bOutOfBand && m_subtitleInfoList.size() > 2)
            m_DestroySubtitleInfo(false, pRenderingInfo->m_EndTime);
    }
    TTML_INFO("Remove text for pTRenderingInfo->m_pRendererData=%p",
              static_cast<void*>(pRenderingInfo->m_pRendererData));
    m_DeleteRecord(pRenderingInfo);
}

void CEngine::m_DestroySubtitleInfo(bool all, unsigned long long time)
{
    TTML::Lock lock(m_pSubtitleInfoMutex);
    if (all) {
        delete m_pSubtitleInfo;
        m_pSubtitleInfo = nullptr;
        // The list is emptied whatever the mode: documents kept before a
        // start switched to out of band would otherwise wait for the destructor.
        for (CSubtitleInfo* pInfo : m_subtitleInfoList)
            delete pInfo;
        m_subtitleInfoList.clear();
        if (!m_bOutOfBand)
            TTML_INFO("Deleting All subtitle info");
        return;
    }
    if (m_bOutOfBand)
        return;
    for (auto it = m_subtitleInfoList.begin(); it != m_subtitleInfoList.end();) {
        const unsigned long long lastEnd = (*it)->GetLastEndTime();
        if (lastEnd <= time) {
            TTML_INFO("Deleted subtitle info with lastEndTime =[%llu], timeInfo=[%llu]", lastEnd, time);
            delete *it;
            it = m_subtitleInfoList.erase(it);
        } else {
            ++it;
        }
    }
}

void CEngine::m_OnMenuUpdateCb(void* pData)
{
    CEngine* pEngine = static_cast<CEngine*>(pData);
    if (!pEngine) {
        TTML_WARN("Not a valid pointer to CEngine!");
        return;
    }
    if (!pEngine->m_pTimerManager->IsTimerAdded()) {
        TTML_INFO("No subtitle is on screen!");
        return;
    }
    // Asynchronous off the main loop: the notifying thread (the source's, on
    // show or hide) may be the very one the main loop is waiting for.
    pEngine->m_DoMainLoopThreadSafeCall(nullptr, MSG_UPDATE_CURRENT_SUBTITLE, eina_main_loop_is() == EINA_TRUE);
}

void CEngine::m_UpdateCurrentSubtitle()
{
    TTML::Lock lock(m_pRenderingMutex);
    if (!m_pTimerManager->IsTimerAdded()) {
        TTML_INFO("No subtitle is on screen!");
        return;
    }
    SubtitleRenderingInfo* pShown = static_cast<SubtitleRenderingInfo*>(m_pTimerManager->GetRenderedSubData());
    if (!pShown) {
        TTML_INFO("It seems no subtitle on screen!");
        return;
    }
    if (m_pTimerManager->GetTimerTimeInfo() != pShown->m_EndTime) {
        TTML_WARN("Something went wrong, mismatch in timings!");
        return;
    }
    // The renderer reads the caption preferences when it is built.
    pShown->m_bRecreateRenderer = true;
    m_OnTextRender(pShown);
    TTML_INFO("Subtitles on screen update after menu change!");
}

void CEngine::m_Pause()
{
    TTML_INFO("");
    m_pTimerManager->PauseTimer();
}

void CEngine::m_Resume()
{
    TTML_INFO("");
    m_pTimerManager->ResumeTimer();
    m_ArmIfIdle();
}

void CEngine::m_ArmIfIdle()
{
    // A schedule kept while there was no media time is armed once there is.
    TTML::Lock lock(m_pRenderingMutex);
    if (!m_pTimerManager->IsTimerAdded())
        m_SyncNextSubtitle();
}

void CEngine::m_Seek(long long* pPosition)
{
    if (!pPosition) {
        TTML_WARN("");
        return;
    }
    // The schedule is cleared and the seek marked pending in one step under
    // the rendering mutex: a document being processed either files records
    // before it (cleared, and it then moves to the seek position) or after it
    // (from the seek position), never records the clear misses.
    TTML::Lock lock(m_pRenderingMutex);
    {
        TTML::Lock seekLock(m_pSeekMutex);
        // Kept signed: it is a media time, shifted by each document's time stamp.
        m_seekPosition = *pPosition;
        m_bSeekPending = true;
    }
    delete pPosition;
    m_RemoveTimerAndData();
}

void CEngine::m_SeekCompleted()
{
    TTML_INFO("");
    CSubtitleInfo* pReplay = nullptr;
    {
        TTML::Lock lock(m_pSubtitleInfoMutex);
        if (m_bOutOfBand && m_documentsInFlight > 0) {
            // A newer document is on its way and will replace the current one:
            // replaying the older one now would cut it away. The newest replays.
            m_bReplayWanted = true;
        } else if (m_bOutOfBand && m_pSubtitleInfo) {
            pReplay = m_pSubtitleInfo;
            m_pSubtitleInfo = nullptr;
            ++m_documentsInFlight;
        }
    }
    if (pReplay)
        SendEvent(pReplay);
    m_ArmIfIdle();
}

void CEngine::m_RemoveTimerAndData()
{
    TTML::Lock lock(m_pRenderingMutex);
    unsigned long long time = 0;
    CRenderingData::RenderingPair entry(nullptr, nullptr);
    // Every record has exactly one remove entry, so each is deleted once.
    while (m_pRenderingData->PopNextSubtitleData(time, entry)) {
        if (entry.second)
            m_DeleteRecord(entry.second);
    }
    for (SubtitleRenderingInfo* pRecord : m_unscheduled)
        m_DeleteRecord(pRecord);
    m_unscheduled.clear();
    m_pTimerManager->StopTimer();
    TTML_INFO("Done");
}

void CEngine::m_Reset()
{
    TTML_INFO("");
    if (!m_bInitialized)
        return;
    SetTaskState(true);
    CMainThreadUtils* pThreadUtils = CMainThreadUtils::GetInstance();
    if (pThreadUtils) {
        // Releases an engine thread waiting in a synchronous call before we wait for it.
        pThreadUtils->SetStop(true);
        pThreadUtils->Stop();
        CTask::Reset();
        m_RemoveTimerAndData();
        pThreadUtils->SetStop(false);
    } else {
        TTML_WARN("pThreadUtils is null");
    }
    SetTaskState(false);
    m_DestroySubtitleInfo(true, 0);
    {
        TTML::Lock lock(m_pSubtitleInfoMutex);
        m_bReplayWanted = false;
    }
    TTML_INFO("Engine reset done");
}

void CEngine::m_Destroy()
{
    TTML_INFO("");
    if (!m_bInitialized)
        return;
    m_bInitialized = false;
    m_bCreated = false;
    SetTaskState(true);
    CMainThreadUtils* pThreadUtils = CMainThreadUtils::GetInstance();
    if (pThreadUtils) {
        pThreadUtils->SetStop(true);
        pThreadUtils->Stop();
    } else {
        TTML_WARN("pThreadUtils is null");
    }
    CTask::Stop();
    CTTMLMenu* pMenu = CTTMLMenu::GetInstance();
    if (pMenu)
        pMenu->UnRegisterMenuChangeNotify(m_OnMenuUpdateCb);
    else
        TTML_WARN("CTTMLMenu Object is NULL");
    m_RemoveTimerAndData();
    m_DestroySubtitleInfo(true, 0);
    m_pGraphics = nullptr;
}

}  // namespace TTML
