// What the stand-in graphics engine records for tools: the interval its
// renderer's elements share, the steady-clock stamp of each call, and the
// process-wide observer that sees each event as it is recorded.

#include "CElement.h"
#include "CGraphicsEngine.h"
#include "TTMLAttr.h"
#include "TTMLElem.h"

#include <gtest/gtest.h>

#include <chrono>
#include <list>
#include <string>
#include <vector>

using namespace TTML;

namespace {

struct Timed {
    const char* begin;  // null: attribute absent
    const char* end;
};

struct IntervalCase {
    const char* name;
    std::vector<Timed> elements;
    unsigned long long begin;
    unsigned long long end;
};

void PrintTo(const IntervalCase& c, std::ostream* os)
{
    *os << c.name;
}

class RendererInterval : public ::testing::TestWithParam<IntervalCase> {};

TEST_P(RendererInterval, IsWhatAllTimedElementsShare)
{
    std::list<CElementSPTR> elements;
    for (const Timed& t : GetParam().elements) {
        CElementSPTR element = std::make_shared<CElement>(ELEM_SPAN);
        if (t.begin)
            element->AddAttrValue(ATTR_BEGIN, t.begin);
        if (t.end)
            element->AddAttrValue(ATTR_END, t.end);
        elements.push_back(element);
    }
    CGraphicsEngine graphics(nullptr);
    CRenderer* pRenderer = graphics.CreateRenderer(&elements, false);
    ASSERT_NE(nullptr, pRenderer);
    ASSERT_EQ(1, graphics.RenderText(pRenderer));
    graphics.DestroyRenderer(pRenderer);

    std::vector<CGraphicsEngine::Event> events = graphics.GetEvents();
    ASSERT_EQ(3u, events.size());
    for (const CGraphicsEngine::Event& event : events) {
        EXPECT_EQ(GetParam().begin, event.begin) << "event " << event.kind;
        EXPECT_EQ(GetParam().end, event.end) << "event " << event.kind;
    }
}

INSTANTIATE_TEST_SUITE_P(
    Stand, RendererInterval,
    ::testing::Values(IntervalCase{"NoElements", {}, 0, 0},
                      IntervalCase{"Untimed", {{nullptr, nullptr}}, 0, 0},
                      IntervalCase{"OnlyBegin", {{"1000", nullptr}}, 0, 0},
                      IntervalCase{"One", {{"1000", "2000"}}, 1000, 2000},
                      IntervalCase{"Nested", {{"1000", "3000"}, {"1500", "2500"}}, 1500, 2500},
                      IntervalCase{"Staggered", {{"1000", "2500"}, {"1500", "3000"}}, 1500, 2500},
                      IntervalCase{"UntimedIgnored", {{nullptr, nullptr}, {"40", "90"}, {"40", nullptr}}, 40,
                                   90},
                      IntervalCase{"BeyondThirtyTwoBits", {{"5000000000", "5000000500"}}, 5000000000ULL,
                                   5000000500ULL}),
    [](const ::testing::TestParamInfo<IntervalCase>& info) { return info.param.name; });

long long SteadyNs()
{
    return std::chrono::duration_cast<std::chrono::nanoseconds>(
               std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

struct Seen {
    std::vector<CGraphicsEngine::Event> events;
};

void Observe_Cb(const CGraphicsEngine::Event& event, void* pUser)
{
    static_cast<Seen*>(pUser)->events.push_back(event);
}

TEST(GraphicsEngineObserver, SeesEveryEventStampedInCallOrderUntilRemoved)
{
    Seen seen;
    CGraphicsEngine::SetObserver(Observe_Cb, &seen);
    std::list<CElementSPTR> elements;
    CGraphicsEngine graphics(nullptr);

    const long long before = SteadyNs();
    CRenderer* pFirst = graphics.CreateRenderer(&elements, false);
    CRenderer* pSecond = graphics.CreateRenderer(&elements, false);
    graphics.RenderText(pFirst);
    graphics.DestroyRenderer(pFirst);
    graphics.DestroyRenderer(pFirst);  // refused: no event
    const long long after = SteadyNs();

    CGraphicsEngine::SetObserver(nullptr, nullptr);
    graphics.DestroyRenderer(pSecond);

    const std::vector<CGraphicsEngine::Event> recorded = graphics.GetEvents();
    ASSERT_EQ(5u, recorded.size());
    ASSERT_EQ(4u, seen.events.size());
    const CGraphicsEngine::EventKind kinds[] = {CGraphicsEngine::RENDERER_CREATED, CGraphicsEngine::RENDERER_CREATED,
                                                CGraphicsEngine::RENDERER_DRAWN,
                                                CGraphicsEngine::RENDERER_DESTROYED};
    const int serials[] = {1, 2, 1, 1};
    long long last = before;
    for (std::size_t i = 0; i < seen.events.size(); ++i) {
        EXPECT_EQ(kinds[i], seen.events[i].kind) << i;
        EXPECT_EQ(serials[i], seen.events[i].serial) << i;
        EXPECT_EQ(recorded[i].steadyNs, seen.events[i].steadyNs) << i;
        EXPECT_LE(last, seen.events[i].steadyNs) << i;
        last = seen.events[i].steadyNs;
    }
    EXPECT_GE(after, last);
    EXPECT_EQ(CGraphicsEngine::RENDERER_DESTROYED, recorded[4].kind);
    EXPECT_EQ(2, recorded[4].serial);
    EXPECT_LE(after, recorded[4].steadyNs);
}

}  // namespace
