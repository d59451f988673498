#ifndef TTML_SOURCE_CTTMLSOURCE_H
#define TTML_SOURCE_CTTMLSOURCE_H

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>

#include "CMediaClock.h"
#include "CSourceFeed.h"
#include "ITTMLSource.h"
#include "ITTMLSourceControl.h"

namespace TTML {

// A source that plays a feed (CSourceFeed) against its own media clock.
//
// Start starts the media clock and a thread named "Source" that sleeps until
// the next item is due and sends it to the registered callback; ShowCaption
// and HideCaption queue messages 11 and 12 for that thread. Start on a
// playing source plays the feed again from its beginning (the shared
// broadband source is started by every new view). Without a callback the
// messages are dropped.
//
// Threads: the callback runs on the source thread with no lock of the
// source held except the delivery lock, which UnregisterCallback takes; so a
// callback may call GetMediaTime, GetFontErrorList, GetSubtitleMode,
// RegisterCallback, UnregisterCallback, ShowCaption and HideCaption, but not
// Start, Stop, Deinitialize, SetFeed, LoadFeed or Destroy (refused with an
// error). All operations may come from any other thread.
class CTTMLSource : public ITTMLSource, public ITTMLSourceControl {
public:
    // A source with nothing to play until SetFeed or LoadFeed.
    CTTMLSource();
    // Calls the teardown of Destroy, with a warning, when Destroy was not called
    // (without message 5: whoever registered may be gone already).
    virtual ~CTTMLSource();

    // ITTMLSource
    bool RegisterCallback(TTMLSourceCallback callback, void* userData) override;
    void UnregisterCallback() override;
    int GetMediaTime(long long* pTime) override;
    std::list<std::string> GetFontErrorList() override;
    int GetSubtitleMode() override;

    // ITTMLSourceControl
    bool Start() override;
    bool ShowCaption() override;
    bool HideCaption() override;
    void Stop() override;
    // Stops and forgets the feed (the subtitle mode stays).
    void Deinitialize() override;

    // Stops, sends message 5 (invalidate) to the registered callback on the
    // calling thread, forgets the feed and the callback, and deletes this object,
    // which must have been made with new. The pointer is invalid afterwards.
    virtual void Destroy();

    // Copies the feed to play from the next Start; the subtitle mode becomes
    // the feed's. False while playing.
    bool SetFeed(const CSourceFeed& feed);
    // Loads a feed from a path (see CSourceFeed::Load). False while playing
    // or when the feed is refused; a refused feed leaves nothing to play.
    bool LoadFeed(const std::string& path);
    bool HasFeed();
    bool IsPlaying();

protected:
    // For the broadcast sources: loads the feed named by the environment
    // variable `variable`, else by INTERTITLE_FEED; without either, a warning
    // naming `kind` and nothing to play.
    void t_LoadFeedFromEnvironment(const char* variable, const char* kind);

private:
    CTTMLSource(const CTTMLSource&) = delete;
    CTTMLSource& operator=(const CTTMLSource&) = delete;

    void m_Run();
    void m_ApplyLocked(const SourceFeedItem& item);
    void m_Deliver(int msgId, const SourceFeedItem* item);
    void m_StopThread();
    // bNotify: message 5 goes to the registered callback first.
    void m_Teardown(bool bNotify);
    bool m_Enqueue(int msgId, const char* what);
    bool m_OnSourceThread() const;

    // Control operations are serialised; the thread never takes this lock.
    std::mutex m_controlLock;

    // Guards what the thread and the other threads share, except the callback.
    std::mutex m_stateLock;
    std::condition_variable m_wake;
    bool m_stopRequested = false;
    bool m_playing = false;
    std::deque<int> m_requests;   // show/hide from the control calls
    size_t m_next = 0;            // next feed item
    std::chrono::steady_clock::time_point m_startTime;
    std::list<std::string> m_fontErrors;

    // Held during each delivery and by UnregisterCallback.
    std::mutex m_deliveryLock;
    TTMLSourceCallback m_callback = nullptr;
    void* m_userData = nullptr;

    // Written only by control operations, with the thread not running.
    CSourceFeed m_feed;
    std::atomic<int> m_mode{0};
    bool m_tornDown = false;

    CMediaClock m_clock;
    std::thread m_thread;
};

}  // namespace TTML

#endif
