// Subtitle document: timed and untimed elements, the split into intervals
// (fixed cases and a randomised comparison with a direct implementation of
// the grouping-and-scan rule), rates and segment bounds.

#include "CSubtitleInfo.h"
#include "LogCapture.h"
#include "RowPrinter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <sstream>

using namespace TTML;

namespace {

using Interval = CSubtitleInfo::TimeInterval;
using Split = std::map<Interval, std::vector<CElement*>>;

// Split intervals with their element lists, read through the public queries.
Split ReadSplit(const CSubtitleInfo& info)
{
    std::set<Interval> keys;
    info.GetUniqueKeys(keys);
    Split out;
    for (const auto& k : keys) {
        std::list<CElementSPTR> list;
        info.GetElementListForInterval(k, list);
        auto& v = out[k];
        for (auto& e : list)
            v.push_back(e.get());
    }
    return out;
}

// Straight from the rule: keys by end then begin, neighbours that overlap or
// touch form a group, consecutive points of a group are split intervals, and
// each interval lists every element covering it, scanning all of them.
struct Reference {
    Split split;
    unsigned long long lastEnd = 0;
    int result = 0;
};

Reference BruteForce(const std::vector<std::pair<Interval, CElement*>>& timed)
{
    Reference ref;
    if (timed.empty()) {
        ref.result = 5;
        return ref;
    }
    std::set<Interval, CSubtitleInfo::Sorter> keys;
    for (const auto& t : timed)
        keys.insert(t.first);
    std::set<unsigned long long> points;
    auto flush = [&] {
        for (auto it = points.begin(); it != points.end() && std::next(it) != points.end(); ++it)
            ref.split[{*it, *std::next(it)}];
        points.clear();
    };
    for (auto it = keys.begin(); it != keys.end(); ++it) {
        points.insert(it->first);
        points.insert(it->second);
        auto next = std::next(it);
        if (next != keys.end() && it->second < next->first)
            flush();
    }
    ref.lastEnd = *points.rbegin();
    flush();
    for (auto& kv : ref.split)
        for (const auto& t : timed)
            if (t.first.first <= kv.first.first && t.first.second >= kv.first.second)
                kv.second.push_back(t.second);
    return ref;
}

std::string Describe(const Split& split)
{
    std::ostringstream os;
    for (const auto& kv : split) {
        os << "(" << kv.first.first << "," << kv.first.second << "):";
        for (auto* e : kv.second)
            os << " " << e->GetType();
        os << "\n";
    }
    return os.str();
}

// ---- Fixed split cases -----------------------------------------------------------

struct SplitCase {
    const char* name;
    std::vector<Interval> elements;  // added in this order; element i has type i
    std::vector<std::pair<Interval, std::vector<int>>> expected;
    unsigned long long lastEnd;
};

class SplitCases : public ::testing::TestWithParam<SplitCase> {};

TEST_P(SplitCases, IntervalsListsAndLastEnd)
{
    const SplitCase& c = GetParam();
    CSubtitleInfo info;
    std::vector<CElementSPTR> elems;
    for (size_t i = 0; i < c.elements.size(); ++i) {
        elems.push_back(std::make_shared<CElement>(static_cast<int>(i)));
        info.AddElement(c.elements[i].first, c.elements[i].second, elems.back());
    }
    ASSERT_EQ(0, info.SplitSubtitleInfoData());
    Split expected;
    for (const auto& kv : c.expected) {
        auto& v = expected[kv.first];
        for (int i : kv.second)
            v.push_back(elems[i].get());
    }
    const Split actual = ReadSplit(info);
    EXPECT_EQ(expected, actual) << "expected\n" << Describe(expected) << "actual\n" << Describe(actual);
    EXPECT_EQ(c.lastEnd, info.GetLastEndTime());
}

INSTANTIATE_TEST_SUITE_P(
    Table, SplitCases,
    ::testing::Values(
        SplitCase{"Single", {{1000, 2000}}, {{{1000, 2000}, {0}}}, 2000},
        SplitCase{"Overlap", {{0, 1000}, {500, 1500}}, {{{0, 500}, {0}}, {{500, 1000}, {0, 1}}, {{1000, 1500}, {1}}}, 1500},
        SplitCase{"Touching", {{0, 1000}, {1000, 2000}}, {{{0, 1000}, {0}}, {{1000, 2000}, {1}}}, 2000},
        SplitCase{"Gap", {{0, 1000}, {2000, 3000}}, {{{0, 1000}, {0}}, {{2000, 3000}, {1}}}, 3000},
        SplitCase{"SameIntervalTwice", {{0, 1000}, {0, 1000}}, {{{0, 1000}, {0, 1}}}, 1000},
        SplitCase{"ListedInAddOrderNotBeginOrder",
                  {{500, 1000}, {0, 1000}},
                  {{{0, 500}, {1}}, {{500, 1000}, {0, 1}}},
                  1000},
        SplitCase{"Nested", {{0, 3000}, {1000, 2000}}, {{{0, 1000}, {0}}, {{1000, 2000}, {0, 1}}, {{2000, 3000}, {0}}}, 3000},
        SplitCase{"ZeroLengthOnly", {{1000, 1000}}, {}, 1000},
        SplitCase{"ZeroLengthCutsItsNeighbour", {{1000, 1000}, {0, 2000}}, {{{0, 1000}, {1}}, {{1000, 2000}, {1}}}, 2000},
        SplitCase{"StartsAtZero", {{0, 5}}, {{{0, 5}, {0}}}, 5},
        // A begins first but sorts before the gap; C lands in the later group
        // and the groups' intervals overlap in time.
        SplitCase{"OverlappingGroups",
                  {{0, 10}, {20, 30}, {5, 40}},
                  {{{0, 10}, {0}}, {{5, 20}, {2}}, {{20, 30}, {1, 2}}, {{30, 40}, {2}}},
                  40}),
    TTMLTest::RowName());

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
        std::set<Interval> keys;
        info.GetUniqueKeys(keys);
        EXPECT_TRUE(keys.empty());
    }
}

TEST(SubtitleInfo, UntimedElementsAreLoggedOnlyWhenReversedAndNeverListed)
{
    CSubtitleInfo info;
    auto timed = std::make_shared<CElement>(ELEM_SPAN);
    auto reversed = std::make_shared<CElement>(ELEM_SPAN);
    auto untimed = std::make_shared<CElement>(ELEM_P);
    LogCapture log;
    info.AddElement(0, 3000, timed);
    info.AddElement(2000, 1000, reversed);
    EXPECT_EQ(1, log.Count("Element is discarded with beginTime=[2000], endTime[1000]", DLOG_INFO)) << log.Dump();
    info.AddElement(0, 0, untimed);
    EXPECT_EQ(1u, log.Lines().size()) << log.Dump();
    ASSERT_EQ(0, info.SplitSubtitleInfoData());
    const Split split = ReadSplit(info);
    EXPECT_EQ((Split{{{0, 3000}, {timed.get()}}}), split);
    EXPECT_EQ(3000u, info.GetLastEndTime());
}

// Spans link to their paragraph weakly; the document keeps untimed
// paragraphs alive so the renderer can still reach them.
TEST(SubtitleInfo, UntimedParentsOutliveTheWalker)
{
    CSubtitleInfo info;
    std::weak_ptr<CElement> watch;
    CElementSPTR span = std::make_shared<CElement>(ELEM_SPAN);
    {
        auto p = std::make_shared<CElement>(ELEM_P);
        watch = p;
        span->SetParent(p);
        info.AddElement(0, 0, p);
        info.AddElement(1000, 2000, span);
    }
    span.reset();
    ASSERT_EQ(0, info.SplitSubtitleInfoData());
    std::list<CElementSPTR> list;
    info.GetElementListForInterval({1000, 2000}, list);
    ASSERT_EQ(1u, list.size());
    EXPECT_FALSE(watch.expired());
    EXPECT_EQ(watch.lock(), list.front()->GetParent());
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

struct RandomRegime {
    const char* name;
    unsigned seed;
    int maxElements;
    unsigned long long horizon;  // times in [0, horizon]
    unsigned long long maxLength;
};

class SplitMatchesDirectRule : public ::testing::TestWithParam<RandomRegime> {};

TEST_P(SplitMatchesDirectRule, OnRandomDocuments)
{
    const RandomRegime& r = GetParam();
    std::mt19937_64 rng(r.seed);
    for (int doc = 0; doc < 300; ++doc) {
        const int n = 1 + static_cast<int>(rng() % static_cast<unsigned>(r.maxElements));
        CSubtitleInfo info;
        std::vector<CElementSPTR> pool;
        std::vector<std::pair<Interval, CElement*>> timed;
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
                timed.push_back({{b, en}, e.get()});
        }
        const Reference ref = BruteForce(timed);
        ASSERT_EQ(ref.result, info.SplitSubtitleInfoData()) << "document " << doc;
        if (ref.result != 0)
            continue;
        const Split actual = ReadSplit(info);
        ASSERT_EQ(ref.split, actual) << "document " << doc << "\nexpected\n"
                                     << Describe(ref.split) << "actual\n"
                                     << Describe(actual);
        ASSERT_EQ(ref.lastEnd, info.GetLastEndTime()) << "document " << doc;
    }
}

INSTANTIATE_TEST_SUITE_P(
    Seeds, SplitMatchesDirectRule,
    ::testing::Values(RandomRegime{"DenseCoincidences", 1, 12, 20, 6}, RandomRegime{"ManyShortCues", 2, 60, 400, 30},
                      RandomRegime{"LongOverlaps", 3, 40, 100, 90}, RandomRegime{"SparseWithGaps", 4, 30, 10000, 50},
                      RandomRegime{"ZeroLengthHeavy", 5, 25, 30, 1}),
    TTMLTest::RowName());

// ---- Rates and segment bounds ------------------------------------------------------------

struct FrameRateCase {
    const char* name;
    const char* rate;
    const char* multiplier;
    double effective;
    std::vector<std::string> lines;
};

class FrameRates : public ::testing::TestWithParam<FrameRateCase> {};

TEST_P(FrameRates, EffectiveRateAndLogLines)
{
    const FrameRateCase& c = GetParam();
    CSubtitleInfo info;
    LogCapture log;
    info.SetFrameRate(c.rate, c.multiplier);
    EXPECT_NEAR(c.effective, info.GetEffectiveFrameRate(), 1e-9);
    const auto lines = log.Lines();
    ASSERT_EQ(c.lines.size(), lines.size()) << log.Dump();
    for (size_t i = 0; i < lines.size(); ++i) {
        EXPECT_EQ(c.lines[i], lines[i].message);
        EXPECT_EQ(DLOG_INFO, lines[i].prio);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Table, FrameRates,
    ::testing::Values(
        FrameRateCase{"Unity", "25", "1 1", 25.0, {"frameRateMultiplier=1 1, frameRate: 25"}},
        FrameRateCase{"Ntsc",
                      "30",
                      "1000 1001",
                      30.0 * 1000.0 / 1001.0,
                      {"frameRateMultiplier=1000 1001, frameRate: 30",
                       "frameRateMultiplier: numerator=1000, denominator=1001",
                       "After applying frameRateMultiplier, final m_effectiveFrameRate: 29.970030"}},
        FrameRateCase{"Doubling", "25", "2 1", 50.0,
                      {"frameRateMultiplier=2 1, frameRate: 25", "frameRateMultiplier: numerator=2, denominator=1",
                       "After applying frameRateMultiplier, final m_effectiveFrameRate: 50.000000"}},
        FrameRateCase{"ZeroNumeratorLeavesRate", "30", "0 1", 30.0,
                      {"frameRateMultiplier=0 1, frameRate: 30", "frameRateMultiplier: numerator=0, denominator=1"}}),
    TTMLTest::RowName());

TEST(SubtitleInfo, DefaultsAndTickRate)
{
    CSubtitleInfo info;
    EXPECT_EQ("32 15", info.GetCellResolution());
    EXPECT_EQ(0, info.GetTickRate());
    EXPECT_EQ(0.0, info.GetEffectiveFrameRate());
    EXPECT_EQ(0u, info.GetLastEndTime());
    info.SetTickRate("10000000");
    EXPECT_EQ(10000000, info.GetTickRate());
}

struct SegmentCase {
    unsigned long long time;
    unsigned long long expected;
    bool logged;
};

void PrintTo(const SegmentCase& c, std::ostream* os)
{
    *os << c.time;
}

class SegmentBounds : public ::testing::TestWithParam<SegmentCase> {};

TEST_P(SegmentBounds, OnlyTheStartIsApplied)
{
    CSubtitleInfo info;
    info.SetSubtitleSegmentTimings(5000, 6000);
    unsigned long long t = GetParam().time;
    LogCapture log;
    info.ApplySubtitleSegmentBoundaries(t);
    EXPECT_EQ(GetParam().expected, t);
    const std::string line =
        "Subtitle time has been restricted from [" + std::to_string(GetParam().time) + "] to [5000]";
    EXPECT_EQ(GetParam().logged ? 1 : 0, log.Count(line, DLOG_INFO)) << log.Dump();
    EXPECT_EQ(GetParam().logged ? 1u : 0u, log.Lines().size());
}

INSTANTIATE_TEST_SUITE_P(Table, SegmentBounds,
                         ::testing::Values(SegmentCase{3000, 5000, true}, SegmentCase{0, 5000, true},
                                           SegmentCase{4999, 5000, true}, SegmentCase{5000, 5000, false},
                                           SegmentCase{7000, 7000, false}),
                         [](const ::testing::TestParamInfo<SegmentCase>& info) {
                             return "At" + std::to_string(info.param.time);
                         });

}  // namespace
