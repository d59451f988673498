#include "ITimer.h"
#include "LogCapture.h"
#include "MainLoopFixture.h"
#include "RowPrinter.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <string>
#include <thread>
#include <utility>
#include <vector>

using namespace TTML;

namespace {

// Everything here runs on the main loop; order and thread only, never durations.
class TimerTest : public MainLoopTest {
public:
    ITimer* NewTimer()
    {
        ITimer* pTimer = static_cast<ITimer*>(m_pGraphics->CreateObject(IGraphics::OBJECT_TIMER));
        EXPECT_NE(nullptr, pTimer);
        return pTimer;
    }
};

// One timer driven by steps: "stop", "start S", "pause", "resume",
// "interval S", "replace S" (stop and destroy it, start a new one: the timer
// manager's pattern) and "quit" (which gives a broken timer 0.2 s to fire
// again first). Steps run at a time after the loop starts (a negative time: right
// after the first Start) or inside the callback's n-th call; every step and
// every expiry ("timer") is logged in order.
struct Script {
    const char* name;
    double delay;
    int renew;  // the callback keeps the timer running for its first renew - 1 calls
    std::vector<std::pair<double, std::string>> steps;
    std::map<int, std::string> inCallback;
    const char* events;
};

class TimerScript : public TimerTest, public ::testing::WithParamInterface<Script> {
public:
    void Do(const std::string& step)
    {
        const std::string verb = step.substr(0, step.find(' '));
        const double seconds = std::atof(step.c_str() + verb.size());
        if (verb != "quit")
            m_events += " " + verb;
        if (verb == "stop")
            m_pTimer->Stop();
        else if (verb == "start")
            m_pTimer->Start(Expired_Cb, seconds, this);
        else if (verb == "pause")
            m_pTimer->Pause();
        else if (verb == "resume")
            m_pTimer->Resume();
        else if (verb == "interval")
            m_pTimer->SetInterval(seconds);
        else if (verb == "replace") {
            m_pTimer->Stop();
            m_pGraphics->DestroyObject(m_pTimer);
            m_pTimer = NewTimer();
            m_pTimer->Start(Expired_Cb, seconds, this);
        } else
            ecore_timer_add(0.2, [](void*) -> Eina_Bool {
                Quit();
                return ECORE_CALLBACK_CANCEL;
            }, nullptr);
    }

    static int Expired_Cb(void* data)
    {
        TimerScript* pSelf = static_cast<TimerScript*>(data);
        ++pSelf->m_calls;
        pSelf->m_offMainLoop = pSelf->m_offMainLoop || !eina_main_loop_is();
        pSelf->m_events += " timer";
        const Script& c = pSelf->GetParam();
        auto it = c.inCallback.find(pSelf->m_calls);
        if (it != c.inCallback.end())
            pSelf->Do(it->second);
        return pSelf->m_calls < c.renew ? 1 : 0;
    }

    static Eina_Bool Step_Cb(void* data)
    {
        auto* step = static_cast<std::pair<TimerScript*, std::string>*>(data);
        step->first->Do(step->second);
        return ECORE_CALLBACK_CANCEL;
    }

    ITimer* m_pTimer = nullptr;
    int m_calls = 0;
    bool m_offMainLoop = false;
    std::string m_events;
};

TEST_P(TimerScript, FiresInTheOrderTheStepsSay)
{
    const Script& c = GetParam();
    m_pTimer = NewTimer();
    m_pTimer->Start(Expired_Cb, c.delay, this);
    EXPECT_EQ(0, m_calls) << "never at once, not even with a short delay";
    std::vector<std::pair<TimerScript*, std::string>> later;
    later.reserve(c.steps.size());
    for (const auto& step : c.steps) {
        if (step.first < 0) {
            Do(step.second);
        } else {
            later.emplace_back(this, step.second);
            ecore_timer_add(step.first, Step_Cb, &later.back());
        }
    }
    EXPECT_TRUE(RunLoop());
    EXPECT_EQ(c.events, m_events.substr(1));
    EXPECT_FALSE(m_offMainLoop);
    m_pGraphics->DestroyObject(m_pTimer);
}

INSTANTIATE_TEST_SUITE_P(
    Timer, TimerScript,
    ::testing::Values(
        Script{"RepeatsUntilTheCallbackReturnsZero", 0.01, 3, {}, {{3, "quit"}}, "timer timer timer"},
        Script{"StopDisarmsAndStartArmsAgain", 0.2, 1, {{0.01, "stop"}, {0.4, "start 0"}}, {{1, "quit"}},
               "stop start timer"},
        Script{"StopInsideTheCallbackEndsItWhateverItReturns", 0.01, 100, {{0.3, "quit"}}, {{1, "stop"}},
               "timer stop"},
        Script{"PausedWaitsForResume", 0.05, 1, {{-1, "pause"}, {0.3, "resume"}}, {{1, "quit"}},
               "pause resume timer"},
        // A second pause must not need a second resume.
        Script{"PausedTwiceWaitsForOneResume", 0.05, 1, {{-1, "pause"}, {-1, "pause"}, {0.3, "resume"}},
               {{1, "quit"}}, "pause pause resume timer"},
        Script{"SetIntervalWhilePausedWaitsForResume", 0.05, 1,
               {{-1, "pause"}, {-1, "interval 0.01"}, {0.3, "resume"}}, {{1, "quit"}},
               "pause interval resume timer"},
        Script{"PauseInsideTheCallbackHoldsTheNextPeriod", 0.01, 2, {{0.3, "resume"}}, {{1, "pause"}, {2, "quit"}},
               "timer pause resume timer"},
        // 1000 s would outlive the watchdog.
        Script{"SetIntervalReArmsFromNow", 1000.0, 1, {{0.01, "interval 0.02"}}, {{1, "quit"}}, "interval timer"},
        // The timer manager's pattern: the callback re-arms its own timer.
        Script{"SetIntervalInsideTheCallbackFiresOncePerArming", 0.01, 3, {},
               {{1, "interval 0.02"}, {2, "interval 0.04"}, {3, "quit"}}, "timer interval timer interval timer"},
        Script{"SetIntervalRevivesATimerThatEnded", 0.01, 0, {{0.2, "interval 0.01"}}, {{2, "quit"}},
               "timer interval timer"},
        // The destroyed timer's callback asked to go on: it must not.
        Script{"CallbackMayReplaceItsOwnTimer", 0.01, 2, {}, {{1, "replace 0.01"}, {2, "quit"}}, "timer replace timer"}),
    TTMLTest::RowName());

TEST_F(TimerTest, RefusesUseBeforeStartAndOffTheMainLoop)
{
    LogCapture log;
    ITimer* pTimer = NewTimer();
    pTimer->SetInterval(1.0);
    EXPECT_TRUE(log.Has("SetInterval before Start", DLOG_WARN));
    static int calls = 0;
    std::thread([&] { pTimer->Start([](void*) { return ++calls, 0; }, 0.0, nullptr); }).join();
    EXPECT_TRUE(log.Has("Timer Start refused: not on the main loop", DLOG_WARN)) << log.Dump();
    auto quit = [] { Quit(); };
    After(0.1, &quit);
    EXPECT_TRUE(RunLoop());
    EXPECT_EQ(0, calls);
    m_pGraphics->DestroyObject(pTimer);
}

}  // namespace
