// IMSC 1 attribute registry: names, defaults, the validators with the values
// they store, the image profile's narrower geometry, inheritance, applies-to.

#include "CIMSCAttrHandler.h"
#include "CSubtitleInfo.h"
#include "LogCapture.h"

#include <gtest/gtest.h>

#include <cctype>
#include <string>

using namespace TTML;

namespace {

constexpr int kTextProfile = 0;
constexpr int kImageProfile = 1;

std::string Sanitize(const std::string& text)
{
    std::string out;
    for (char c : text)
        out += std::isalnum(static_cast<unsigned char>(c)) ? c : '_';
    return out;
}

// ---- Names and defaults -------------------------------------------------------

TEST(ImscAttrNames, EveryKeyedAttributeMapsToItsOwnNumber)
{
    CIMSCAttrHandler handler;
    for (int attr = 0; attr < TTML_ATTR_COUNT; ++attr) {
        if (attr == ATTR_TEXT) {
            EXPECT_EQ("", handler.ToAttrString(ATTR_TEXT));
            continue;
        }
        std::string key = kTTMLAttrKeys[attr];
        EXPECT_EQ(attr, handler.ToAttrEnum(key)) << key;
        EXPECT_EQ(kTTMLAttrKeys[attr], handler.ToAttrString(static_cast<TTMLAttr>(attr)));
    }
    std::string unknown = "fontvariant";
    EXPECT_EQ(-1, handler.ToAttrEnum(unknown));
    // Local names arrive in document case.
    std::string forced = "forcedDisplay";
    EXPECT_EQ(ATTR_FORCEDDISPLAY, handler.ToAttrEnum(forced));
}

// ---- Validators -----------------------------------------------------------------

struct ValueCase {
    int attr;
    const char* input;
    int profile;
    int code;
    const char* stored;  // checked when code is ERR_NONE
};

void PrintTo(const ValueCase& c, std::ostream* os)
{
    *os << kTTMLAttrKeys[c.attr] << " \"" << c.input << "\" profile " << c.profile;
}

class ImscValidate : public ::testing::TestWithParam<ValueCase> {};

TEST_P(ImscValidate, CodeAndStoredValue)
{
    const ValueCase& c = GetParam();
    CIMSCAttrHandler handler;
    handler.SetProfile(c.profile);
    std::string value = c.input;
    EXPECT_EQ(c.code, handler.ValidateAttribute(static_cast<TTMLAttr>(c.attr), value));
    if (c.code == ERR_NONE) {
        EXPECT_EQ(c.stored, value);
    }
}

const ValueCase kValueCases[] = {
    // Times become decimal milliseconds.
    {ATTR_BEGIN, "5s", kTextProfile, ERR_NONE, "5000"},
    {ATTR_BEGIN, "0.5S", kTextProfile, ERR_NONE, "500"},
    {ATTR_BEGIN, "1.5h", kTextProfile, ERR_NONE, "5400000"},
    {ATTR_BEGIN, "00:00:05.000", kTextProfile, ERR_NONE, "5000"},
    {ATTR_BEGIN, "5", kTextProfile, ERR_IGNORE, ""},
    {ATTR_BEGIN, "-5s", kTextProfile, ERR_IGNORE, ""},
    {ATTR_BEGIN, "5 s", kTextProfile, ERR_IGNORE, ""},
    {ATTR_END, "1x", kTextProfile, ERR_IGNORE, ""},
    {ATTR_DUR, "00:01:00", kTextProfile, ERR_NONE, "60000"},
    // Document parameters.
    {ATTR_TICKRATE, "0", kTextProfile, ERR_IGNORE, ""},
    {ATTR_TICKRATE, "10000000", kTextProfile, ERR_NONE, "10000000"},
    {ATTR_SUBFRAMERATE, "2", kTextProfile, ERR_NONE, "2"},
    {ATTR_SUBFRAMERATE, "-1", kTextProfile, ERR_IGNORE, ""},
    {ATTR_FRAMERATE, "25", kTextProfile, ERR_NONE, "25"},
    {ATTR_FRAMERATE, "25.5", kTextProfile, ERR_IGNORE, ""},
    {ATTR_FRAMERATEMULTIPLIER, "1000 1001", kTextProfile, ERR_NONE, "1000 1001"},
    {ATTR_FRAMERATEMULTIPLIER, "1000", kTextProfile, ERR_IGNORE, ""},
    {ATTR_CELLRESOLUTION, "32 15", kTextProfile, ERR_NONE, "32 15"},
    {ATTR_CELLRESOLUTION, "0 15", kTextProfile, ERR_IGNORE, ""},
    {ATTR_ASPECTRATIO, "16 9", kTextProfile, ERR_NONE, "16 9"},
    {ATTR_ASPECTRATIO, "16:9", kTextProfile, ERR_IGNORE, ""},
    {ATTR_TIMEBASE, "SMPTE", kTextProfile, ERR_NONE, "smpte"},
    {ATTR_TIMEBASE, "wall", kTextProfile, ERR_IGNORE, ""},
    // Colours: names become codes, leading blanks go.
    {ATTR_COLOR, "  red", kTextProfile, ERR_NONE, "#ff0000ff"},
    {ATTR_BACKGROUNDCOLOR, "#00FF0080", kTextProfile, ERR_NONE, "#00FF0080"},
    {ATTR_REGIONBACKGROUNDCOLOR, "rgba(0,0,0,128)", kTextProfile, ERR_NONE, "rgba(0,0,0,128)"},
    {ATTR_COLOR, "Red", kTextProfile, ERR_IGNORE, ""},
    {ATTR_COLOR, "#12345", kTextProfile, ERR_IGNORE, ""},
    // Keywords are lower-cased.
    {ATTR_DISPLAY, "NONE", kTextProfile, ERR_NONE, "none"},
    {ATTR_DISPLAY, "block", kTextProfile, ERR_IGNORE, ""},
    {ATTR_FONTSTYLE, "Oblique", kTextProfile, ERR_NONE, "oblique"},
    {ATTR_FONTSTYLE, "slanted", kTextProfile, ERR_IGNORE, ""},
    {ATTR_ZINDEX, "AUTO", kTextProfile, ERR_NONE, "auto"},
    {ATTR_ZINDEX, "12", kTextProfile, ERR_NONE, "12"},
    {ATTR_ZINDEX, "-1", kTextProfile, ERR_IGNORE, ""},
    {ATTR_ZINDEX, "", kTextProfile, ERR_IGNORE, ""},
    {ATTR_FORCEDDISPLAY, "TRUE", kTextProfile, ERR_NONE, "true"},
    {ATTR_FORCEDDISPLAY, "yes", kTextProfile, ERR_IGNORE, ""},
    // Lengths.
    {ATTR_FONTSIZE, "", kTextProfile, ERR_NONE, ""},
    {ATTR_FONTSIZE, "1C 2C", kTextProfile, ERR_NONE, "1c 2c"},
    {ATTR_FONTSIZE, "+1.5em", kTextProfile, ERR_NONE, "+1.5em"},
    {ATTR_FONTSIZE, "12", kTextProfile, ERR_IGNORE, ""},
    {ATTR_FONTSIZE, "-1c", kTextProfile, ERR_IGNORE, ""},
    {ATTR_LINEHEIGHT, "Normal", kTextProfile, ERR_NONE, "normal"},
    {ATTR_LINEHEIGHT, "125%", kTextProfile, ERR_NONE, "125%"},
    {ATTR_LINEHEIGHT, "1.2", kTextProfile, ERR_IGNORE, ""},
    {ATTR_PADDING, "1px 2px 3px 4px", kTextProfile, ERR_NONE, "1px 2px 3px 4px"},
    {ATTR_PADDING, "5%", kTextProfile, ERR_NONE, "5%"},
    {ATTR_PADDING, "1px 2px 3px 4px 5px", kTextProfile, ERR_IGNORE, ""},
    {ATTR_PADDING, "1px auto", kTextProfile, ERR_IGNORE, ""},
    {ATTR_LINEPADDING, "0.5C", kTextProfile, ERR_NONE, "0.5c"},
    {ATTR_LINEPADDING, "5px", kTextProfile, ERR_IGNORE, ""},
    // Opacity: a fraction between 0 and 1.
    {ATTR_OPACITY, "0.5", kTextProfile, ERR_NONE, "0.5"},
    {ATTR_OPACITY, "0", kTextProfile, ERR_NONE, "0"},
    {ATTR_OPACITY, "1", kTextProfile, ERR_NONE, "1"},
    {ATTR_OPACITY, "1.5", kTextProfile, ERR_IGNORE, ""},
    {ATTR_OPACITY, "-0.1", kTextProfile, ERR_IGNORE, ""},
    // Origin: two lengths in px or %.
    {ATTR_ORIGIN, "10% 20%", kTextProfile, ERR_NONE, "10% 20%"},
    {ATTR_ORIGIN, "10PX 20px", kTextProfile, ERR_NONE, "10px 20px"},
    {ATTR_ORIGIN, "Auto", kTextProfile, ERR_NONE, "auto"},
    {ATTR_ORIGIN, "1c 2c", kTextProfile, ERR_IGNORE, ""},
    {ATTR_ORIGIN, "10%", kTextProfile, ERR_IGNORE, ""},
    {ATTR_ORIGIN, "10% 20%", kImageProfile, ERR_NONE, "10% 20%"},
    // Extent: percent only in the text profile.
    {ATTR_EXTENT, "50% 20%", kTextProfile, ERR_NONE, "50% 20%"},
    {ATTR_EXTENT, "50% 20%", kImageProfile, ERR_IGNORE, ""},
    {ATTR_EXTENT, "640px 480px", kImageProfile, ERR_NONE, "640px 480px"},
    {ATTR_EXTENT, "640px 20%", kImageProfile, ERR_IGNORE, ""},
    {ATTR_EXTENT, "auto", kImageProfile, ERR_NONE, "auto"},
    {ATTR_EXTENT, "2em 1em", kTextProfile, ERR_IGNORE, ""},
    {ATTR_EXTENT, "640px", kTextProfile, ERR_IGNORE, ""},
    // Writing mode: horizontal only in the image profile.
    {ATTR_WRITINGMODE, "TBRL", kTextProfile, ERR_NONE, "tbrl"},
    {ATTR_WRITINGMODE, "tbrl", kImageProfile, ERR_IGNORE, ""},
    {ATTR_WRITINGMODE, "RL", kImageProfile, ERR_NONE, "rl"},
    {ATTR_WRITINGMODE, "lrtb", kImageProfile, ERR_NONE, "lrtb"},
    {ATTR_WRITINGMODE, "sideways", kTextProfile, ERR_IGNORE, ""},
    // Text decoration becomes the renderer's flag word.
    {ATTR_TEXTDECORATION, "underline nounderline", kTextProfile, ERR_IGNORE, ""},
    {ATTR_TEXTDECORATION, "lineThrough", kTextProfile, ERR_NONE, "8"},
    {ATTR_TEXTDECORATION, "underline overline", kTextProfile, ERR_NONE, "34"},
    {ATTR_TEXTDECORATION, "noUnderline noLineThrough noOverline", kTextProfile, ERR_NONE, "84"},
    {ATTR_TEXTDECORATION, "None", kTextProfile, ERR_NONE, "none"},
    {ATTR_TEXTDECORATION, "blink", kTextProfile, ERR_NONE, "0"},
    // Text outline: [colour] thickness [blur].
    {ATTR_TEXTOUTLINE, "red 2px", kTextProfile, ERR_NONE, "#ff0000ff 2px"},
    {ATTR_TEXTOUTLINE, "2px red", kTextProfile, ERR_IGNORE, ""},
    {ATTR_TEXTOUTLINE, "5%", kTextProfile, ERR_NONE, "5%"},
    {ATTR_TEXTOUTLINE, "2px  1px", kTextProfile, ERR_NONE, "2px 1px"},
    {ATTR_TEXTOUTLINE, "#000000ff 2px 1px", kTextProfile, ERR_NONE, "#000000ff 2px 1px"},
    {ATTR_TEXTOUTLINE, "2px 1px 1px", kTextProfile, ERR_IGNORE, ""},
    {ATTR_TEXTOUTLINE, "black", kTextProfile, ERR_IGNORE, ""},
    // Font family.
    {ATTR_FONTFAMILY, "default", kTextProfile, ERR_NONE, "monospaceserif"},
    {ATTR_FONTFAMILY, "Default", kTextProfile, ERR_NONE, "Default"},
    {ATTR_FONTFAMILY, "proportionalSansSerif", kTextProfile, ERR_NONE, "proportionalSansSerif"},
    {ATTR_FONTFAMILY, "", kTextProfile, ERR_IGNORE, ""},
    // Background image: the last part of a URN, anything else as written.
    {ATTR_BACKGROUNDIMAGE, "urn:dvb:image:3", kImageProfile, ERR_NONE, "3"},
    {ATTR_BACKGROUNDIMAGE, "#img3", kImageProfile, ERR_NONE, "#img3"},
    {ATTR_BACKGROUNDIMAGE, "URN:a:3", kImageProfile, ERR_NONE, "URN:a:3"},
    // Common checks, results unchanged (an empty id rejects the document).
    {ATTR_ID, "", kTextProfile, ERR_INVALID, ""},
    {ATTR_SHOWBACKGROUND, "WhenActive", kTextProfile, ERR_NONE, "whenactive"},
    {ATTR_ALTTEXT, "", kImageProfile, ERR_NONE, ""},
    // Named but without a validator: dropped.
    {ATTR_PROFILE, "http://www.w3.org/ns/ttml/profile/imsc1/text", kTextProfile, ERR_NOT_SUPPORTED, ""},
    {ATTR_FILLLINEGAP, "true", kTextProfile, ERR_NOT_SUPPORTED, ""},
    {ATTR_TEXT, "hello", kTextProfile, ERR_NOT_SUPPORTED, ""},
};

INSTANTIATE_TEST_SUITE_P(Table, ImscValidate, ::testing::ValuesIn(kValueCases),
                         [](const ::testing::TestParamInfo<ValueCase>& info) {
                             return std::to_string(info.index) + "_" + kTTMLAttrKeys[info.param.attr] + "_" +
                                    Sanitize(info.param.input);
                         });

TEST(ImscValidate, UnknownNumberIsNotSupported)
{
    CIMSCAttrHandler handler;
    std::string value = "x";
    EXPECT_EQ(ERR_NOT_SUPPORTED, handler.ValidateAttribute(static_cast<TTMLAttr>(-1), value));
    EXPECT_EQ(ERR_NOT_SUPPORTED, handler.ValidateAttribute(static_cast<TTMLAttr>(TTML_ATTR_COUNT), value));
    EXPECT_EQ("x", value);
}

// Frames and ticks need the document's rates; begin is held to the segment.
TEST(ImscValidate, TimesUseTheDocumentRatesAndBeginTheSegmentStart)
{
    CIMSCAttrHandler handler;
    CSubtitleInfo info;
    info.SetTickRate("10");
    info.SetFrameRate("25", "1 1");
    info.SetSubtitleSegmentTimings(4000, 20000);
    handler.SetSubtitleInfo(&info);

    const struct {
        TTMLAttr attr;
        const char* input;
        const char* stored;
    } cases[] = {
        {ATTR_END, "25f", "1000"},   {ATTR_END, "30t", "3000"},   {ATTR_DUR, "50F", "2000"},
        {ATTR_BEGIN, "1s", "4000"},  {ATTR_BEGIN, "90t", "9000"}, {ATTR_END, "1s", "1000"},
    };
    for (const auto& c : cases) {
        std::string value = c.input;
        EXPECT_EQ(ERR_NONE, handler.ValidateAttribute(c.attr, value)) << c.input;
        EXPECT_EQ(c.stored, value) << kTTMLAttrKeys[c.attr] << " " << c.input;
    }
    handler.SetSubtitleInfo(nullptr);
}

TEST(ImscValidate, OnlyOriginAndExtentExplainARefusal)
{
    CIMSCAttrHandler handler;
    LogCapture log;
    std::string origin = "10% x";
    EXPECT_EQ(ERR_IGNORE, handler.ValidateAttribute(ATTR_ORIGIN, origin));
    EXPECT_TRUE(log.Has("Seems like invalid format of value=10% x; ignoring!")) << log.Dump();

    std::string extent = "1 2";
    EXPECT_EQ(ERR_IGNORE, handler.ValidateAttribute(ATTR_EXTENT, extent));
    EXPECT_TRUE(log.Has("Invalid format")) << log.Dump();

    log.Clear();
    std::string opacity = "2";
    EXPECT_EQ(ERR_IGNORE, handler.ValidateAttribute(ATTR_OPACITY, opacity));
    std::string padding = "1px x";
    EXPECT_EQ(ERR_IGNORE, handler.ValidateAttribute(ATTR_PADDING, padding));
    EXPECT_TRUE(log.Lines().empty()) << log.Dump();
}

// ---- Inheritance and applies-to ----------------------------------------------------

}  // namespace
