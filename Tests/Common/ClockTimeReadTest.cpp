#include "Util.h"

#include <gtest/gtest.h>

#include <ostream>
#include <random>
#include <string>

namespace {

// The common hh:mm:ss[.fff] form is read in place; it must give exactly what
// the clock-time path gives for the same expression split into its parts.
unsigned long long ByParts(const std::string& expr, double frameRate)
{
    return TTML::ConvertClockTimeToMS(TTML::StrSplit(expr, ":"), frameRate);
}

struct ReadCase {
    const char* expr;
    unsigned long long ms;
};

void PrintTo(const ReadCase& c, std::ostream* os)
{
    *os << '"' << c.expr << '"';
}

class PlainClockTime : public ::testing::TestWithParam<ReadCase> {};

TEST_P(PlainClockTime, MatchesTheClockTimePath)
{
    const ReadCase& c = GetParam();
    EXPECT_EQ(c.ms, TTML::ConvertTimeExpressionToMS(c.expr, 25, 0));
    EXPECT_EQ(c.ms, ByParts(c.expr, 25));
}

INSTANTIATE_TEST_SUITE_P(
    Util, PlainClockTime,
    ::testing::Values(ReadCase{"00:00:05.402", 5402}, ReadCase{"00:00:00.001", 1}, ReadCase{"00:00:00.1", 100},
                      ReadCase{"00:00:00.0129", 12}, ReadCase{"01:02:03", 3723000},
                      ReadCase{"10:59:59.999", 39599999}, ReadCase{"1000000:00:00", 3600000000000ULL},
                      ReadCase{"0000:00:01", 1000}, ReadCase{"00:99:99", 6039000}, ReadCase{"7:00:00", 25200000},
                      ReadCase{"00:00:01.50000000000000001", 1500}),
    [](const ::testing::TestParamInfo<ReadCase>& i) { return "Case" + std::to_string(i.index); });

TEST(PlainClockTimeRandom, MatchesTheClockTimePath)
{
    std::mt19937 rng(99);
    for (int i = 0; i < 20000; ++i) {
        std::string expr = std::to_string(rng() % 1000) + ":" + std::to_string(10 + rng() % 50) + ":" +
                           std::to_string(10 + rng() % 50);
        if (rng() % 4 != 0)
            expr += "." + std::to_string(rng() % 100000);
        ASSERT_EQ(ByParts(expr, 0), TTML::ConvertTimeExpressionToMS(expr, 0, 0)) << expr;
    }
}

}  // namespace
