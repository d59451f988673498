#ifndef TTML_TVSERVICE_CTVSERVICE_H
#define TTML_TVSERVICE_CTVSERVICE_H

#include "TTMLTypes.h"
#include "TVServiceTypes.h"

#include <functional>
#include <mutex>
#include <string>
#include <vector>

namespace TTML {

// The TV service's state, one per process: whether it runs, the tuned
// service and its caption tracks, and the video window's rectangle on the
// 1920x1080 screen. The objects TVServiceAPI hands out work on it.
//
// On first use it is configured from the file named by INTERTITLE_TVSERVICE
// when set (see LoadConfig); tests configure it in code.
// Thread: every operation may be called from any thread.
class CTVService {
public:
    struct Track {
        std::string id;
        std::string lang;  // three letters
    };

    static CTVService& GetInstance();

    // Running, nothing tuned, no tracks, full-screen video, resize count 0.
    void Reset();
    // Lines of "terminated 0|1", "service ID [TVMODE]", "caption ID LANG
    // [preferred] [current]"; '#' starts a comment. Reset first. False (state
    // reset) when the file cannot be read or a line is not understood.
    bool LoadConfig(const std::string& path);

    void SetTerminated(bool terminated);
    bool IsTerminated() const;

    // The service now watched; tuned false: none.
    void SetService(bool tuned, unsigned long long serviceId = 0, TSTvMode mode = TV_MODE_DTV);
    bool GetService(unsigned long long& serviceId, TSTvMode& mode) const;
    // Tracks of the tuned service; preferred and current are indices into
    // tracks, -1 for none.
    void SetCaptionTracks(const std::vector<Track>& tracks, int preferred, int current);
    // False when serviceId is not the tuned service.
    bool GetCaptionCount(unsigned long long serviceId, unsigned int& count) const;
    // which: preferred or current track. False when there is none.
    bool GetCaption(bool preferred, TCCaption& caption, unsigned int& index) const;
    // False when index names no track.
    bool SetCurrentCaption(unsigned int index);

    // The video window in screen pixels; full screen after Reset.
    TTMLRect<int> GetVideoRect() const;
    // False (nothing changes) for an empty rectangle or one leaving the screen.
    bool SetVideoRect(const TTMLRect<int>& rect);
    // Resizes and resets so far, failed ones excluded.
    int GetResizeCount() const;

    // Called after every change of the video rectangle, on the changing
    // thread, without the service's lock. Returns an id for RemoveVideoObserver.
    int AddVideoObserver(std::function<void()> observer);
    void RemoveVideoObserver(int id);

private:
    CTVService();
    void m_ResetLocked();
    void m_NotifyVideo();

    mutable std::mutex m_lock;
    bool m_terminated = false;
    bool m_tuned = false;
    unsigned long long m_serviceId = 0;
    TSTvMode m_tvMode = TV_MODE_NONE;
    std::vector<Track> m_tracks;
    int m_preferred = -1;
    int m_current = -1;
    TTMLRect<int> m_video;
    int m_resizes = 0;
    int m_nextObserver = 1;
    std::vector<std::pair<int, std::function<void()>>> m_observers;
};

}  // namespace TTML

#endif
