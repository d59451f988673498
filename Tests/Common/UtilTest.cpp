// The string, time, colour and length helpers as one table: each row runs a
// helper from a known starting value and prints what it left, so accepted
// and refused inputs sit side by side.
#include "LogCapture.h"
#include "Util.h"
#include "RowPrinter.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <random>
#include <string>

namespace {

using TTML::TTMLColor;

std::string Num(double v)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.9g", v);
    return text;
}

// Starting colour of every conversion: "1,2,3,4" in a result means untouched.
const TTMLColor kSentinel{1, 2, 3, 4, false};

std::string Channels(const TTMLColor& c)  // alpha,red,green,blue
{
    return std::to_string(c.alpha) + "," + std::to_string(c.red) + "," + std::to_string(c.green) + "," +
           std::to_string(c.blue) + (c.defaultOpacity ? " default" : "");
}

TTMLColor Rgb16(const std::string& text)  // "red,green,blue" in 16 bits
{
    TTMLColor c = kSentinel;
    std::sscanf(text.c_str(), "%hu,%hu,%hu", &c.red, &c.green, &c.blue);
    return c;
}

std::string Pieces(const std::vector<std::string>& pieces)
{
    std::string out;
    for (const auto& p : pieces)
        out += "[" + p + "]";
    return out;
}

// ---- Adapters: (input, argument) -> printed result ----

std::string Trim(const std::string& in, const std::string&)
{
    std::string left = in, right = in;
    TTML::StrTrimLeft(left);
    TTML::StrTrimRight(right);
    return Pieces({left, right});
}

std::string Classes(const std::string& in, const std::string&)
{
    return std::string(TTML::IsDigits(in) ? "digits" : "-") + " " + (TTML::IsRealNumber(in) ? "real" : "-");
}

std::string Split(const std::string& in, const std::string& delimiter)
{
    return Pieces(TTML::StrSplit(in, delimiter));
}

std::string FirstOf(const std::string& in, const std::string& set)
{
    std::string first = "u1", second = "u2";
    const bool found = TTML::SplitStrByFindFirstOf(in, set, first, second);
    return (found ? "yes" : "no") + Pieces({first, second});
}

// Argument "frameRate tickRate". A clock time must give what its parts give
// through the clock-time path, however it is read.
std::string Time(const std::string& in, const std::string& rates)
{
    double frameRate = 0;
    int tickRate = 0;
    std::sscanf(rates.c_str(), "%lf %d", &frameRate, &tickRate);
    const unsigned long long ms = TTML::ConvertTimeExpressionToMS(in, frameRate, tickRate);
    std::string out = std::to_string(ms);
    const std::vector<std::string> parts = TTML::StrSplit(in, ":");
    if (parts.size() > 1 && TTML::ConvertClockTimeToMS(parts, frameRate) != ms)
        out += " but by parts " + std::to_string(TTML::ConvertClockTimeToMS(parts, frameRate));
    return out;
}

std::string Name(const std::string& in, const std::string&)
{
    std::string value = in;
    return (TTML::ConvertColorNameToColorCode(value) ? "known " : "unknown ") + value;
}

std::string Color(const std::string& in, const std::string&)
{
    TTMLColor out = kSentinel;
    TTML::ConvertDistributionColorType(in, out);
    return Channels(out);
}

std::string Hex(const std::string& in, const std::string&)
{
    std::string out = "fill:";
    TTML::ConvertColorToStringType(Rgb16(in), out);
    return out;
}

std::string Contrast(const std::string& in, const std::string&)
{
    TTMLColor out = kSentinel;
    TTML::ApplyContrastColor(out, Rgb16(in));
    return Channels(out);
}

// Cell factor 30, relative base 1080.
std::string Length(const std::string& in, const std::string&)
{
    double out = -1;
    const bool found = TTML::ConvertLengthType(in, 30, 1080, out);
    return (found ? "" : "refused ") + Num(out);
}

// Reference 1920 x 1080.
std::string Origin(const std::string& in, const std::string&)
{
    int x = -1, y = -1;
    std::pair<int&, int&> out(x, y);
    TTML::ConvertOriginExtentsType(in, {1920, 1080}, out);
    return std::to_string(x) + "," + std::to_string(y);
}

// Cells 10 wide and 20 high, the region 200 wide and 100 high, so every side
// shows which axis it was measured on. Printed top,right,bottom,left.
std::string Padding(const std::string& in, const std::string&)
{
    TTML::TTMLPadding out{-1, -1, -1, -1};
    TTML::ConvertDistributionPaddingType(in, TTML::Size(10, 20), {200, 100}, out);
    return Num(out.top) + "," + Num(out.right) + "," + Num(out.bottom) + "," + Num(out.left);
}

// Cell height 30, font size 40. Printed colour, thickness, blur.
std::string Outline(const std::string& in, const std::string&)
{
    TTML::TextOutline out{3, 7, 0, -1, -1, kSentinel};
    const bool ok = TTML::ConvertOutlineAtrributes(in, TTML::Size(20, 30), 40, out);
    return (ok ? "" : "refused ") + Channels(out.color) + " " + Num(out.thickness) + " " + Num(out.blur) +
           (out.type != 3 || out.offsetX != 7 ? " touched" : "");
}

struct Row {
    const char* name;
    std::string (*fn)(const std::string&, const std::string&);
    std::string in;
    std::string arg;
    std::string out;
    const char* log = nullptr;  // a line expected; without one, no warning or error may appear
};

class Util : public ::testing::TestWithParam<Row> {};

TEST_P(Util, Converts)
{
    const Row& r = GetParam();
    LogCapture log;
    EXPECT_EQ(r.out, r.fn(r.in, r.arg));
    if (r.log) {
        EXPECT_TRUE(log.Has(r.log)) << log.Dump();
    } else {
        for (const auto& line : log.Lines())
            EXPECT_LT(line.prio, DLOG_WARN) << line.text;
    }
}

const Row kRows[] = {
    Row{"TrimEmpty", Trim, "", "", "[][]"}, Row{"TrimAllFourWhitespaces", Trim, " \t\n\r", "", "[][]"},
    Row{"TrimBothEnds", Trim, " \t a b \r\n", "", "[a b \r\n][ \t a b]"},
    Row{"TrimFormFeedVerticalTabKept", Trim, "\f x \v", "", "[\f x \v][\f x \v]"},
    Row{"TrimStopsAtFormFeed", Trim, " \f ", "", "[\f ][ \f]"},
    Row{"ClassEmpty", Classes, "", "", "digits real"}, Row{"ClassDigits", Classes, "0123456789", "", "digits real"},
    Row{"ClassDecimal", Classes, "12.5", "", "- real"}, Row{"ClassTwoFullStops", Classes, "1.2.3", "", "- real"},
    Row{"ClassLoneFullStop", Classes, ".", "", "- -"}, Row{"ClassLeadingFullStop", Classes, ".5", "", "- -"},
    Row{"ClassTrailingFullStop", Classes, "10.", "", "- -"}, Row{"ClassLeadingBlank", Classes, " 10", "", "- -"},
    Row{"ClassLetter", Classes, "12a", "", "- -"}, Row{"ClassSign", Classes, "-5", "", "- -"},
    Row{"ClassExponent", Classes, "1e3", "", "- -"}, Row{"SplitEmpty", Split, "", " ", "[]"},
    Row{"SplitOnlyBlanks", Split, "  ", " ", "[]"}, Row{"SplitDoubleSpace", Split, "a  b", " ", "[a][][b]"},
    Row{"SplitColon", Split, "10:20", ":", "[10][20]"}, Row{"SplitEndsTrimmedFirst", Split, " 1 2 ", " ", "[1][2]"},
    Row{"SplitTrailing", Split, "a,", ",", "[a][]"}, Row{"SplitLeading", Split, ":a", ":", "[][a]"},
    Row{"SplitNoDelimiter", Split, "abc", ",", "[abc]"},
    Row{"SplitWholeSubstring", Split, "a::b:c", "::", "[a][b:c]"},
    Row{"SplitPiecesNotTrimmed", Split, "1, 2 ,3", ",", "[1][ 2 ][3]"},
    Row{"SplitFormFeedKept", Split, "\fa b", " ", "[\fa][b]"},
    Row{"FirstOfNumberAndMetric", FirstOf, "  12.5ms", "hmsft", "yes[12.5][ms]"},
    Row{"FirstOfNoMatchTouchesNothing", FirstOf, "abc", "x", "no[u1][u2]"},
    Row{"FirstOfAtFirstCharacter", FirstOf, "h12", "hmsft", "yes[][h12]"},
    Row{"FirstOfRightKeepsBlanks", FirstOf, "\t5s ", "hmsft", "yes[5][s ]"},
    Row{"FirstOfAnyInSet", FirstOf, "9tfs", "sf", "yes[9t][fs]"},
    Row{"HoursMinutesSeconds", Time, "01:02:03", "0 0", "3723000"},
    Row{"Fraction", Time, "00:00:01.5", "0 0", "1500"},
    Row{"FractionTruncated", Time, "00:00:00.0129", "0 0", "12"},
    Row{"LongFraction", Time, "00:00:01.50000000000000001", "25 0", "1500"},
    Row{"FractionInexactInBinary", Time, "00:00:32.620", "0 0", "32620"},
    Row{"OneDigitHours", Time, "7:00:00", "25 0", "25200000"},
    Row{"FieldsAboveSixty", Time, "00:99:99", "25 0", "6039000"},
    Row{"BeyondThirtyTwoBits", Time, "1000000:00:00", "0 0", "3600000000000"},
    Row{"Frames", Time, "00:00:01:12", "25 0", "1480"},
    Row{"SubFramesDropped", Time, "00:00:01:12.1", "25 0", "1480"},
    Row{"OneFrameAt30Truncated", Time, "00:00:00:01", "30 0", "33"},
    Row{"EmptyFramesPart", Time, "00:00:01:", "25 0", "1000"},
    Row{"FramesAtZeroRate", Time, "00:00:01:12", "0 0", "1000"},
    // One minute digit: not the plain form, so the empty third part is
    // the seconds and 05 the frames.
    Row{"OneDigitMinutesEmptySeconds", Time, "00:1::05", "25 0", "60200"},
    Row{"ExpressionTrimmed", Time, " \t01:00:00\r\n", "0 0", "3600000"},
    Row{"MinutesSeconds", Time, "01:30", "0 0", "90000"}, Row{"NonNumericParts", Time, "aa:bb:cc", "0 0", "0"},
    Row{"LeadingDigitsOfEachPart", Time, "1x:2y:3.5z", "0 0", "3723500"},
    Row{"OffsetSeconds", Time, "1.5s", "0 0", "1500"}, Row{"OffsetMilliseconds", Time, "500ms", "0 0", "500"},
    Row{"OffsetMillisecondsTruncated", Time, "12.9ms", "0 0", "12"},
    Row{"OffsetInexactInBinary", Time, "32.62s", "0 0", "32620"}, Row{"OffsetMinutes", Time, "2m", "0 0", "120000"},
    Row{"OffsetHours", Time, "1h", "0 0", "3600000"}, Row{"OffsetFrames", Time, "12f", "24 0", "500"},
    Row{"OffsetTicks", Time, "10000000t", "0 10000000", "1000"},
    Row{"OffsetBlankBeforeNumber", Time, " 1.5s", "0 0", "1500"},
    Row{"OffsetFourDecimals", Time, "1.0005s", "0 0", "1000"},
    Row{"OffsetMillionSeconds", Time, "1000000.5s", "0 0", "1000000500"},
    Row{"OffsetFramesAtZeroRate", Time, "12f", "0 0", "0"}, Row{"OffsetTicksAtZeroRate", Time, "12t", "0 0", "0"},
    Row{"NoMetric", Time, "5", "0 0", "0"}, Row{"NoMetricCharacter", Time, "5x", "0 0", "0"},
    Row{"NegativeGivesZero", Time, "-5s", "0 0", "0"},
    Row{"UnknownMetric", Time, "5sec", "0 0", "0", "Invalid time matric=sec"},
    Row{"TrailingBlankSpoilsMetric", Time, "2s ", "0 0", "0", "Invalid time matric=s "},
    Row{"NameTransparent", Name, "transparent", "", "known #00000000"},
    Row{"NameSilver", Name, "silver", "", "known #c0c0c0ff"},
    Row{"NameMagenta", Name, "magenta", "", "known #ff00ffff"},
    Row{"NameCapitalised", Name, "Red", "", "unknown Red"},
    Row{"NameTrailingBlank", Name, "red ", "", "unknown red "},
    Row{"NameCode", Name, "#ff0000", "", "unknown #ff0000"},
    Row{"HexWithAlpha", Color, "#ff000080", "", "32896,65535,0,0"},
    Row{"HexOpaqueByDefault", Color, "#ff0000", "", "65535,65535,0,0"},
    Row{"HexUpperCase", Color, "#FF8001", "", "65535,65535,32896,257"},
    Row{"HexNonHexPieceReadsZero", Color, "#zz1000", "", "65535,0,4112,0"},
    Row{"HexTooShort", Color, "#ff", "", "65535,65535,0,0"},
    Row{"Rgba", Color, "rgba(0,0,255,128)", "", "32896,0,0,65535"},
    Row{"RgbOpaque", Color, "rgb(0,0,255)", "", "65535,0,0,65535"},
    Row{"RgbBlanksAroundNumbers", Color, "rgb( 1 , 2 ,3 )", "", "65535,257,514,771"},
    Row{"RgbAboveRangeClamped", Color, "rgb(300,0,1000)", "", "65535,65535,0,65535"},
    Row{"AlphaReadFromRgbToo", Color, "rgb(0,0,0,0)", "", "0,0,0,0"},
    Row{"FivePiecesNoAlpha", Color, "rgba(1,2,3,4,5)", "", "65535,257,514,771"},
    Row{"WordNotExamined", Color, "foo(10,20,30)", "", "65535,2570,5140,7710"},
    Row{"LastCharacterAlwaysDropped", Color, "rgb(10,20,30", "", "65535,2570,5140,771"},
    Row{"NumberWithSuffixRefused", Color, "rgb(1,2,3px)", "", "1,2,3,4"},
    Row{"NonNumericAlphaRefused", Color, "rgba(1,2,3,zz)", "", "1,2,3,4"},
    Row{"TooFewPiecesRefused", Color, "rgb(1,2)", "", "1,2,3,4"},
    Row{"OpenParenthesisLastRefused", Color, "rgb(", "", "1,2,3,4"},
    Row{"EmptyColourRefused", Color, "", "", "1,2,3,4", "Color value is empty!"},
    Row{"StringWhite", Hex, "65535,65535,65535", "", "fill:#ffffff"},
    Row{"StringSingleDigitNotPadded", Hex, "1285,0,6682", "", "fill:#5001a"},
    Row{"StringBelowOneStepIsSingleZero", Hex, "256,0,257", "", "fill:#0001"},
    Row{"StringBackConversionTruncates", Hex, "65534,32896,32895", "", "fill:#fe807f"},
    Row{"ContrastOverWhite", Contrast, "65535,65535,65535", "", "1,0,0,0"},
    Row{"ContrastOverBlack", Contrast, "0,0,0", "", "1,65535,65535,65535"},
    Row{"ContrastOverRed", Contrast, "65535,0,0", "", "1,65535,65535,65535"},
    Row{"ContrastOverGreen", Contrast, "0,65535,0", "", "1,0,0,0"},
    Row{"ContrastOverGray128JustLight", Contrast, "32896,32896,32896", "", "1,0,0,0"},
    Row{"ContrastOverGray127JustDark", Contrast, "32639,32639,32639", "", "1,65535,65535,65535"},
    Row{"Cells", Length, "1.5c", "", "45"}, Row{"PlusSign", Length, "+20px", "", "20"},
    Row{"Percent", Length, "80%", "", "864"}, Row{"MinusSkippedBySearch", Length, "-5px", "", "5"},
    Row{"Em", Length, "2.5em", "", "2700"}, Row{"FoundInsideText", Length, "width 3px tall", "", "3"},
    Row{"SinglePrecision", Length, "0.1px", "", "0.100000001"},
    Row{"CentimetreReadAsCells", Length, "5cm", "", "150"},
    Row{"NoUnit", Length, "12", "", "refused -1", "Seems like invalid format of value=12"},
    Row{"EmptyLength", Length, "", "", "refused -1", "Seems like invalid format of value="},
    Row{"UpperCaseUnit", Length, "3PX", "", "refused -1", "Seems like invalid format of value=3PX"},
    Row{"FullStopWithoutDecimals", Length, "1.px", "", "refused -1", "Seems like invalid format of value=1.px"},
    Row{"OriginPercent", Origin, "10% 80%", "", "192,864"}, Row{"OriginPixels", Origin, "100px 50px", "", "100,50"},
    Row{"OriginCellsUnscaled", Origin, "2c 1c", "", "2,1"},
    Row{"OriginTruncated", Origin, "33.3% 33.3%", "", "639,359"},
    Row{"OriginEndsTrimmed", Origin, " 10px 20px\n", "", "10,20"}, Row{"OriginEmpty", Origin, "", "", "-1,-1"},
    Row{"OriginOnePieceRefused", Origin, "50%", "", "-1,-1"},
    Row{"OriginBadPieceLeavesItsAxis", Origin, "auto 10px", "", "-1,10", "Seems like invalid format of value=auto"},
    Row{"PaddingTwoValues", Padding, "10px 20px", "", "10,20,10,20"},
    Row{"PaddingOnePercentPerAxis", Padding, "10%", "", "10,20,10,20"},
    Row{"PaddingThreeCells", Padding, "1c 2c 3c", "", "20,20,60,20"},
    Row{"PaddingFourValues", Padding, "1px 2px 3px 4px", "", "1,2,3,4"},
    Row{"PaddingBadPieceLeavesItsSides", Padding, "1px bad", "", "1,-1,1,-1", "Seems like invalid format of value=bad"},
    Row{"PaddingFiveValues", Padding, "1px 2px 3px 4px 5px", "", "-1,-1,-1,-1", "empty padding values"},
    Row{"PaddingEmpty", Padding, "", "", "-1,-1,-1,-1", "empty padding values"},
    Row{"PaddingOnlyBlanks", Padding, " \t", "", "-1,-1,-1,-1", "empty padding values"},
    Row{"OutlineColourAndThickness", Outline, "#ff0000 2px", "", "65535,65535,0,0 2 -1"},
    Row{"OutlineThicknessAndBlur", Outline, "2px 1px", "", "1,2,3,4 2 1"},
    Row{"OutlineNone", Outline, "none", "", "1,2,3,4 -1 -1"},
    Row{"OutlineThicknessOnly", Outline, "0.5em", "", "1,2,3,4 20 -1"},
    Row{"OutlineThreePieces", Outline, "#00ff00 10% 1c", "", "65535,0,65535,0 4 30"},
    Row{"OutlineFourPiecesRefused", Outline, "#00ff00 1px 2px 3px", "", "refused 1,2,3,4 -1 -1"},
};

INSTANTIATE_TEST_SUITE_P(Helpers, Util, ::testing::ValuesIn(kRows), TTMLTest::RowName());

TEST(StrToLower, ChangesOnlyAsciiCapitals)
{
    std::string text = "AbC-Z_09 xY\xC4";
    TTML::StrToLower(text);
    EXPECT_EQ("abc-z_09 xy\xC4", text);
}

TEST(Contrast, FirstVisibleBackgroundDecidesAndTextIsOpaque)
{
    const TTMLColor clear{0, 0, 0, 0, false}, white{1, 65535, 65535, 65535, false}, black{65535, 0, 0, 0, false};
    TTMLColor out = kSentinel;
    TTML::SetContrastColor(out, clear, white, black);
    EXPECT_EQ("65535,0,0,0", Channels(out));
    TTML::SetContrastColor(out, black, white, white);
    EXPECT_EQ("65535,65535,65535,65535", Channels(out));
    out = kSentinel;
    TTML::SetContrastColor(out, clear, clear, clear);
    EXPECT_EQ("65535,65535,65535,65535", Channels(out));
}

// The two-part and odd part counts only reach the clock converter directly;
// none of them may read past the parts given.
TEST(ClockTime, ReadsOnlyThePartsGiven)
{
    EXPECT_EQ(0u, TTML::ConvertClockTimeToMS({}, 25));
    EXPECT_EQ(2500u, TTML::ConvertClockTimeToMS({"2.5"}, 25));
    EXPECT_EQ(62000u, TTML::ConvertClockTimeToMS({"1", "2"}, 25));
    EXPECT_EQ(3723000u, TTML::ConvertClockTimeToMS({"1", "2", "3"}, 25));
}

// The usual hh:mm:ss[.fff] and hh:mm:ss:ff[.sub] forms are read in place;
// they must give exactly what the clock-time path gives for their parts.
TEST(ClockTime, PlainFormMatchesTheClockTimePath)
{
    std::mt19937 rng(99);
    for (int i = 0; i < 20000; ++i) {
        std::string expr = std::to_string(rng() % 1000) + ":" + std::to_string(10 + rng() % 50) + ":" +
                           std::to_string(10 + rng() % 50);
        if (rng() % 3 == 0)
            expr += ":" + std::to_string(rng() % 30);
        if (rng() % 4 != 0)
            expr += "." + std::to_string(rng() % 100000);
        ASSERT_EQ(Time(expr, "25 0"), std::to_string(TTML::ConvertTimeExpressionToMS(expr, 25, 0))) << expr;
    }
}

}  // namespace
