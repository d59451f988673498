#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "CMediaClock.h"
#include "RowPrinter.h"

using TTML::CMediaClock;

namespace {

enum Op { NONE, START, STOP, PAUSE, RESUME, SEEK };

struct Step {
    long long advance;  // fake ms passed before the operation
    Op op;
    long long arg;      // seek position
    bool result;        // expected result of PAUSE/RESUME/SEEK
    long long expect;   // expected position afterwards; -1: no media time (stopped)
};

struct ClockCase {
    const char* name;
    std::vector<Step> steps;
};

class MediaClockTest : public ::testing::TestWithParam<ClockCase> {};

TEST_P(MediaClockTest, FollowsTheFakeTime)
{
    long long fakeNow = 1000000;  // any origin: only differences matter
    CMediaClock clock([&fakeNow] { return fakeNow; });
    int index = 0;
    for (const Step& step : GetParam().steps) {
        SCOPED_TRACE("step " + std::to_string(index++));
        fakeNow += step.advance;
        switch (step.op) {
        case NONE: break;
        case START: clock.Start(); break;
        case STOP: clock.Stop(); break;
        case PAUSE: EXPECT_EQ(step.result, clock.Pause()); break;
        case RESUME: EXPECT_EQ(step.result, clock.Resume()); break;
        case SEEK: EXPECT_EQ(step.result, clock.Seek(step.arg)); break;
        }
        long long now = -12345;
        bool hasTime = clock.Now(now);
        if (step.expect < 0) {
            EXPECT_FALSE(hasTime);
            EXPECT_TRUE(clock.IsStopped());
        } else {
            ASSERT_TRUE(hasTime);
            EXPECT_EQ(step.expect, now);
        }
    }
}

const ClockCase kClockCases[] = {
    {"StoppedUntilStart", {{0, NONE, 0, true, -1}, {100, START, 0, true, 0}, {250, NONE, 0, true, 250}}},
    {"PauseFreezes",
     {{0, START, 0, true, 0}, {100, PAUSE, 0, true, 100}, {500, NONE, 0, true, 100}, {0, PAUSE, 0, false, 100}}},
    {"ResumeContinuesFromThePausedPosition",
     {{0, START, 0, true, 0},
      {100, PAUSE, 0, true, 100},
      {1000, RESUME, 0, true, 100},
      {50, NONE, 0, true, 150},
      {0, RESUME, 0, false, 150}}},
    {"SeekWhileRunningJumpsAndKeepsRunning",
     {{0, START, 0, true, 0}, {100, SEEK, 5000, true, 5000}, {20, NONE, 0, true, 5020}, {0, SEEK, 0, true, 0},
      {5, NONE, 0, true, 5}}},
    {"SeekWhilePausedStaysPaused",
     {{0, START, 0, true, 0},
      {100, PAUSE, 0, true, 100},
      {0, SEEK, 7000, true, 7000},
      {300, NONE, 0, true, 7000},
      {0, RESUME, 0, true, 7000},
      {5, NONE, 0, true, 7005}}},
    {"StoppedRefusesEverythingButStart",
     {{0, START, 0, true, 0},
      {100, STOP, 0, true, -1},
      {0, SEEK, 10, false, -1},
      {0, PAUSE, 0, false, -1},
      {0, RESUME, 0, false, -1},
      {40, START, 0, true, 0}}},
    {"NegativeSeekRefused", {{0, START, 0, true, 0}, {40, SEEK, -1, false, 40}}},
    {"StartFromPausedRestartsRunning",
     {{0, START, 0, true, 0}, {100, PAUSE, 0, true, 100}, {0, START, 0, true, 0}, {10, NONE, 0, true, 10}}},
};

INSTANTIATE_TEST_SUITE_P(Scenarios, MediaClockTest, ::testing::ValuesIn(kClockCases),
                         TTMLTest::RowName());

}  // namespace
