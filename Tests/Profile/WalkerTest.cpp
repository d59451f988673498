// The generic walk as the EBU-TT-D profile drives it: inputs, attribute
// precedence, references, text handling, parent links, failure spread and
// the nesting limit.

#include "LogCapture.h"
#include "ProfileWalk.h"
#include "RowPrinter.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace TTML;
using WalkTest::Attr;
using WalkTest::Doc;
using WalkTest::Para;
using WalkTest::Walk;

TEST(WalkerInput, RefusesWhatItCannotWalkAndForgetsTheLastDocument)
{
    LogCapture log;
    WalkTest::TestProfile profile;
    CXmlParser reader;
    CSubtitleInfo info;
    CProfile::TTMLProfileData data;
    data.pXmlParser = &reader;
    data.pSubtitleInfo = &info;
    EXPECT_EQ(ERR_NULL_POINTER, profile.ProcessSubtitles(&data));
    EXPECT_TRUE(log.Has("NULL pointer found"));

    ASSERT_TRUE(profile.Initialize());
    CProfile::TTMLProfileData noInfo, noReader;
    noInfo.pXmlParser = &reader;
    noReader.pSubtitleInfo = &info;
    for (CProfile::TTMLProfileData* bad : {static_cast<CProfile::TTMLProfileData*>(nullptr), &noInfo, &noReader})
        EXPECT_EQ(ERR_NULL_POINTER, profile.ProcessSubtitles(bad));
    EXPECT_EQ(3, log.Count("Invalid parameters"));
    // An empty reader has no root.
    EXPECT_EQ(ERR_INVALID, profile.ProcessSubtitles(&data));
    EXPECT_TRUE(log.Has("Root element not found"));

    EXPECT_FALSE(profile.Initialize());
    EXPECT_TRUE(log.Has("CProfile is already initialized, returning false."));
    // The second document declares no region: the first one's must be gone.
    EXPECT_EQ(ERR_NONE, WalkTest::WalkAndReset(profile, Doc(Para("<span>a</span>"))));
    EXPECT_EQ(ERR_INVALID, WalkTest::WalkAndReset(profile, Doc("<div><p begin=\"00:00:01.000\" end=\"00:00:02.000\">a"
                                                               "</p></div>", "", "")));
    profile.Destroy();
}

// Which colour the text of a paragraph (in div region r1) ends up with.
// Styles s1 #111111 and s2 #222222, region r2 #333333.
struct PrecedenceCase {
    const char* name;
    const char* divAttrs;
    const char* pAttrs;
    const char* expected;
    bool unknownReference;
};

class Precedence : public ::testing::TestWithParam<PrecedenceCase> {};

TEST_P(Precedence, TextTakesTheWinningColour)
{
    const auto& c = GetParam();
    LogCapture log;
    Walk w(Doc("<div region=\"r1\" " + std::string(c.divAttrs) + "><p begin=\"00:00:01.000\" end=\"00:00:02.000\" " +
                   c.pAttrs + ">x</p></div>",
               "<style xml:id=\"s1\" tts:color=\"#111111\"/><style xml:id=\"s2\" tts:color=\"#222222\"/>",
               std::string(WalkTest::kRegion) + "<region xml:id=\"r2\" tts:color=\"#333333\"/>"));
    ASSERT_EQ(ERR_NONE, w.result) << log.Dump();
    EXPECT_EQ(c.expected, Attr(w.Text("x"), ATTR_COLOR));
    EXPECT_EQ(c.unknownReference, log.Has("Referenced element not found"));
}

const PrecedenceCase kPrecedence[] = {
    {"NothingSet", "", "", "<absent>", false},
    {"InheritedFromDiv", "tts:color=\"#aaaaaa\"", "", "#aaaaaa", false},
    {"ReferencedBeatsInherited", "tts:color=\"#aaaaaa\"", "style=\"s1\"", "#111111", false},
    {"OwnBeatsReferenced", "tts:color=\"#aaaaaa\"", "style=\"s1\" tts:color=\"#bbbbbb\"", "#bbbbbb", false},
    {"DivOwnBeatsDivStyle", "style=\"s2\" tts:color=\"#cccccc\"", "style=\"nope\"", "#cccccc", true},
    {"LaterStyleWins", "", "style=\"s1 s2\"", "#222222", false},
    {"OrderOfReferenceNotOfDefinition", "", "style=\"s2 s1\"", "#111111", false},
    // The id list is split like StrSplit: ends trimmed, single spaces
    // separate, so a double space makes an empty (unknown) id.
    {"BlanksAroundIdListTrimmed", "", "style=\" \t s1 s2\n \"", "#222222", false},
    {"DoubleSpaceIsAnEmptyId", "", "style=\"s2  s1\"", "#111111", true},
    {"TabDoesNotSeparateIds", "", "style=\"s1&#9;s2\"", "<absent>", true},
    {"RegionAttributesReferenced", "", "region=\"r2\"", "#333333", false},
    {"StyleBeatsRegion", "", "region=\"r2\" style=\"s1\"", "#111111", false},
};

INSTANTIATE_TEST_SUITE_P(Walker, Precedence, ::testing::ValuesIn(kPrecedence), TTMLTest::RowName());

TEST(WalkerBody, InheritsOnlyLangAndSpaceFromTheRoot)
{
    Walk w(Doc(Para("x"), "", WalkTest::kRegion,
               "xml:lang=\"de\" xml:space=\"preserve\" tts:color=\"#ff0000\" ttp:cellResolution=\"50 30\""));
    ASSERT_EQ(ERR_NONE, w.result);
    auto text = w.Text("x");
    EXPECT_EQ("de", Attr(text, ATTR_LANG));
    EXPECT_EQ("preserve", Attr(text, ATTR_SPACE));
    EXPECT_EQ("<absent>", Attr(text, ATTR_COLOR));
    // ... but the profile defaults.
    EXPECT_EQ("100%", Attr(text, ATTR_FONTSIZE));
    EXPECT_EQ("always", Attr(text, ATTR_SHOWBACKGROUND));
    // The root's parameters reach the document.
    EXPECT_EQ("50 30", w.info.GetCellResolution());
    EXPECT_EQ("media", w.info.GetTimeBase());

    Walk bare(Doc(Para("x")));
    ASSERT_EQ(ERR_NONE, bare.result);
    EXPECT_EQ("<absent>", Attr(bare.Text("x"), ATTR_LANG));
    EXPECT_EQ("<absent>", Attr(bare.Text("x"), ATTR_SPACE));
    EXPECT_EQ("32 15", bare.info.GetCellResolution());
}

// Background colours: a region's fills the region, a paragraph's its lines.
struct BackgroundCase {
    const char* name;
    const char* styling;
    const char* layout;
    const char* pAttrs;
    const char* expected;  // region r1's, then the text's region and paragraph backgrounds
};

class Background : public ::testing::TestWithParam<BackgroundCase> {};

TEST_P(Background, IsRenamedByWhereItIsSet)
{
    const auto& c = GetParam();
    Walk w(Doc("<div><p region=\"r1\" begin=\"00:00:01.000\" end=\"00:00:02.000\" " + std::string(c.pAttrs) +
                   ">x</p></div>",
               c.styling, c.layout));
    ASSERT_EQ(ERR_NONE, w.result);
    auto region = w.profile.Registry()->GetRegion("r1");
    auto text = w.Text("x");
    ASSERT_TRUE(region && text && text->GetParent());
    EXPECT_EQ(c.expected, Attr(region, ATTR_REGIONBACKGROUNDCOLOR) + " " + Attr(text, ATTR_REGIONBACKGROUNDCOLOR) +
                              " " + Attr(text, ATTR_PARABACKGROUNDCOLOR));
    // Neither keeps a plain background that the text lines would inherit.
    EXPECT_EQ("<absent>", Attr(region, ATTR_BACKGROUNDCOLOR));
    EXPECT_EQ("<absent>", Attr(text->GetParent(), ATTR_BACKGROUNDCOLOR));
}

const char* const kRedRegion = "<region xml:id=\"r1\" tts:backgroundColor=\"#ff0000ff\"/>";
const char* const kBluePara = "tts:backgroundColor=\"#0000ffff\"";

const BackgroundCase kBackgrounds[] = {
    {"RegionOwn", "", kRedRegion, "", "#ff0000ff #ff0000ff #00000000"},
    {"RegionByStyle", "<style xml:id=\"s\" tts:backgroundColor=\"#00ff00ff\"/>", "<region xml:id=\"r1\" style=\"s\"/>",
     "", "#00ff00ff #00ff00ff #00000000"},
    {"Paragraph", "", "<region xml:id=\"r1\"/>", kBluePara, "<absent> #00000000 #0000ffff"},
    {"Both", "", kRedRegion, kBluePara, "#ff0000ff #ff0000ff #0000ffff"},
};

INSTANTIATE_TEST_SUITE_P(Walker, Background, ::testing::ValuesIn(kBackgrounds), TTMLTest::RowName());

struct WhiteSpaceCase {
    const char* name;
    const char* in;
    const char* out;
};

class WhiteSpace : public ::testing::TestWithParam<WhiteSpaceCase> {};

TEST_P(WhiteSpace, Normalises)
{
    std::string text = GetParam().in;
    WalkTest::TestProfile::t_RemoveExtraWhiteSpace(text);
    EXPECT_EQ(GetParam().out, text);
}

const WhiteSpaceCase kWhiteSpace[] = {
    {"LineFeedAndSpacesBefore", "\n   Hello", "Hello"}, {"SingleEdgeSpacesKept", " Hello ", " Hello "},
    {"DoubleSpace", "a  b", "a b"},                     {"MixedControls", "a\r\n\tb", "a b"},
    {"SingleLineFeedTrimsEdges", " a\nb ", "a b"},      {"SpacesAroundLineFeed", "a \n b", "a b"},
    {"TrailingTab", "a b\t", "a b"},                    {"OnlyWhiteSpace", " \n ", ""},
    {"TwoSpacesOnly", "  ", ""},                        {"Empty", "", ""},
    {"UnicodeKept", "na\xc3\xafve  caf\xc3\xa9", "na\xc3\xafve caf\xc3\xa9"},
};

INSTANTIATE_TEST_SUITE_P(Walker, WhiteSpace, ::testing::ValuesIn(kWhiteSpace), TTMLTest::RowName());

// The texts of one paragraph (1 s to 2 s) as timed elements, in order:
// "text@begin-end", '+' for the last child; line breaks are "\n" texts.
struct TextCase {
    const char* name;
    const char* paragraph;
    const char* timed;
    const char* warning;  // logged, or empty
};

class WalkerText : public ::testing::TestWithParam<TextCase> {};

TEST_P(WalkerText, TimesTheParagraphsTexts)
{
    const auto& c = GetParam();
    LogCapture log;
    Walk w(Doc(Para(c.paragraph)));
    ASSERT_EQ(ERR_NONE, w.result) << log.Dump();
    std::string timed;
    for (const auto& t : w.TimedElements()) {
        // However deep the spans, every text's parent is the paragraph.
        ASSERT_TRUE(t.element->GetParent());
        EXPECT_EQ(ELEM_P, t.element->GetParent()->GetType());
        timed += (timed.empty() ? "" : " ") + Attr(t.element, ATTR_TEXT) + "@" + std::to_string(t.begin) + "-" +
                 std::to_string(t.end) + (t.element->GetLastChild() ? "+" : "");
    }
    EXPECT_EQ(c.timed, timed);
    // The walked paragraph is freed from the tree at once; its elements do
    // not depend on it.
    auto& r = w.reader;
    EXPECT_EQ(nullptr, r.GetChildNodeList(r.GetChildNodeByName(r.GetChildNodeByName(r.GetRootElement(), "body"), "div")));
    if (*c.warning) {
        EXPECT_TRUE(log.Has(c.warning)) << log.Dump();
    }
}

const TextCase kTexts[] = {
    {"OnlyText", "only", "only@1000-2000+", ""},
    {"SpaceDecidesNormalisingAndEscapesStay",
     "<span>\n   Hello</span><span xml:space=\"preserve\">\n   World</span><span>a &lt; b</span>",
     "Hello@1000-2000 \n   World@1000-2000 a &lt; b@1000-2000+", ""},
    // Inside a span the break takes the span's begin.
    {"LineBreaksAndTheLastChildOfTheLastSpan", "<span>a</span><br/><span begin=\"00:00:01.500\">b<br/>c</span>",
     "a@1000-2000 \n@1000-2000 b@1500-2000 \n@1500-2000 c@1500-2000+", ""},
    // A nested span is marked last only once its own texts are walked.
    // A child's own times replace its parent's, with no offset added.
    {"SpanTimesReplaceTheParagraphs", "a<span begin=\"00:00:01.200\" end=\"00:00:01.300\">b</span>",
     "a@1000-2000 b@1200-1300+", ""},
    {"NestedSpans", "<span>a<span>b<span>c</span></span></span>", "a@1000-2000 b@1000-2000 c@1000-2000", ""},
    // An empty span is timed only when it shows its background always.
    {"EmptySpanDefaultAlways", "<span>x</span><span></span>", "x@1000-2000 @1000-2000+", ""},
    {"EmptySpanAlways", "<span>x</span><span tts:showBackground=\"always\"></span>", "x@1000-2000 @1000-2000+", ""},
    {"EmptySpanWhenActive", "<span>x</span><span tts:showBackground=\"whenActive\"></span>", "x@1000-2000",
     "Empty Span found with BG as when active"},
};

INSTANTIATE_TEST_SUITE_P(Walker, WalkerText, ::testing::ValuesIn(kTexts), TTMLTest::RowName());

TEST(WalkerFailure, FailingChildStopsTheWalkAndTheDocument)
{
    LogCapture log;
    // The second paragraph's empty id refuses it; the first is fine.
    Walk w(Doc("<div region=\"r1\"><p begin=\"00:00:01.000\" end=\"00:00:02.000\">ok</p>"
               "<p xml:id=\"\" begin=\"00:00:01.000\" end=\"00:00:02.000\">bad</p>"
               "<p begin=\"00:00:01.000\" end=\"00:00:02.000\">never</p></div>"));
    EXPECT_EQ(ERR_INVALID, w.result);
    for (const char* node : {"div", "body", "tt"})
        EXPECT_TRUE(log.Has(std::string("Error in parsing for node ") + node + "; error code=5")) << log.Dump();
    // Nothing was split.
    EXPECT_TRUE(w.TimedElements().empty());
}

// ---- Nesting limit: refused at the walker's limit instead of recursing on ----

// `levels` nested divs around one paragraph, or nested spans inside it.
std::string Nested(bool spans, int levels)
{
    std::string open, close;
    for (int i = 0; i < levels; ++i) {
        open += spans ? "<span>" : "<div region=\"r1\">";
        close += spans ? "</span>" : "</div>";
    }
    const std::string p = "<p begin=\"00:00:01.000\" end=\"00:00:02.000\">";
    return Doc(spans ? "<div region=\"r1\">" + p + open + "deep" + close + "</p></div>" : open + p + "deep</p>" + close);
}

// tt, body and one div/p make the XML depth a few levels more than the
// chain; the limit is 64, libxml2 itself stops at 256.
TEST(WalkerDepth, RefusesOnlyBeyondTheLimitAndWalksOnAfterwards)
{
    for (bool spans : {false, true}) {
        for (int levels : {58, 70}) {
            LogCapture log;
            Walk w(Nested(spans, levels));
            const bool accepted = levels == 58;
            EXPECT_EQ(accepted ? ERR_NONE : ERR_INVALID, w.result) << spans;
            EXPECT_EQ(accepted, w.Text("deep") != nullptr) << spans;
            // One refusal, not one per level.
            EXPECT_EQ(accepted ? 0 : 1, log.Count("Document nesting deeper than 64 levels; refusing it")) << spans;
        }
    }
    WalkTest::TestProfile profile;
    ASSERT_TRUE(profile.Initialize());
    EXPECT_EQ(ERR_INVALID, WalkTest::WalkAndReset(profile, Nested(true, 100)));
    EXPECT_EQ(ERR_NONE, WalkTest::WalkAndReset(profile, Nested(true, 10)));
    profile.Destroy();
}

}  // namespace
