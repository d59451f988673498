// IMSC 1 text walks: relative timing, dur and seq containers, display and
// showBackground, the default region, root parameters and `set` splitting.

#include "CIMSCAttrHandler.h"
#include "CIMSCProfile.h"
#include "CStyleRegionInfo.h"
#include "CSubtitleInfo.h"
#include "LogCapture.h"
#include "ProfileWalk.h"
#include "RowPrinter.h"

#include <gtest/gtest.h>

#include <list>
#include <set>
#include <string>
#include <vector>

namespace {

using namespace TTML;

using WalkTest::Attr;
using WalkTest::ImscWalk;

constexpr const char* kRegion = "<region xml:id=\"r1\" tts:origin=\"10% 10%\" tts:extent=\"80% 80%\"/>";

std::string Doc(const std::string& body, const std::string& layout = kRegion, const std::string& rootAttrs = "",
                const std::string& styling = "", const std::string& bodyAttrs = "region=\"r1\"")
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>"
           "<tt xmlns=\"http://www.w3.org/ns/ttml\" xmlns:ttp=\"http://www.w3.org/ns/ttml#parameter\""
           " xmlns:tts=\"http://www.w3.org/ns/ttml#styling\" " +
           rootAttrs + "><head><styling>" + styling + "</styling><layout>" + layout + "</layout></head><body " +
           bodyAttrs + ">" + body + "</body></tt>";
}

// The stored form of a colour, as the attribute checks write it.
std::string Colour(const char* text)
{
    CIMSCAttrHandler handler;
    std::string value = text;
    EXPECT_EQ(ERR_NONE, handler.ValidateAttribute(ATTR_COLOR, value)) << text;
    return value;
}

// Intervals in which an element with text `text` is listed, adjacent
// intervals of the same element merged, in time order: "begin-end" each,
// followed by R when its `attr` is red and B when it is blue.
std::string Pieces(const ImscWalk& walk, const std::string& text, int attr = ATTR_COLOR)
{
    static const std::string kRed = Colour("#ff0000"), kBlue = Colour("#0000ff");
    std::vector<WalkTest::Timed> pieces;
    std::set<CSubtitleInfo::TimeInterval> keys;
    walk.info.GetUniqueKeys(keys);
    for (const auto& key : keys) {
        std::list<CElementSPTR> elements;
        walk.info.GetElementListForInterval(key, elements);
        for (const auto& e : elements) {
            if (Attr(e, ATTR_TEXT) != text)
                continue;
            if (!pieces.empty() && pieces.back().element == e && pieces.back().end == key.first)
                pieces.back().end = key.second;
            else
                pieces.push_back({key.first, key.second, e});
        }
    }
    std::string out;
    for (const auto& p : pieces) {
        const std::string value = Attr(p.element, attr);
        out += (out.empty() ? "" : ",") + std::to_string(p.begin) + "-" + std::to_string(p.end) +
               (value == kRed ? "R" : value == kBlue ? "B" : "");
    }
    return out;
}

// ---- Timing ---------------------------------------------------------------------

struct TimingCase {
    const char* name;
    const char* body;
    const char* pieces;  // of text "A"
};

class ImscTiming : public ::testing::TestWithParam<TimingCase> {};

TEST_P(ImscTiming, PlacesTextAt)
{
    ImscWalk walk(Doc(GetParam().body));
    ASSERT_EQ(ERR_NONE, walk.result);
    EXPECT_EQ(GetParam().pieces, Pieces(walk, "A"));
}

const TimingCase kTimings[] = {
    {"ParagraphOffsetByDiv", "<div begin=\"10s\"><p begin=\"1s\" end=\"3s\">A</p></div>", "11000-13000"},
    {"UntimedParagraphTakesDivTimes", "<div begin=\"10s\" end=\"20s\"><p>A</p></div>", "10000-20000"},
    {"ThreeLevelsOfOffsets",
     "<div begin=\"10s\"><p begin=\"1s\" end=\"5s\"><span begin=\"1s\" end=\"2s\">A</span></p></div>", "12000-13000"},
    {"ParagraphEndOffsetByDiv", "<div begin=\"1s\"><p end=\"2s\">A</p></div>", "1000-3000"},
    {"DurLongerThanEnd", "<p><span begin=\"2s\" dur=\"5s\" end=\"4s\">A</span></p>", "2000-4000"},
    {"DurWithoutEnd", "<p><span begin=\"2s\" dur=\"5s\">A</span></p>", "2000-7000"},
    {"DurInsideTimedParagraph", "<p begin=\"1s\" end=\"20s\"><span begin=\"1s\" dur=\"3s\">A</span></p>", "2000-5000"},
    {"DivDurBoundsParagraph", "<div begin=\"5s\" dur=\"3s\"><p>A</p></div>", "5000-8000"},
    {"ClockTimes", "<p begin=\"00:00:01.500\" end=\"00:00:02\">A</p>", "1500-2000"},
    {"DefaultFrameRateIs30", "<p begin=\"30f\" end=\"90f\">A</p>", "1000-3000"},
    {"DefaultTickRateIs1", "<p begin=\"2t\" end=\"4t\">A</p>", "2000-4000"},
    // The sets of a seq division move its begin on: to 4 s, where the third
    // set no longer fits (it starts at the division's end) and moves nothing.
    {"SeqSetsMoveTheDivisionsBegin",
     "<div timeContainer=\"seq\" begin=\"0s\" end=\"4s\"><set dur=\"2s\" tts:color=\"#ff0000\"/>"
     "<set dur=\"2s\" tts:color=\"#0000ff\"/><set dur=\"1s\" tts:color=\"#ff0000\"/><p begin=\"0s\" end=\"1s\">A</p>"
     "</div>",
     "4000-5000"},
};

INSTANTIATE_TEST_SUITE_P(Imsc, ImscTiming, ::testing::ValuesIn(kTimings), TTMLTest::RowName());

// ---- Display and showBackground -------------------------------------------------

struct DisplayCase {
    const char* name;
    const char* layout;
    const char* styling;
    const char* hidden;    // body content from 1 s to 2 s
    bool textShown;        // "A" listed
    bool backgroundShown;  // an empty text listed from 1 s to 2 s
};

class ImscDisplay : public ::testing::TestWithParam<DisplayCase> {};

TEST_P(ImscDisplay, HidesTextAndKeepsBackgroundAsAsked)
{
    const auto& c = GetParam();
    // A second, visible paragraph keeps the document timed.
    ImscWalk walk(Doc(std::string(c.hidden) + "<div region=\"r1\"><p begin=\"5s\" end=\"6s\">B</p></div>", c.layout,
                      "", c.styling));
    ASSERT_EQ(ERR_NONE, walk.result);
    EXPECT_EQ(c.textShown ? "1000-2000" : "", Pieces(walk, "A"));
    EXPECT_EQ(c.backgroundShown ? "1000-2000" : "", Pieces(walk, ""));
    EXPECT_EQ("5000-6000", Pieces(walk, "B"));
}

constexpr const char* kTwoRegions = "<region xml:id=\"r1\"/><region xml:id=\"r2\" tts:showBackground=\"whenActive\"/>";
constexpr const char* kHiddenRegion = "<region xml:id=\"r1\"/><region xml:id=\"r2\" tts:display=\"none\"/>";

// A division's display none kept by a paragraph that says auto, and one
// that drops the text with showBackground whenActive, are twins of real
// documents in ImscDocumentTest.
const DisplayCase kDisplays[] = {
    {"Visible", kTwoRegions, "", "<div><p begin=\"1s\" end=\"2s\">A</p></div>", true, false},
    {"NoneKeepsBackground", kTwoRegions, "", "<div tts:display=\"none\"><p begin=\"1s\" end=\"2s\">A</p></div>", false,
     true},
    {"StyleCannotUndoNone", kTwoRegions, "<style xml:id=\"s1\" tts:display=\"auto\"/>",
     "<div tts:display=\"none\"><p begin=\"1s\" end=\"2s\" style=\"s1\">A</p></div>", false, true},
    {"WhenActiveAloneShows", kTwoRegions, "", "<div region=\"r2\"><p begin=\"1s\" end=\"2s\">A</p></div>", true, false},
    {"HiddenRegion", kHiddenRegion, "", "<div region=\"r2\"><p begin=\"1s\" end=\"2s\">A</p></div>", false, false},
};

INSTANTIATE_TEST_SUITE_P(Imsc, ImscDisplay, ::testing::ValuesIn(kDisplays), TTMLTest::RowName());

// ---- Regions and root parameters -----------------------------------------------

TEST(ImscRegion, AnonymousRegionOnlyWhenTheDocumentDeclaresNone)
{
    ImscWalk bare(Doc("<div><p begin=\"1s\" end=\"2s\">A</p></div>", "", "", "", ""));
    ASSERT_EQ(ERR_NONE, bare.result);
    CElementSPTR region = bare.profile.Registry()->GetRegion("anonymous");
    ASSERT_TRUE(region);
    EXPECT_EQ("auto", Attr(region, ATTR_EXTENT));
    EXPECT_EQ("auto", Attr(region, ATTR_ORIGIN));
    EXPECT_EQ("anonymous", Attr(bare.Text("A"), ATTR_REGION));

    ImscWalk declared(Doc("<div><p begin=\"1s\" end=\"2s\">A</p></div>"));
    ASSERT_EQ(ERR_NONE, declared.result);
    EXPECT_FALSE(declared.profile.Registry()->GetRegion("anonymous"));
    EXPECT_TRUE(declared.profile.Registry()->GetRegion("r1"));
}

TEST(ImscRegion, InlineStyleStylesTheRegion)
{
    ImscWalk walk(Doc("<div><p begin=\"1s\" end=\"2s\">A</p></div>",
                      "<region xml:id=\"r1\"><style xml:id=\"inner\" tts:backgroundColor=\"#ff0000\""
                      " tts:displayAlign=\"after\"/></region>"));
    ASSERT_EQ(ERR_NONE, walk.result);
    CElementSPTR region = walk.profile.Registry()->GetRegion("r1");
    ASSERT_TRUE(region);
    EXPECT_EQ(Colour("#ff0000"), Attr(region, ATTR_REGIONBACKGROUNDCOLOR));
    EXPECT_EQ("<absent>", Attr(region, ATTR_BACKGROUNDCOLOR));
    EXPECT_EQ("after", Attr(region, ATTR_DISPLAYALIGN));
    EXPECT_EQ("r1", Attr(region, ATTR_ID));
    // The inline style is not a style of the document.
    EXPECT_FALSE(walk.profile.Registry()->GetStyle("inner"));
}

struct ExtentCase {
    const char* name;
    const char* rootAttrs;
    const char* extent;   // stored root extent
    const char* warning;  // expected warning, or empty
};

class ImscRootExtent : public ::testing::TestWithParam<ExtentCase> {};

TEST_P(ImscRootExtent, KeepsOnlyTwoPixelLengths)
{
    const auto& c = GetParam();
    LogCapture log;
    ImscWalk walk(Doc("<p begin=\"1s\" end=\"2s\">A</p>", kRegion, c.rootAttrs));
    ASSERT_EQ(ERR_NONE, walk.result);
    EXPECT_EQ(c.extent, walk.info.GetTTExtent());
    if (*c.warning) {
        EXPECT_TRUE(log.Has(c.warning)) << log.Dump();
    }
}

const ExtentCase kExtents[] = {
    {"Pixels", "tts:extent=\"640px 480px\"", "640px 480px", ""},
    {"Percent", "tts:extent=\"100% 100%\"", "", "Unit must be px for tt element"},
    {"MixedUnits", "tts:extent=\"640px 50%\"", "", "Unit must be px for tt element"},
    {"SingleLength", "tts:extent=\"640px\"", "", ""},
    {"Auto", "tts:extent=\"auto\"", "", ""},
};

INSTANTIATE_TEST_SUITE_P(Imsc, ImscRootExtent, ::testing::ValuesIn(kExtents), TTMLTest::RowName());

TEST(ImscRoot, RatesDefaultAndDeclared)
{
    ImscWalk plain(Doc("<p begin=\"1s\" end=\"2s\">A</p>"));
    ASSERT_EQ(ERR_NONE, plain.result);
    EXPECT_DOUBLE_EQ(30.0, plain.info.GetEffectiveFrameRate());
    EXPECT_EQ(1, plain.info.GetTickRate());
    EXPECT_EQ("", plain.info.GetAspectRatio());
    EXPECT_EQ("", plain.info.GetTTExtent());

    ImscWalk declared(Doc("<p begin=\"1s\" end=\"2s\">A</p>", kRegion,
                          "ttp:frameRate=\"30\" ttp:frameRateMultiplier=\"1000 1001\" ttp:tickRate=\"90000\" "
                          "ittp:aspectRatio=\"4 3\" "
                          "xmlns:ittp=\"http://www.w3.org/ns/ttml/profile/imsc1#parameter\""));
    ASSERT_EQ(ERR_NONE, declared.result);
    EXPECT_NEAR(29.97, declared.info.GetEffectiveFrameRate(), 0.001);
    EXPECT_EQ(90000, declared.info.GetTickRate());
    EXPECT_EQ("4 3", declared.info.GetAspectRatio());
}

// ---- Sets -----------------------------------------------------------------------

struct SetCase {
    const char* name;
    const char* layout;
    std::string body;
    const char* textPieces;   // of text "A"; R and B mark red and blue
    const char* emptyPieces;  // of an emptied text
};

class ImscSet : public ::testing::TestWithParam<SetCase> {};

TEST_P(ImscSet, SplitsIntervalAtSetBoundaries)
{
    const auto& c = GetParam();
    ImscWalk walk(Doc(c.body, c.layout));
    ASSERT_EQ(ERR_NONE, walk.result);
    EXPECT_EQ(c.textPieces, Pieces(walk, "A"));
    EXPECT_EQ(c.emptyPieces, Pieces(walk, ""));
}

// A paragraph from 0 s to 10 s holding `inner`.
std::string P10(const std::string& inner)
{
    return "<p begin=\"0s\" end=\"10s\">" + inner + "</p>";
}

constexpr const char* kWhenActive = "<region xml:id=\"r1\" tts:showBackground=\"whenActive\"/>";
constexpr const char* kRedSet = "<set begin=\"2s\" end=\"4s\" tts:color=\"#ff0000\"/>";
constexpr const char* kHideSet = "<span><set begin=\"2s\" end=\"4s\" tts:display=\"none\"/>A</span>";

const SetCase kSets[] = {
    {"OwnSet", kRegion, P10(std::string(kRedSet) + "<span>A</span>"), "0-2000,2000-4000R,4000-10000", ""},
    {"OverlappingSetsLaterWins", kRegion,
     P10("<set begin=\"1s\" end=\"5s\" tts:color=\"#ff0000\"/><set begin=\"3s\" end=\"8s\" tts:color=\"#0000ff\"/>A"),
     "0-1000,1000-3000R,3000-5000B,5000-8000B,8000-10000", ""},
    {"SetOnSpanItself", kRegion, P10("<span>A<set begin=\"6s\" end=\"7s\" tts:color=\"#0000ff\"/></span>"),
     "0-6000,6000-7000B,7000-10000", ""},
    {"SetOutsideInterval", kRegion, P10("<set begin=\"12s\" end=\"15s\" tts:color=\"#ff0000\"/>A"), "0-10000", ""},
    {"SetStraddlingEnd", kRegion, P10("<set begin=\"5s\" end=\"15s\" tts:color=\"#ff0000\"/>A"),
     "0-5000,5000-10000R", ""},
    {"SetWithoutEndIgnored", kRegion, P10("<set begin=\"2s\" tts:color=\"#ff0000\"/>A"), "0-10000", ""},
    {"SetWithDur", kRegion, P10("<set begin=\"2s\" dur=\"1s\" tts:color=\"#ff0000\"/>A"),
     "0-2000,2000-3000R,3000-10000", ""},
    // Sets with only a dur in a seq span follow one another from its begin
    // until its end is used up (the third never shows); a set's own end,
    // not the container's, bounds it, and the span keeps its times.
    {"SeqSetsFollowEachOther", kRegion,
     "<p><span timeContainer=\"seq\" begin=\"0s\" end=\"4s\"><set dur=\"2s\" tts:color=\"#ff0000\"/>"
     "<set dur=\"3s\" tts:color=\"#0000ff\"/><set dur=\"1s\" tts:color=\"#00ff00\"/>A</span></p>",
     "0-2000R,2000-4000B", ""},
    {"SetHidesSpanKeepsBackground", kRegion, P10(kHideSet), "0-2000,4000-10000", "2000-4000"},
    {"SetHidesSpanWhenActive", kWhenActive, P10(kHideSet), "0-2000,4000-10000", ""},
    {"DivSetReachesText", kRegion, std::string("<div>") + kRedSet + "<p begin=\"1s\" end=\"5s\">A</p></div>",
     "1000-2000,2000-4000R,4000-5000", ""},
};

INSTANTIATE_TEST_SUITE_P(Imsc, ImscSet, ::testing::ValuesIn(kSets), TTMLTest::RowName());

struct RegionSetCase {
    const char* name;
    std::string regionSet;
    const char* pieces;  // of text "A" from 5 s to 10 s; R marks the set's (red) background
};

class ImscRegionSet : public ::testing::TestWithParam<RegionSetCase> {};

TEST_P(ImscRegionSet, TimesRegionSetsFromEachElementsBegin)
{
    const auto& c = GetParam();
    const std::string set = "<set " + c.regionSet + " tts:backgroundColor=\"#ff0000\"/>";
    ImscWalk walk(Doc("<div><p begin=\"5s\" end=\"10s\">A</p></div>", "<region xml:id=\"r1\">" + set + "</region>"));
    ASSERT_EQ(ERR_NONE, walk.result);
    EXPECT_EQ(c.pieces, Pieces(walk, "A", ATTR_REGIONBACKGROUNDCOLOR));
}

const RegionSetCase kRegionSets[] = {
    {"BeginAndEnd", "begin=\"1s\" end=\"2s\"", "5000-6000,6000-7000R,7000-10000"},
    {"BeginOnlyRunsToEnd", "begin=\"3s\"", "5000-8000,8000-10000R"},
    {"EndPastElementClipped", "begin=\"4s\" end=\"9s\"", "5000-9000,9000-10000R"},
    {"DurOnlyStartsAtCursor", "dur=\"2s\"", "5000-7000R,7000-10000"},
    {"BeyondElementAddsNothing", "begin=\"20s\" end=\"25s\"", "5000-10000"},
    {"UntimedSetSkipped", "", "5000-10000"},
};

INSTANTIATE_TEST_SUITE_P(Imsc, ImscRegionSet, ::testing::ValuesIn(kRegionSets), TTMLTest::RowName());

}  // namespace
