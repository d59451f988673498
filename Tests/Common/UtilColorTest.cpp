#include "LogCapture.h"
#include "Util.h"
#include "RowPrinter.h"

#include <gtest/gtest.h>

#include <ostream>

namespace TTML {
// Readable failure output for colour comparisons.
void PrintTo(const TTMLColor& c, std::ostream* os)
{
    *os << "argb(" << c.alpha << "," << c.red << "," << c.green << "," << c.blue << ")";
}
}  // namespace TTML

namespace {

using TTML::TTMLColor;

TTMLColor Argb(uint16_t a, uint16_t r, uint16_t g, uint16_t b)
{
    TTMLColor c;
    c.alpha = a;
    c.red = r;
    c.green = g;
    c.blue = b;
    return c;
}

bool SameChannels(const TTMLColor& x, const TTMLColor& y)
{
    return x.alpha == y.alpha && x.red == y.red && x.green == y.green && x.blue == y.blue;
}

template <typename Case>
std::string CaseName(const ::testing::TestParamInfo<Case>& info)
{
    return info.param.name;
}

// A colour no conversion produces, to see what was left alone.
const TTMLColor kSentinel = Argb(1, 2, 3, 4);

// ---- Named colours ----------------------------------------------------------

struct NameCase {
    const char* name;
    std::string value;
    bool known;
    std::string after;
};

class ColorName : public ::testing::TestWithParam<NameCase> {};

TEST_P(ColorName, ReplacedByCodeOnlyWhenKnown)
{
    const NameCase& c = GetParam();
    std::string value = c.value;
    EXPECT_EQ(c.known, TTML::ConvertColorNameToColorCode(value));
    EXPECT_EQ(c.after, value);
}

NameCase Known(const char* name, const char* code)
{
    return NameCase{name, name, true, code};
}

INSTANTIATE_TEST_SUITE_P(
    Colors, ColorName,
    ::testing::Values(Known("transparent", "#00000000"), Known("black", "#000000ff"), Known("silver", "#c0c0c0ff"),
                      Known("gray", "#808080ff"), Known("white", "#ffffffff"), Known("maroon", "#800000ff"),
                      Known("red", "#ff0000ff"), Known("purple", "#800080ff"), Known("fuchsia", "#ff00ffff"),
                      Known("magenta", "#ff00ffff"), Known("green", "#008000ff"), Known("lime", "#00ff00ff"),
                      Known("olive", "#808000ff"), Known("yellow", "#ffff00ff"), Known("navy", "#000080ff"),
                      Known("blue", "#0000ffff"), Known("teal", "#008080ff"), Known("aqua", "#00ffffff"),
                      Known("cyan", "#00ffffff"), NameCase{"Capitalised", "Red", false, "Red"},
                      NameCase{"TrailingBlank", "red ", false, "red "}, NameCase{"BritishGrey", "grey", false, "grey"},
                      NameCase{"Empty", "", false, ""}, NameCase{"CodeUnchanged", "#ff0000", false, "#ff0000"}),
    CaseName<NameCase>);

// ---- Colour expressions -------------------------------------------------------

struct ExprCase {
    const char* name;
    std::string value;
    TTMLColor expected;
};

class ColorExpression : public ::testing::TestWithParam<ExprCase> {};

TEST_P(ColorExpression, WritesSixteenBitChannelsOnly)
{
    const ExprCase& c = GetParam();
    TTMLColor out = kSentinel;
    out.defaultOpacity = false;
    TTML::ConvertDistributionColorType(c.value, out);
    EXPECT_PRED2(SameChannels, c.expected, out);
    EXPECT_FALSE(out.defaultOpacity);
}

INSTANTIATE_TEST_SUITE_P(
    Colors, ColorExpression,
    ::testing::Values(ExprCase{"HexWithAlpha", "#ff000080", Argb(32896, 65535, 0, 0)},
                      ExprCase{"HexOpaqueByDefault", "#ff0000", Argb(65535, 65535, 0, 0)},
                      ExprCase{"HexUpperCase", "#FF8001", Argb(65535, 65535, 32896, 257)},
                      ExprCase{"HexSevenDigitsNoAlpha", "#ff00008", Argb(65535, 65535, 0, 0)},
                      ExprCase{"HexTenDigitsNoAlpha", "#ff00000000", Argb(65535, 65535, 0, 0)},
                      ExprCase{"HexNonHexPieceReadsZero", "#zz1000", Argb(65535, 0, 4112, 0)},
                      ExprCase{"HexTooShort", "#ff", Argb(65535, 65535, 0, 0)},
                      ExprCase{"HexLoneHash", "#", Argb(65535, 0, 0, 0)},
                      ExprCase{"Rgba", "rgba(0,0,255,128)", Argb(32896, 0, 0, 65535)},
                      ExprCase{"RgbOpaque", "rgb(0,0,255)", Argb(65535, 0, 0, 65535)},
                      ExprCase{"RgbBlanksAroundNumbers", "rgb( 1 , 2 ,3 )", Argb(65535, 257, 514, 771)},
                      ExprCase{"RgbAboveRangeClamped", "rgb(300,0,1000)", Argb(65535, 65535, 0, 65535)},
                      ExprCase{"AlphaReadFromRgbToo", "rgb(0,0,0,0)", Argb(0, 0, 0, 0)},
                      ExprCase{"FivePiecesNoAlpha", "rgba(1,2,3,4,5)", Argb(65535, 257, 514, 771)},
                      ExprCase{"WordNotExamined", "foo(10,20,30)", Argb(65535, 2570, 5140, 7710)},
                      ExprCase{"LastCharacterAlwaysDropped", "rgb(10,20,30", Argb(65535, 2570, 5140, 771)},
                      ExprCase{"NonNumericPieceUnchanged", "rgb(1,2,x)", kSentinel},
                      ExprCase{"NumberWithSuffixUnchanged", "rgb(1,2,3px)", kSentinel},
                      ExprCase{"NonNumericAlphaUnchanged", "rgba(1,2,3,zz)", kSentinel},
                      ExprCase{"TooFewPiecesUnchanged", "rgb(1,2)", kSentinel},
                      ExprCase{"OpenParenthesisLastUnchanged", "rgb(", kSentinel}),
    CaseName<ExprCase>);

TEST(ColorExpression, EmptyValueLogsAndLeavesOutput)
{
    LogCapture log;
    TTMLColor out = kSentinel;
    TTML::ConvertDistributionColorType("", out);
    EXPECT_PRED2(SameChannels, kSentinel, out);
    EXPECT_EQ(1, log.Count("Color value is empty!", DLOG_INFO)) << log.Dump();
}

// ---- Colour to string ---------------------------------------------------------

struct StringCase {
    const char* name;
    TTMLColor color;
    std::string expected;
};

class ColorString : public ::testing::TestWithParam<StringCase> {};

TEST_P(ColorString, AppendsUnpaddedLowerCaseHex)
{
    const StringCase& c = GetParam();
    std::string out = "fill:";
    TTML::ConvertColorToStringType(c.color, out);
    EXPECT_EQ("fill:" + c.expected, out);
}

INSTANTIATE_TEST_SUITE_P(
    Colors, ColorString,
    ::testing::Values(StringCase{"OpaqueWhite", Argb(65535, 65535, 65535, 65535), "#ffffff"},
                      StringCase{"Red", Argb(65535, 65535, 0, 0), "#ff0000"},
                      StringCase{"BlackAlphaIgnored", Argb(0, 0, 0, 0), "#000000"},
                      StringCase{"SingleDigitNotPadded", Argb(65535, 5 * 257, 0, 0x1a * 257), "#5001a"},
                      StringCase{"NonZeroBelowOneStepIsSingleZero", Argb(65535, 256, 0, 257), "#0001"},
                      StringCase{"BackConversionTruncates", Argb(65535, 65534, 32896, 32895), "#fe807f"}),
    CaseName<StringCase>);

// ---- Lengths --------------------------------------------------------------------

struct LengthCase {
    const char* name;
    std::string expr;
    double cellFactor;
    double relativeBase;
    bool found;
    double expected;
};

class Length : public ::testing::TestWithParam<LengthCase> {};

TEST_P(Length, SearchesOneLengthAndScalesByUnit)
{
    const LengthCase& c = GetParam();
    LogCapture log;
    double out = -1;
    EXPECT_EQ(c.found, TTML::ConvertLengthType(c.expr, c.cellFactor, c.relativeBase, out));
    EXPECT_DOUBLE_EQ(c.found ? c.expected : -1, out);
    EXPECT_EQ(c.found ? 0 : 1, log.Count("Seems like invalid format of value=" + c.expr, DLOG_WARN)) << log.Dump();
}

INSTANTIATE_TEST_SUITE_P(
    Lengths, Length,
    ::testing::Values(LengthCase{"Cells", "1.5c", 72, 0, true, 108}, LengthCase{"PlusSign", "+20px", 1, 0, true, 20},
                      LengthCase{"Percent", "80%", 1, 1080, true, 864},
                      LengthCase{"MinusSkippedBySearch", "-5px", 1, 0, true, 5},
                      LengthCase{"Em", "2.5em", 1, 40, true, 100},
                      LengthCase{"FoundInsideText", "width 3px tall", 1, 0, true, 3},
                      LengthCase{"FirstOfTwo", "7px 9px", 1, 0, true, 7},
                      LengthCase{"SinglePrecision", "0.1px", 1, 0, true, static_cast<double>(0.1f)},
                      LengthCase{"CentimetreReadAsCells", "5cm", 10, 0, true, 50},
                      LengthCase{"NoUnit", "12", 1, 100, false, 0}, LengthCase{"Empty", "", 1, 100, false, 0},
                      LengthCase{"UpperCaseUnit", "3PX", 1, 100, false, 0},
                      LengthCase{"FullStopWithoutDecimals", "1.px", 1, 100, false, 0}),
    CaseName<LengthCase>);

// ---- Origin and extent ------------------------------------------------------------

struct OriginCase {
    const char* name;
    std::string expr;
    std::pair<int, int> reference;
    std::pair<int, int> expected;  // starting from (-1, -1)
};

class OriginExtent : public ::testing::TestWithParam<OriginCase> {};

TEST_P(OriginExtent, TwoLengthsTruncatedToInt)
{
    const OriginCase& c = GetParam();
    int x = -1;
    int y = -1;
    std::pair<int&, int&> out(x, y);
    TTML::ConvertOriginExtentsType(c.expr, c.reference, out);
    EXPECT_EQ(c.expected, std::make_pair(x, y));
}

INSTANTIATE_TEST_SUITE_P(
    Lengths, OriginExtent,
    ::testing::Values(OriginCase{"Percent", "10% 80%", {1920, 1080}, {192, 864}},
                      OriginCase{"Pixels", "100px 50px", {1920, 1080}, {100, 50}},
                      OriginCase{"CellsAreUnscaled", "2c 1c", {1920, 1080}, {2, 1}},
                      OriginCase{"Truncated", "33.3% 33.3%", {1920, 1080}, {639, 359}},
                      OriginCase{"EndsTrimmed", " 10px 20px\n", {1920, 1080}, {10, 20}},
                      OriginCase{"Empty", "", {1920, 1080}, {-1, -1}},
                      OriginCase{"OnePieceUnchanged", "50%", {1920, 1080}, {-1, -1}},
                      OriginCase{"BadPieceLeavesItsAxis", "auto 10px", {1920, 1080}, {-1, 10}}),
    CaseName<OriginCase>);

// ---- Padding ---------------------------------------------------------------------

struct PaddingCase {
    const char* name;
    std::string expr;
    double top, right, bottom, left;  // -1 = left alone
    bool warned;
};

class Padding : public ::testing::TestWithParam<PaddingCase> {};

// Cells are 10 wide and 20 high, the region 200 wide and 100 high, so every
// side shows which axis it was measured on.
TEST_P(Padding, SidesFollowBeforeEndAfterStart)
{
    const PaddingCase& c = GetParam();
    LogCapture log;
    TTML::TTMLPadding out{-1, -1, -1, -1};
    TTML::ConvertDistributionPaddingType(c.expr, TTML::Size(10, 20), {200, 100}, out);
    EXPECT_DOUBLE_EQ(c.top, out.top);
    EXPECT_DOUBLE_EQ(c.right, out.right);
    EXPECT_DOUBLE_EQ(c.bottom, out.bottom);
    EXPECT_DOUBLE_EQ(c.left, out.left);
    EXPECT_EQ(c.warned ? 1 : 0, log.Count("empty padding values", DLOG_WARN)) << log.Dump();
}

INSTANTIATE_TEST_SUITE_P(
    Lengths, Padding,
    ::testing::Values(PaddingCase{"TwoValues", "10px 20px", 10, 20, 10, 20, false},
                      PaddingCase{"OnePercentPerAxis", "10%", 10, 20, 10, 20, false},
                      PaddingCase{"ThreeCells", "1c 2c 3c", 20, 20, 60, 20, false},
                      PaddingCase{"FourValues", "1px 2px 3px 4px", 1, 2, 3, 4, false},
                      PaddingCase{"BadPieceLeavesItsSides", "1px bad", 1, -1, 1, -1, false},
                      PaddingCase{"FiveValues", "1px 2px 3px 4px 5px", -1, -1, -1, -1, true},
                      PaddingCase{"Empty", "", -1, -1, -1, -1, true},
                      PaddingCase{"OnlyBlanks", " \t", -1, -1, -1, -1, true}),
    CaseName<PaddingCase>);

// ---- Outline ---------------------------------------------------------------------

struct OutlineCase {
    const char* name;
    std::string expr;
    bool result;
    TTMLColor color;
    double thickness, blur;  // -1 = left alone
};

class Outline : public ::testing::TestWithParam<OutlineCase> {};

// Cell height 30, font size 40.
TEST_P(Outline, ColourThicknessAndBlurByPieceCount)
{
    const OutlineCase& c = GetParam();
    TTML::TextOutline out;
    out.type = 3;
    out.offsetX = 7;
    out.thickness = -1;
    out.blur = -1;
    out.color = kSentinel;
    EXPECT_EQ(c.result, TTML::ConvertOutlineAtrributes(c.expr, TTML::Size(20, 30), 40, out));
    EXPECT_PRED2(SameChannels, c.color, out.color);
    EXPECT_DOUBLE_EQ(c.thickness, out.thickness);
    EXPECT_DOUBLE_EQ(c.blur, out.blur);
    EXPECT_EQ(3, out.type);
    EXPECT_DOUBLE_EQ(7, out.offsetX);
}

INSTANTIATE_TEST_SUITE_P(
    Lengths, Outline,
    ::testing::Values(OutlineCase{"ColourAndThickness", "#ff0000 2px", true, Argb(65535, 65535, 0, 0), 2, -1},
                      OutlineCase{"ThicknessAndBlur", "2px 1px", true, kSentinel, 2, 1},
                      OutlineCase{"None", "none", true, kSentinel, -1, -1},
                      OutlineCase{"ThicknessOnly", "0.5em", true, kSentinel, 20, -1},
                      OutlineCase{"ThreePieces", "#00ff00 10% 1c", true, Argb(65535, 0, 65535, 0), 4, 30},
                      OutlineCase{"FourPieces", "#00ff00 1px 2px 3px", false, kSentinel, -1, -1}),
    CaseName<OutlineCase>);

// ---- Contrast --------------------------------------------------------------------

struct ContrastCase {
    const char* name;
    TTMLColor background;
    uint16_t text;  // the red, green and blue chosen
};

class Contrast : public ::testing::TestWithParam<ContrastCase> {};

TEST_P(Contrast, BlackOverLightWhiteOverDark)
{
    const ContrastCase& c = GetParam();
    TTMLColor out = kSentinel;
    TTML::ApplyContrastColor(out, c.background);
    EXPECT_PRED2(SameChannels, Argb(kSentinel.alpha, c.text, c.text, c.text), out);
}

INSTANTIATE_TEST_SUITE_P(Colors, Contrast,
                         ::testing::Values(ContrastCase{"White", Argb(65535, 65535, 65535, 65535), 0},
                                           ContrastCase{"Black", Argb(65535, 0, 0, 0), 65535},
                                           ContrastCase{"Red", Argb(65535, 65535, 0, 0), 65535},
                                           ContrastCase{"Green", Argb(65535, 0, 65535, 0), 0},
                                           ContrastCase{"Yellow", Argb(65535, 65535, 65535, 0), 0},
                                           ContrastCase{"Gray128JustLight", Argb(65535, 128 * 257, 128 * 257, 128 * 257), 0},
                                           ContrastCase{"Gray127JustDark", Argb(65535, 127 * 257, 127 * 257, 127 * 257),
                                                        65535}),
                         CaseName<ContrastCase>);

TEST(Contrast, FirstVisibleBackgroundDecidesAndTextIsOpaque)
{
    const TTMLColor clear = Argb(0, 0, 0, 0);
    const TTMLColor white = Argb(1, 65535, 65535, 65535);
    const TTMLColor black = Argb(65535, 0, 0, 0);
    TTMLColor out = Argb(0, 5, 5, 5);
    TTML::SetContrastColor(out, clear, white, black);
    EXPECT_PRED2(SameChannels, Argb(65535, 0, 0, 0), out);
    out = Argb(0, 5, 5, 5);
    TTML::SetContrastColor(out, black, white, white);
    EXPECT_PRED2(SameChannels, Argb(65535, 65535, 65535, 65535), out);
    out = Argb(0, 5, 5, 5);
    TTML::SetContrastColor(out, clear, clear, clear);
    EXPECT_PRED2(SameChannels, Argb(65535, 65535, 65535, 65535), out);
}

}  // namespace
