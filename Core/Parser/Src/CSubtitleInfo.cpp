#include "CSubtitleInfo.h"

#include "TTMLAttr.h"
#include "TTMLLimits.h"
#include "TTMLLog.h"
#include "Util.h"

#include <algorithm>
#include <cstdlib>

namespace TTML {

namespace {

using TimeInterval = CSubtitleInfo::TimeInterval;

// Each pair of consecutive points of a group becomes a split interval.
void FlushGroup(std::vector<unsigned long long>& points, std::vector<TimeInterval>& splits)
{
    std::sort(points.begin(), points.end());
    points.erase(std::unique(points.begin(), points.end()), points.end());
    for (size_t i = 1; i < points.size(); ++i)
        splits.emplace_back(points[i - 1], points[i]);
    points.clear();
}

// The working lists of one split. They stay with the thread between
// documents, so that a split does not fault fresh pages in after every heap
// trim; a list grown past kKeptEntries is given back when the split ends.
class SplitLists {
public:
    using Start = std::pair<unsigned long long, size_t>;  // (begin, index)

    // Lent to one split at a time (a split does not nest) and emptied when
    // the lease ends, whichever way the split ends.
    class Lease {
    public:
        Lease() : m_lists(ForThisThread()) {}
        ~Lease() { m_lists.m_Clear(); }
        Lease(const Lease&) = delete;
        Lease& operator=(const Lease&) = delete;
        SplitLists& Get() { return m_lists; }

    private:
        SplitLists& m_lists;
    };

    std::vector<TimeInterval> keys;
    std::vector<TimeInterval> splits;
    std::vector<unsigned long long> points;
    std::vector<Start> byBegin;
    std::vector<size_t> active;
    std::vector<size_t> covering;

private:
    static constexpr size_t kKeptEntries = 8192;

    static SplitLists& ForThisThread()
    {
        static thread_local SplitLists lists;
        return lists;
    }
    template <typename T>
    static void m_Drop(std::vector<T>& list)
    {
        if (list.capacity() > kKeptEntries)
            std::vector<T>().swap(list);
        else
            list.clear();
    }
    void m_Clear()
    {
        m_Drop(keys);
        m_Drop(splits);
        m_Drop(points);
        m_Drop(byBegin);
        m_Drop(active);
        m_Drop(covering);
    }
};

bool IsStrictlyAscending(const std::vector<TimeInterval>& v)
{
    return std::adjacent_find(v.begin(), v.end(), [](const TimeInterval& a, const TimeInterval& b) {
               return !(a < b);
           }) == v.end();
}

}  // namespace

CSubtitleInfo::~CSubtitleInfo()
{
    m_timedElements.clear();
    for (auto& kv : m_splitIntervals)
        kv.second.clear();
    m_splitIntervals.clear();
    m_untimedElements.clear();
}

void CSubtitleInfo::AddElement(unsigned long long begin, unsigned long long end, CElementSPTR& element)
{
    if (begin <= end && !(begin == 0 && end == 0)) {
        m_timedElements.push_back({begin, end, element});
        return;
    }
    // (0, 0) is how the walker adds an element without timing: not logged.
    if (begin > end)
        TTML_INFO("Element is discarded with beginTime=[%llu], endTime[%llu]", begin, end);
    m_untimedElements.push_back(element);
}

int CSubtitleInfo::SplitSubtitleInfoData()
{
    if (m_timedElements.empty()) {
        TTML_WARN("XML Document Error: No text element in subtitle list");
        return ERR_INVALID;
    }
    // Rebuilt from scratch so a second call gives the same result.
    m_splitIntervals.clear();

    SplitLists::Lease lease;
    SplitLists& lists = lease.Get();
    std::vector<TimeInterval>& keys = lists.keys;
    keys.reserve(m_timedElements.size());
    for (const auto& t : m_timedElements)
        keys.emplace_back(t.begin, t.end);
    std::sort(keys.begin(), keys.end(), Sorter());
    keys.erase(std::unique(keys.begin(), keys.end()), keys.end());

    // Neighbours in end order that overlap or touch share a group.
    std::vector<TimeInterval>& splits = lists.splits;
    std::vector<unsigned long long>& points = lists.points;
    for (size_t i = 0; i < keys.size(); ++i) {
        points.push_back(keys[i].first);
        points.push_back(keys[i].second);
        if (i + 1 < keys.size() && keys[i].second < keys[i + 1].first)
            FlushGroup(points, splits);
    }
    m_lastEndTime = *std::max_element(points.begin(), points.end());
    FlushGroup(points, splits);

    // Groups may overlap in time, so the same interval can come twice; in
    // the usual document they are already strictly ascending.
    if (!IsStrictlyAscending(splits)) {
        std::sort(splits.begin(), splits.end());
        splits.erase(std::unique(splits.begin(), splits.end()), splits.end());
    }
    if (splits.size() > Limits::kMaxIntervals) {
        TTML_WARN("Too many split intervals: %zu (limit %zu); refused", splits.size(), Limits::kMaxIntervals);
        return ERR_INVALID;
    }
    for (const auto& s : splits)
        m_splitIntervals.emplace_hint(m_splitIntervals.end(), s, std::vector<CElementSPTR>());

    // Fill by a sweep over the split intervals in (begin, end) order instead
    // of scanning every element for every interval. `active` holds, by
    // insertion index, the elements begun at or before the current begin
    // that end after it; an element ending at or before a begin can cover
    // no later interval, whose ends all lie beyond that begin.
    const size_t count = m_timedElements.size();
    std::vector<SplitLists::Start>& byBegin = lists.byBegin;
    byBegin.resize(count);
    for (size_t i = 0; i < count; ++i)
        byBegin[i] = {m_timedElements[i].begin, i};
    if (!std::is_sorted(byBegin.begin(), byBegin.end()))
        std::sort(byBegin.begin(), byBegin.end());

    std::vector<size_t>& active = lists.active;  // ascending; few entries in real documents
    std::vector<size_t>& covering = lists.covering;
    size_t next = 0;
    size_t entries = 0;
    for (auto& kv : m_splitIntervals) {
        const unsigned long long s = kv.first.first;
        const unsigned long long e = kv.first.second;
        for (; next < count && byBegin[next].first <= s; ++next) {
            const size_t idx = byBegin[next].second;
            if (m_timedElements[idx].end > s)
                active.insert(std::upper_bound(active.begin(), active.end(), idx), idx);
        }
        covering.clear();
        size_t kept = 0;
        for (size_t idx : active) {
            const unsigned long long end = m_timedElements[idx].end;
            if (end <= s)
                continue;
            active[kept++] = idx;
            if (end >= e)
                covering.push_back(idx);
        }
        active.resize(kept);
        // Entries grow with the square of the elements shown at once; stop
        // before the lists outgrow what the document itself can justify.
        entries += covering.size();
        if (entries > Limits::kMaxIntervalEntries) {
            TTML_WARN("Too many interval entries: %zu by %llu ms (limit %zu); refused", entries, s,
                      Limits::kMaxIntervalEntries);
            m_splitIntervals.clear();
            return ERR_INVALID;
        }
        kv.second.reserve(covering.size());
        for (size_t idx : covering)
            kv.second.push_back(m_timedElements[idx].element);
    }
    return ERR_NONE;
}

void CSubtitleInfo::GetUniqueKeys(std::set<TimeInterval>& keys) const
{
    for (const auto& kv : m_splitIntervals)
        keys.insert(keys.end(), kv.first);
}

void CSubtitleInfo::GetElementListForInterval(TimeInterval interval, std::list<CElementSPTR>& elements) const
{
    auto it = m_splitIntervals.find(interval);
    if (it == m_splitIntervals.end())
        return;
    elements.insert(elements.end(), it->second.begin(), it->second.end());
}

void CSubtitleInfo::SetTickRate(const std::string& tickRate)
{
    m_tickRate = static_cast<int>(std::strtol(tickRate.c_str(), nullptr, 10));
}

void CSubtitleInfo::SetFrameRate(const std::string& frameRate, const std::string& multiplier)
{
    TTML_INFO("frameRateMultiplier=%s, frameRate: %s", multiplier.c_str(), frameRate.c_str());
    m_effectiveFrameRate = static_cast<double>(std::strtoll(frameRate.c_str(), nullptr, 10));
    if (multiplier == "1 1")
        return;

    const std::vector<std::string> parts = StrSplit(multiplier, " ");
    const int numerator = static_cast<int>(std::strtol(parts[0].c_str(), nullptr, 10));
    const int denominator = parts.size() > 1 ? static_cast<int>(std::strtol(parts[1].c_str(), nullptr, 10)) : 0;
    TTML_INFO("frameRateMultiplier: numerator=%d, denominator=%d", numerator, denominator);
    if (numerator != 0 && denominator != 0) {
        m_effectiveFrameRate *= static_cast<double>(numerator) / static_cast<double>(denominator);
        TTML_INFO("After applying frameRateMultiplier, final m_effectiveFrameRate: %f", m_effectiveFrameRate);
    }
}

void CSubtitleInfo::SetSubtitleSegmentTimings(unsigned long long start, unsigned long long end)
{
    m_segmentStart = start;
    m_segmentEnd = end;
}

void CSubtitleInfo::ApplySubtitleSegmentBoundaries(unsigned long long& time) const
{
    if (time < m_segmentStart) {
        TTML_INFO("Subtitle time has been restricted from [%llu] to [%llu]", time, m_segmentStart);
        time = m_segmentStart;
    }
}

}  // namespace TTML
