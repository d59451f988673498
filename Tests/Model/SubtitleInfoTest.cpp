// Subtitle document: timed and untimed elements, the split into intervals
// (fixed cases and a randomised comparison with a direct implementation of
// the grouping-and-scan rule), rates and segment bounds.

#include "CSubtitleInfo.h"
#include "LogCapture.h"

#include <gtest/gtest.h>

#include <random>
#include <sstream>
#include <tuple>

using namespace TTML;

namespace {

using Interval = CSubtitleInfo::TimeInterval;
// Split intervals with the types of their elements, in list order; the
// tests give every element its own type.
using Split = std::map<Interval, std::vector<int>>;

// "begin-end:type,type ..." in interval order.
std::string Describe(const Split& split)
{
    std::ostringstream os;
    for (const auto& kv : split) {
        os << (os.tellp() > 0 ? " " : "") << kv.first.first << "-" << kv.first.second << ":";
        for (size_t i = 0; i < kv.second.size(); ++i)
            os << (i ? "," : "") << kv.second[i];
    }
    return os.str();
}

// The split as the public queries give it.
std::string Describe(const CSubtitleInfo& info)
{
    std::set<Interval> keys;
    info.GetUniqueKeys(keys);
    Split split;
    for (const auto& k : keys) {
        std::list<CElementSPTR> list;
        info.GetElementListForInterval(k, list);
        auto& types = split[k];
        for (auto& e : list)
            types.push_back(e->GetType());
    }
    return Describe(split);
}

// Straight from the rule, for at least one timed element: keys by end then
// begin, neighbours that overlap or touch form a group, consecutive points of
// a group are split intervals, and each interval lists every element covering
// it, scanning all of them. Also gives the last end.
std::string BruteForce(const std::vector<std::pair<Interval, int>>& timed, unsigned long long& lastEnd)
{
    std::set<Interval, CSubtitleInfo::Sorter> keys;
    for (const auto& t : timed)
        keys.insert(t.first);
    Split split;
    std::set<unsigned long long> points;
    auto flush = [&] {
        for (auto it = points.begin(); it != points.end() && std::next(it) != points.end(); ++it)
            split[{*it, *std::next(it)}];
        points.clear();
    };
    for (auto it = keys.begin(); it != keys.end(); ++it) {
        points.insert(it->first);
        points.insert(it->second);
        auto next = std::next(it);
        if (next != keys.end() && it->second < next->first)
            flush();
    }
    lastEnd = *points.rbegin();
    flush();
    for (auto& kv : split)
        for (const auto& t : timed)
            if (t.first.first <= kv.first.first && t.first.second >= kv.first.second)
                kv.second.push_back(t.second);
    return Describe(split);
}

// ---- Fixed split cases -----------------------------------------------------------

// Element i has type i; the expectation is as Describe writes it.
TEST(SubtitleInfo, SplitOfFixedDocuments)
{
    const std::tuple<std::vector<Interval>, const char*, unsigned long long> cases[] = {
        {{{0, 1000}, {500, 1500}}, "0-500:0 500-1000:0,1 1000-1500:1", 1500},
        {{{0, 1000}, {1000, 2000}, {3000, 4000}}, "0-1000:0 1000-2000:1 3000-4000:2", 4000},
        // Listed in the order added, not by begin.
        {{{500, 1000}, {0, 1000}, {0, 1000}}, "0-500:1,2 500-1000:0,1,2", 1000},
        {{{1000, 1000}}, "", 1000},
        {{{1000, 1000}, {0, 2000}}, "0-1000:1 1000-2000:1", 2000},
        // 0-10 sorts before the gap, 5-40 into the later group: the groups'
        // intervals overlap in time.
        {{{0, 10}, {20, 30}, {5, 40}}, "0-10:0 5-20:2 20-30:1,2 30-40:2", 40},
    };
    for (const auto& [elements, expected, lastEnd] : cases) {
        CSubtitleInfo info;
        for (size_t i = 0; i < elements.size(); ++i) {
            auto e = std::make_shared<CElement>(static_cast<int>(i));
            info.AddElement(elements[i].first, elements[i].second, e);
        }
        ASSERT_EQ(0, info.SplitSubtitleInfoData()) << expected;
        EXPECT_EQ(expected, Describe(info));
        EXPECT_EQ(lastEnd, info.GetLastEndTime()) << expected;
    }
}

// ---- Untimed elements and failures ---------------------------------------------------

TEST(SubtitleInfo, NoTimedElementIsADocumentError)
{
    for (int untimed : {0, 2}) {
        CSubtitleInfo info;
        auto e = std::make_shared<CElement>(ELEM_P);
        for (int i = 0; i < untimed; ++i)
            info.AddElement(0, 0, e);
        LogCapture log;
        EXPECT_EQ(5, info.SplitSubtitleInfoData());
        EXPECT_TRUE(log.Has("XML Document Error: No text element in subtitle list", DLOG_WARN)) << log.Dump();
        EXPECT_EQ("", Describe(info));
    }
}

// Untimed (0, 0) elements are kept quietly; a reversed one is logged.
TEST(SubtitleInfo, UntimedElementsAreLoggedOnlyWhenReversedAndNeverListed)
{
    CSubtitleInfo info;
    auto timed = std::make_shared<CElement>(ELEM_SPAN);
    auto untimed = std::make_shared<CElement>(ELEM_P);
    LogCapture log;
    info.AddElement(0, 3000, timed);
    info.AddElement(2000, 1000, untimed);
    info.AddElement(0, 0, untimed);
    EXPECT_EQ(1u, log.Lines().size()) << log.Dump();
    EXPECT_EQ(1, log.Count("Element is discarded with beginTime=[2000], endTime[1000]", DLOG_INFO)) << log.Dump();
    ASSERT_EQ(0, info.SplitSubtitleInfoData());
    EXPECT_EQ("0-3000:" + std::to_string(ELEM_SPAN), Describe(info));
    EXPECT_EQ(3000u, info.GetLastEndTime());
}

// Spans link to their paragraph weakly; the document keeps untimed
// paragraphs alive so the renderer can still reach them.
TEST(SubtitleInfo, UntimedParentsOutliveTheWalker)
{
    CSubtitleInfo info;
    CElementSPTR span = std::make_shared<CElement>(ELEM_SPAN);
    {
        auto p = std::make_shared<CElement>(ELEM_P);
        span->SetParent(p);
        info.AddElement(0, 0, p);
        info.AddElement(1000, 2000, span);
    }
    span.reset();
    ASSERT_EQ(0, info.SplitSubtitleInfoData());
    std::list<CElementSPTR> list;
    info.GetElementListForInterval({1000, 2000}, list);
    ASSERT_EQ(1u, list.size());
    const CElementSPTR parent = list.front()->GetParent();
    ASSERT_NE(nullptr, parent);
    EXPECT_EQ(ELEM_P, parent->GetType());
}

TEST(SubtitleInfo, QueryAppendsOnlyForAnExactSplitInterval)
{
    CSubtitleInfo info;
    auto a = std::make_shared<CElement>(ELEM_SPAN);
    auto b = std::make_shared<CElement>(ELEM_SPAN);
    info.AddElement(0, 1000, a);
    info.AddElement(500, 1500, b);
    ASSERT_EQ(0, info.SplitSubtitleInfoData());
    auto marker = std::make_shared<CElement>(ELEM_BR);
    std::list<CElementSPTR> list{marker};
    for (Interval wrong : {Interval{0, 1500}, Interval{0, 1000}, Interval{500, 1500}, Interval{1500, 2000}})
        info.GetElementListForInterval(wrong, list);
    EXPECT_EQ((std::list<CElementSPTR>{marker}), list);
    info.GetElementListForInterval({500, 1000}, list);
    EXPECT_EQ((std::list<CElementSPTR>{marker, a, b}), list);
}

// ---- Randomised comparison with the direct rule ----------------------------------------

TEST(SubtitleInfo, SplitOfRandomDocumentsFollowsTheRule)
{
    const struct {
        unsigned seed;
        int maxElements;
        unsigned long long horizon;  // times in [0, horizon]
        unsigned long long maxLength;
    } regimes[] = {
        {1, 12, 20, 6},      // dense coincidences
        {2, 60, 400, 30},    // many short cues
        {3, 40, 100, 90},    // long overlaps
        {4, 30, 10000, 50},  // sparse, with gaps
        {5, 25, 30, 1},      // mostly zero length
    };
    for (const auto& r : regimes) {
        std::mt19937_64 rng(r.seed);
        for (int doc = 0; doc < 300; ++doc) {
            const int n = 1 + static_cast<int>(rng() % static_cast<unsigned>(r.maxElements));
            CSubtitleInfo info;
            std::vector<CElementSPTR> pool;
            std::vector<std::pair<Interval, int>> timed;
            for (int i = 0; i < n; ++i) {
                // Reuse an element now and then: the same element may be added twice.
                if (pool.empty() || rng() % 8 != 0)
                    pool.push_back(std::make_shared<CElement>(static_cast<int>(pool.size())));
                CElementSPTR e = pool[rng() % pool.size()];
                unsigned long long b = rng() % (r.horizon + 1);
                unsigned long long en = b + rng() % (r.maxLength + 1);
                if (rng() % 16 == 0)
                    std::swap(b, en);  // reversed or untimed now and then
                if (rng() % 32 == 0)
                    b = en = 0;
                info.AddElement(b, en, e);
                if (b <= en && !(b == 0 && en == 0))
                    timed.push_back({{b, en}, e->GetType()});
            }
            const std::string where = "seed " + std::to_string(r.seed) + " document " + std::to_string(doc);
            if (timed.empty()) {
                ASSERT_EQ(5, info.SplitSubtitleInfoData()) << where;
                continue;
            }
            ASSERT_EQ(0, info.SplitSubtitleInfoData()) << where;
            unsigned long long lastEnd = 0;
            ASSERT_EQ(BruteForce(timed, lastEnd), Describe(info)) << where;
            ASSERT_EQ(lastEnd, info.GetLastEndTime()) << where;
        }
    }
}

// ---- Rates and segment bounds ------------------------------------------------------------

// Each row: rate, multiplier, effective rate, the info lines joined by "|".
TEST(SubtitleInfo, FrameRateMultiplierScalesTheRateAndIsLogged)
{
    const std::tuple<const char*, const char*, double, std::string> cases[] = {
        {"25", "1 1", 25.0, "frameRateMultiplier=1 1, frameRate: 25"},
        {"30", "1000 1001", 30.0 * 1000.0 / 1001.0,
         "frameRateMultiplier=1000 1001, frameRate: 30|frameRateMultiplier: numerator=1000, denominator=1001|"
         "After applying frameRateMultiplier, final m_effectiveFrameRate: 29.970030"},
        {"30", "0 1", 30.0, "frameRateMultiplier=0 1, frameRate: 30|frameRateMultiplier: numerator=0, denominator=1"},
    };
    for (const auto& [rate, multiplier, effective, expected] : cases) {
        CSubtitleInfo info;
        LogCapture log;
        info.SetFrameRate(rate, multiplier);
        EXPECT_NEAR(effective, info.GetEffectiveFrameRate(), 1e-9) << multiplier;
        std::string lines;
        for (const auto& line : log.Lines()) {
            lines += (lines.empty() ? "" : "|") + line.message;
            EXPECT_EQ(DLOG_INFO, line.prio) << line.message;
        }
        EXPECT_EQ(expected, lines);
    }
}

TEST(SubtitleInfo, OnlyTheSegmentStartIsApplied)
{
    CSubtitleInfo info;
    info.SetSubtitleSegmentTimings(5000, 6000);
    for (unsigned long long time : {3000ull, 0ull, 4999ull, 5000ull, 7000ull}) {
        unsigned long long t = time;
        LogCapture log;
        info.ApplySubtitleSegmentBoundaries(t);
        const bool raised = time < 5000;
        EXPECT_EQ(raised ? 5000 : time, t);
        const std::string line = "Subtitle time has been restricted from [" + std::to_string(time) + "] to [5000]";
        EXPECT_EQ(raised ? 1 : 0, log.Count(line, DLOG_INFO)) << log.Dump();
        EXPECT_EQ(raised ? 1u : 0u, log.Lines().size());
    }
}

}  // namespace
