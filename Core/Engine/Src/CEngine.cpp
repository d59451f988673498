#include "CEngine.h"

#include "CDocumentKeeper.h"
#include "CMainThreadUtils.h"
#include "CPresenter.h"
#include "CRecordBuilder.h"
#include "CSubtitleInfo.h"
#include "CTTMLMenu.h"
#include "Lock.h"
#include "SubtitleRenderingInfo.h"
#include "TCallback.h"
#include "TTMLLog.h"
#include "TTMLTypes.h"

#include <new>
#include <utility>

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
    MSG_COUNT
};

}  // namespace

// Indexed by MainLoopMessage.
const CEngine::MainLoopHandler CEngine::m_mainLoopHandlers[] = {
    &CEngine::m_Destroy, &CEngine::m_Reset,  &CEngine::m_AddSubtitleData, &CEngine::m_Pause,
    &CEngine::m_Resume,  &CEngine::m_Seek,   &CEngine::m_SeekCompleted,   &CEngine::m_UpdateCurrentSubtitle,
};

std::atomic<bool> CEngine::m_bCreated{false};

CEngine::CEngine(IGraphics* pGraphics, CTimerManager::MediaTimeSource mediaTime)
    : m_pGraphics(pGraphics), m_pKeeper(nullptr), m_pPresenter(nullptr), m_pBuilder(nullptr),
      m_bInitialized(false)
{
    m_pKeeper = new (std::nothrow) CDocumentKeeper();
    TTML_ASSERT(m_pKeeper);
    m_pPresenter = new (std::nothrow) CPresenter(pGraphics, m_pKeeper, std::move(mediaTime));
    TTML_ASSERT(m_pPresenter);
    m_pBuilder = new (std::nothrow)
        CRecordBuilder(m_pPresenter->GetGraphicsEngine(), m_pPresenter->GetRenderingMutex());
    TTML_ASSERT(m_pBuilder);
}

CEngine::~CEngine()
{
    if (m_bInitialized) {
        TTML_WARN("Engine object deleted without calling Destroy! Fix this.");
        Destroy();
    }
    m_pKeeper->DestroyAll();
    delete m_pBuilder;
    delete m_pPresenter;
    delete m_pKeeper;
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
    m_pPresenter->SetSubtitleMode(subtitleMode);
    m_pBuilder->SetFontScale((subtitleMode & SUBTITLE_MODE_FONT_SCALE) != 0);
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

bool CEngine::AddToQueue(void* pSubtitleInfo)
{
    // A null event is the task's stop marker, never a document.
    if (!pSubtitleInfo) {
        TTML_WARN("SubtitleInfo is NULL");
        return false;
    }
    m_pKeeper->Queued();
    SendEvent(pSubtitleInfo);
    return true;
}

bool CEngine::Start(bool bandMode)
{
    TTML_INFO("bandMode=%d", bandMode);
    m_pKeeper->SetBandMode(bandMode);
    // Outside the document mutex: the main loop takes the timer mutex first
    // and the document mutex inside it (a late record removed at once).
    m_pPresenter->SetBandMode(bandMode);
    // Playback starts running: documents that came before the media time
    // existed are armed now, and a pause left from before the start ends.
    if (m_pPresenter->IsWaiting())
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
        m_Destroy(nullptr);
    }
}

// --- Main-loop requests ---------------------------------------------------------

int CEngine::m_DoMainLoopThreadSafeCall(void* pData, int msgId, bool sync)
{
    TTML_INFO("Enter for message Id:%d", msgId);
    if (msgId < 0 || msgId >= MSG_COUNT) {
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
    static_assert(sizeof(m_mainLoopHandlers) / sizeof(m_mainLoopHandlers[0]) == MSG_COUNT,
                  "one main-loop handler per message");
    const int msgId = pCallData->m_MsgId;
    void* pMsgData = pCallData->m_pData;
    delete pCallData;
    if (msgId < 0 || msgId >= MSG_COUNT) {
        TTML_WARN("Invalid message ID");
        return nullptr;
    }
    (pEngine->*m_mainLoopHandlers[msgId])(pMsgData);
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
    bool ignored = IsTaskIgnored();
    if (!ignored) {
        m_pBuilder->Begin(pSubtitleInfo);
        TTML_INFO("timeBase=%s", pSubtitleInfo->GetTimeBase().c_str());
    }
    // A reset or destroy sets the ignore flag: stop before the next interval.
    while (!ignored && m_pBuilder->HasNext()) {
        SubtitleRenderingInfo* pRecord = m_pBuilder->Next();
        if (pRecord)
            m_ManageSubtitle(pRecord);
        ignored = m_pBuilder->HasNext() && IsTaskIgnored();
    }
    if (ignored) {
        TTML_INFO("Ignoring all the subtitleInfos");
        m_pKeeper->Drop(pSubtitleInfo);
        return;
    }
    CSubtitleInfo* pReplay = m_pKeeper->Keep(pSubtitleInfo, *m_pBuilder);
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
    if (m_pPresenter->AddIfAhead(pRenderingData))
        return;
    if (m_DoMainLoopThreadSafeCall(pRenderingData, MSG_ADD_SUBTITLE_DATA, true) != 0) {
        // Stop state: the reset or destroy waiting for us clears it on the main loop.
        m_pPresenter->KeepUnscheduled(pRenderingData);
        return;
    }
    TTML_INFO("Data added through main loop!");
}

// --- Main loop ----------------------------------------------------------------------

void CEngine::m_AddSubtitleData(void* pSubData)
{
    SubtitleRenderingInfo* pRecord = static_cast<SubtitleRenderingInfo*>(pSubData);
    if (!pRecord) {
        TTML_WARN("pSubData is null");
        return;
    }
    if (IsTaskIgnored()) {
        TTML_WARN("IsTaskIgnored is in progress, returning");
        m_pPresenter->Discard(pRecord);
        return;
    }
    m_pPresenter->Add(pRecord);
}

void CEngine::m_OnMenuUpdateCb(void* pData)
{
    CEngine* pEngine = static_cast<CEngine*>(pData);
    if (!pEngine) {
        TTML_WARN("Not a valid pointer to CEngine!");
        return;
    }
    if (!pEngine->m_pPresenter->IsTimerAdded()) {
        TTML_INFO("No subtitle is on screen!");
        return;
    }
    // Asynchronous off the main loop: the notifying thread (the source's, on
    // show or hide) may be the very one the main loop is waiting for.
    pEngine->m_DoMainLoopThreadSafeCall(nullptr, MSG_UPDATE_CURRENT_SUBTITLE, eina_main_loop_is() == EINA_TRUE);
}

void CEngine::m_UpdateCurrentSubtitle(void* /*pData*/)
{
    m_pPresenter->UpdateCurrentSubtitle();
}

void CEngine::m_Pause(void* /*pData*/)
{
    m_pPresenter->Pause();
}

void CEngine::m_Resume(void* /*pData*/)
{
    m_pPresenter->Resume();
}

void CEngine::m_Seek(void* pPosition)
{
    long long* pMs = static_cast<long long*>(pPosition);
    if (!pMs) {
        TTML_WARN("");
        return;
    }
    // The schedule is cleared and the seek marked pending in one step under
    // the rendering mutex: a document being processed either files records
    // before it (cleared, and it then moves to the seek position) or after it
    // (from the seek position), never records the clear misses.
    TTML::Lock lock(m_pPresenter->GetRenderingMutex());
    m_pBuilder->MarkSeek(*pMs);
    delete pMs;
    m_pPresenter->Clear();
}

void CEngine::m_SeekCompleted(void* /*pData*/)
{
    TTML_INFO("");
    CSubtitleInfo* pReplay = m_pKeeper->TakeForReplay();
    if (pReplay)
        SendEvent(pReplay);
    m_pPresenter->ArmIfIdle();
}

void CEngine::m_Reset(void* /*pData*/)
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
        m_pPresenter->Clear();
        pThreadUtils->SetStop(false);
    } else {
        TTML_WARN("pThreadUtils is null");
    }
    SetTaskState(false);
    m_pKeeper->DestroyAll();
    TTML_INFO("Engine reset done");
}

void CEngine::m_Destroy(void* /*pData*/)
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
    m_pPresenter->Clear();
    m_pKeeper->DestroyAll();
    m_pGraphics = nullptr;
}

}  // namespace TTML
