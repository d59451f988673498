#include "ITimer.h"
#include "LogCapture.h"
#include "MainLoopFixture.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <thread>
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
    void Free(ITimer* pTimer) { m_pGraphics->DestroyObject(pTimer); }
};

// A callback that counts, records "timer" among the test's events, notes the
// thread, keeps running for `renew` calls and can run an action on a given call.
struct Probe {
    int calls = 0;
    int renew = 0;
    bool offMainLoop = false;
    std::vector<std::string> events;
    std::function<void(Probe&)> onCall;

    static int Cb(void* data)
    {
        Probe* p = static_cast<Probe*>(data);
        ++p->calls;
        if (!eina_main_loop_is())
            p->offMainLoop = true;
        p->events.push_back("timer");
        if (p->onCall)
            p->onCall(*p);
        return p->calls < p->renew ? 1 : 0;
    }
};

TEST_F(TimerTest, FiresOnTheMainLoopAndRepeatsUntilTheCallbackReturnsZero)
{
    ITimer* pTimer = NewTimer();
    Probe probe;
    probe.renew = 3;  // nonzero twice, then zero
    probe.onCall = [](Probe& p) {
        if (p.calls == 3) {
            // Give a broken timer the chance to fire again before quitting.
            static auto quit = [] { Quit(); };
            After(0.1, &quit);
        }
    };
    pTimer->Start(Probe::Cb, 0.01, &probe);
    EXPECT_EQ(0, probe.calls);  // never at once, not even with a short delay
    EXPECT_TRUE(RunLoop());
    EXPECT_EQ(3, probe.calls);
    EXPECT_FALSE(probe.offMainLoop);
    Free(pTimer);
}

TEST_F(TimerTest, StopDisarmsAndStartArmsAgain)
{
    ITimer* pTimer = NewTimer();
    Probe probe;
    std::vector<std::string>& events = probe.events;
    probe.renew = 100;
    pTimer->Start(Probe::Cb, 0.2, &probe);
    auto stop = [&] { events.push_back("stop"); pTimer->Stop(); };
    auto restart = [&] { events.push_back("restart"); pTimer->Start(Probe::Cb, 0.0, &probe); probe.renew = 1; };
    auto quit = [&] { events.push_back("quit"); Quit(); };
    After(0.01, &stop);
    After(0.4, &restart);
    After(0.6, &quit);
    EXPECT_TRUE(RunLoop());
    EXPECT_EQ((std::vector<std::string>{"stop", "restart", "timer", "quit"}), events);
    Free(pTimer);
}

TEST_F(TimerTest, StopInsideTheCallbackEndsItWhateverItReturns)
{
    ITimer* pTimer = NewTimer();
    Probe probe;
    probe.renew = 100;
    probe.onCall = [pTimer](Probe&) { pTimer->Stop(); };
    pTimer->Start(Probe::Cb, 0.01, &probe);
    auto quit = [] { Quit(); };
    After(0.3, &quit);
    EXPECT_TRUE(RunLoop());
    EXPECT_EQ(1, probe.calls);
    Free(pTimer);
}

struct PausedCase {
    const char* name;
    void (*whilePaused)(ITimer*);
};

void PrintTo(const PausedCase& c, std::ostream* os)
{
    *os << c.name;
}

class TimerPaused : public TimerTest, public ::testing::WithParamInterface<PausedCase> {};

TEST_P(TimerPaused, WaitsForResume)
{
    ITimer* pTimer = NewTimer();
    Probe probe;
    std::vector<std::string>& events = probe.events;
    probe.onCall = [](Probe&) { Quit(); };
    pTimer->Start(Probe::Cb, 0.05, &probe);
    pTimer->Pause();
    GetParam().whilePaused(pTimer);
    auto resume = [&] { events.push_back("resume"); pTimer->Resume(); };
    After(0.3, &resume);
    EXPECT_TRUE(RunLoop());
    EXPECT_EQ((std::vector<std::string>{"resume", "timer"}), events);
    Free(pTimer);
}

INSTANTIATE_TEST_SUITE_P(
    Timer, TimerPaused,
    ::testing::Values(PausedCase{"Once", [](ITimer*) {}},
                      // A second pause must not need a second resume.
                      PausedCase{"Twice", [](ITimer* t) { t->Pause(); }},
                      PausedCase{"ThenSetInterval", [](ITimer* t) { t->SetInterval(0.01); }}),
    [](const auto& info) { return std::string(info.param.name); });

TEST_F(TimerTest, PauseInsideTheCallbackHoldsTheNextPeriod)
{
    ITimer* pTimer = NewTimer();
    Probe probe;
    std::vector<std::string>& events = probe.events;
    probe.renew = 2;
    probe.onCall = [pTimer](Probe& p) {
        if (p.calls == 1)
            pTimer->Pause();
        else
            Quit();
    };
    pTimer->Start(Probe::Cb, 0.01, &probe);
    auto resume = [&] { events.push_back("resume"); pTimer->Resume(); };
    After(0.3, &resume);
    EXPECT_TRUE(RunLoop());
    EXPECT_EQ((std::vector<std::string>{"timer", "resume", "timer"}), events);
    Free(pTimer);
}

TEST_F(TimerTest, SetIntervalReArmsFromNow)
{
    ITimer* pTimer = NewTimer();
    Probe probe;
    std::vector<std::string>& events = probe.events;
    probe.onCall = [](Probe&) { Quit(); };
    pTimer->Start(Probe::Cb, 1000.0, &probe);  // would outlive the watchdog
    auto shorten = [&] { events.push_back("shorten"); pTimer->SetInterval(0.02); };
    After(0.01, &shorten);
    EXPECT_TRUE(RunLoop());
    EXPECT_EQ((std::vector<std::string>{"shorten", "timer"}), events);
    Free(pTimer);
}

// The timer manager's pattern: the callback re-arms its own timer for the
// next time and keeps it running.
TEST_F(TimerTest, SetIntervalInsideTheCallbackFiresOncePerArming)
{
    ITimer* pTimer = NewTimer();
    Probe probe;
    probe.renew = 3;
    probe.onCall = [pTimer](Probe& p) {
        if (p.calls < 3) {
            pTimer->SetInterval(0.02 * p.calls);
        } else {
            static auto quit = [] { Quit(); };
            After(0.2, &quit);
        }
    };
    pTimer->Start(Probe::Cb, 0.01, &probe);
    EXPECT_TRUE(RunLoop());
    EXPECT_EQ(3, probe.calls);
    Free(pTimer);
}

TEST_F(TimerTest, SetIntervalRevivesATimerThatEnded)
{
    ITimer* pTimer = NewTimer();
    Probe probe;
    probe.renew = 0;  // ends after every call
    probe.onCall = [](Probe& p) {
        if (p.calls == 2)
            Quit();
    };
    pTimer->Start(Probe::Cb, 0.01, &probe);
    auto revive = [&] {
        EXPECT_EQ(1, probe.calls);
        pTimer->SetInterval(0.01);
    };
    After(0.2, &revive);
    EXPECT_TRUE(RunLoop());
    EXPECT_EQ(2, probe.calls);
    Free(pTimer);
}

// The timer manager stops and destroys its timer from inside the expiry, then
// makes and starts a fresh one.
TEST_F(TimerTest, CallbackMayDestroyItsOwnTimerAndStartAnother)
{
    struct Ctx {
        TimerTest* pTest;
        ITimer* pFirst;
        ITimer* pSecond = nullptr;
        int first = 0, second = 0;
    } ctx{this, NewTimer()};
    ctx.pFirst->Start(
        [](void* d) {
            Ctx* c = static_cast<Ctx*>(d);
            ++c->first;
            c->pFirst->Stop();
            c->pTest->m_pGraphics->DestroyObject(c->pFirst);
            c->pSecond = c->pTest->NewTimer();
            c->pSecond->Start(
                [](void* d2) {
                    ++static_cast<Ctx*>(d2)->second;
                    Quit();
                    return 0;
                },
                0.01, c);
            return 1;  // must not keep the destroyed timer alive
        },
        0.01, &ctx);
    EXPECT_TRUE(RunLoop());
    EXPECT_EQ(1, ctx.first);
    EXPECT_EQ(1, ctx.second);
    Free(ctx.pSecond);
}

TEST_F(TimerTest, RefusesUseBeforeStartAndOffTheMainLoop)
{
    LogCapture log;
    ITimer* pTimer = NewTimer();
    pTimer->SetInterval(1.0);
    EXPECT_TRUE(log.Has("SetInterval before Start", DLOG_WARN));
    Probe probe;
    std::thread worker([&] { pTimer->Start(Probe::Cb, 0.0, &probe); });
    worker.join();
    EXPECT_TRUE(log.Has("Timer Start refused: not on the main loop", DLOG_WARN)) << log.Dump();
    auto quit = [] { Quit(); };
    After(0.1, &quit);
    EXPECT_TRUE(RunLoop());
    EXPECT_EQ(0, probe.calls);
    Free(pTimer);
}

}  // namespace
