#ifndef TTML_SOURCE_CSOURCEFEED_H
#define TTML_SOURCE_CSOURCEFEED_H

#include "TTMLTypes.h"

#include <list>
#include <string>
#include <vector>

namespace TTML {

// One scheduled message of a feed. Which fields count depends on msgId
// (a TTMLSourceMessage); the rest keep their defaults.
struct SourceFeedItem {
    long long at = 0;   // ms of wall-clock time after Start
    int msgId = 0;      // TTMLSourceMessage
    int line = 0;       // line in the feed script, 0 when built in code

    // document (0)
    std::string url;                      // resolved file name, handed on as SubRawData::url
    std::string xmlData;                  // the document text, read when the feed is loaded
    int profile = TTML_PROFILE_NONE;      // TTMLProfile
    long long timeStamp = 0;              // ms
    unsigned long long segmentBegin = 0;  // ms
    unsigned long long segmentEnd = 0;    // ms
    std::vector<std::string> images;      // resolved sub-sample image files
    std::string subSampleData;            // those files packed by CSubSampleBuilder, handed on as
                                          // SubRawData::subSampleData (set by the loader; items
                                          // built in code fill it themselves)

    bool bandMode = false;           // start (1)
    long long position = 0;          // seek start (6), ms
    std::list<std::string> fonts;    // downloadable fonts failed (13)
};

// What a source plays: a subtitle mode and a list of messages in time order.
//
// A feed comes from a path, which is one of:
// - a TTML document (the file starts with '<'): start (band mode off), the
//   document, both at 0 ms; mode 0;
// - a folder: start, then each *.ttml and *.xml file in name order, all at 0 ms; mode 0;
// - a feed script, one command per line:
//
//     # comment (whole line); blank lines are ignored
//     mode 9                       subtitle mode bit set, at most once (default 0)
//     at 0 start band=0            start; band=1 for in-band segments (default 0)
//     at 0 document a.ttml profile=2 timestamp=-500 segment=0,10000 images=a.png,b.png
//     at 4000 pause
//     at 6000 resume
//     at 7000 seek 60000           seek start: the media clock jumps to 60000 ms
//     seekcompleted                without "at": the time of the line before
//     at 9000 fonts-failed f1.ttf,f2.ttf
//     at 9500 menu-register        also menu-unregister, menu-lang, show, hide,
//     at 9900 stop                 invalidate
//
//   Times are ms of wall-clock time after Start, not media time, so a
//   resume can be scheduled while the media clock is paused; they may not
//   go backwards. Document options: profile -1..2, timestamp signed ms,
//   segment begin,end with begin <= end, images comma-separated. File names
//   have no spaces; relative ones resolve against the script's folder;
//   documents and images must exist when the feed is loaded, and the images
//   are read then into the item's sub-sample data (image 1 is the first
//   listed). Whether they decode is judged by the receiver.
//
// Effects on the source's media clock: it starts with Start; pause and
// resume freeze and continue it; seek moves it; stop stops it (no media
// time until a later start, which restarts it from 0).
//
// A feed that does not load is empty; every refusal is one error line
// "Feed <file>:<line>: <what>". Not thread-safe: a source copies its feed.
class CSourceFeed {
public:
    // Loads a script, a document or a folder; replaces what was held.
    // False (feed left empty) with an error line when it cannot be used.
    bool Load(const std::string& path);
    // Parses script text; `name` is used in error lines, relative file
    // names resolve against `baseDir`.
    bool LoadScript(const std::string& text, const std::string& name, const std::string& baseDir);

    // Appends an item built in code; false when its time is before the last item's.
    bool Add(const SourceFeedItem& item);
    void SetMode(int mode) { m_mode = mode; }
    int GetMode() const { return m_mode; }
    const std::vector<SourceFeedItem>& Items() const { return m_items; }
    bool IsEmpty() const { return m_items.empty(); }
    // The path it was loaded from, empty when built in code.
    const std::string& GetName() const { return m_name; }
    void Clear();

    // Reads a whole file, bytes as they are; false when it cannot be read,
    // with the reason in *pWhy when given ("is a folder", the system's
    // reason otherwise). A folder is refused rather than read as empty.
    static bool ReadFile(const std::string& path, std::string& out, std::string* pWhy = nullptr);

private:
    bool m_LoadDocument(const std::string& path);
    bool m_LoadFolder(const std::string& path);
    bool m_ParseLine(const std::string& line, int lineNo, const std::string& name, const std::string& baseDir,
                     bool& modeSeen, long long& lastAt);

    int m_mode = 0;
    std::string m_name;
    std::vector<SourceFeedItem> m_items;
};

}  // namespace TTML

#endif
