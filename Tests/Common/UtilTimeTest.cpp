#include "LogCapture.h"
#include "Util.h"
#include "RowPrinter.h"

#include <gtest/gtest.h>

namespace {

struct TimeCase {
    const char* name;
    std::string expr;
    double frameRate;
    int tickRate;
    unsigned long long ms;
    std::string error;  // expected error message, empty when none
};

class TimeExpression : public ::testing::TestWithParam<TimeCase> {};

TEST_P(TimeExpression, ConvertsToTruncatedMilliseconds)
{
    const TimeCase& c = GetParam();
    LogCapture log;
    EXPECT_EQ(c.ms, TTML::ConvertTimeExpressionToMS(c.expr, c.frameRate, c.tickRate));
    if (c.error.empty()) {
        EXPECT_EQ(0, log.CountContaining("Invalid time matric")) << log.Dump();
    } else {
        EXPECT_EQ(1, log.Count(c.error, DLOG_ERROR)) << log.Dump();
    }
}

TimeCase Clock(const char* name, const char* expr, double frameRate, unsigned long long ms)
{
    return TimeCase{name, expr, frameRate, 0, ms, ""};
}

INSTANTIATE_TEST_SUITE_P(
    Clock, TimeExpression,
    ::testing::Values(Clock("HoursMinutesSeconds", "01:02:03", 0, 3723000),
                      Clock("Fraction", "00:00:01.5", 0, 1500),
                      Clock("FractionTruncated", "00:00:00.0129", 0, 12),
                      Clock("FractionJustBelowOneSecond", "00:00:00.9999", 0, 999),
                      Clock("Frames", "00:00:01:12", 25, 1480),
                      Clock("SubFramesDropped", "00:00:01:12.1", 25, 1480),
                      Clock("OneFrameAt30Truncated", "00:00:00:01", 30, 33),
                      Clock("FractionalFrameRate", "00:00:01:12", 30000.0 / 1001, 1400),
                      Clock("EmptyFramesPart", "00:00:01:", 25, 1000),
                      Clock("FramesAtZeroRateCountNothing", "00:00:01:12", 0, 1000),
                      Clock("BeyondThirtyTwoBits", "1000000:00:00", 0, 3600000000000ULL),
                      Clock("ExpressionTrimmed", " \t01:00:00\r\n", 0, 3600000),
                      Clock("MinutesSeconds", "01:30", 0, 90000),
                      Clock("FractionInexactInBinary", "00:00:32.620", 0, 32620),
                      Clock("NonNumericPartsCountZero", "aa:bb:cc", 0, 0),
                      Clock("LeadingDigitsOfEachPart", "1x:2y:3.5z", 0, 3723500)),
    TTMLTest::RowName());

INSTANTIATE_TEST_SUITE_P(
    Offset, TimeExpression,
    ::testing::Values(TimeCase{"Seconds", "1.5s", 0, 0, 1500, ""},
                      TimeCase{"Milliseconds", "500ms", 0, 0, 500, ""},
                      TimeCase{"MillisecondsTruncated", "12.9ms", 0, 0, 12, ""},
                      TimeCase{"SubMillisecondTruncated", "0.0019s", 0, 0, 1, ""},
                      TimeCase{"FractionInexactInBinary", "32.62s", 0, 0, 32620, ""},
                      TimeCase{"FramesInexactInBinary", "3f", 30, 0, 100, ""},
                      TimeCase{"Minutes", "2m", 0, 0, 120000, ""},
                      TimeCase{"FractionalMinutes", "1.5m", 0, 0, 90000, ""},
                      TimeCase{"Hours", "1h", 0, 0, 3600000, ""},
                      TimeCase{"Frames", "12f", 24, 0, 500, ""},
                      TimeCase{"Ticks", "10000000t", 0, 10000000, 1000, ""},
                      TimeCase{"TicksTruncated", "2t", 0, 3, 666, ""},
                      TimeCase{"FramesAtZeroRate", "12f", 0, 0, 0, ""},
                      TimeCase{"TicksAtZeroRate", "12t", 0, 0, 0, ""},
                      TimeCase{"LeadingBlanksSkipped", "  2s", 0, 0, 2000, ""},
                      TimeCase{"NoMetric", "5", 0, 0, 0, ""},
                      TimeCase{"NoMetricCharacter", "5x", 0, 0, 0, ""},
                      TimeCase{"Empty", "", 0, 0, 0, ""},
                      TimeCase{"UnknownMetric", "5sec", 0, 0, 0, "Invalid time matric=sec"},
                      TimeCase{"HourFollowedByLetter", "5hx", 0, 0, 0, "Invalid time matric=hx"},
                      TimeCase{"MetricIsCaseSensitive", "5S", 0, 0, 0, ""},
                      TimeCase{"TrailingBlankSpoilsMetric", "2s ", 0, 0, 0, "Invalid time matric=s "},
                      TimeCase{"NegativeGivesZero", "-5s", 0, 0, 0, ""}),
    TTMLTest::RowName());

// The two-part and odd part counts only reach the clock converter directly;
// none of them may read past the parts given.
TEST(ClockTime, ReadsOnlyThePartsGiven)
{
    EXPECT_EQ(0u, TTML::ConvertClockTimeToMS({}, 25));
    EXPECT_EQ(2500u, TTML::ConvertClockTimeToMS({"2.5"}, 25));
    EXPECT_EQ(62000u, TTML::ConvertClockTimeToMS({"1", "2"}, 25));
    EXPECT_EQ(3723000u, TTML::ConvertClockTimeToMS({"1", "2", "3"}, 25));
}

}  // namespace
