#include "CTVService.h"

#include "TTMLLog.h"

#include <cstdlib>
#include <fstream>
#include <sstream>

namespace TTML {

namespace {

const TTMLRect<int> kFullScreen = {0, 0, 1920, 1080};

}  // namespace

CTVService::CTVService()
{
    m_ResetLocked();
    const char* config = getenv("INTERTITLE_TVSERVICE");
    if (config && *config && !LoadConfig(config))
        TTML_WARN("TV service configuration not read: %s", config);
}

CTVService& CTVService::GetInstance()
{
    static CTVService* pService = new CTVService();  // lives as long as the process
    return *pService;
}

void CTVService::m_ResetLocked()
{
    m_terminated = false;
    m_tuned = false;
    m_serviceId = 0;
    m_tvMode = TV_MODE_NONE;
    m_tracks.clear();
    m_preferred = -1;
    m_current = -1;
    m_video = kFullScreen;
    m_resizes = 0;
}

void CTVService::Reset()
{
    {
        std::lock_guard<std::mutex> guard(m_lock);
        m_ResetLocked();
    }
    m_NotifyVideo();
}

bool CTVService::LoadConfig(const std::string& path)
{
    Reset();
    std::ifstream in(path);
    if (!in)
        return false;
    bool terminated = false;
    bool tuned = false;
    unsigned long long serviceId = 0;
    int tvMode = TV_MODE_DTV;
    std::vector<Track> tracks;
    int preferred = -1;
    int current = -1;
    std::string line;
    while (std::getline(in, line)) {
        line = line.substr(0, line.find('#'));
        std::istringstream fields(line);
        std::string word;
        if (!(fields >> word))
            continue;
        if (word == "terminated") {
            int value = 0;
            if (!(fields >> value))
                return false;
            terminated = value != 0;
        } else if (word == "service") {
            if (!(fields >> serviceId))
                return false;
            fields >> tvMode;
            tuned = true;
        } else if (word == "caption") {
            Track track;
            if (!(fields >> track.id >> track.lang) || track.lang.size() != 3)
                return false;
            while (fields >> word) {
                if (word == "preferred")
                    preferred = static_cast<int>(tracks.size());
                else if (word == "current")
                    current = static_cast<int>(tracks.size());
                else
                    return false;
            }
            tracks.push_back(track);
        } else {
            return false;
        }
    }
    SetService(tuned, serviceId, static_cast<TSTvMode>(tvMode));
    SetCaptionTracks(tracks, preferred, current);
    SetTerminated(terminated);
    return true;
}

void CTVService::SetTerminated(bool terminated)
{
    std::lock_guard<std::mutex> guard(m_lock);
    m_terminated = terminated;
}

bool CTVService::IsTerminated() const
{
    std::lock_guard<std::mutex> guard(m_lock);
    return m_terminated;
}

void CTVService::SetService(bool tuned, unsigned long long serviceId, TSTvMode mode)
{
    std::lock_guard<std::mutex> guard(m_lock);
    m_tuned = tuned;
    m_serviceId = tuned ? serviceId : 0;
    m_tvMode = tuned ? mode : TV_MODE_NONE;
}

bool CTVService::GetService(unsigned long long& serviceId, TSTvMode& mode) const
{
    std::lock_guard<std::mutex> guard(m_lock);
    if (!m_tuned)
        return false;
    serviceId = m_serviceId;
    mode = m_tvMode;
    return true;
}

void CTVService::SetCaptionTracks(const std::vector<Track>& tracks, int preferred, int current)
{
    std::lock_guard<std::mutex> guard(m_lock);
    const int n = static_cast<int>(tracks.size());
    m_tracks = tracks;
    m_preferred = preferred >= 0 && preferred < n ? preferred : -1;
    m_current = current >= 0 && current < n ? current : -1;
}

bool CTVService::GetCaptionCount(unsigned long long serviceId, unsigned int& count) const
{
    std::lock_guard<std::mutex> guard(m_lock);
    if (!m_tuned || serviceId != m_serviceId)
        return false;
    count = static_cast<unsigned int>(m_tracks.size());
    return true;
}

bool CTVService::GetCaption(bool preferred, TCCaption& caption, unsigned int& index) const
{
    std::lock_guard<std::mutex> guard(m_lock);
    const int at = preferred ? m_preferred : m_current;
    if (!m_tuned || at < 0)
        return false;
    const Track& track = m_tracks[at];
    caption.id = track.id;
    caption.lang = (static_cast<unsigned char>(track.lang[0]) << 16) | (static_cast<unsigned char>(track.lang[1]) << 8) |
                   static_cast<unsigned char>(track.lang[2]);
    index = static_cast<unsigned int>(at);
    return true;
}

bool CTVService::SetCurrentCaption(unsigned int index)
{
    std::lock_guard<std::mutex> guard(m_lock);
    if (!m_tuned || index >= m_tracks.size())
        return false;
    m_current = static_cast<int>(index);
    return true;
}

TTMLRect<int> CTVService::GetVideoRect() const
{
    std::lock_guard<std::mutex> guard(m_lock);
    return m_video;
}

bool CTVService::SetVideoRect(const TTMLRect<int>& rect)
{
    {
        std::lock_guard<std::mutex> guard(m_lock);
        if (rect.w <= 0 || rect.h <= 0 || rect.x < 0 || rect.y < 0 || rect.x + rect.w > kFullScreen.w ||
            rect.y + rect.h > kFullScreen.h)
            return false;
        m_video = rect;
        ++m_resizes;
    }
    m_NotifyVideo();
    return true;
}

int CTVService::GetResizeCount() const
{
    std::lock_guard<std::mutex> guard(m_lock);
    return m_resizes;
}

int CTVService::AddVideoObserver(std::function<void()> observer)
{
    std::lock_guard<std::mutex> guard(m_lock);
    m_observers.emplace_back(m_nextObserver, std::move(observer));
    return m_nextObserver++;
}

void CTVService::RemoveVideoObserver(int id)
{
    std::lock_guard<std::mutex> guard(m_lock);
    for (auto it = m_observers.begin(); it != m_observers.end(); ++it) {
        if (it->first == id) {
            m_observers.erase(it);
            return;
        }
    }
}

void CTVService::m_NotifyVideo()
{
    std::vector<std::function<void()>> observers;
    {
        std::lock_guard<std::mutex> guard(m_lock);
        for (const auto& o : m_observers)
            observers.push_back(o.second);
    }
    for (const auto& fn : observers)
        fn();
}

}  // namespace TTML
