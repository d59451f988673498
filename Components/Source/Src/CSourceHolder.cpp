#include "CSourceHolder.h"

#include <cstdlib>
#include <mutex>
#include <new>

#include "CTTMLSource.h"
#include "TTMLLog.h"

namespace TTML {

namespace {

struct HolderState {
    std::mutex lock;
    ITTMLSource* installed = nullptr;  // not owned
    CTTMLSource* owned = nullptr;      // made from the environment

    void DestroyOwned()
    {
        if (owned) {
            owned->Destroy();
            owned = nullptr;
        }
    }
    // The process is ending: the source thread must not outlive the statics it uses.
    ~HolderState() { DestroyOwned(); }
};

HolderState& State()
{
    static HolderState state;
    return state;
}

}  // namespace

ITTMLSource* CSourceHolder::GetSource()
{
    HolderState& state = State();
    std::lock_guard<std::mutex> lock(state.lock);
    if (state.installed)
        return state.installed;
    if (state.owned)
        return state.owned;

    const char* path = std::getenv(kFeedVariable);
    if (!path || !*path)
        path = std::getenv("INTERTITLE_FEED");
    if (!path || !*path)
        return nullptr;
    state.owned = new (std::nothrow) CTTMLSource;
    TTML_ASSERT(state.owned);
    TTML_INFO("Broadband source feed: %s", path);
    // A refused feed still gives a source; its Start then plays nothing.
    state.owned->LoadFeed(path);
    return state.owned;
}

void CSourceHolder::SetSource(ITTMLSource* source)
{
    HolderState& state = State();
    std::lock_guard<std::mutex> lock(state.lock);
    state.DestroyOwned();
    state.installed = source;
}

void CSourceHolder::Reset()
{
    HolderState& state = State();
    std::lock_guard<std::mutex> lock(state.lock);
    state.DestroyOwned();
    state.installed = nullptr;
}

}  // namespace TTML
