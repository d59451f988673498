#include "CTimerManager.h"
#include "IGraphics.h"
#include "ITimer.h"
#include "LogCapture.h"
#include "RowPrinter.h"

#include <gtest/gtest.h>

#include <deque>
#include <memory>
#include <vector>

using namespace TTML;

namespace {

// A timer that only records what it is asked; a test fires it by hand.
class FakeTimer : public ITimer {
public:
    void Start(Callback callback, double seconds, void* data) override
    {
        m_callback = callback;
        m_data = data;
        m_periods.push_back(seconds);
    }
    void Pause() override { ++m_pauses; }
    void Resume() override { ++m_resumes; }
    void Stop() override { ++m_stops; }
    void SetInterval(double seconds) override { m_periods.push_back(seconds); }

    int Fire() { return m_callback(m_data); }

    Callback m_callback = nullptr;
    void* m_data = nullptr;
    std::vector<double> m_periods;  // Start, then every SetInterval
    int m_pauses = 0;
    int m_resumes = 0;
    int m_stops = 0;
};

// Holds at most one timer: the manager owns a single one at a time.
class FakeGraphics : public IGraphics {
public:
    void Destroy() override {}
    bool Initialize(void*) override { return true; }
    void* CreateObject(int kind) override
    {
        if (kind != OBJECT_TIMER || m_refuse)
            return nullptr;
        EXPECT_EQ(nullptr, m_timer) << "a second timer while one is live";
        m_timer.reset(new FakeTimer);
        ++m_created;
        return static_cast<ITimer*>(m_timer.get());
    }
    void DestroyObject(void* object) override
    {
        ASSERT_TRUE(m_timer && object == static_cast<ITimer*>(m_timer.get())) << "not the live timer";
        m_last = *m_timer;
        m_timer.reset();
        ++m_destroyed;
    }
    IRootContainer* GetRootContainer() override { return nullptr; }

    FakeTimer* Live() { return m_timer.get(); }

    std::unique_ptr<FakeTimer> m_timer;
    FakeTimer m_last;  // copy of the last destroyed timer
    int m_created = 0;
    int m_destroyed = 0;
    bool m_refuse = false;
};

// Scripted media time and an engine-like callback that records its calls.
class TimerManagerTest : public ::testing::Test {
protected:
    TimerManagerTest()
        : m_manager(&m_graphics, OnTimer_Cb, this, [this](long long* pTime) {
              *pTime = m_mediaTime;
              return m_haveMediaTime;
          })
    {
    }

    static unsigned char OnTimer_Cb(void* pData)
    {
        CTimerData* pTimerData = static_cast<CTimerData*>(pData);
        TimerManagerTest* pSelf = static_cast<TimerManagerTest*>(pTimerData->GetUserData());
        pSelf->m_calls.push_back(pTimerData->GetTime());
        // Like the engine: arm for the next scheduled time from inside.
        if (!pSelf->m_next.empty()) {
            const unsigned long long begin = pSelf->m_next.front();
            pSelf->m_next.pop_front();
            pSelf->m_manager.SetTimer(begin, begin + 5000, 0);
        }
        return pSelf->m_result;
    }

    LogCapture m_log;
    FakeGraphics m_graphics;
    long long m_mediaTime = 0;
    bool m_haveMediaTime = true;
    unsigned char m_result = 1;
    std::vector<unsigned long long> m_calls;  // armed time seen by each callback
    std::deque<unsigned long long> m_next;    // begins the callback arms next
    CTimerManager m_manager;
};

// ---- Arming ----------------------------------------------------------------

struct ArmCase {
    const char* name;
    long long mediaTime;
    unsigned long long begin;
    unsigned long long end;
    long long timeStamp;
    bool bandMode;
    bool result;
    double delay;     // > 0: a timer of this many seconds; 0: callback at once; < 0: nothing
    const char* log;  // a line SetTimer must write, or ""
};

class ArmTest : public TimerManagerTest, public ::testing::WithParamInterface<ArmCase> {};

TEST_P(ArmTest, TurnsDocumentTimeIntoDelay)
{
    const ArmCase& c = GetParam();
    m_mediaTime = c.mediaTime;
    m_manager.SetBandMode(c.bandMode);

    EXPECT_EQ(c.result, m_manager.SetTimer(c.begin, c.end, c.timeStamp));

    EXPECT_TRUE(!*c.log || m_log.Has(c.log)) << m_log.Dump();
    if (c.delay > 0) {
        ASSERT_NE(nullptr, m_graphics.Live());
        EXPECT_EQ(std::vector<double>{c.delay}, m_graphics.Live()->m_periods);
        EXPECT_EQ(c.begin, m_manager.GetTimerTimeInfo());
        EXPECT_TRUE(m_calls.empty());
    } else {
        EXPECT_EQ(0, m_graphics.m_created);
        EXPECT_EQ(c.delay == 0 ? 1u : 0u, m_calls.size());
    }
}

INSTANTIATE_TEST_SUITE_P(
    Timer, ArmTest,
    ::testing::Values(
        ArmCase{"Ahead", 4000, 5000, 8000, 0, false, true, 1.0,
                "Timing_Info: videoTime: [4000] ms, timeToSync : [5000] ms, eTime : [8000] ms, tStamp=[0]"},
        ArmCase{"BeginLate", 6000, 5000, 8000, 0, false, true, 0, "Timing_Info: beginTime late by = [1000]"},
        ArmCase{"BeginNow", 5000, 5000, 8000, 0, false, true, 0,
                "Special case where time interval is zero, calling timer callback function!"},
        ArmCase{"EndPassed", 8001, 5000, 8000, 0, false, false, -1,
                "Current time is greater than the end time of subtitle; returning!!!"},
        ArmCase{"EndNow", 8000, 5000, 8000, 0, false, true, 0, "Timing_Info: beginTime late by = [3000]"},
        ArmCase{"InbandTooFar", 0, 700000, 800000, 0, true, false, -1,
                "Presentation time of current inband data is very late: [700.000000 seconds]. "
                "Discarding this subtitle."},
        ArmCase{"InbandAtLimit", 0, 600000, 800000, 0, true, true, 600.0, "Adding timer for: [600.000000] seconds"},
        ArmCase{"OutOfBandFar", 0, 700000, 800000, 0, false, true, 700.0, ""},
        ArmCase{"NegativeTimeStamp", 7000, 6000, 8000, -2000, false, true, 1.0,
                "Timing_Info: videoTime: [5000] ms, timeToSync : [6000] ms, eTime : [8000] ms, tStamp=[-2000]"},
        // Document time below zero must compare signed, not wrap.
        ArmCase{"NowBelowZero", 2000, 0, 1000, -10000, false, true, 8.0, ""}),
    TTMLTest::RowName());

TEST_F(TimerManagerTest, RearmingKeepsTheTimerAndExpiryReturnsTheCallbackResult)
{
    m_mediaTime = 1000;
    ASSERT_TRUE(m_manager.SetTimer(2000, 3000, 0));
    FakeTimer* pTimer = m_graphics.Live();
    ASSERT_TRUE(m_manager.SetTimer(4500, 5000, 0));
    EXPECT_EQ(1, m_graphics.m_created);
    EXPECT_EQ(pTimer, m_graphics.Live());
    EXPECT_EQ((std::vector<double>{1.0, 3.5}), pTimer->m_periods);
    EXPECT_TRUE(m_log.Has("Updating timer for: [3.500000] seconds"));

    EXPECT_EQ(1, pTimer->Fire());
    m_result = 0;
    EXPECT_EQ(0, pTimer->Fire());
    EXPECT_EQ((std::vector<unsigned long long>{4500, 4500}), m_calls);
}

// A late record stops the timer and calls back at once, on the same thread
// with the manager's mutex held; the callback may arm again from there, and
// late records chain until one lies ahead.
TEST_F(TimerManagerTest, ZeroDelayStopsTheTimerAndCallsBackWhichMayArmAgain)
{
    ASSERT_TRUE(m_manager.SetTimer(2000, 3000, 0));
    m_mediaTime = 10000;
    m_next = {8000, 9000, 12000};
    ASSERT_TRUE(m_manager.SetTimer(7000, 11000, 0));

    EXPECT_EQ(1, m_graphics.m_last.m_stops);
    // The stop cleared the timer data before the callbacks saw it.
    EXPECT_EQ((std::vector<unsigned long long>{0, 0, 0}), m_calls);
    ASSERT_TRUE(m_manager.IsTimerAdded());
    EXPECT_EQ(12000u, m_manager.GetTimerTimeInfo());
    EXPECT_EQ(std::vector<double>{2.0}, m_graphics.Live()->m_periods);
}

TEST_F(TimerManagerTest, WithoutMediaTimeOrTimerNothingIsArmed)
{
    m_haveMediaTime = false;
    EXPECT_FALSE(m_manager.SetTimer(1000, 2000, 0));
    EXPECT_FALSE(m_manager.SyncCurrentSubtitles());
    EXPECT_FALSE(m_manager.SetFlashInterval(2000, 0));
    EXPECT_EQ(3, m_log.Count("Error in getting current video time", DLOG_WARN));
    EXPECT_EQ(0, m_graphics.m_created);
    EXPECT_TRUE(m_calls.empty());

    m_haveMediaTime = true;
    m_graphics.m_refuse = true;
    EXPECT_FALSE(m_manager.SetTimer(5000, 6000, 0));
    EXPECT_TRUE(m_log.Has("m_pTimer is Null", DLOG_ERROR));
    EXPECT_FALSE(m_manager.IsTimerAdded());
}

// ---- Re-arming a running timer: resynchronising and flashing ----------------

enum class Retime { Sync, Flash };

struct RetimeCase {
    const char* name;
    Retime op;
    unsigned long long armed;  // [armed, 20000] armed at media time 0
    long long timeStamp;
    bool stopped;         // the timer was stopped first (a late record's zero delay does that)
    long long mediaTime;  // when asked
    double period;        // the new period in seconds; 0: refused
};

class RetimeTest : public TimerManagerTest, public ::testing::WithParamInterface<RetimeCase> {};

TEST_P(RetimeTest, ChangesThePeriodOnlyWhenDue)
{
    const RetimeCase& c = GetParam();
    ASSERT_TRUE(m_manager.SetTimer(c.armed, 20000, c.timeStamp));
    if (c.stopped)
        m_manager.StopTimer();
    m_mediaTime = c.mediaTime;
    EXPECT_EQ(c.period > 0, c.op == Retime::Sync ? m_manager.SyncCurrentSubtitles()
                                                 : m_manager.SetFlashInterval(20000, c.timeStamp));
    ASSERT_NE(nullptr, m_graphics.Live());
    const std::vector<double>& periods = m_graphics.Live()->m_periods;
    if (c.period > 0) {
        EXPECT_DOUBLE_EQ(c.period, periods.back());
    } else {
        EXPECT_EQ(1u, periods.size());
    }
    if (c.op == Retime::Sync) {
        EXPECT_EQ(c.armed, m_manager.GetTimerTimeInfo());
    }
}

INSTANTIATE_TEST_SUITE_P(
    Timer, RetimeTest,
    ::testing::Values(RetimeCase{"SyncOnTime", Retime::Sync, 10000, 0, false, 10000, 0},
                      RetimeCase{"SyncLate", Retime::Sync, 10000, 0, false, 10500, 0},
                      RetimeCase{"SyncEarlyWithinTolerance", Retime::Sync, 10000, 0, false, 9995, 0},
                      RetimeCase{"SyncEarlyAtTolerance", Retime::Sync, 10000, 0, false, 9990, 0},
                      RetimeCase{"SyncEarlyPastTolerance", Retime::Sync, 10000, 0, false, 9989, 0.011},
                      RetimeCase{"SyncFarTooEarly", Retime::Sync, 10000, 0, false, 9900, 0.1},
                      // now = -2: within 10 ms of 5, but below zero
                      RetimeCase{"SyncNegativeNow", Retime::Sync, 5, -100, false, 98, 0.007},
                      RetimeCase{"FlashRemaining299", Retime::Flash, 1000, 0, false, 19701, 0},
                      RetimeCase{"FlashRemaining300", Retime::Flash, 1000, 0, false, 19700, 0.3},
                      RetimeCase{"FlashEnded", Retime::Flash, 1000, 0, false, 21000, 0},
                      RetimeCase{"FlashLongAhead", Retime::Flash, 1000, 0, false, 1000, 0.3},
                      RetimeCase{"FlashTimeStamp", Retime::Flash, 1000, 500, false, 19200, 0.3},
                      RetimeCase{"FlashLateRecord", Retime::Flash, 1000, 0, true, 1500, 0.3}),
    TTMLTest::RowName());

// ---- Pause, resume, stop -----------------------------------------------------

// A pause holds whatever timer comes next, however the engine rebuilds it:
// one armed while paused or after a stop starts paused, and a late one does
// not call back before the resume.
TEST_F(TimerManagerTest, PauseHoldsTimersArmedWhilePaused)
{
    m_mediaTime = 1000;
    m_manager.PauseTimer();
    ASSERT_TRUE(m_manager.SetTimer(5000, 9000, 0));
    EXPECT_EQ(1, m_graphics.Live()->m_pauses - m_graphics.Live()->m_resumes) << "made while paused";
    m_manager.StopTimer();
    ASSERT_TRUE(m_manager.SetTimer(5000, 9000, 0));
    EXPECT_EQ(1, m_graphics.Live()->m_pauses - m_graphics.Live()->m_resumes) << "made after a stop";
    m_mediaTime = 6000;
    ASSERT_TRUE(m_manager.SetTimer(4000, 9000, 0));
    EXPECT_TRUE(m_calls.empty()) << "late while paused";
    FakeTimer* pTimer = m_graphics.Live();
    ASSERT_NE(nullptr, pTimer);
    EXPECT_EQ(1, pTimer->m_pauses - pTimer->m_resumes);
    EXPECT_EQ(4000u, m_manager.GetTimerTimeInfo());

    m_manager.ResumeTimer();
    EXPECT_EQ(0, pTimer->m_pauses - pTimer->m_resumes);
    pTimer->Fire();
    EXPECT_EQ(std::vector<unsigned long long>{4000}, m_calls);
}

TEST_F(TimerManagerTest, StopForgetsTimerTimeAndShownRecord)
{
    m_manager.StopTimer();
    EXPECT_FALSE(m_log.Has("Stopping timer!")) << "nothing to stop";
    int shown = 0;
    ASSERT_TRUE(m_manager.SetTimer(1000, 5000, 250));
    m_manager.SetRenderedSubData(&shown);
    EXPECT_EQ(&shown, m_manager.GetRenderedSubData());

    m_manager.StopTimer();
    EXPECT_TRUE(m_log.Has("Stopping timer!"));
    EXPECT_FALSE(m_manager.IsTimerAdded());
    EXPECT_EQ(1, m_graphics.m_last.m_stops);
    EXPECT_EQ(0u, m_manager.GetTimerTimeInfo());
    EXPECT_EQ(nullptr, m_manager.GetRenderedSubData());

    // The next arming makes a fresh timer.
    ASSERT_TRUE(m_manager.SetTimer(2000, 5000, 0));
    EXPECT_EQ(2, m_graphics.m_created);
}

}  // namespace
