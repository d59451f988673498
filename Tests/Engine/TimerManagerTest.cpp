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
    }
    IRootContainer* GetRootContainer() override { return nullptr; }

    FakeTimer* Live() { return m_timer.get(); }

    std::unique_ptr<FakeTimer> m_timer;
    FakeTimer m_last;  // copy of the last destroyed timer
    int m_created = 0;
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

// ---- From document time to timer period ------------------------------------

// Arming for a record [begin, end] at the media time; or, once armed for it at
// media time 0, resynchronising after an early expiry or switching to the
// flash interval at the media time.
enum class Op { Arm, Sync, Flash };

struct TimingCase {
    const char* name;
    Op op;
    unsigned long long begin;
    unsigned long long end;
    long long timeStamp;
    long long mediaTime;
    bool result;
    // The timer's period afterwards in seconds. Arm: 0 called back at once,
    // < 0 nothing; Sync and Flash: 0 unchanged.
    double period;
    const char* log = "";      // a line that must be written
    bool bandMode = false;     // Arm
    bool stoppedFirst = false; // Sync, Flash: as a late record's zero delay does
};

class TimingTest : public TimerManagerTest, public ::testing::WithParamInterface<TimingCase> {};

TEST_P(TimingTest, TurnsDocumentTimeIntoAPeriod)
{
    const TimingCase& c = GetParam();
    m_manager.SetBandMode(c.bandMode);
    if (c.op != Op::Arm) {
        ASSERT_TRUE(m_manager.SetTimer(c.begin, c.end, c.timeStamp));
        if (c.stoppedFirst)
            m_manager.StopTimer();
    }
    m_mediaTime = c.mediaTime;
    EXPECT_EQ(c.result, c.op == Op::Arm    ? m_manager.SetTimer(c.begin, c.end, c.timeStamp)
                        : c.op == Op::Sync ? m_manager.SyncCurrentSubtitles()
                                           : m_manager.SetFlashInterval(c.end, c.timeStamp));
    EXPECT_TRUE(!*c.log || m_log.Has(c.log)) << m_log.Dump();
    if (c.op == Op::Arm && c.period <= 0) {
        EXPECT_EQ(0, m_graphics.m_created);
        EXPECT_EQ(c.period == 0 ? 1u : 0u, m_calls.size());
        return;
    }
    ASSERT_NE(nullptr, m_graphics.Live());
    const std::vector<double>& periods = m_graphics.Live()->m_periods;
    if (c.period > 0) {
        EXPECT_DOUBLE_EQ(c.period, periods.back());
    }
    EXPECT_EQ(c.op == Op::Arm || c.period == 0 || c.stoppedFirst ? 1u : 2u, periods.size());
    if (c.op != Op::Flash) {
        EXPECT_EQ(c.begin, m_manager.GetTimerTimeInfo());
    }
    EXPECT_TRUE(m_calls.empty());
}

INSTANTIATE_TEST_SUITE_P(
    Timer, TimingTest,
    ::testing::Values(
        TimingCase{"Ahead", Op::Arm, 5000, 8000, 0, 4000, true, 1.0,
                   "Timing_Info: videoTime: [4000] ms, timeToSync : [5000] ms, eTime : [8000] ms, tStamp=[0]"},
        TimingCase{"BeginLate", Op::Arm, 5000, 8000, 0, 6000, true, 0, "Timing_Info: beginTime late by = [1000]"},
        TimingCase{"BeginNow", Op::Arm, 5000, 8000, 0, 5000, true, 0,
                   "Special case where time interval is zero, calling timer callback function!"},
        TimingCase{"EndPassed", Op::Arm, 5000, 8000, 0, 8001, false, -1,
                   "Current time is greater than the end time of subtitle; returning!!!"},
        TimingCase{"EndNow", Op::Arm, 5000, 8000, 0, 8000, true, 0, "Timing_Info: beginTime late by = [3000]"},
        TimingCase{"InbandTooFar", Op::Arm, 700000, 800000, 0, 0, false, -1,
                   "Presentation time of current inband data is very late: [700.000000 seconds]. "
                   "Discarding this subtitle.",
                   true},
        TimingCase{"InbandAtLimit", Op::Arm, 600000, 800000, 0, 0, true, 600.0, "", true},
        TimingCase{"OutOfBandFar", Op::Arm, 700000, 800000, 0, 0, true, 700.0},
        TimingCase{"NegativeTimeStamp", Op::Arm, 6000, 8000, -2000, 7000, true, 1.0,
                   "Timing_Info: videoTime: [5000] ms, timeToSync : [6000] ms, eTime : [8000] ms, tStamp=[-2000]"},
        // Document time below zero must compare signed, not wrap.
        TimingCase{"NowBelowZero", Op::Arm, 0, 1000, -10000, 2000, true, 8.0},
        // Resynchronising: only an expiry more than 10 ms early re-arms.
        TimingCase{"SyncOnTime", Op::Sync, 10000, 20000, 0, 10000, false, 0},
        TimingCase{"SyncLate", Op::Sync, 10000, 20000, 0, 10500, false, 0},
        TimingCase{"SyncEarlyAtTolerance", Op::Sync, 10000, 20000, 0, 9990, false, 0},
        TimingCase{"SyncEarlyPastTolerance", Op::Sync, 10000, 20000, 0, 9989, true, 0.011},
        TimingCase{"SyncFarTooEarly", Op::Sync, 10000, 20000, 0, 9900, true, 0.1},
        // now = -2: within 10 ms of 5, but below zero
        TimingCase{"SyncNegativeNow", Op::Sync, 5, 20000, -100, 98, true, 0.007},
        // Flashing: granted while 300 ms of the record remain.
        TimingCase{"FlashRemaining299", Op::Flash, 1000, 20000, 0, 19701, false, 0},
        TimingCase{"FlashRemaining300", Op::Flash, 1000, 20000, 0, 19700, true, 0.3},
        TimingCase{"FlashEnded", Op::Flash, 1000, 20000, 0, 21000, false, 0},
        TimingCase{"FlashLongAhead", Op::Flash, 1000, 20000, 0, 1000, true, 0.3},
        TimingCase{"FlashTimeStamp", Op::Flash, 1000, 20000, 500, 19200, true, 0.3},
        TimingCase{"FlashLateRecord", Op::Flash, 1000, 20000, 0, 1500, true, 0.3, "", false, true}),
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
