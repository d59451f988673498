// The generic walk as the EBU-TT-D profile drives it: inputs, attribute
// precedence, references, text handling, parent links, failure spread and
// the nesting limit.

#include "LogCapture.h"
#include "ProfileWalk.h"
#include "RowPrinter.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace {

using namespace TTML;
using WalkTest::Attr;
using WalkTest::Doc;
using WalkTest::Para;
using WalkTest::Walk;

TEST(WalkerInput, UninitialisedProfileNullOrIncompleteRecordIsRefused)
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
    profile.Destroy();
}

TEST(WalkerInput, LifecycleTwiceWarnsAndResetForgetsTheRegions)
{
    LogCapture log;
    WalkTest::TestProfile profile;
    EXPECT_TRUE(profile.Initialize());
    EXPECT_FALSE(profile.Initialize());
    EXPECT_TRUE(log.Has("CProfile is already initialized, returning false."));
    profile.SetProfile(2);
    EXPECT_EQ(2, profile.GetProfile());
    // The second document declares no region: the first one's must be gone.
    EXPECT_EQ(ERR_NONE, WalkTest::WalkAndReset(profile, Doc(Para("<span>a</span>"))));
    EXPECT_EQ(ERR_INVALID, WalkTest::WalkAndReset(profile, Doc("<div><p begin=\"00:00:01.000\" end=\"00:00:02.000\">a"
                                                               "</p></div>", "", "")));
    profile.Destroy();
    profile.Destroy();
    EXPECT_TRUE(log.Has("CProfile is already destroyed, returning false."));
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
    {"DivOwnBeatsDivStyle", "style=\"s2\" tts:color=\"#cccccc\"", "", "#cccccc", false},
    {"LaterStyleWins", "", "style=\"s1 s2\"", "#222222", false},
    {"OrderOfReferenceNotOfDefinition", "", "style=\"s2 s1\"", "#111111", false},
    {"UnknownIdSkipped", "", "style=\"s1 nope\"", "#111111", true},
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
    Walk w(Doc(Para("x"), "", WalkTest::kRegion, "xml:lang=\"de\" xml:space=\"preserve\" tts:color=\"#ff0000\""));
    ASSERT_EQ(ERR_NONE, w.result);
    auto text = w.Text("x");
    EXPECT_EQ("de", Attr(text, ATTR_LANG));
    EXPECT_EQ("preserve", Attr(text, ATTR_SPACE));
    EXPECT_EQ("<absent>", Attr(text, ATTR_COLOR));
    // ... but the profile defaults.
    EXPECT_EQ("100%", Attr(text, ATTR_FONTSIZE));
    EXPECT_EQ("always", Attr(text, ATTR_SHOWBACKGROUND));

    Walk bare(Doc(Para("x")));
    ASSERT_EQ(ERR_NONE, bare.result);
    EXPECT_EQ("<absent>", Attr(bare.Text("x"), ATTR_LANG));
    EXPECT_EQ("<absent>", Attr(bare.Text("x"), ATTR_SPACE));
    EXPECT_EQ("32 15", bare.info.GetCellResolution());
    EXPECT_EQ("media", bare.info.GetTimeBase());
}

TEST(WalkerBody, RootCellResolutionAndTimeBaseReachTheDocument)
{
    Walk w(Doc(Para("x"), "", WalkTest::kRegion, "ttp:cellResolution=\"50 30\" ttp:timeBase=\"MEDIA\""));
    ASSERT_EQ(ERR_NONE, w.result);
    EXPECT_EQ("50 30", w.info.GetCellResolution());
    EXPECT_EQ("media", w.info.GetTimeBase());
}

// Background colours: a region's fills the region, a paragraph's its lines.
struct BackgroundCase {
    const char* name;
    const char* styling;
    const char* layout;
    const char* pAttrs;
    const char* regionBg;  // of the registered region r1
    const char* textRegionBg;
    const char* textParaBg;
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
    ASSERT_TRUE(region);
    EXPECT_EQ(c.regionBg, Attr(region, ATTR_REGIONBACKGROUNDCOLOR));
    EXPECT_EQ("<absent>", Attr(region, ATTR_BACKGROUNDCOLOR));
    auto text = w.Text("x");
    EXPECT_EQ(c.textRegionBg, Attr(text, ATTR_REGIONBACKGROUNDCOLOR));
    EXPECT_EQ(c.textParaBg, Attr(text, ATTR_PARABACKGROUNDCOLOR));
    ASSERT_TRUE(text->GetParent());
    EXPECT_EQ("<absent>", Attr(text->GetParent(), ATTR_BACKGROUNDCOLOR));
}

const char* const kRedRegion = "<region xml:id=\"r1\" tts:backgroundColor=\"#ff0000ff\"/>";
const char* const kBluePara = "tts:backgroundColor=\"#0000ffff\"";

const BackgroundCase kBackgrounds[] = {
    {"RegionOwn", "", kRedRegion, "", "#ff0000ff", "#ff0000ff", "#00000000"},
    {"RegionByStyle", "<style xml:id=\"s\" tts:backgroundColor=\"#00ff00ff\"/>", "<region xml:id=\"r1\" style=\"s\"/>",
     "", "#00ff00ff", "#00ff00ff", "#00000000"},
    {"Paragraph", "", "<region xml:id=\"r1\"/>", kBluePara, "<absent>", "#00000000", "#0000ffff"},
    {"Both", "", kRedRegion, kBluePara, "#ff0000ff", "#ff0000ff", "#0000ffff"},
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

TEST(WalkerText, SpaceDecidesNormalisingAndEscapesStay)
{
    Walk w(Doc(Para("<span>\n   Hello</span><span xml:space=\"preserve\">\n   World</span><span>a &lt; b</span>")));
    ASSERT_EQ(ERR_NONE, w.result);
    EXPECT_TRUE(w.Text("Hello"));
    EXPECT_TRUE(w.Text("\n   World"));
    EXPECT_TRUE(w.Text("a &lt; b"));
}

// An empty span is timed only when it shows its background always.
TEST(WalkerText, EmptySpanIsTimedOnlyWithBackgroundAlways)
{
    const std::pair<const char*, bool> cases[] = {
        {"", true}, {"tts:showBackground=\"always\"", true}, {"tts:showBackground=\"whenActive\"", false}};
    for (const auto& c : cases) {
        LogCapture log;
        Walk w(Doc(Para("<span>x</span><span " + std::string(c.first) + "></span>")));
        ASSERT_EQ(ERR_NONE, w.result);
        EXPECT_EQ(c.second, w.Text("") != nullptr) << c.first;
        if (c.second) {
            EXPECT_EQ(1000u, w.TimedElements().back().begin);
            EXPECT_EQ(2000u, w.TimedElements().back().end);
        }
        EXPECT_EQ(!c.second, log.Has("Empty Span found with BG as when active")) << c.first;
    }
}

TEST(WalkerText, LineBreakIsALineFeedWithItsParagraphTimes)
{
    Walk w(Doc("<div region=\"r1\"><p begin=\"00:00:03.000\" end=\"00:00:04.000\">a<br/>"
               "<span begin=\"00:00:03.500\">b<br/>c</span></p></div>"));
    ASSERT_EQ(ERR_NONE, w.result);
    std::string breaks;
    for (const auto& t : w.TimedElements()) {
        if (t.element->GetType() != ELEM_BR)
            continue;
        ASSERT_TRUE(t.element->GetParent());
        EXPECT_EQ(ELEM_P, t.element->GetParent()->GetType());
        breaks += Attr(t.element, ATTR_TEXT) + std::to_string(t.begin) + "-" + std::to_string(t.end) + " ";
    }
    // Inside the span the break takes the span's begin.
    EXPECT_EQ("\n3000-4000 \n3500-4000 ", breaks);
}

TEST(WalkerText, NestedSpansHaveTheParagraphAsParent)
{
    Walk w(Doc(Para("<span>a<span>b<span tts:color=\"#123456\">c</span></span></span>")));
    ASSERT_EQ(ERR_NONE, w.result);
    for (const char* t : {"a", "b", "c"}) {
        auto e = w.Text(t);
        ASSERT_TRUE(e && e->GetParent()) << t;
        EXPECT_EQ(ELEM_P, e->GetParent()->GetType()) << t;
    }
    EXPECT_EQ("#123456", Attr(w.Text("c"), ATTR_COLOR));
    EXPECT_EQ("<absent>", Attr(w.Text("b"), ATTR_COLOR));
}

TEST(WalkerText, LastChildOfTheLastSpanIsMarked)
{
    const std::pair<const char*, const char*> cases[] = {{"<span>a</span><span>b<br/>c</span>", "a- b- br- c+ "},
                                                         {"only", "only+ "}};
    for (const auto& c : cases) {
        Walk w(Doc(Para(c.first)));
        ASSERT_EQ(ERR_NONE, w.result);
        std::string marks;
        for (const auto& t : w.TimedElements()) {
            const std::string text = Attr(t.element, ATTR_TEXT);
            marks += (text == "\n" ? "br" : text) + (t.element->GetLastChild() ? "+ " : "- ");
        }
        EXPECT_EQ(c.second, marks);
    }
}

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

TEST(WalkerTiming, SegmentStartRaisesEarlierBegins)
{
    Walk w(Doc("<div region=\"r1\"><p begin=\"00:00:01.000\" end=\"00:00:08.000\">early</p>"
               "<p begin=\"00:00:06.000\" end=\"00:00:09.000\">late</p></div>"),
           5000, 10000);
    ASSERT_EQ(ERR_NONE, w.result);
    EXPECT_EQ("5000", Attr(w.Text("early"), ATTR_BEGIN));
    EXPECT_EQ("8000", Attr(w.Text("early"), ATTR_END));
    EXPECT_EQ("6000", Attr(w.Text("late"), ATTR_BEGIN));
}

TEST(WalkerTiming, ChildTimesReplaceTheParentsWithoutOffset)
{
    Walk w(Doc("<div region=\"r1\" begin=\"00:00:10.000\" end=\"00:00:20.000\"><p>a"
               "<span begin=\"00:00:12.000\" end=\"00:00:13.000\">b</span></p></div>"));
    ASSERT_EQ(ERR_NONE, w.result);
    auto timed = w.TimedElements();
    ASSERT_EQ(2u, timed.size());
    EXPECT_EQ(std::make_pair(10000ull, 20000ull), std::make_pair(timed[0].begin, timed[0].end));
    EXPECT_EQ(std::make_pair(12000ull, 13000ull), std::make_pair(timed[1].begin, timed[1].end));
}

// ---- Nesting limit: refused at the walker's limit instead of recursing on ----

std::string Repeat(const std::string& s, int n)
{
    std::string out;
    for (int i = 0; i < n; ++i)
        out += s;
    return out;
}

// `levels` nested divs around one paragraph, or nested spans inside it.
std::string Nested(bool spans, int levels)
{
    const std::string open = spans ? "<span>" : "<div region=\"r1\">";
    const std::string close = spans ? "</span>" : "</div>";
    const std::string p = "<p begin=\"00:00:01.000\" end=\"00:00:02.000\">";
    return Doc(spans ? "<div region=\"r1\">" + p + Repeat(open, levels) + "deep" + Repeat(close, levels) + "</p></div>"
                     : Repeat(open, levels) + p + "deep</p>" + Repeat(close, levels));
}

// tt, body and one div/p make the XML depth a few levels more than the
// chain; the limit is 64, libxml2 itself stops at 256.
TEST(WalkerDepth, RefusesOnlyBeyondTheLimitAndWalksOnAfterwards)
{
    const char* const kRefused = "Document nesting deeper than 64 levels; refusing it";
    for (bool spans : {false, true}) {
        for (int levels : {58, 70}) {
            LogCapture log;
            Walk w(Nested(spans, levels));
            if (levels == 58) {
                EXPECT_EQ(ERR_NONE, w.result) << spans;
                auto text = w.Text("deep");
                ASSERT_TRUE(text && text->GetParent()) << spans;
                EXPECT_EQ(ELEM_P, text->GetParent()->GetType());
            } else {
                EXPECT_EQ(ERR_INVALID, w.result) << spans;
            }
            // One refusal, not one per level.
            EXPECT_EQ(levels == 58 ? 0 : 1, log.Count(kRefused)) << spans << " " << levels;
        }
    }
    WalkTest::TestProfile profile;
    ASSERT_TRUE(profile.Initialize());
    EXPECT_EQ(ERR_INVALID, WalkTest::WalkAndReset(profile, Nested(true, 100)));
    EXPECT_EQ(ERR_NONE, WalkTest::WalkAndReset(profile, Nested(true, 10)));
    profile.Destroy();
}

}  // namespace
