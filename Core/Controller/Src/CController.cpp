#include "CController.h"

#include "CEngine.h"
#include "CParser.h"
#include "CSubtitleInfo.h"
#include "CTTMLMenu.h"
#include "IGraphics.h"
#include "IRootContainer.h"
#include "ITTMLSource.h"
#include "SeekNotifyData.h"
#include "StartNotifyData.h"
#include "SubRawData.h"
#include "TTMLLog.h"
#include "TTMLTypes.h"

#include <new>

namespace TTML {

CController* CController::m_pCore = nullptr;

ICore* ICore::GetInstance()
{
    TTML_INFO("");
    if (CController::m_pCore)
        return CController::m_pCore;
    CController::m_pCore = new (std::nothrow) CController();
    TTML_ASSERT(CController::m_pCore);
    return CController::m_pCore;
}

CController::CController()
    : m_pSource(nullptr),
      m_pGraphics(nullptr),
      m_pParser(nullptr),
      m_pEngine(nullptr),
      m_bBandMode(false),
      m_bInitialized(false)
{
}

CController::~CController()
{
    if (m_bInitialized) {
        TTML_WARN("Controller deleted without calling Destroy! Fix this.");
        m_TearDown();
        m_bInitialized = false;
    }
    if (m_pCore == this)
        m_pCore = nullptr;
}

bool CController::Initialize(ITTMLSource* pSource, void* pParent)
{
    TTML_INFO("Enter - ITTMLSource : %p", static_cast<void*>(pSource));
    if (!pSource) {
        TTML_ERROR("pSource NULL pointer error");
        return false;
    }
    // Not among the documented failures, but a second run would leak and
    // re-register everything made by the first.
    if (m_bInitialized) {
        TTML_WARN("Already initialized");
        return false;
    }
    if (!m_CreateGraphics(pParent)) {
        TTML_ERROR("graphics not created!");
        return false;
    }
    // Read once: engine and parser must agree on it.
    int subtitleMode = pSource->GetSubtitleMode();
    if (!m_CreateEngine(m_pGraphics, subtitleMode)) {
        TTML_ERROR("engine not created!");
        m_DestroyGraphics();
        return false;
    }
    if (!m_CreateParser(subtitleMode)) {
        TTML_ERROR("parser not created!");
        m_DestroyEngine();
        m_DestroyGraphics();
        return false;
    }
    m_SetSource(pSource);
    m_SetCallBacks();
    m_bInitialized = true;
    TTML_INFO("Exit");
    return true;
}

bool CController::Destroy()
{
    TTML_INFO("Enter");
    m_TearDown();
    m_bInitialized = false;
    m_pCore = nullptr;
    TTML_INFO("Exit");
    delete this;
    return true;
}

void CController::m_TearDown()
{
    m_Hide(this);
    // Before anything is torn down, so no message reaches a half-destroyed core.
    m_OnInvalidateNotify_Cb(this);
    m_DestroyParser();
    m_DestroyEngine();
    m_DestroyGraphics();
    CTTMLMenu::Destroy();
}

void CController::ResizeCaption(int width, int height)
{
    TTML_INFO("New Width height: [%d][%d]", width, height);
}

bool CController::GetVideoCurrentTime(long long* pTime)
{
    ITTMLSource* pSource = m_GetSource();
    if (!pSource) {
        TTML_WARN("pSource is null");
        return false;
    }
    return pSource->GetMediaTime(pTime) == 0;
}

bool CController::AddSubtitleInfo(CSubtitleInfo* pInfo)
{
    if (!m_pEngine) {
        TTML_WARN("m_pEngine nullptr");
        return false;
    }
    bool queued = m_pEngine->AddToQueue(pInfo);
    if (!queued)
        TTML_WARN("Error in adding subtitle info into engine queue");
    return queued;
}

// --- Source messages ---------------------------------------------------------

void CController::m_OnSource_CB(int msgId, void* pData)
{
    TTML_INFO("Enter - message id : %d", msgId);
    switch (msgId) {
    case TTML_SOURCE_MSG_XML_DATA:
        m_OnReceiveSubtitleXmlData_Cb(pData);
        break;
    case TTML_SOURCE_MSG_START:
        m_OnStartNotify_Cb(pData);
        break;
    case TTML_SOURCE_MSG_STOP:
        m_OnStopNotify_Cb(pData);
        break;
    case TTML_SOURCE_MSG_PAUSE:
        m_OnPauseNotify_Cb(pData);
        break;
    case TTML_SOURCE_MSG_RESUME:
        m_OnResumeNotify_Cb(pData);
        break;
    case TTML_SOURCE_MSG_INVALIDATE:
        m_OnInvalidateNotify_Cb(pData);
        break;
    case TTML_SOURCE_MSG_SEEK_START:
        m_OnSeekStartNotify_Cb(pData);
        break;
    case TTML_SOURCE_MSG_SEEK_COMPLETED:
        m_OnSeekCompletedNotify_Cb(pData);
        break;
    case TTML_SOURCE_MSG_MENU_REGISTER:
        m_RegisterMenuCallbacks(pData);
        break;
    case TTML_SOURCE_MSG_MENU_UNREGISTER:
        m_UnregisterMenuCallbacks(pData);
        break;
    case TTML_SOURCE_MSG_MENU_LANG:
        m_SetMenuLang(pData);
        break;
    case TTML_SOURCE_MSG_SHOW:
        m_Show(pData);
        break;
    case TTML_SOURCE_MSG_HIDE:
        m_Hide(pData);
        break;
    case TTML_SOURCE_MSG_FONT_ERROR:
        m_OnErrorDownloadableFonts(pData);
        break;
    default:
        TTML_WARN("Invalid message");
        break;
    }
    TTML_INFO("Exit - message id : %d", msgId);
}

void CController::m_OnReceiveSubtitleXmlData_Cb(void* pData)
{
    SubRawData* pRawData = static_cast<SubRawData*>(pData);
    if (!pRawData) {
        TTML_WARN("Invalid pData");
        return;
    }
    CController* pCore = static_cast<CController*>(pRawData->pCore);
    if (!pCore || !pCore->m_pParser) {
        TTML_WARN("Invalid controller/parser object");
        delete pRawData;
        return;
    }
    pCore->m_pParser->AddToParserQueue(pRawData);
}

void CController::m_OnStartNotify_Cb(void* pData)
{
    StartNotifyData* pStart = static_cast<StartNotifyData*>(pData);
    if (!pStart) {
        TTML_WARN("Invalid pData");
        return;
    }
    CController* pCore = static_cast<CController*>(pStart->pCore);
    if (!pCore) {
        TTML_WARN("Invalid user data");
        return;
    }
    pCore->m_bBandMode = pStart->bandMode;
    TTML_INFO("m_OnStartNotify_Cb");
    CEngine* pEngine = pCore->m_pEngine;
    TTML_ASSERT(pEngine);
    if (!pEngine->Start(pCore->m_bBandMode))
        TTML_WARN("Failed to start engine");
}

void CController::m_OnStopNotify_Cb(void* pData)
{
    CController* pCore = static_cast<CController*>(pData);
    if (!pCore) {
        TTML_WARN("Invalid user param: pData");
        return;
    }
    pCore->m_ResetParser();
    pCore->m_ResetEngine();
}

void CController::m_OnPauseNotify_Cb(void* pData)
{
    CController* pCore = static_cast<CController*>(pData);
    if (!pCore) {
        TTML_WARN("Invalid user param: pData");
        return;
    }
    CEngine* pEngine = pCore->m_pEngine;
    TTML_ASSERT(pEngine);
    if (!pEngine->Pause())
        TTML_WARN("Engine pause failed");
}

void CController::m_OnResumeNotify_Cb(void* pData)
{
    CController* pCore = static_cast<CController*>(pData);
    if (!pCore) {
        TTML_WARN("Invalid user param: pData");
        return;
    }
    CEngine* pEngine = pCore->m_pEngine;
    TTML_ASSERT(pEngine);
    if (!pEngine->Resume())
        TTML_WARN("Engine resume failed");
}

void CController::m_OnInvalidateNotify_Cb(void* pData)
{
    CController* pCore = static_cast<CController*>(pData);
    if (!pCore) {
        TTML_WARN("Invalid user param: pData");
        return;
    }
    // Only the source goes: engine and parser live on without it.
    if (pCore->m_GetSource()) {
        pCore->m_UnsetCallBacks();
        pCore->m_SetSource(nullptr);
    }
}

void CController::m_OnSeekStartNotify_Cb(void* pData)
{
    SeekNotifyData* pSeek = static_cast<SeekNotifyData*>(pData);
    if (!pSeek) {
        TTML_WARN("Invalid pData");
        return;
    }
    CController* pCore = static_cast<CController*>(pSeek->pCore);
    if (!pCore) {
        TTML_WARN("Invalid user data");
        return;
    }
    // In-band segments cannot be replayed from a position: start afresh.
    if (pCore->m_bBandMode) {
        pCore->m_ResetParser();
        pCore->m_ResetEngine();
        return;
    }
    CEngine* pEngine = pCore->m_pEngine;
    TTML_ASSERT(pEngine);
    pEngine->SeekStart(pSeek->position);
}

void CController::m_OnSeekCompletedNotify_Cb(void* pData)
{
    CController* pCore = static_cast<CController*>(pData);
    if (!pCore) {
        TTML_WARN("Invalid user param: pData");
        return;
    }
    if (pCore->m_bBandMode)
        return;
    CEngine* pEngine = pCore->m_pEngine;
    TTML_ASSERT(pEngine);
    pEngine->SeekCompleted();
}

void CController::m_RegisterMenuCallbacks(void* /*pData*/)
{
    CTTMLMenu* pMenu = CTTMLMenu::GetInstance();
    if (!pMenu) {
        TTML_WARN("CTTMLMenu Object is NULL");
        return;
    }
    if (pMenu->RegisterVconfKeysForCaption())
        pMenu->ReadMenuData();
}

void CController::m_UnregisterMenuCallbacks(void* /*pData*/)
{
    CTTMLMenu* pMenu = CTTMLMenu::GetInstance();
    if (!pMenu) {
        TTML_WARN("CTTMLMenu Object is NULL");
        return;
    }
    pMenu->UnregisterVconfKeysForCaption();
}

void CController::m_SetMenuLang(void* pData)
{
    CTTMLMenu* pMenu = CTTMLMenu::GetInstance();
    CController* pCore = static_cast<CController*>(pData);
    if (!pMenu || !pCore) {
        TTML_WARN("null pointer error !");
        return;
    }
    ITTMLSource* pSource = pCore->m_GetSource();
    if (!pSource) {
        TTML_WARN("pSource is null");
        return;
    }
    pMenu->SetLangInMenu(pSource->GetSubtitleMode());
}

void CController::m_Show(void* pData)
{
    TTML_INFO("Show");
    CController* pCore = static_cast<CController*>(pData);
    if (!pCore) {
        TTML_WARN("Error: null pointer");
        return;
    }
    CTTMLMenu* pMenu = CTTMLMenu::GetInstance();
    if (pMenu) {
        ITTMLSource* pSource = pCore->m_GetSource();
        if (pSource)
            // Division only for sources whose mode carries bit value 8.
            pMenu->SetCaptionDivisionMode(!(pSource->GetSubtitleMode() & SUBTITLE_MODE_IMSC1_DEFAULT));
        else
            TTML_WARN("pSource is null");
    } else {
        TTML_WARN("CTTMLMenu Object is NULL");
    }
    if (pCore->m_pGraphics) {
        IRootContainer* pRoot = pCore->m_pGraphics->GetRootContainer();
        if (pRoot)
            pRoot->Show();
    } else {
        TTML_WARN("Graphics handle is null");
    }
}

void CController::m_Hide(void* pData)
{
    TTML_INFO("Hide");
    CController* pCore = static_cast<CController*>(pData);
    if (!pCore) {
        TTML_WARN("Error: null pointer");
        return;
    }
    CTTMLMenu* pMenu = CTTMLMenu::GetInstance();
    if (pMenu)
        pMenu->SetCaptionDivisionMode(true);
    else
        TTML_WARN("CTTMLMenu Object is NULL");
    if (pCore->m_pGraphics) {
        IRootContainer* pRoot = pCore->m_pGraphics->GetRootContainer();
        if (pRoot)
            pRoot->Hide();
    } else {
        TTML_WARN("Graphics handle is null");
    }
}

void CController::m_OnErrorDownloadableFonts(void* pData)
{
    TTML_INFO("Enter");
    CController* pCore = static_cast<CController*>(pData);
    if (!pCore || !pCore->m_pParser) {
        TTML_WARN("Error: null pointer");
        return;
    }
    ITTMLSource* pSource = pCore->m_GetSource();
    if (!pSource) {
        TTML_WARN("pSource is null");
        return;
    }
    pCore->m_pParser->OnErrorDownloadableFonts(pSource->GetFontErrorList());
    TTML_INFO("Exit");
}

// --- Parser messages ---------------------------------------------------------

void CController::m_OnParser_CB(int msgId, void* pData)
{
    ParserCallbackData* pParsed = static_cast<ParserCallbackData*>(pData);
    if (!pParsed || !pParsed->pUserData) {
        TTML_WARN("Null pointer!");
        return;
    }
    if (msgId != 0) {
        TTML_WARN("Invalid message");
        return;
    }
    CController* pCore = static_cast<CController*>(pParsed->pUserData);
    // The parser counts the document as handed over once we return, so a
    // document the engine did not take is ours to free.
    if (!pCore->AddSubtitleInfo(pParsed->pSubtitleInfo))
        delete pParsed->pSubtitleInfo;
}

// --- Parts -------------------------------------------------------------------

ITTMLSource* CController::m_GetSource()
{
    return m_pSource.load();
}

void CController::m_SetSource(ITTMLSource* pSource)
{
    m_pSource.store(pSource);
}

void CController::m_SetCallBacks()
{
    ITTMLSource* pSource = m_GetSource();
    if (!pSource) {
        TTML_WARN("pSource is Null; returning");
        return;
    }
    pSource->RegisterCallback(m_OnSource_CB, this);
}

void CController::m_UnsetCallBacks()
{
    ITTMLSource* pSource = m_GetSource();
    if (!pSource) {
        TTML_WARN("pSource is Null; returning");
        return;
    }
    pSource->UnregisterCallback();
}

bool CController::m_CreateGraphics(void* pParent)
{
    m_pGraphics = IGraphics::Create();
    TTML_ASSERT(m_pGraphics);
    if (!m_pGraphics->Initialize(pParent)) {
        TTML_WARN("Unable to create graphics");
        m_pGraphics->Destroy();
        m_pGraphics = nullptr;
        return false;
    }
    return true;
}

bool CController::m_CreateEngine(IGraphics* pGraphics, int subtitleMode)
{
    m_pEngine = new (std::nothrow) CEngine(pGraphics);
    TTML_ASSERT(m_pEngine);
    if (!m_pEngine->Initialize(subtitleMode)) {
        TTML_WARN("Error in m_pEngine->Initialize");
        delete m_pEngine;
        m_pEngine = nullptr;
        return false;
    }
    return true;
}

bool CController::m_CreateParser(int subtitleMode)
{
    m_pParser = new (std::nothrow) CParser();
    TTML_ASSERT(m_pParser);
    if (!m_pParser->Initialize(subtitleMode, m_OnParser_CB, this)) {
        TTML_WARN("Error in parser initialization!");
        delete m_pParser;
        m_pParser = nullptr;
        return false;
    }
    return true;
}

void CController::m_DestroyGraphics()
{
    if (!m_pGraphics) {
        TTML_WARN("m_pGraphics is null");
        return;
    }
    m_pGraphics->Destroy();
    m_pGraphics = nullptr;
}

void CController::m_DestroyEngine()
{
    if (!m_pEngine) {
        TTML_WARN("m_pEngine is null");
        return;
    }
    m_pEngine->Destroy();
    delete m_pEngine;
    m_pEngine = nullptr;
}

void CController::m_DestroyParser()
{
    if (!m_pParser) {
        TTML_WARN("Parser is null");
        return;
    }
    m_pParser->Destroy();
    delete m_pParser;
    m_pParser = nullptr;
}

void CController::m_ResetEngine()
{
    if (!m_pEngine) {
        TTML_WARN("m_pEngine is null");
        return;
    }
    m_pEngine->Reset();
}

void CController::m_ResetParser()
{
    if (!m_pParser) {
        TTML_WARN("m_pParser is null");
        return;
    }
    m_pParser->Reset();
}

}  // namespace TTML
