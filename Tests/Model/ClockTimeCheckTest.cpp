#include "TestAttrHandler.h"
#include "RowPrinter.h"

#include <boost/regex.hpp>
#include <gtest/gtest.h>

#include <random>
#include <string>

namespace {

using TTML::ERR_IGNORE;
using TTML::ERR_NONE;

// The clock-time check answers for common values without the regular
// expression; the answer must always be the expression's.
const boost::regex& ClockTimePattern()
{
    static const boost::regex pattern("(\\d\\d+)(:)([0-5]\\d)(:)([0-5]\\d)((\\.\\d+)|((:)\\d+(\\.\\d+)?))?");
    return pattern;
}

int Expected(const std::string& value)
{
    return boost::regex_match(value, ClockTimePattern()) ? ERR_NONE : ERR_IGNORE;
}

struct ShapeCase {
    const char* name;
    const char* value;
    int code;
};

class ClockTimeShape : public ::testing::TestWithParam<ShapeCase> {};

TEST_P(ClockTimeShape, AgreesWithThePattern)
{
    const ShapeCase& c = GetParam();
    std::string value = c.value;
    EXPECT_EQ(c.code, TestAttrHandler::t_ValidateClockTimeFormat(value));
    EXPECT_EQ(c.code, Expected(c.value)) << "table entry disagrees with the pattern";
    EXPECT_EQ(c.value, value) << "the check must not change the value";
}

INSTANTIATE_TEST_SUITE_P(
    AttrHandler, ClockTimeShape,
    ::testing::Values(ShapeCase{"Plain", "00:00:05", ERR_NONE}, ShapeCase{"Fraction", "00:00:05.402", ERR_NONE},
                      ShapeCase{"LongFraction", "01:02:03.1234567", ERR_NONE},
                      ShapeCase{"ManyHourDigits", "123456:59:59", ERR_NONE},
                      ShapeCase{"Frames", "00:00:05:12", ERR_NONE}, ShapeCase{"SubFrames", "00:00:05:12.5", ERR_NONE},
                      ShapeCase{"OneHourDigit", "0:00:05", ERR_IGNORE},
                      ShapeCase{"MinutesSixty", "00:60:05", ERR_IGNORE},
                      ShapeCase{"SecondsSixty", "00:00:60", ERR_IGNORE},
                      ShapeCase{"OneSecondsDigit", "00:00:5", ERR_IGNORE},
                      ShapeCase{"ThreeSecondsDigits", "00:00:050", ERR_IGNORE},
                      ShapeCase{"BareFullStop", "00:00:05.", ERR_IGNORE},
                      ShapeCase{"TwoFractions", "00:00:05.1.2", ERR_IGNORE},
                      ShapeCase{"TrailingLetter", "00:00:05.4s", ERR_IGNORE},
                      ShapeCase{"TrailingBlank", "00:00:05 ", ERR_IGNORE},
                      ShapeCase{"LeadingBlank", " 00:00:05", ERR_IGNORE},
                      ShapeCase{"NonAsciiDigit", "00:00:0\xd9\xa5", ERR_IGNORE},
                      ShapeCase{"OffsetTime", "5.4s", ERR_IGNORE}, ShapeCase{"Empty", "", ERR_IGNORE},
                      ShapeCase{"TwoFields", "00:05", ERR_IGNORE}),
    TTMLTest::RowName());

// Values built from clock-time pieces with random faults: digits out of
// range, missing or extra digits, stray separators and characters.
TEST(ClockTimeShapeRandom, AgreesWithThePatternOnNearMisses)
{
    std::mt19937 rng(20240611);
    const std::string pieces[] = {"0", "5", "6", "9", "00", "59", "60", "99", "123", ":", ".", "x", " ", ""};
    int accepted = 0;
    for (int i = 0; i < 20000; ++i) {
        std::string value;
        const int count = 1 + static_cast<int>(rng() % 8);
        for (int k = 0; k < count; ++k)
            value += pieces[rng() % (sizeof(pieces) / sizeof(pieces[0]))];
        // Mostly well-formed, so that both outcomes are well represented.
        if (rng() % 2 == 0)
            value = std::to_string(rng() % 200) + ":" + pieces[rng() % 9] + ":" + pieces[rng() % 9] +
                    (rng() % 2 ? "." + pieces[rng() % 9] : "");
        std::string copy = value;
        const int code = TestAttrHandler::t_ValidateClockTimeFormat(copy);
        ASSERT_EQ(Expected(value), code) << '"' << value << '"';
        accepted += code == ERR_NONE;
    }
    EXPECT_GT(accepted, 300);
    EXPECT_GT(20000 - accepted, 300);
}

}  // namespace
