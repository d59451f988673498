#ifndef TTML_SOURCE_ITTMLSOURCE_H
#define TTML_SOURCE_ITTMLSOURCE_H

#include <list>
#include <string>

namespace TTML {

// Message ids a source sends to its registered callback, with their payloads
// ("core" is the user data given to RegisterCallback):
enum TTMLSourceMessage {
    TTML_SOURCE_MSG_XML_DATA = 0,         // SubRawData*, allocated with new; the receiver deletes it
    TTML_SOURCE_MSG_START = 1,            // StartNotifyData*, valid during the call
    TTML_SOURCE_MSG_STOP = 2,             // core
    TTML_SOURCE_MSG_PAUSE = 3,            // core
    TTML_SOURCE_MSG_RESUME = 4,           // core
    TTML_SOURCE_MSG_INVALIDATE = 5,       // core; the source is going away
    TTML_SOURCE_MSG_SEEK_START = 6,       // SeekNotifyData*, valid during the call
    TTML_SOURCE_MSG_SEEK_COMPLETED = 7,   // core
    TTML_SOURCE_MSG_MENU_REGISTER = 8,    // core (receivers ignore it)
    TTML_SOURCE_MSG_MENU_UNREGISTER = 9,  // core (receivers ignore it)
    TTML_SOURCE_MSG_MENU_LANG = 10,       // core
    TTML_SOURCE_MSG_SHOW = 11,            // core
    TTML_SOURCE_MSG_HIDE = 12,            // core
    TTML_SOURCE_MSG_FONT_ERROR = 13,      // core; the names are read back with GetFontErrorList
    TTML_SOURCE_MSG_COUNT = 14
};

// Receives every message of a source, on the source's own thread.
typedef void (*TTMLSourceCallback)(int msgId, void* data);

// What the core sees of a subtitle source.
class ITTMLSource {
public:
    virtual ~ITTMLSource() {}

    // Messages start to arrive, each on the source's own thread. A second
    // registration replaces the first. False (and a warning) for a null callback.
    virtual bool RegisterCallback(TTMLSourceCallback callback, void* userData) = 0;
    // No message arrives after this returns: it waits for a delivery in
    // progress. Must not be called while holding a lock that a callback takes.
    // Called from inside a callback of the same source, it only forgets the
    // callback (that delivery is the last one).
    virtual void UnregisterCallback() = 0;
    // 0 and the media time (ms) written while the media clock runs or is
    // paused; nonzero and nothing written before playback or after a stop,
    // or for a null pointer. Any thread.
    virtual int GetMediaTime(long long* pTime) = 0;
    // Failed downloadable-font references, as of the last message 13. Any thread.
    virtual std::list<std::string> GetFontErrorList() = 0;
    // The subtitle mode bit set; fixed per feed.
    virtual int GetSubtitleMode() = 0;
};

}  // namespace TTML

#endif
