#include "Util.h"
#include "RowPrinter.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

namespace {

using TTML::IsDigits;
using TTML::IsRealNumber;

template <typename Case>
std::string CaseName(const ::testing::TestParamInfo<Case>& info)
{
    return info.param.name;
}

// ---- Trimming -------------------------------------------------------------

struct TrimCase {
    const char* name;
    std::string input;
    std::string left;
    std::string right;
};

class Trim : public ::testing::TestWithParam<TrimCase> {};

TEST_P(Trim, RemovesOnlySpaceTabLineFeedCarriageReturn)
{
    const TrimCase& c = GetParam();
    std::string left = c.input;
    std::string right = c.input;
    TTML::StrTrimLeft(left);
    TTML::StrTrimRight(right);
    EXPECT_EQ(c.left, left);
    EXPECT_EQ(c.right, right);
}

INSTANTIATE_TEST_SUITE_P(
    Strings, Trim,
    ::testing::Values(TrimCase{"Empty", "", "", ""}, TrimCase{"AllFourWhitespaces", " \t\n\r", "", ""},
                      TrimCase{"BothEnds", " \t a b \r\n", "a b \r\n", " \t a b"},
                      TrimCase{"InnerBlanksKept", "a  b", "a  b", "a  b"},
                      TrimCase{"FormFeedIsNotWhitespace", "\fabc\f", "\fabc\f", "\fabc\f"},
                      TrimCase{"VerticalTabIsNotWhitespace", "\v x \v", "\v x \v", "\v x \v"},
                      TrimCase{"StopsAtFormFeed", " \f ", "\f ", " \f"}),
    CaseName<TrimCase>);

TEST(StrToLower, ChangesOnlyAsciiCapitals)
{
    std::string text = "AbC-Z_09 xY\xC4";
    TTML::StrToLower(text);
    EXPECT_EQ("abc-z_09 xy\xC4", text);
}

// ---- Character classes ------------------------------------------------------

struct ClassCase {
    const char* name;
    std::string input;
    bool digits;
    bool real;
};

class CharacterClass : public ::testing::TestWithParam<ClassCase> {};

TEST_P(CharacterClass, DigitsAndRealNumbers)
{
    const ClassCase& c = GetParam();
    EXPECT_EQ(c.digits, IsDigits(c.input));
    EXPECT_EQ(c.real, IsRealNumber(c.input));
}

INSTANTIATE_TEST_SUITE_P(
    Strings, CharacterClass,
    ::testing::Values(ClassCase{"Empty", "", true, true}, ClassCase{"AllDigits", "0123456789", true, true},
                      ClassCase{"Decimal", "12.5", false, true}, ClassCase{"TwoFullStops", "1.2.3", false, true},
                      ClassCase{"LoneFullStop", ".", false, false}, ClassCase{"LeadingFullStop", ".5", false, false},
                      ClassCase{"TrailingFullStop", "10.", false, false},
                      ClassCase{"LeadingBlankBeforeFullStop", " .5", false, false},
                      ClassCase{"LeadingBlank", " 10", false, false}, ClassCase{"TrailingBlank", "10 ", false, false},
                      ClassCase{"OnlyBlanks", "  ", false, false}, ClassCase{"Letter", "12a", false, false},
                      ClassCase{"Sign", "-5", false, false}, ClassCase{"Exponent", "1e3", false, false},
                      ClassCase{"Comma", "1,5", false, false}),
    CaseName<ClassCase>);

// ---- Splitting --------------------------------------------------------------

struct SplitCase {
    const char* name;
    std::string text;
    std::string delimiter;
    std::vector<std::string> pieces;
};

class Split : public ::testing::TestWithParam<SplitCase> {};

TEST_P(Split, TrimsTheTextThenCutsAtEachWholeDelimiter)
{
    const SplitCase& c = GetParam();
    EXPECT_EQ(c.pieces, TTML::StrSplit(c.text, c.delimiter));
}

INSTANTIATE_TEST_SUITE_P(
    Strings, Split,
    ::testing::Values(SplitCase{"EmptyText", "", " ", {""}}, SplitCase{"OnlyBlanks", "  ", " ", {""}},
                      SplitCase{"DoubleSpaceGivesEmptyPiece", "a  b", " ", {"a", "", "b"}},
                      SplitCase{"Colon", "10:20", ":", {"10", "20"}},
                      SplitCase{"EndsTrimmedFirst", " 1 2 ", " ", {"1", "2"}},
                      SplitCase{"TrailingDelimiter", "a,", ",", {"a", ""}},
                      SplitCase{"LeadingDelimiter", ":a", ":", {"", "a"}},
                      SplitCase{"NoDelimiter", "abc", ",", {"abc"}},
                      SplitCase{"WholeSubstring", "a::b:c", "::", {"a", "b:c"}},
                      SplitCase{"PiecesNotTrimmed", "1, 2 ,3", ",", {"1", " 2 ", "3"}},
                      SplitCase{"FormFeedKept", "\fa b", " ", {"\fa", "b"}}),
    CaseName<SplitCase>);

struct FirstOfCase {
    const char* name;
    std::string text;
    std::string chars;
    bool found;
    std::string first;
    std::string second;
};

class FirstOf : public ::testing::TestWithParam<FirstOfCase> {};

TEST_P(FirstOf, SplitsBeforeFirstCharacterOfSet)
{
    const FirstOfCase& c = GetParam();
    std::string first = "untouched1";
    std::string second = "untouched2";
    EXPECT_EQ(c.found, TTML::SplitStrByFindFirstOf(c.text, c.chars, first, second));
    EXPECT_EQ(c.first, first);
    EXPECT_EQ(c.second, second);
}

INSTANTIATE_TEST_SUITE_P(
    Strings, FirstOf,
    ::testing::Values(FirstOfCase{"LeftTrimmedNumberAndMetric", "  12.5ms", "hmsft", true, "12.5", "ms"},
                      FirstOfCase{"NoMatchTouchesNothing", "abc", "x", false, "untouched1", "untouched2"},
                      FirstOfCase{"EmptyText", "", "x", false, "untouched1", "untouched2"},
                      FirstOfCase{"MatchAtFirstCharacter", "h12", "hmsft", true, "", "h12"},
                      FirstOfCase{"RightSideKeepsBlanks", "\t5s ", "hmsft", true, "5", "s "},
                      FirstOfCase{"FirstOfAnyInSet", "9tfs", "sf", true, "9t", "fs"}),
    CaseName<FirstOfCase>);

// ---- Clock --------------------------------------------------------------------

uint32_t WallClockMs()
{
    using namespace std::chrono;
    return static_cast<uint32_t>(duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count());
}

TEST(TimeOfDay, IsWallClockMillisecondsModulo32Bits)
{
    // Read between two wall-clock reads (modulo 2^32, so wrap-around holds).
    const uint32_t before = WallClockMs();
    const uint32_t value = TTML::TTMLGetTimeofDay();
    const uint32_t after = WallClockMs();
    EXPECT_LE(static_cast<uint32_t>(value - before), static_cast<uint32_t>(after - before));
}

}  // namespace
