#ifndef TTML_PARSER_CSUBTITLEINFO_H
#define TTML_PARSER_CSUBTITLEINFO_H

#include "CElement.h"

#include <list>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace TTML {

// One parsed document: the parameters its root sets, the parser's time
// stamp and segment bounds, and every kept element with its interval.
// SplitSubtitleInfoData turns the element intervals into consecutive split
// intervals, each listing the elements visible during all of it.
// Times are unsigned milliseconds on the document timeline.
// One owner at a time: the parser thread fills and splits it, then hands it
// whole to the engine, which only reads it (and the renderer reads the
// elements it lists). Takes no lock.
class CSubtitleInfo {
public:
    // (begin, end) in ms.
    using TimeInterval = std::pair<unsigned long long, unsigned long long>;

    // Orders intervals by end, then begin: the grouping order of the split.
    struct Sorter {
        bool operator()(const TimeInterval& a, const TimeInterval& b) const
        {
            return a.second < b.second || (a.second == b.second && a.first < b.first);
        }
    };

    CSubtitleInfo() = default;
    ~CSubtitleInfo();

    CSubtitleInfo(const CSubtitleInfo&) = delete;
    CSubtitleInfo& operator=(const CSubtitleInfo&) = delete;

    // A usable interval (begin <= end, not both 0) makes the element timed;
    // otherwise it is only kept alive (so the renderer can still reach it as
    // a parent) and is never listed. begin > end is logged.
    void AddElement(unsigned long long begin, unsigned long long end, CElementSPTR& element);
    // Room for `count` elements of either kind, so that adding them never
    // moves the ones already added.
    void ReserveElements(size_t count)
    {
        m_timedElements.reserve(count);
        m_untimedElements.reserve(count);
    }
    // Builds the split intervals and the last end time. ERR_NONE, or
    // ERR_INVALID with a warning when there is no timed element, or when the
    // split would exceed Limits::kMaxIntervals or kMaxIntervalEntries (then
    // no split interval is kept). Memory stays linear in the entries kept.
    int SplitSubtitleInfoData();
    // Inserts every split interval into `keys`.
    void GetUniqueKeys(std::set<TimeInterval>& keys) const;
    // Appends the elements of `interval` when it is exactly a split
    // interval, in the order they were added; otherwise appends nothing.
    void GetElementListForInterval(TimeInterval interval, std::list<CElementSPTR>& elements) const;
    // Largest end of all timed elements (after the split).
    unsigned long long GetLastEndTime() const { return m_lastEndTime; }

    // Stored as passed, unchecked.
    void SetTimeBase(std::string& timeBase) { m_timeBase = timeBase; }
    std::string GetTimeBase() const { return m_timeBase; }
    void SetCellResolution(std::string& cellResolution) { m_cellResolution = cellResolution; }
    std::string GetCellResolution() const { return m_cellResolution; }
    void SetTTExtent(std::string& extent) { m_extent = extent; }
    std::string GetTTExtent() const { return m_extent; }
    void SetAspectRatio(std::string& aspectRatio) { m_aspectRatio = aspectRatio; }
    std::string GetAspectRatio() const { return m_aspectRatio; }

    // The integer the (validated) text begins with.
    void SetTickRate(const std::string& tickRate);
    int GetTickRate() const { return m_tickRate; }
    // frameRate: digits; multiplier: "numerator denominator". The effective
    // rate is frameRate * numerator / denominator when both are non-zero.
    void SetFrameRate(const std::string& frameRate, const std::string& multiplier);
    double GetEffectiveFrameRate() const { return m_effectiveFrameRate; }

    // Not interpreted here; set and read by the parser and the engine.
    void SetTimeStamp(long long timeStamp) { m_timeStamp = timeStamp; }
    long long GetTimeStamp() const { return m_timeStamp; }

    void SetSubtitleSegmentTimings(unsigned long long start, unsigned long long end);
    // Raises a time below the segment start to the start (logged); the
    // segment end is not applied.
    void ApplySubtitleSegmentBoundaries(unsigned long long& time) const;

private:
    struct TimedElement {
        unsigned long long begin;
        unsigned long long end;
        CElementSPTR element;
    };

    double m_effectiveFrameRate = 0;
    int m_tickRate = 0;
    long long m_timeStamp = 0;
    unsigned long long m_segmentStart = 0;
    unsigned long long m_segmentEnd = 0;
    std::string m_timeBase;
    std::string m_cellResolution = "32 15";
    std::string m_extent;
    std::string m_aspectRatio;
    std::vector<TimedElement> m_timedElements;  // in AddElement order
    std::map<TimeInterval, std::vector<CElementSPTR>> m_splitIntervals;
    std::vector<CElementSPTR> m_untimedElements;
    unsigned long long m_lastEndTime = 0;
};

}  // namespace TTML

#endif
