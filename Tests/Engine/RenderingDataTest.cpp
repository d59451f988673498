#include "../Graphics/MainLoopFixture.h"

#include "CGraphicsEngine.h"
#include "CRenderingData.h"
#include "DrawRecorder.h"
#include "LogCapture.h"
#include "RowPrinter.h"
#include "TTMLElem.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>
#include <sstream>

using namespace TTML;

namespace {

struct Interval {
    unsigned long long begin;
    unsigned long long end;
};

// Entries as "time[+b-e -b-e]": + the record to draw, - the record to remove.
std::string Describe(const CRenderingData& schedule)
{
    std::ostringstream out;
    for (const auto& entry : schedule.GetMap()) {
        const SubtitleRenderingInfo* pDraw = entry.second.first;
        const SubtitleRenderingInfo* pRemove = entry.second.second;
        out << (out.tellp() > 0 ? " " : "") << entry.first << "[";
        if (pDraw)
            out << "+" << pDraw->m_BeginTime << "-" << pDraw->m_EndTime << (pRemove ? " " : "");
        if (pRemove)
            out << "-" << pRemove->m_BeginTime << "-" << pRemove->m_EndTime;
        out << "]";
    }
    return out.str();
}

// Builds records as the engine does and, at the end, clears the schedule the
// way the engine does (every record deleted through its remove entry). Each
// record carries a witness element of its own, drawn as one paragraph on a
// headless canvas; a witness that outlives the teardown means a record that
// was never freed, a paragraph still made one whose renderer was not.
class ScheduleTest : public MainLoopTest {
protected:
    void SetUp() override
    {
        MainLoopTest::SetUp();
        m_pEngine.reset(new CGraphicsEngine(m_pGraphics));
        m_pEngine->CreateRootSurface("", "", "");
    }

    void TearDown() override
    {
        Clear();
        EXPECT_EQ(0, m_drawn.Live());
        EXPECT_EQ(0, m_drawn.Rejected());
        EXPECT_EQ(m_witnesses.size(), static_cast<std::size_t>(ExpiredWitnesses())) << "records not freed";
        m_pEngine.reset();
        MainLoopTest::TearDown();
    }

    SubtitleRenderingInfo* Make(Interval interval, std::size_t extraElements = 0)
    {
        SubtitleRenderingInfo* pRecord = new SubtitleRenderingInfo;
        pRecord->m_BeginTime = interval.begin;
        pRecord->m_EndTime = interval.end;
        CElementSPTR witness = std::make_shared<CElement>(ELEM_P);
        m_witnesses.push_back(witness);
        pRecord->m_ElementList.push_back(witness);
        for (std::size_t i = 0; i < extraElements; ++i)
            pRecord->m_ElementList.push_back(std::make_shared<CElement>(ELEM_SPAN));
        pRecord->m_pRendererData = m_pEngine->CreateRenderer(&pRecord->m_ElementList, false);
        return pRecord;
    }

    bool Add(Interval interval) { return m_schedule.AddData(Make(interval), m_pEngine.get()); }

    // The engine's timer expiry: pop the front entry (the earliest, which
    // stays until popped) and free what ends there.
    void Pop()
    {
        unsigned long long front = 0, time = 0;
        CRenderingData::RenderingPair pair(nullptr, nullptr);
        ASSERT_TRUE(m_schedule.GetFront(front, pair));
        ASSERT_EQ(m_schedule.GetMap().begin()->first, front);
        ASSERT_TRUE(m_schedule.PopNextSubtitleData(time, pair));
        ASSERT_EQ(front, time);
        Free(pair.second);
    }

    void Free(SubtitleRenderingInfo* pRecord)
    {
        if (!pRecord)
            return;
        m_pEngine->DestroyRenderer(pRecord->m_pRendererData);
        delete pRecord;
    }

    void Clear()
    {
        unsigned long long time = 0;
        CRenderingData::RenderingPair pair(nullptr, nullptr);
        while (m_schedule.PopNextSubtitleData(time, pair))
            Free(pair.second);
    }

    int ExpiredWitnesses() const
    {
        return static_cast<int>(std::count_if(m_witnesses.begin(), m_witnesses.end(),
                                              [](const std::weak_ptr<CElement>& w) { return w.expired(); }));
    }

    LogCapture m_log;
    DrawRecorder m_drawn;
    std::unique_ptr<CGraphicsEngine> m_pEngine;
    CRenderingData m_schedule;
    std::vector<std::weak_ptr<CElement>> m_witnesses;
};

// ---- AddData: filing, merging and cutting -----------------------------------

struct AddCase {
    const char* name;
    std::vector<Interval> scheduled;  // added first, in order
    int pops;                         // front entries consumed before the new one comes
    Interval added;
    bool result;
    const char* map;  // Describe() afterwards
    int deleted;      // renderers destroyed by the AddData itself, and records whose elements all went
    const char* log;  // a line AddData must write
};

class AddDataTest : public ScheduleTest, public ::testing::WithParamInterface<AddCase> {};

TEST_P(AddDataTest, FilesMergesOrCuts)
{
    const AddCase& c = GetParam();
    for (const Interval& interval : c.scheduled)
        ASSERT_FALSE(Add(interval));
    for (int i = 0; i < c.pops; ++i)
        Pop();
    const int destroyedBefore = m_drawn.Count(IDrawObserver::PARAGRAPH_GONE);
    const int freedBefore = ExpiredWitnesses();
    m_log.Clear();

    EXPECT_EQ(c.result, Add(c.added));

    EXPECT_EQ(c.map, Describe(m_schedule));
    EXPECT_EQ(c.deleted, m_drawn.Count(IDrawObserver::PARAGRAPH_GONE) - destroyedBefore);
    EXPECT_EQ(c.deleted, ExpiredWitnesses() - freedBefore);
    EXPECT_TRUE(m_log.Has(c.log)) << m_log.Dump();
    EXPECT_FALSE(m_log.Has("Data error!"));
}

INSTANTIATE_TEST_SUITE_P(
    Schedule, AddDataTest,
    ::testing::Values(
        AddCase{"IntoEmpty", {}, 0, {1000, 2000}, false, "1000[+1000-2000] 2000[-1000-2000]", 0,
                "Subtitle rendering data is added for bTime=1000, etime=2000"},
        AddCase{"BackToBackSharesEntry", {{1000, 2000}}, 0, {2000, 3000}, false,
                "1000[+1000-2000] 2000[+2000-3000 -1000-2000] 3000[-2000-3000]", 0,
                "Subtitle rendering data is added for bTime=2000, etime=3000"},
        AddCase{"LaterWithGap", {{1000, 2000}}, 0, {3000, 4000}, false,
                "1000[+1000-2000] 2000[-1000-2000] 3000[+3000-4000] 4000[-3000-4000]", 0,
                "Subtitle rendering data is added for bTime=3000, etime=4000"},
        // The duplicate's element moves into the old record, so nothing is freed whole.
        // The merged list drops the old witness; renderers keep no elements.
        AddCase{"SameTimingsWhileWaiting", {{1000, 2000}}, 0, {1000, 2000}, false,
                "1000[+1000-2000] 2000[-1000-2000]", 1,
                "Old data with same timings found in map. begin=1000, end=2000"},
        AddCase{"SameTimingsAfterDrawn", {{1000, 2000}}, 1, {1000, 2000}, false,
                "1000[+1000-2000] 2000[-1000-2000]", 1,
                "Special case where new data (whose timings are same as old data in map) comes late. "
                "It will be rendered again. begin=1000 and end=2000"},
        AddCase{"InsideShortensOld", {{1000, 2000}}, 0, {1500, 1800}, true,
                "1000[+1000-1500] 1500[+1500-1800 -1000-1500] 1800[-1500-1800]", 0,
                "Restricting previous subtitle endTime(2000) till the beginTime(1500) of new."},
        // Same end, other begin: not a duplicate, the old one is cut.
        AddCase{"SameEndOtherBegin", {{1000, 2000}}, 0, {1500, 2000}, true,
                "1000[+1000-1500] 1500[+1500-2000 -1000-1500] 2000[-1500-2000]", 0,
                "Restricting previous subtitle endTime(2000) till the beginTime(1500) of new."},
        AddCase{"SameBeginReplacesOld", {{1000, 2000}}, 0, {1000, 1500}, true,
                "1000[+1000-1500] 1500[-1000-1500]", 1, "Deleting sub data from previous file(s)."},
        AddCase{"BeforeAllDeletesAll", {{1000, 2000}, {2000, 3000}}, 0, {500, 900}, true,
                "500[+500-900] 900[-500-900]", 2, "Deleting sub data from previous file(s)."},
        AddCase{"OnScreenShortenedLaterDeleted", {{1000, 2000}, {2000, 3000}}, 1, {1500, 2500}, true,
                "1500[+1500-2500 -1000-1500] 2500[-1500-2500]", 1,
                "Restricting previous subtitle endTime(2000) till the beginTime(1500) of new."},
        AddCase{"MidwayKeepsEarlierDeletesLater", {{1000, 2000}, {2000, 3000}, {3000, 4000}}, 0,
                {2500, 2600}, true,
                "1000[+1000-2000] 2000[+2000-2500 -1000-2000] 2500[+2500-2600 -2000-2500] "
                "2600[-2500-2600]",
                1, "Restricting previous subtitle endTime(3000) till the beginTime(2500) of new."}),
    TTMLTest::RowName());

// ---- Merging identical intervals --------------------------------------------

struct MergeCase {
    const char* name;
    std::size_t oldSize;
    std::size_t newSize;
    std::size_t oldKept;  // leading old elements that survive
};

class MergeTest : public ScheduleTest, public ::testing::WithParamInterface<MergeCase> {};

TEST_P(MergeTest, OldKeepsLeadingElementsThenTakesNewOnes)
{
    const MergeCase& c = GetParam();
    SubtitleRenderingInfo* pOld = Make({1000, 2000}, c.oldSize - 1);
    m_schedule.AddData(pOld, m_pEngine.get());
    const std::list<CElementSPTR> oldElements = pOld->m_ElementList;
    CRenderer* pOldRenderer = pOld->m_pRendererData;

    SubtitleRenderingInfo* pNew = Make({1000, 2000}, c.newSize == 0 ? 0 : c.newSize - 1);
    if (c.newSize == 0)
        pNew->m_ElementList.clear();
    const std::list<CElementSPTR> newElements = pNew->m_ElementList;

    EXPECT_FALSE(m_schedule.AddData(pNew, m_pEngine.get()));

    std::vector<CElementSPTR> expected(oldElements.begin(), oldElements.end());
    expected.resize(c.oldKept);
    expected.insert(expected.end(), newElements.begin(), newElements.end());
    const std::vector<CElementSPTR> merged(pOld->m_ElementList.begin(), pOld->m_ElementList.end());
    EXPECT_EQ(expected, merged);

    // The old record keeps its place, times and renderer; only the mark is new.
    EXPECT_TRUE(pOld->m_bRecreateRenderer);
    EXPECT_EQ(pOld, m_schedule.GetMap().at(1000).first);
    EXPECT_EQ(pOld, m_schedule.GetMap().at(2000).second);
    EXPECT_EQ(pOldRenderer, pOld->m_pRendererData);
    EXPECT_EQ(c.oldSize, static_cast<std::size_t>(m_drawn.Live())) << "one paragraph per old element";
    EXPECT_EQ(1, m_log.CountContaining("merged new data ["));
}

INSTANTIATE_TEST_SUITE_P(Schedule, MergeTest,
                         ::testing::Values(MergeCase{"ShorterNewList", 3, 2, 1},
                                           MergeCase{"LongerNewList", 3, 4, 0},
                                           MergeCase{"EqualLists", 3, 3, 0},
                                           MergeCase{"EmptyNewListKeepsOld", 2, 0, 2},
                                           MergeCase{"OneIntoFive", 5, 1, 4}),
                         TTMLTest::RowName());

// ---- Filing a scheduled record again (flashing) -----------------------------

TEST_F(ScheduleTest, RefilingSameRecordRecreatesBeginEntryOnly)
{
    SubtitleRenderingInfo* pRecord = Make({1000, 2000}, 2);
    m_schedule.AddData(pRecord, m_pEngine.get());
    unsigned long long time = 0;
    CRenderingData::RenderingPair pair(nullptr, nullptr);
    ASSERT_TRUE(m_schedule.PopNextSubtitleData(time, pair));
    ASSERT_EQ(pRecord, pair.first);
    const std::list<CElementSPTR> elements = pRecord->m_ElementList;
    CRenderer* pRenderer = pRecord->m_pRendererData;
    m_log.Clear();

    EXPECT_FALSE(m_schedule.AddData(pRecord, m_pEngine.get()));

    EXPECT_EQ("1000[+1000-2000] 2000[-1000-2000]", Describe(m_schedule));
    EXPECT_EQ(elements, pRecord->m_ElementList);
    EXPECT_EQ(pRenderer, pRecord->m_pRendererData);
    EXPECT_FALSE(pRecord->m_bRecreateRenderer);
    EXPECT_EQ(0, m_drawn.Count(IDrawObserver::PARAGRAPH_GONE));
    EXPECT_EQ(0, m_log.CountContaining("merged new data"));
}

// ---- Queries ----------------------------------------------------------------

TEST_F(ScheduleTest, NullArgumentsAndAbsentTimesAreRefusedWithoutChange)
{
    EXPECT_FALSE(m_schedule.AddData(nullptr, m_pEngine.get()));
    SubtitleRenderingInfo* pProbe = Make({1000, 2000});
    EXPECT_FALSE(m_schedule.AddData(pProbe, nullptr));
    EXPECT_EQ(2, m_log.Count("pData/pGraphicEngine is null!!!"));
    EXPECT_TRUE(m_schedule.GetMap().empty()) << "nothing is taken";
    EXPECT_FALSE(m_schedule.IsOverlapping(pProbe));
    Free(pProbe);

    unsigned long long time = 77;
    SubtitleRenderingInfo marker;
    CRenderingData::RenderingPair pair(&marker, &marker);
    EXPECT_FALSE(m_schedule.GetFront(time, pair));
    EXPECT_FALSE(m_schedule.PopNextSubtitleData(time, pair));
    EXPECT_EQ(77u, time);
    EXPECT_EQ(&marker, pair.first);
    EXPECT_EQ(&marker, pair.second);
    m_schedule.Dump();
    EXPECT_EQ(4, m_log.Count("Data map is empty!"));

    Add({1000, 2000});
    EXPECT_FALSE(m_schedule.RemoveData(1500));
    EXPECT_TRUE(m_log.Has("No data available in map for time [1500]."));
    EXPECT_EQ("1000[+1000-2000] 2000[-1000-2000]", Describe(m_schedule));

    // Erasing a present entry leaves its record alone; it is still filed at 2000.
    EXPECT_TRUE(m_schedule.RemoveData(1000));
    EXPECT_EQ("2000[-1000-2000]", Describe(m_schedule));
}

// ---- A long run: every record freed exactly once ----------------------------

// Random arrivals (repeats, overlaps, late duplicates) interleaved with timer
// expiries. Afterwards no two scheduled records may overlap, every pending
// record must be filed under both its times, and the teardown checks that
// every record and renderer was freed once.
TEST_F(ScheduleTest, RandomArrivalsKeepScheduleConsistent)
{
    std::mt19937 random(20261123);
    std::uniform_int_distribution<int> slot(0, 40);
    std::uniform_int_distribution<int> length(1, 4);
    std::uniform_int_distribution<int> action(0, 3);
    for (int step = 0; step < 400; ++step) {
        if (action(random) == 0 && !m_schedule.GetMap().empty()) {
            Pop();
            continue;
        }
        const unsigned long long begin = 100ull * slot(random);
        Add({begin, begin + 100ull * length(random)});

        std::vector<const SubtitleRenderingInfo*> pending;
        for (const auto& entry : m_schedule.GetMap()) {
            ASSERT_TRUE(entry.second.first || entry.second.second) << "empty entry " << entry.first;
            if (const SubtitleRenderingInfo* pDraw = entry.second.first) {
                ASSERT_EQ(entry.first, pDraw->m_BeginTime);
                const auto endEntry = m_schedule.GetMap().find(pDraw->m_EndTime);
                ASSERT_NE(m_schedule.GetMap().end(), endEntry) << Describe(m_schedule);
                ASSERT_EQ(pDraw, endEntry->second.second);
                pending.push_back(pDraw);
            }
            if (const SubtitleRenderingInfo* pRemove = entry.second.second) {
                ASSERT_EQ(entry.first, pRemove->m_EndTime);
            }
        }
        for (std::size_t i = 1; i < pending.size(); ++i)
            ASSERT_LE(pending[i - 1]->m_EndTime, pending[i]->m_BeginTime) << Describe(m_schedule);
    }
    EXPECT_EQ(0, m_drawn.Rejected());
}

}  // namespace
