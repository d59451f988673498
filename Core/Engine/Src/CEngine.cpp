// Stand-in until the presentation engine lands: counts and frees documents.
#include "CEngine.h"

#include "CSubtitleInfo.h"
#include "CTTMLMenu.h"
#include "TCallback.h"
#include "TTMLLog.h"

#include <mutex>
#include <new>
#include <set>

namespace TTML {

namespace {

std::mutex g_countLock;
CEngine::Counters g_counters;

template <typename F>
void Count(F change)
{
    std::lock_guard<std::mutex> guard(g_countLock);
    change(g_counters);
}

}  // namespace

std::atomic<bool> CEngine::m_bCreated{false};

CEngine::CEngine(IGraphics* pGraphics) : m_pGraphics(pGraphics), m_subtitleMode(1), m_bOwnsCreated(false)
{
}

CEngine::~CEngine()
{
    if (m_bOwnsCreated) {
        TTML_WARN("Engine object deleted without calling Destroy! Fix this.");
        Destroy();
    }
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
    if (!CTask::Start("Engine")) {
        TTML_ERROR("Unable to start the engine thread");
        return false;
    }
    m_subtitleMode = subtitleMode;
    CTTMLMenu* pMenu = CTTMLMenu::GetInstance();
    if (pMenu)
        pMenu->RegisterMenuChangeNotify(m_OnMenuUpdateCb, this);
    else
        TTML_WARN("CTTMLMenu Object is NULL");
    m_bCreated = true;
    m_bOwnsCreated = true;
    Count([subtitleMode](Counters& c) { c.subtitleMode = subtitleMode; });
    return true;
}

bool CEngine::AddToQueue(void* pSubtitleInfo)
{
    // A null event would end the worker.
    if (!pSubtitleInfo) {
        TTML_WARN("SubtitleInfo is NULL");
        return false;
    }
    Count([](Counters& c) { ++c.documentsQueued; });
    SendEvent(pSubtitleInfo);
    return true;
}

bool CEngine::Start(bool bandMode)
{
    TTML_INFO("bandMode=%d", bandMode);
    Count([bandMode](Counters& c) {
        ++c.starts;
        c.lastBandMode = bandMode;
    });
    return true;
}

bool CEngine::Pause()
{
    Count([](Counters& c) { ++c.pauses; });
    return true;
}

bool CEngine::Resume()
{
    Count([](Counters& c) { ++c.resumes; });
    return true;
}

void CEngine::SeekStart(long long milliseconds)
{
    TTML_INFO("milliseconds=%lld", milliseconds);
    Count([milliseconds](Counters& c) {
        ++c.seekStarts;
        c.lastSeekPosition = milliseconds;
    });
}

void CEngine::SeekCompleted()
{
    Count([](Counters& c) { ++c.seekCompletes; });
}

void CEngine::Reset()
{
    if (!m_bOwnsCreated)
        return;
    SetTaskState(true);
    CTask::Reset();
    SetTaskState(false);
    Count([](Counters& c) { ++c.resets; });
}

void CEngine::Destroy()
{
    TTML_INFO("");
    if (!m_bOwnsCreated)
        return;
    m_bOwnsCreated = false;
    m_bCreated = false;
    SetTaskState(true);
    CTask::Stop();
    CTTMLMenu* pMenu = CTTMLMenu::GetInstance();
    if (pMenu)
        pMenu->UnRegisterMenuChangeNotify(m_OnMenuUpdateCb);
    else
        TTML_WARN("CTTMLMenu Object is NULL");
    m_pGraphics = nullptr;
    Count([](Counters& c) { ++c.destroys; });
}

CEngine::Counters CEngine::GetCounters()
{
    std::lock_guard<std::mutex> guard(g_countLock);
    return g_counters;
}

void CEngine::ClearCounters()
{
    std::lock_guard<std::mutex> guard(g_countLock);
    g_counters = Counters();
}

void CEngine::m_ProcessQueue(void* pData)
{
    CSubtitleInfo* pSubtitleInfo = static_cast<CSubtitleInfo*>(pData);
    if (IsTaskIgnored()) {
        delete pSubtitleInfo;
        Count([](Counters& c) { ++c.documentsDropped; });
        return;
    }
    std::set<CSubtitleInfo::TimeInterval> keys;
    pSubtitleInfo->GetUniqueKeys(keys);
    delete pSubtitleInfo;
    int intervals = static_cast<int>(keys.size());
    Count([intervals](Counters& c) {
        ++c.documentsProcessed;
        c.intervals += intervals;
    });
}

void CEngine::m_OnMenuUpdateCb(void* pData)
{
    if (!pData)
        TTML_WARN("Not a valid pointer to CEngine!");
}

}  // namespace TTML
