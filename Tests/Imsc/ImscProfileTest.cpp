// IMSC 1 text walks: relative timing, dur and seq containers, display and
// showBackground, the default region, root parameters, `set` splitting and
// a crash-free pass over the sample corpus.

#include "CIMSCAttrHandler.h"
#include "CIMSCProfile.h"
#include "CStyleRegionInfo.h"
#include "CSubtitleInfo.h"
#include "CXmlParser.h"
#include "LogCapture.h"
#include "ProfileWalk.h"
#include "RowPrinter.h"

#include <gtest/gtest.h>

#include <list>
#include <ostream>
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

// Intervals in which an element with text `text` is listed, adjacent
// intervals of the same element merged, in time order. Each piece is
// "begin-end" followed by the label `mark` gives its `attr` value.
std::string Pieces(const ImscWalk& walk, const std::string& text, int attr = ATTR_COLOR,
                   const std::vector<std::pair<std::string, std::string>>& mark = {})
{
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
        out += (out.empty() ? "" : ",") + std::to_string(p.begin) + "-" + std::to_string(p.end);
        for (const auto& m : mark)
            if (m.first == Attr(p.element, attr))
                out += m.second;
    }
    return out;
}

// The stored form of a colour, as the attribute checks write it.
std::string Colour(const char* text)
{
    CIMSCAttrHandler handler;
    std::string value = text;
    EXPECT_EQ(ERR_NONE, handler.ValidateAttribute(ATTR_COLOR, value)) << text;
    return value;
}

// ---- Timing ---------------------------------------------------------------------

struct TimingCase {
    const char* name;
    const char* body;
    const char* rootAttrs;
    const char* pieces;  // of text "A"
};

class ImscTiming : public ::testing::TestWithParam<TimingCase> {};

TEST_P(ImscTiming, PlacesTextAt)
{
    const auto& c = GetParam();
    ImscWalk walk(Doc(c.body, kRegion, c.rootAttrs));
    ASSERT_EQ(ERR_NONE, walk.result);
    EXPECT_EQ(c.pieces, Pieces(walk, "A"));
}

INSTANTIATE_TEST_SUITE_P(
    Imsc, ImscTiming,
    ::testing::Values(
        TimingCase{"ParagraphOffsetByDiv", "<div begin=\"10s\"><p begin=\"1s\" end=\"3s\">A</p></div>", "",
                   "11000-13000"},
        TimingCase{"UntimedParagraphTakesDivTimes", "<div begin=\"10s\" end=\"20s\"><p>A</p></div>", "",
                   "10000-20000"},
        TimingCase{"ThreeLevelsOfOffsets",
                   "<div begin=\"10s\"><p begin=\"1s\" end=\"5s\"><span begin=\"1s\" end=\"2s\">A</span></p></div>",
                   "", "12000-13000"},
        TimingCase{"ParagraphEndOffsetByDiv", "<div begin=\"1s\"><p end=\"2s\">A</p></div>", "", "1000-3000"},
        TimingCase{"DurLongerThanEnd",
                   "<p><span begin=\"2s\" dur=\"5s\" end=\"4s\">A</span></p>", "", "2000-4000"},
        TimingCase{"DurWithoutEnd", "<p><span begin=\"2s\" dur=\"5s\">A</span></p>", "", "2000-7000"},
        TimingCase{"DurInsideTimedParagraph",
                   "<p begin=\"1s\" end=\"20s\"><span begin=\"1s\" dur=\"3s\">A</span></p>", "", "2000-5000"},
        TimingCase{"DivDurBoundsParagraph", "<div begin=\"5s\" dur=\"3s\"><p>A</p></div>", "", "5000-8000"},
        TimingCase{"ClockTimes", "<p begin=\"00:00:01.500\" end=\"00:00:02\">A</p>", "", "1500-2000"},
        TimingCase{"DefaultFrameRateIs30", "<p begin=\"30f\" end=\"90f\">A</p>", "", "1000-3000"},
        TimingCase{"DefaultTickRateIs1", "<p begin=\"2t\" end=\"4t\">A</p>", "", "2000-4000"},
        TimingCase{"DeclaredTickRate", "<p begin=\"20t\" end=\"40t\">A</p>", "ttp:tickRate=\"10\"", "2000-4000"},
        TimingCase{"DeclaredFrameRate", "<p begin=\"25f\" end=\"50f\">A</p>", "ttp:frameRate=\"25\"",
                   "1000-2000"}),
    TTMLTest::RowName());

// Three sets with only a dur in a seq span: they follow one another from the
// span's begin until the span's end is used up; the span keeps its times.
TEST(ImscSeq, SetsFollowEachOtherUntilContainerEnds)
{
    const std::string red = Colour("#ff0000");
    const std::string lime = Colour("#00ff00");
    const std::string blue = Colour("#0000ff");
    ImscWalk walk(Doc("<p><span timeContainer=\"seq\" begin=\"0s\" end=\"4s\">"
                      "<set dur=\"2s\" tts:color=\"#ff0000\"/><set dur=\"3s\" tts:color=\"#00ff00\"/>"
                      "<set dur=\"1s\" tts:color=\"#0000ff\"/>A</span></p>"));
    ASSERT_EQ(ERR_NONE, walk.result);
    EXPECT_EQ("0-2000R,2000-4000L", Pieces(walk, "A", ATTR_COLOR, {{red, "R"}, {lime, "L"}, {blue, "B"}}));
}

// ---- Display and showBackground -------------------------------------------------

struct DisplayCase {
    const char* name;
    const char* layout;
    const char* styling;
    const char* hidden;     // body content from 1 s to 2 s
    bool textShown;         // "A" listed
    bool backgroundShown;   // an empty text listed from 1 s to 2 s
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

INSTANTIATE_TEST_SUITE_P(
    Imsc, ImscDisplay,
    ::testing::Values(
        DisplayCase{"Visible", kTwoRegions, "", "<div><p begin=\"1s\" end=\"2s\">A</p></div>", true, false},
        DisplayCase{"NoneKeepsBackground", kTwoRegions, "",
                    "<div tts:display=\"none\"><p begin=\"1s\" end=\"2s\">A</p></div>", false, true},
        DisplayCase{"DescendantCannotUndoNone", kTwoRegions, "",
                    "<div tts:display=\"none\"><p begin=\"1s\" end=\"2s\" tts:display=\"auto\">"
                    "<span tts:display=\"auto\">A</span></p></div>",
                    false, true},
        DisplayCase{"StyleCannotUndoNone", kTwoRegions, "<style xml:id=\"s1\" tts:display=\"auto\"/>",
                    "<div tts:display=\"none\"><p begin=\"1s\" end=\"2s\" style=\"s1\">A</p></div>", false, true},
        DisplayCase{"NoneWhenActiveDrops", kTwoRegions, "",
                    "<div region=\"r2\" tts:display=\"none\"><p begin=\"1s\" end=\"2s\">A</p></div>", false, false},
        DisplayCase{"WhenActiveAloneShows", kTwoRegions, "",
                    "<div region=\"r2\"><p begin=\"1s\" end=\"2s\">A</p></div>", true, false},
        DisplayCase{"HiddenRegion", kHiddenRegion, "",
                    "<div region=\"r2\"><p begin=\"1s\" end=\"2s\">A</p></div>", false, false}),
    TTMLTest::RowName());

// ---- Regions and root parameters -----------------------------------------------

TEST(ImscRegion, DocumentWithoutRegionsGetsAnonymousRegion)
{
    ImscWalk walk(Doc("<div><p begin=\"1s\" end=\"2s\">A</p></div>", "", "", "", ""));
    ASSERT_EQ(ERR_NONE, walk.result);
    CElementSPTR region = walk.profile.Registry()->GetRegion("anonymous");
    ASSERT_TRUE(region);
    EXPECT_EQ("auto", Attr(region, ATTR_EXTENT));
    EXPECT_EQ("auto", Attr(region, ATTR_ORIGIN));
    EXPECT_EQ("anonymous", Attr(walk.Text("A"), ATTR_REGION));
}

TEST(ImscRegion, DeclaredRegionsGetNoAnonymousRegion)
{
    ImscWalk walk(Doc("<div><p begin=\"1s\" end=\"2s\">A</p></div>"));
    ASSERT_EQ(ERR_NONE, walk.result);
    EXPECT_FALSE(walk.profile.Registry()->GetRegion("anonymous"));
    EXPECT_TRUE(walk.profile.Registry()->GetRegion("r1"));
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

INSTANTIATE_TEST_SUITE_P(
    Imsc, ImscRootExtent,
    ::testing::Values(ExtentCase{"Pixels", "tts:extent=\"640px 480px\"", "640px 480px", ""},
                      ExtentCase{"Percent", "tts:extent=\"100% 100%\"", "", "Unit must be px for tt element"},
                      ExtentCase{"MixedUnits", "tts:extent=\"640px 50%\"", "", "Unit must be px for tt element"},
                      ExtentCase{"SingleLength", "tts:extent=\"640px\"", "", ""},
                      ExtentCase{"Auto", "tts:extent=\"auto\"", "", ""},
                      ExtentCase{"Absent", "", "", ""}),
    TTMLTest::RowName());

TEST(ImscRoot, RatesDefaultAndDeclared)
{
    {
        ImscWalk walk(Doc("<p begin=\"1s\" end=\"2s\">A</p>"));
        ASSERT_EQ(ERR_NONE, walk.result);
        EXPECT_DOUBLE_EQ(30.0, walk.info.GetEffectiveFrameRate());
        EXPECT_EQ(1, walk.info.GetTickRate());
        EXPECT_EQ("", walk.info.GetAspectRatio());
    }
    {
        ImscWalk walk(Doc("<p begin=\"1s\" end=\"2s\">A</p>", kRegion,
                          "ttp:frameRate=\"30\" ttp:frameRateMultiplier=\"1000 1001\" ttp:tickRate=\"90000\""
                          " ittp:aspectRatio=\"4 3\" xmlns:ittp=\"http://www.w3.org/ns/ttml/profile/imsc1#parameter\""));
        ASSERT_EQ(ERR_NONE, walk.result);
        EXPECT_NEAR(29.97, walk.info.GetEffectiveFrameRate(), 0.001);
        EXPECT_EQ(90000, walk.info.GetTickRate());
        EXPECT_EQ("4 3", walk.info.GetAspectRatio());
    }
}

// ---- Sets -----------------------------------------------------------------------

struct SetCase {
    const char* name;
    const char* layout;
    const char* body;
    const char* textPieces;   // of text "A"; R and B mark red and blue
    const char* emptyPieces;  // of an emptied text
};

class ImscSet : public ::testing::TestWithParam<SetCase> {};

TEST_P(ImscSet, SplitsIntervalAtSetBoundaries)
{
    const auto& c = GetParam();
    ImscWalk walk(Doc(c.body, c.layout));
    ASSERT_EQ(ERR_NONE, walk.result);
    const std::vector<std::pair<std::string, std::string>> marks = {{Colour("#ff0000"), "R"},
                                                                     {Colour("#0000ff"), "B"}};
    EXPECT_EQ(c.textPieces, Pieces(walk, "A", ATTR_COLOR, marks));
    EXPECT_EQ(c.emptyPieces, Pieces(walk, "", ATTR_COLOR, marks));
}

constexpr const char* kWhenActive = "<region xml:id=\"r1\" tts:showBackground=\"whenActive\"/>";

INSTANTIATE_TEST_SUITE_P(
    Imsc, ImscSet,
    ::testing::Values(
        SetCase{"OwnSet", kRegion,
                "<p begin=\"0s\" end=\"10s\"><set begin=\"2s\" end=\"4s\" tts:color=\"#ff0000\"/>"
                "<span>A</span></p>",
                "0-2000,2000-4000R,4000-10000", ""},
        SetCase{"OverlappingSetsLaterWins", kRegion,
                "<p begin=\"0s\" end=\"10s\"><set begin=\"1s\" end=\"5s\" tts:color=\"#ff0000\"/>"
                "<set begin=\"3s\" end=\"8s\" tts:color=\"#0000ff\"/>A</p>",
                "0-1000,1000-3000R,3000-5000B,5000-8000B,8000-10000", ""},
        SetCase{"SetOnSpanItself", kRegion,
                "<p begin=\"0s\" end=\"10s\"><span>A<set begin=\"6s\" end=\"7s\" tts:color=\"#0000ff\"/></span></p>",
                "0-6000,6000-7000B,7000-10000", ""},
        SetCase{"SetOutsideInterval", kRegion,
                "<p begin=\"0s\" end=\"10s\"><set begin=\"12s\" end=\"15s\" tts:color=\"#ff0000\"/>A</p>",
                "0-10000", ""},
        SetCase{"SetStraddlingEnd", kRegion,
                "<p begin=\"0s\" end=\"10s\"><set begin=\"5s\" end=\"15s\" tts:color=\"#ff0000\"/>A</p>",
                "0-5000,5000-10000R", ""},
        SetCase{"SetWithoutEndIgnored", kRegion,
                "<p begin=\"0s\" end=\"10s\"><set begin=\"2s\" tts:color=\"#ff0000\"/>A</p>", "0-10000", ""},
        SetCase{"SetWithDur", kRegion,
                "<p begin=\"0s\" end=\"10s\"><set begin=\"2s\" dur=\"1s\" tts:color=\"#ff0000\"/>A</p>",
                "0-2000,2000-3000R,3000-10000", ""},
        SetCase{"SetHidesSpanKeepsBackground", kRegion,
                "<p begin=\"0s\" end=\"10s\"><span><set begin=\"2s\" end=\"4s\" tts:display=\"none\"/>A</span></p>",
                "0-2000,4000-10000", "2000-4000"},
        SetCase{"SetHidesSpanWhenActive", kWhenActive,
                "<p begin=\"0s\" end=\"10s\"><span><set begin=\"2s\" end=\"4s\" tts:display=\"none\"/>A</span></p>",
                "0-2000,4000-10000", ""},
        SetCase{"DivSetReachesText", kRegion,
                "<div><set begin=\"1s\" end=\"2s\" tts:color=\"#ff0000\"/><p begin=\"0s\" end=\"3s\">A</p></div>",
                "0-1000,1000-2000R,2000-3000", ""}),
    TTMLTest::RowName());

struct RegionSetCase {
    const char* name;
    const char* regionSets;
    const char* pieces;  // of text "A" from 5 s to 10 s; R marks the set's background
};

class ImscRegionSet : public ::testing::TestWithParam<RegionSetCase> {};

TEST_P(ImscRegionSet, TimesRegionSetsFromEachElementsBegin)
{
    const auto& c = GetParam();
    ImscWalk walk(Doc("<div><p begin=\"5s\" end=\"10s\">A</p></div>",
                      std::string("<region xml:id=\"r1\">") + c.regionSets + "</region>"));
    ASSERT_EQ(ERR_NONE, walk.result);
    EXPECT_EQ(c.pieces, Pieces(walk, "A", ATTR_REGIONBACKGROUNDCOLOR, {{Colour("#ff0000"), "R"}}));
}

INSTANTIATE_TEST_SUITE_P(
    Imsc, ImscRegionSet,
    ::testing::Values(
        RegionSetCase{"BeginAndEnd", "<set begin=\"1s\" end=\"2s\" tts:backgroundColor=\"#ff0000\"/>",
                      "5000-6000,6000-7000R,7000-10000"},
        RegionSetCase{"BeginOnlyRunsToEnd", "<set begin=\"3s\" tts:backgroundColor=\"#ff0000\"/>",
                      "5000-8000,8000-10000R"},
        RegionSetCase{"EndPastElementClipped", "<set begin=\"4s\" end=\"9s\" tts:backgroundColor=\"#ff0000\"/>",
                      "5000-9000,9000-10000R"},
        RegionSetCase{"DurOnlyStartsAtCursor", "<set dur=\"2s\" tts:backgroundColor=\"#ff0000\"/>",
                      "5000-7000R,7000-10000"},
        RegionSetCase{"BeyondElementAddsNothing", "<set begin=\"20s\" end=\"25s\" tts:backgroundColor=\"#ff0000\"/>",
                      "5000-10000"},
        RegionSetCase{"UntimedSetSkipped", "<set tts:backgroundColor=\"#ff0000\"/>", "5000-10000"}),
    TTMLTest::RowName());

// ---- Limits and corpus -------------------------------------------------------------

std::string Repeat(const std::string& s, int n)
{
    std::string out;
    for (int i = 0; i < n; ++i)
        out += s;
    return out;
}

TEST(ImscDepth, NestedSpansStopAtTheWalkersLimit)
{
    const std::string shallow =
        "<p begin=\"1s\" end=\"2s\">" + Repeat("<span>", 10) + "A" + Repeat("</span>", 10) + "</p>";
    ImscWalk ok(Doc(shallow));
    EXPECT_EQ(ERR_NONE, ok.result);
    EXPECT_EQ("1000-2000", Pieces(ok, "A"));

    const int levels = CProfile::kMaxNestingDepth + 5;
    const std::string deep =
        "<p begin=\"1s\" end=\"2s\">" + Repeat("<span>", levels) + "A" + Repeat("</span>", levels) + "</p>";
    ImscWalk refused(Doc(deep));
    EXPECT_EQ(ERR_INVALID, refused.result);
}

}  // namespace
