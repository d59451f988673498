// IMSC 1 attribute checks: the codes, the values they store and the few
// warnings, the image profile's narrower geometry, times on the document's
// timeline.

#include "CIMSCAttrHandler.h"
#include "CSubtitleInfo.h"
#include "LogCapture.h"

#include <gtest/gtest.h>

#include <string>

using namespace TTML;

namespace {

constexpr int kTextProfile = 0;
constexpr int kImageProfile = 1;

std::string KeyOf(int attr)
{
    return attr >= 0 && attr < TTML_ATTR_COUNT ? kTTMLAttrKeys[attr] : "none";
}

struct ValueCase {
    int attr;
    const char* input;
    int profile;
    int code;
    const char* stored;        // checked when code is ERR_NONE
    const char* warning = "";  // the one warning, if any
    bool inDocument = false;   // 25 frames and 10 ticks a second, segment from 4 s
};

void PrintTo(const ValueCase& c, std::ostream* os)
{
    *os << KeyOf(c.attr) << " \"" << c.input << "\" profile " << c.profile;
}

class ImscValidate : public ::testing::TestWithParam<ValueCase> {};

TEST_P(ImscValidate, CodeStoredValueAndWarning)
{
    const ValueCase& c = GetParam();
    CIMSCAttrHandler handler;
    handler.SetProfile(c.profile);
    CSubtitleInfo info;
    info.SetTickRate("10");
    info.SetFrameRate("25", "1 1");
    info.SetSubtitleSegmentTimings(4000, 20000);
    if (c.inDocument)
        handler.SetSubtitleInfo(&info);
    std::string value = c.input;
    LogCapture log;
    EXPECT_EQ(c.code, handler.ValidateAttribute(static_cast<TTMLAttr>(c.attr), value));
    if (c.code == ERR_NONE) {
        EXPECT_EQ(c.stored, value);
    }
    int warnings = 0;
    for (const auto& line : log.Lines())
        warnings += line.prio == DLOG_WARN;
    EXPECT_EQ(*c.warning ? 1 : 0, warnings) << log.Dump();
    EXPECT_EQ(*c.warning ? 1 : 0, log.Count(c.warning, DLOG_WARN)) << log.Dump();
}

const ValueCase kValueCases[] = {
    // Times become decimal milliseconds.
    {ATTR_BEGIN, "0.5S", kTextProfile, ERR_NONE, "500"},
    {ATTR_BEGIN, "1.5h", kTextProfile, ERR_NONE, "5400000"},
    {ATTR_BEGIN, "00:00:05.000", kTextProfile, ERR_NONE, "5000"},
    {ATTR_BEGIN, "5", kTextProfile, ERR_IGNORE, ""},
    {ATTR_BEGIN, "5 s", kTextProfile, ERR_IGNORE, ""},
    {ATTR_END, "1x", kTextProfile, ERR_IGNORE, ""},
    {ATTR_DUR, "00:01:00", kTextProfile, ERR_NONE, "60000"},
    // Frames and ticks take the document's rates; begin is held to the segment.
    {ATTR_END, "25f", kTextProfile, ERR_NONE, "1000", "", true},
    {ATTR_END, "30t", kTextProfile, ERR_NONE, "3000", "", true},
    {ATTR_DUR, "50F", kTextProfile, ERR_NONE, "2000", "", true},
    {ATTR_BEGIN, "1s", kTextProfile, ERR_NONE, "4000", "", true},
    {ATTR_BEGIN, "90t", kTextProfile, ERR_NONE, "9000", "", true},
    {ATTR_END, "1s", kTextProfile, ERR_NONE, "1000", "", true},
    // Document parameters.
    {ATTR_TICKRATE, "10000000", kTextProfile, ERR_NONE, "10000000"},
    {ATTR_SUBFRAMERATE, "-1", kTextProfile, ERR_IGNORE, ""},
    {ATTR_FRAMERATE, "25", kTextProfile, ERR_NONE, "25"},
    {ATTR_FRAMERATE, "0", kTextProfile, ERR_IGNORE, "", "ttp:frameRate must be a whole number above 0: 0; ignored"},
    {ATTR_ASPECTRATIO, "16:9", kTextProfile, ERR_IGNORE, ""},
    {ATTR_TIMEBASE, "SMPTE", kTextProfile, ERR_NONE, "smpte"},
    {ATTR_TIMEBASE, "wall", kTextProfile, ERR_IGNORE, ""},
    // Colours: names become codes, leading blanks go.
    {ATTR_COLOR, "  red", kTextProfile, ERR_NONE, "#ff0000ff"},
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
    // Lengths.
    {ATTR_FONTSIZE, "", kTextProfile, ERR_NONE, ""},
    {ATTR_FONTSIZE, "1C 2C", kTextProfile, ERR_NONE, "1c 2c"},
    {ATTR_FONTSIZE, "+1.5em", kTextProfile, ERR_NONE, "+1.5em"},
    {ATTR_FONTSIZE, "12", kTextProfile, ERR_IGNORE, ""},
    {ATTR_FONTSIZE, "-1c", kTextProfile, ERR_IGNORE, ""},
    {ATTR_LINEHEIGHT, "Normal", kTextProfile, ERR_NONE, "normal"},
    {ATTR_LINEHEIGHT, "1.2", kTextProfile, ERR_IGNORE, ""},
    {ATTR_PADDING, "1px 2px 3px 4px", kTextProfile, ERR_NONE, "1px 2px 3px 4px"},
    {ATTR_PADDING, "1px 2px 3px 4px 5px", kTextProfile, ERR_IGNORE, ""},
    {ATTR_PADDING, "1px auto", kTextProfile, ERR_IGNORE, ""},
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
    {ATTR_ORIGIN, "10% x", kTextProfile, ERR_IGNORE, "", "Seems like invalid format of value=10% x; ignoring!"},
    // Extent: percent only in the text profile.
    {ATTR_EXTENT, "50% 20%", kTextProfile, ERR_NONE, "50% 20%"},
    {ATTR_EXTENT, "50% 20%", kImageProfile, ERR_IGNORE, ""},
    {ATTR_EXTENT, "640px 480px", kImageProfile, ERR_NONE, "640px 480px"},
    {ATTR_EXTENT, "640px 20%", kImageProfile, ERR_IGNORE, ""},
    {ATTR_EXTENT, "2em 1em", kTextProfile, ERR_IGNORE, ""},
    {ATTR_EXTENT, "640px", kTextProfile, ERR_IGNORE, "", "Invalid format"},
    // Writing mode: horizontal only in the image profile.
    {ATTR_WRITINGMODE, "TBRL", kTextProfile, ERR_NONE, "tbrl"},
    {ATTR_WRITINGMODE, "tbrl", kImageProfile, ERR_IGNORE, ""},
    {ATTR_WRITINGMODE, "RL", kImageProfile, ERR_NONE, "rl"},
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
    // Background image: the last part of a URN, anything else as written.
    {ATTR_BACKGROUNDIMAGE, "urn:dvb:image:3", kImageProfile, ERR_NONE, "3"},
    {ATTR_BACKGROUNDIMAGE, "URN:a:3", kImageProfile, ERR_NONE, "URN:a:3"},
    // Named but without a check, or no number: dropped.
    {ATTR_FILLLINEGAP, "true", kTextProfile, ERR_NOT_SUPPORTED, ""},
    {ATTR_TEXT, "hello", kTextProfile, ERR_NOT_SUPPORTED, ""},
    {-1, "x", kTextProfile, ERR_NOT_SUPPORTED, ""},
};

INSTANTIATE_TEST_SUITE_P(Table, ImscValidate, ::testing::ValuesIn(kValueCases),
                         [](const ::testing::TestParamInfo<ValueCase>& info) {
                             return KeyOf(info.param.attr) + "_" + std::to_string(info.index);
                         });

}  // namespace
