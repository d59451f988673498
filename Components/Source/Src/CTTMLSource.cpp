#include "CTTMLSource.h"

#include <pthread.h>

#include <algorithm>
#include <cstdlib>
#include <new>
#include <system_error>

#include "SeekNotifyData.h"
#include "StartNotifyData.h"
#include "SubRawData.h"
#include "TTMLLog.h"

namespace TTML {

namespace {

// The source whose thread this is; lets calls made from inside a callback
// avoid the locks that thread's delivery already holds.
thread_local const CTTMLSource* tCurrentSource = nullptr;

const char* MessageName(int msgId)
{
    static const char* const kNames[TTML_SOURCE_MSG_COUNT] = {
        "document", "start", "stop", "pause", "resume", "invalidate", "seek", "seekcompleted",
        "menu-register", "menu-unregister", "menu-lang", "show", "hide", "fonts-failed"};
    return (msgId >= 0 && msgId < TTML_SOURCE_MSG_COUNT) ? kNames[msgId] : "?";
}

}  // namespace

CTTMLSource::CTTMLSource()
{
    TTML_INFO("");
}

CTTMLSource::~CTTMLSource()
{
    if (!m_tornDown) {
        TTML_WARN("Destroy was not called");
        m_Teardown(false);
    }
}

bool CTTMLSource::m_OnSourceThread() const
{
    return tCurrentSource == this;
}

bool CTTMLSource::RegisterCallback(TTMLSourceCallback callback, void* userData)
{
    if (!callback) {
        TTML_WARN("callback is null");
        return false;
    }
    if (m_OnSourceThread()) {
        // This thread already holds the delivery lock.
        m_callback = callback;
        m_userData = userData;
        return true;
    }
    std::lock_guard<std::mutex> lock(m_deliveryLock);
    m_callback = callback;
    m_userData = userData;
    return true;
}

void CTTMLSource::UnregisterCallback()
{
    if (m_OnSourceThread()) {
        m_callback = nullptr;
        m_userData = nullptr;
        return;
    }
    // Waits for a delivery in progress, so none can follow.
    std::lock_guard<std::mutex> lock(m_deliveryLock);
    m_callback = nullptr;
    m_userData = nullptr;
}

int CTTMLSource::GetMediaTime(long long* pTime)
{
    if (!pTime) {
        TTML_WARN("pTime is null");
        return -1;
    }
    long long now = 0;
    if (!m_clock.Now(now))
        return -1;
    *pTime = now;
    return 0;
}

std::list<std::string> CTTMLSource::GetFontErrorList()
{
    std::lock_guard<std::mutex> lock(m_stateLock);
    return m_fontErrors;
}

int CTTMLSource::GetSubtitleMode()
{
    return m_mode.load();
}

bool CTTMLSource::SetFeed(const CSourceFeed& feed)
{
    if (m_OnSourceThread()) {
        TTML_ERROR("SetFeed from a source callback refused");
        return false;
    }
    std::lock_guard<std::mutex> control(m_controlLock);
    if (IsPlaying()) {
        TTML_WARN("Source is playing; feed not changed");
        return false;
    }
    m_feed = feed;
    m_mode = feed.GetMode();
    return true;
}

bool CTTMLSource::LoadFeed(const std::string& path)
{
    if (m_OnSourceThread()) {
        TTML_ERROR("LoadFeed from a source callback refused");
        return false;
    }
    std::lock_guard<std::mutex> control(m_controlLock);
    if (IsPlaying()) {
        TTML_WARN("Source is playing; feed not changed");
        return false;
    }
    bool ok = m_feed.Load(path);
    m_mode = m_feed.GetMode();
    return ok;
}

bool CTTMLSource::HasFeed()
{
    std::lock_guard<std::mutex> control(m_controlLock);
    return !m_feed.IsEmpty();
}

bool CTTMLSource::IsPlaying()
{
    std::lock_guard<std::mutex> lock(m_stateLock);
    return m_playing;
}

void CTTMLSource::t_LoadFeedFromEnvironment(const char* variable, const char* kind)
{
    const char* path = std::getenv(variable);
    if (!path || !*path)
        path = std::getenv("INTERTITLE_FEED");
    if (!path || !*path) {
        TTML_WARN("No feed for the %s source: set %s or INTERTITLE_FEED", kind, variable);
        return;
    }
    TTML_INFO("%s source feed: %s", kind, path);
    LoadFeed(path);
}

bool CTTMLSource::Start()
{
    if (m_OnSourceThread()) {
        TTML_ERROR("Start from a source callback refused");
        return false;
    }
    std::lock_guard<std::mutex> control(m_controlLock);
    if (IsPlaying()) {
        TTML_INFO("Source restarts its feed");
        m_StopThread();
    }
    if (m_feed.IsEmpty()) {
        TTML_WARN("No feed to play");
        return false;
    }
    {
        std::lock_guard<std::mutex> lock(m_stateLock);
        m_stopRequested = false;
        m_requests.clear();
        m_fontErrors.clear();
        m_next = 0;
        m_startTime = std::chrono::steady_clock::now();
        m_clock.Start();
        m_playing = true;
    }
    TTML_INFO("Source starts: %zu messages, mode %d", m_feed.Items().size(), m_mode.load());
    try {
        m_thread = std::thread(&CTTMLSource::m_Run, this);
    } catch (const std::system_error& e) {
        TTML_ERROR("Cannot start the source thread: %s", e.what());
        std::lock_guard<std::mutex> lock(m_stateLock);
        m_playing = false;
        m_clock.Stop();
        return false;
    }
    return true;
}

bool CTTMLSource::m_Enqueue(int msgId, const char* what)
{
    std::lock_guard<std::mutex> lock(m_stateLock);
    if (!m_playing) {
        TTML_WARN("Source not started; %s dropped", what);
        return false;
    }
    m_requests.push_back(msgId);
    m_wake.notify_one();
    return true;
}

bool CTTMLSource::ShowCaption()
{
    return m_Enqueue(TTML_SOURCE_MSG_SHOW, "show");
}

bool CTTMLSource::HideCaption()
{
    return m_Enqueue(TTML_SOURCE_MSG_HIDE, "hide");
}

void CTTMLSource::m_StopThread()
{
    {
        std::lock_guard<std::mutex> lock(m_stateLock);
        m_stopRequested = true;
        m_wake.notify_one();
    }
    if (m_thread.joinable())
        m_thread.join();
    std::lock_guard<std::mutex> lock(m_stateLock);
    m_playing = false;
    m_requests.clear();
    m_clock.Stop();
}

void CTTMLSource::Stop()
{
    if (m_OnSourceThread()) {
        TTML_ERROR("Stop from a source callback refused");
        return;
    }
    std::lock_guard<std::mutex> control(m_controlLock);
    m_StopThread();
}

void CTTMLSource::Deinitialize()
{
    if (m_OnSourceThread()) {
        TTML_ERROR("Deinitialize from a source callback refused");
        return;
    }
    std::lock_guard<std::mutex> control(m_controlLock);
    m_StopThread();
    m_feed.Clear();
}

void CTTMLSource::m_Teardown(bool bNotify)
{
    {
        std::lock_guard<std::mutex> control(m_controlLock);
        m_StopThread();
        m_feed.Clear();
        m_tornDown = true;
    }
    std::lock_guard<std::mutex> lock(m_deliveryLock);
    // The listener hears that the source goes away, so it stops using it. It
    // runs as a delivery: its UnregisterCallback takes the in-callback path.
    if (bNotify && m_callback) {
        const CTTMLSource* pOuter = tCurrentSource;
        tCurrentSource = this;
        TTML_INFO("Sending %s (%d)", MessageName(TTML_SOURCE_MSG_INVALIDATE), TTML_SOURCE_MSG_INVALIDATE);
        m_callback(TTML_SOURCE_MSG_INVALIDATE, m_userData);
        tCurrentSource = pOuter;
    }
    m_callback = nullptr;
    m_userData = nullptr;
}

void CTTMLSource::Destroy()
{
    if (m_OnSourceThread()) {
        TTML_ERROR("Destroy from a source callback refused");
        return;
    }
    m_Teardown(true);
    delete this;
}

void CTTMLSource::m_ApplyLocked(const SourceFeedItem& item)
{
    switch (item.msgId) {
    case TTML_SOURCE_MSG_START:
        if (m_clock.IsStopped())
            m_clock.Start();
        break;
    case TTML_SOURCE_MSG_STOP:
        m_clock.Stop();
        break;
    case TTML_SOURCE_MSG_PAUSE:
        m_clock.Pause();
        break;
    case TTML_SOURCE_MSG_RESUME:
        m_clock.Resume();
        break;
    case TTML_SOURCE_MSG_SEEK_START:
        m_clock.Seek(item.position);
        break;
    case TTML_SOURCE_MSG_FONT_ERROR:
        m_fontErrors = item.fonts;
        break;
    default:
        break;
    }
}

void CTTMLSource::m_Run()
{
    tCurrentSource = this;
    pthread_setname_np(pthread_self(), "Source");
    TTML_INFO("");

    // The feed does not change while the thread runs: every writer stops it first.
    const std::vector<SourceFeedItem>& items = m_feed.Items();
    std::unique_lock<std::mutex> lock(m_stateLock);
    while (!m_stopRequested) {
        int msgId = -1;
        const SourceFeedItem* item = nullptr;
        if (!m_requests.empty()) {
            msgId = m_requests.front();
            m_requests.pop_front();
        } else if (m_next < items.size()) {
            // Far-future items (built in code) must not overflow the time point.
            const long long kFarMs = 1000LL * 3600 * 24 * 365 * 100;
            auto due = m_startTime + std::chrono::milliseconds(std::min(items[m_next].at, kFarMs));
            if (std::chrono::steady_clock::now() < due) {
                m_wake.wait_until(lock, due);
                continue;
            }
            item = &items[m_next++];
            msgId = item->msgId;
            // The clock moves before the message goes out, so a receiver
            // asking for the media time sees the new state.
            m_ApplyLocked(*item);
        } else {
            m_wake.wait(lock);
            continue;
        }
        lock.unlock();
        m_Deliver(msgId, item);
        lock.lock();
    }
    TTML_INFO("Source thread ends");
    tCurrentSource = nullptr;
}

void CTTMLSource::m_Deliver(int msgId, const SourceFeedItem* item)
{
    std::lock_guard<std::mutex> lock(m_deliveryLock);
    if (!m_callback) {
        TTML_INFO("No callback; %s dropped", MessageName(msgId));
        return;
    }
    TTML_INFO("Sending %s (%d)", MessageName(msgId), msgId);
    switch (msgId) {
    case TTML_SOURCE_MSG_XML_DATA: {
        SubRawData* pData = new (std::nothrow) SubRawData;
        TTML_ASSERT(pData);
        pData->profile = item->profile;
        pData->timeStamp = item->timeStamp;
        pData->segmentBegin = item->segmentBegin;
        pData->segmentEnd = item->segmentEnd;
        pData->url = item->url;
        pData->xmlData = item->xmlData;
        pData->subSampleData = item->subSampleData;
        pData->pCore = m_userData;
        m_callback(msgId, pData);
        break;
    }
    case TTML_SOURCE_MSG_START: {
        StartNotifyData data;
        data.bandMode = item->bandMode;
        data.pCore = m_userData;
        m_callback(msgId, &data);
        break;
    }
    case TTML_SOURCE_MSG_SEEK_START: {
        SeekNotifyData data;
        data.position = item->position;
        data.pCore = m_userData;
        m_callback(msgId, &data);
        break;
    }
    default:
        m_callback(msgId, m_userData);
        break;
    }
}

}  // namespace TTML
