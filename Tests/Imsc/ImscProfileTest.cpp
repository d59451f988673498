// IMSC 1 text walks: relative timing, dur and seq containers, display and
// showBackground, the default region, root parameters and `set` splitting.

#include "LogCapture.h"
#include "ProfileWalk.h"  // the IMSC profile, its registries and the document
#include "RowPrinter.h"

#include <gtest/gtest.h>

#include <list>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace {

using namespace TTML;

using WalkTest::Attr;
using WalkTest::ImscWalk;

using WalkTest::kRegion;

std::string Doc(const std::string& body, const std::string& layout = kRegion, const std::string& rootAttrs = "",
                const std::string& styling = "", const std::string& bodyAttrs = "region=\"r1\"")
{
    return WalkTest::Doc(body, styling, layout, rootAttrs, "", bodyAttrs);
}

// Red and blue as the attribute checks store them.
const std::string kRed = "#ff0000", kBlue = "#0000ff";

// Intervals in which an element with text `text` is listed, adjacent
// intervals of the same element merged, in time order: "begin-end" each,
// followed by R when its colour or region background is red, B when blue.
std::string Pieces(const ImscWalk& walk, const std::string& text)
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
        const std::string colours = Attr(p.element, ATTR_COLOR) + " " + Attr(p.element, ATTR_REGIONBACKGROUNDCOLOR);
        out += (out.empty() ? "" : ",") + std::to_string(p.begin) + "-" + std::to_string(p.end) +
               (colours.find(kRed) != std::string::npos ? "R" : colours.find(kBlue) != std::string::npos ? "B" : "");
    }
    return out;
}

// ---- What is shown when -------------------------------------------------------

// Body content and layout, and the pieces (see Pieces) of the text "A" and of
// emptied texts (a hidden text that keeps its background).
struct ShownCase {
    const char* name;
    std::string body;
    const char* textPieces;
    const char* emptyPieces = "";
    std::string layout = kRegion;
    const char* styling = "";
};

class ImscShown : public ::testing::TestWithParam<ShownCase> {};

TEST_P(ImscShown, PiecesOfTheText)
{
    const auto& c = GetParam();
    ImscWalk walk(Doc(c.body, c.layout, "", c.styling));
    ASSERT_EQ(ERR_NONE, walk.result);
    EXPECT_EQ(c.textPieces, Pieces(walk, "A"));
    EXPECT_EQ(c.emptyPieces, Pieces(walk, ""));
}

// A paragraph from 0 s to 10 s holding `inner`.
std::string P10(const std::string& inner)
{
    return "<p begin=\"0s\" end=\"10s\">" + inner + "</p>";
}

// A visible paragraph that keeps a document timed when "A" is not shown.
constexpr const char* kAlsoB = "<div region=\"r1\"><p begin=\"5s\" end=\"6s\">B</p></div>";
constexpr const char* kTwoRegions = "<region xml:id=\"r1\"/><region xml:id=\"r2\" tts:showBackground=\"whenActive\"/>";
constexpr const char* kWhenActive = "<region xml:id=\"r1\" tts:showBackground=\"whenActive\"/>";
constexpr const char* kRedSet = "<set begin=\"2s\" end=\"4s\" tts:color=\"#ff0000\"/>";
constexpr const char* kHideSet = "<span><set begin=\"2s\" end=\"4s\" tts:display=\"none\"/>A</span>";

// A region r1 holding one set that gives it a red background.
std::string RegionSet(const std::string& timing)
{
    return "<region xml:id=\"r1\"><set " + timing + " tts:backgroundColor=\"#ff0000\"/></region>";
}

const std::string kP5To10 = "<div><p begin=\"5s\" end=\"10s\">A</p></div>";

const ShownCase kShown[] = {
    // Timing relative to the parent, dur and time containers.
    {"ParagraphOffsetByDiv", "<div begin=\"10s\"><p begin=\"1s\" end=\"3s\">A</p></div>", "11000-13000"},
    {"UntimedParagraphTakesDivTimes", "<div begin=\"10s\" end=\"20s\"><p>A</p></div>", "10000-20000"},
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

    // Display and showBackground. Display none keeping the background, kept
    // by a paragraph that says auto, and dropping the text with
    // showBackground whenActive are twins of real documents (ImscDocumentTest).
    {"Visible", "<div><p begin=\"1s\" end=\"2s\">A</p></div>", "1000-2000", "", kTwoRegions},
    {"StyleCannotUndoNone", "<div tts:display=\"none\"><p begin=\"1s\" end=\"2s\" style=\"s1\">A</p></div>", "",
     "1000-2000", kTwoRegions, "<style xml:id=\"s1\" tts:display=\"auto\"/>"},
    {"WhenActiveAloneShows", "<div region=\"r2\"><p begin=\"1s\" end=\"2s\">A</p></div>", "1000-2000", "",
     kTwoRegions},
    {"HiddenRegion", std::string("<div region=\"r2\"><p begin=\"1s\" end=\"2s\">A</p></div>") + kAlsoB, "", "",
     "<region xml:id=\"r1\"/><region xml:id=\"r2\" tts:display=\"none\"/>"},

    // Sets split an element's interval; R and B mark red and blue.
    {"OverlappingSetsLaterWins",
     P10("<set begin=\"1s\" end=\"5s\" tts:color=\"#ff0000\"/><set begin=\"3s\" end=\"8s\" tts:color=\"#0000ff\"/>A"),
     "0-1000,1000-3000R,3000-5000B,5000-8000B,8000-10000"},
    {"SetOnSpanItself", P10("<span>A<set begin=\"6s\" end=\"7s\" tts:color=\"#0000ff\"/></span>"),
     "0-6000,6000-7000B,7000-10000"},
    {"SetOutsideInterval", P10("<set begin=\"12s\" end=\"15s\" tts:color=\"#ff0000\"/>A"), "0-10000"},
    {"SetStraddlingEnd", P10("<set begin=\"5s\" end=\"15s\" tts:color=\"#ff0000\"/>A"), "0-5000,5000-10000R"},
    {"SetWithoutEndIgnored", P10("<set begin=\"2s\" tts:color=\"#ff0000\"/>A"), "0-10000"},
    {"SetWithDur", P10("<set begin=\"2s\" dur=\"1s\" tts:color=\"#ff0000\"/>A"), "0-2000,2000-3000R,3000-10000"},
    // Sets with only a dur in a seq span follow one another from its begin
    // until its end is used up (the third never shows); a set's own end,
    // not the container's, bounds it, and the span keeps its times.
    {"SeqSetsFollowEachOther",
     "<p><span timeContainer=\"seq\" begin=\"0s\" end=\"4s\"><set dur=\"2s\" tts:color=\"#ff0000\"/>"
     "<set dur=\"3s\" tts:color=\"#0000ff\"/><set dur=\"1s\" tts:color=\"#00ff00\"/>A</span></p>",
     "0-2000R,2000-4000B"},
    {"SetHidesSpanKeepsBackground", P10(kHideSet), "0-2000,4000-10000", "2000-4000"},
    {"SetHidesSpanWhenActive", P10(kHideSet), "0-2000,4000-10000", "", kWhenActive},
    {"DivSetReachesText", std::string("<div>") + kRedSet + "<p begin=\"1s\" end=\"5s\">A</p></div>",
     "1000-2000,2000-4000R,4000-5000"},

    // Region sets are timed from each element's own begin.
    {"RegionSetBeginAndEnd", kP5To10, "5000-6000,6000-7000R,7000-10000", "", RegionSet("begin=\"1s\" end=\"2s\"")},
    {"RegionSetBeginOnlyRunsToEnd", kP5To10, "5000-8000,8000-10000R", "", RegionSet("begin=\"3s\"")},
    {"RegionSetEndPastElementClipped", kP5To10, "5000-9000,9000-10000R", "", RegionSet("begin=\"4s\" end=\"9s\"")},
    {"RegionSetDurOnlyStartsAtCursor", kP5To10, "5000-7000R,7000-10000", "", RegionSet("dur=\"2s\"")},
    {"RegionSetBeyondElementAddsNothing", kP5To10, "5000-10000", "", RegionSet("begin=\"20s\" end=\"25s\"")},
    {"RegionSetUntimedSkipped", kP5To10, "5000-10000", "", RegionSet("")},
};

INSTANTIATE_TEST_SUITE_P(Imsc, ImscShown, ::testing::ValuesIn(kShown), TTMLTest::RowName());

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
    EXPECT_FALSE(declared.profile.Registry()->GetRegion("anonymous"));
}

TEST(ImscRegion, InlineStyleStylesTheRegion)
{
    ImscWalk walk(Doc("<div><p begin=\"1s\" end=\"2s\">A</p></div>",
                      "<region xml:id=\"r1\"><style xml:id=\"inner\" tts:backgroundColor=\"#ff0000\""
                      " tts:displayAlign=\"after\"/></region>"));
    ASSERT_EQ(ERR_NONE, walk.result);
    CElementSPTR region = walk.profile.Registry()->GetRegion("r1");
    ASSERT_TRUE(region);
    EXPECT_EQ(kRed, Attr(region, ATTR_REGIONBACKGROUNDCOLOR));
    EXPECT_EQ("<absent>", Attr(region, ATTR_BACKGROUNDCOLOR));
    EXPECT_EQ("after", Attr(region, ATTR_DISPLAYALIGN));
    EXPECT_EQ("r1", Attr(region, ATTR_ID));
    // The inline style is not a style of the document.
    EXPECT_FALSE(walk.profile.Registry()->GetStyle("inner"));
}

// What the document keeps of the root: extent (two pixel lengths only),
// frame rate, tick rate and aspect ratio.
TEST(ImscRoot, KeepsItsParameters)
{
    const char* const kPixelsOnly = "Unit must be px for tt element";
    const struct {
        const char* rootAttrs;
        const char* kept;
        const char* warning;
    } cases[] = {
        {"", "|30|1|", ""},
        {"tts:extent=\"640px 480px\"", "640px 480px|30|1|", ""},
        {"tts:extent=\"100% 100%\"", "|30|1|", kPixelsOnly},
        {"tts:extent=\"640px 50%\"", "|30|1|", kPixelsOnly},
        {"tts:extent=\"640px\"", "|30|1|", ""},
        {"tts:extent=\"auto\"", "|30|1|", ""},
        {"ttp:frameRate=\"30\" ttp:frameRateMultiplier=\"1000 1001\" ttp:tickRate=\"90000\" ittp:aspectRatio=\"4 3\" "
         "xmlns:ittp=\"http://www.w3.org/ns/ttml/profile/imsc1#parameter\"",
         "|29.97|90000|4 3", ""},
    };
    for (const auto& c : cases) {
        LogCapture log;
        ImscWalk walk(Doc("<p begin=\"1s\" end=\"2s\">A</p>", kRegion, c.rootAttrs));
        ASSERT_EQ(ERR_NONE, walk.result);
        std::ostringstream kept;
        kept << walk.info.GetTTExtent() << "|" << walk.info.GetEffectiveFrameRate() << "|"
             << walk.info.GetTickRate() << "|" << walk.info.GetAspectRatio();
        EXPECT_EQ(c.kept, kept.str()) << c.rootAttrs;
        if (*c.warning) {
            EXPECT_TRUE(log.Has(c.warning)) << log.Dump();
        }
    }
}

}  // namespace
