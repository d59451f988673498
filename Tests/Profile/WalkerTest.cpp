// The generic walk as the EBU-TT-D profile drives it: inputs, attribute
// precedence, references, text handling, parent links and failure spread.

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
    EXPECT_EQ(ERR_NULL_POINTER, profile.ProcessSubtitles(nullptr));
    CProfile::TTMLProfileData noInfo;
    noInfo.pXmlParser = &reader;
    EXPECT_EQ(ERR_NULL_POINTER, profile.ProcessSubtitles(&noInfo));
    CProfile::TTMLProfileData noReader;
    noReader.pSubtitleInfo = &info;
    EXPECT_EQ(ERR_NULL_POINTER, profile.ProcessSubtitles(&noReader));
    EXPECT_EQ(3, log.Count("Invalid parameters"));

    // An empty reader has no root.
    EXPECT_EQ(ERR_INVALID, profile.ProcessSubtitles(&data));
    EXPECT_TRUE(log.Has("Root element not found"));
    profile.Destroy();
}

TEST(WalkerInput, InitializeTwiceAndDestroyTwiceWarn)
{
    LogCapture log;
    WalkTest::TestProfile profile;
    EXPECT_TRUE(profile.Initialize());
    EXPECT_FALSE(profile.Initialize());
    EXPECT_TRUE(log.Has("CProfile is already initialized, returning false."));
    profile.SetProfile(2);
    EXPECT_EQ(2, profile.GetProfile());
    profile.Destroy();
    profile.Destroy();
    EXPECT_TRUE(log.Has("CProfile is already destroyed, returning false."));
}

TEST(WalkerInput, ResetForgetsTheFormerDocumentsRegions)
{
    WalkTest::TestProfile profile;
    ASSERT_TRUE(profile.Initialize());
    EXPECT_EQ(ERR_NONE, WalkTest::WalkAndReset(profile, Doc(Para("<span>a</span>"))));
    const std::string noRegion = Doc("<div><p begin=\"00:00:01.000\" end=\"00:00:02.000\">a</p></div>", "", "");
    EXPECT_EQ(ERR_INVALID, WalkTest::WalkAndReset(profile, noRegion));
    profile.Destroy();
}

// Which colour the text of a paragraph ends up with.
struct PrecedenceCase {
    const char* name;
    const char* styling;
    const char* layout;  // in addition to r1
    const char* body;
    const char* expected;
    bool unknownReference;
};

class Precedence : public ::testing::TestWithParam<PrecedenceCase> {};

TEST_P(Precedence, TextTakesTheWinningColour)
{
    const auto& c = GetParam();
    LogCapture log;
    Walk w(Doc(c.body, c.styling, std::string(WalkTest::kRegion) + c.layout));
    ASSERT_EQ(ERR_NONE, w.result) << log.Dump();
    EXPECT_EQ(c.expected, Attr(w.Text("x"), ATTR_COLOR));
    EXPECT_EQ(c.unknownReference, log.Has("Referenced element not found"));
}

const char* const kTwoStyles =
    "<style xml:id=\"s1\" tts:color=\"#111111\"/><style xml:id=\"s2\" tts:color=\"#222222\"/>";

INSTANTIATE_TEST_SUITE_P(
    Walker, Precedence,
    ::testing::Values(
        PrecedenceCase{"NothingSet", "", "", "<div region=\"r1\"><p begin=\"00:00:01.000\" end=\"00:00:02.000\">x</p></div>",
                       "<absent>", false},
        PrecedenceCase{"InheritedFromDiv", "", "",
                       "<div region=\"r1\" tts:color=\"#aaaaaa\"><p begin=\"00:00:01.000\" end=\"00:00:02.000\">x</p></div>",
                       "#aaaaaa", false},
        PrecedenceCase{"ReferencedBeatsInherited", kTwoStyles, "",
                       "<div region=\"r1\" tts:color=\"#aaaaaa\"><p style=\"s1\" begin=\"00:00:01.000\" "
                       "end=\"00:00:02.000\">x</p></div>",
                       "#111111", false},
        PrecedenceCase{"OwnBeatsReferenced", kTwoStyles, "",
                       "<div region=\"r1\" tts:color=\"#aaaaaa\"><p style=\"s1\" tts:color=\"#bbbbbb\" "
                       "begin=\"00:00:01.000\" end=\"00:00:02.000\">x</p></div>",
                       "#bbbbbb", false},
        PrecedenceCase{"DivOwnBeatsDivStyle", kTwoStyles, "",
                       "<div region=\"r1\" style=\"s2\" tts:color=\"#cccccc\"><p begin=\"00:00:01.000\" "
                       "end=\"00:00:02.000\">x</p></div>",
                       "#cccccc", false},
        PrecedenceCase{"LaterStyleWins", kTwoStyles, "",
                       "<div region=\"r1\"><p style=\"s1 s2\" begin=\"00:00:01.000\" end=\"00:00:02.000\">x</p></div>",
                       "#222222", false},
        PrecedenceCase{"OrderOfReferenceNotOfDefinition", kTwoStyles, "",
                       "<div region=\"r1\"><p style=\"s2 s1\" begin=\"00:00:01.000\" end=\"00:00:02.000\">x</p></div>",
                       "#111111", false},
        PrecedenceCase{"UnknownIdSkipped", kTwoStyles, "",
                       "<div region=\"r1\"><p style=\"s1 nope\" begin=\"00:00:01.000\" end=\"00:00:02.000\">x</p></div>",
                       "#111111", true},
        // The id list is split like StrSplit: ends trimmed, single spaces
        // separate, so a double space makes an empty (unknown) id.
        PrecedenceCase{"BlanksAroundIdListTrimmed", kTwoStyles, "",
                       "<div region=\"r1\"><p style=\" \t s1 s2\n \" begin=\"00:00:01.000\" end=\"00:00:02.000\">x</p></div>",
                       "#222222", false},
        PrecedenceCase{"DoubleSpaceIsAnEmptyId", kTwoStyles, "",
                       "<div region=\"r1\"><p style=\"s2  s1\" begin=\"00:00:01.000\" end=\"00:00:02.000\">x</p></div>",
                       "#111111", true},
        PrecedenceCase{"TabDoesNotSeparateIds", kTwoStyles, "",
                       "<div region=\"r1\"><p style=\"s1&#9;s2\" begin=\"00:00:01.000\" end=\"00:00:02.000\">x</p></div>",
                       "<absent>", true},
        PrecedenceCase{"RegionAttributesReferenced", "", "<region xml:id=\"r2\" tts:color=\"#333333\"/>",
                       "<div region=\"r2\"><p begin=\"00:00:01.000\" end=\"00:00:02.000\">x</p></div>", "#333333",
                       false},
        PrecedenceCase{"StyleBeatsRegion", kTwoStyles, "<region xml:id=\"r2\" tts:color=\"#333333\"/>",
                       "<div><p region=\"r2\" style=\"s1\" begin=\"00:00:01.000\" end=\"00:00:02.000\">x</p></div>",
                       "#111111", false},
        PrecedenceCase{"SpanOwnBeatsParagraph", "", "",
                       "<div region=\"r1\"><p tts:color=\"#aaaaaa\" begin=\"00:00:01.000\" end=\"00:00:02.000\">"
                       "<span tts:color=\"#dddddd\">x</span></p></div>",
                       "#dddddd", false}),
    TTMLTest::RowName());

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
}

TEST(WalkerBody, RootCellResolutionAndTimeBaseReachTheDocument)
{
    Walk plain(Doc(Para("x")));
    ASSERT_EQ(ERR_NONE, plain.result);
    EXPECT_EQ("32 15", plain.info.GetCellResolution());
    EXPECT_EQ("media", plain.info.GetTimeBase());

    Walk set(Doc(Para("x"), "", WalkTest::kRegion, "ttp:cellResolution=\"50 30\" ttp:timeBase=\"MEDIA\""));
    ASSERT_EQ(ERR_NONE, set.result);
    EXPECT_EQ("50 30", set.info.GetCellResolution());
    EXPECT_EQ("media", set.info.GetTimeBase());
}

// Background colours: a region's fills the region, a paragraph's its lines.
struct BackgroundCase {
    const char* name;
    const char* styling;
    const char* layout;
    const char* pAttrs;
    const char* regionBg;   // of the registered region r1
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

INSTANTIATE_TEST_SUITE_P(
    Walker, Background,
    ::testing::Values(
        BackgroundCase{"RegionOwn", "", "<region xml:id=\"r1\" tts:backgroundColor=\"#ff0000ff\"/>", "",
                       "#ff0000ff", "#ff0000ff", "#00000000"},
        BackgroundCase{"RegionByStyle", "<style xml:id=\"s\" tts:backgroundColor=\"#00ff00ff\"/>",
                       "<region xml:id=\"r1\" style=\"s\"/>", "", "#00ff00ff", "#00ff00ff", "#00000000"},
        BackgroundCase{"Paragraph", "", "<region xml:id=\"r1\"/>", "tts:backgroundColor=\"#0000ffff\"", "<absent>",
                       "#00000000", "#0000ffff"},
        BackgroundCase{"Both", "", "<region xml:id=\"r1\" tts:backgroundColor=\"#ff0000ff\"/>",
                       "tts:backgroundColor=\"#0000ffff\"", "#ff0000ff", "#ff0000ff", "#0000ffff"}),
    TTMLTest::RowName());

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

INSTANTIATE_TEST_SUITE_P(
    Walker, WhiteSpace,
    ::testing::Values(WhiteSpaceCase{"LineFeedAndSpacesBefore", "\n   Hello", "Hello"},
                      WhiteSpaceCase{"SingleEdgeSpacesKept", " Hello ", " Hello "},
                      WhiteSpaceCase{"SingleInnerSpaceKept", "a b", "a b"},
                      WhiteSpaceCase{"DoubleSpace", "a  b", "a b"},
                      WhiteSpaceCase{"TabRun", "a\t\tb", "a b"},
                      WhiteSpaceCase{"MixedControls", "a\r\n\tb", "a b"},
                      WhiteSpaceCase{"SingleLineFeedTrimsEdges", " a\nb ", "a b"},
                      WhiteSpaceCase{"OnlyWhiteSpace", " \n ", ""},
                      WhiteSpaceCase{"SpacesAroundLineFeed", "a \n b", "a b"},
                      WhiteSpaceCase{"TrailingTab", "a b\t", "a b"},
                      WhiteSpaceCase{"TwoSpacesOnly", "  ", ""},
                      WhiteSpaceCase{"UnicodeKept", "na\xc3\xafve  caf\xc3\xa9", "na\xc3\xafve caf\xc3\xa9"},
                      WhiteSpaceCase{"Empty", "", ""}),
    TTMLTest::RowName());

TEST(WalkerText, SpaceDecidesNormalisingAndEscapesStay)
{
    Walk w(Doc(Para("<span>\n   Hello</span><span xml:space=\"preserve\">\n   World</span><span>a &lt; b</span>")));
    ASSERT_EQ(ERR_NONE, w.result);
    EXPECT_TRUE(w.Text("Hello"));
    EXPECT_TRUE(w.Text("\n   World"));
    EXPECT_TRUE(w.Text("a &lt; b"));
}

// An empty span is timed only when it shows its background always.
struct EmptySpanCase {
    const char* name;
    const char* spanAttrs;
    bool timed;
    bool warned;
};

class EmptySpan : public ::testing::TestWithParam<EmptySpanCase> {};

TEST_P(EmptySpan, IsTimedOnlyWithBackgroundAlways)
{
    const auto& c = GetParam();
    LogCapture log;
    Walk w(Doc(Para("<span>x</span><span " + std::string(c.spanAttrs) + "></span>")));
    ASSERT_EQ(ERR_NONE, w.result);
    auto empty = w.Text("");
    EXPECT_EQ(c.timed, empty != nullptr);
    if (empty) {
        EXPECT_EQ(1000u, w.TimedElements().back().begin);
        EXPECT_EQ(2000u, w.TimedElements().back().end);
    }
    EXPECT_EQ(c.warned, log.Has("Empty Span found with BG as when active"));
}

INSTANTIATE_TEST_SUITE_P(
    Walker, EmptySpan,
    ::testing::Values(EmptySpanCase{"DefaultAlways", "", true, false},
                      EmptySpanCase{"Always", "tts:showBackground=\"always\"", true, false},
                      EmptySpanCase{"WhenActive", "tts:showBackground=\"whenActive\"", false, true}),
    TTMLTest::RowName());

TEST(WalkerText, LineBreakIsALineFeedWithItsParagraphTimes)
{
    Walk w(Doc("<div region=\"r1\"><p begin=\"00:00:03.000\" end=\"00:00:04.000\">a<br/>"
               "<span begin=\"00:00:03.500\">b<br/>c</span></p></div>"));
    ASSERT_EQ(ERR_NONE, w.result);
    std::vector<WalkTest::Timed> breaks;
    for (const auto& t : w.TimedElements()) {
        if (t.element->GetType() == ELEM_BR)
            breaks.push_back(t);
    }
    ASSERT_EQ(2u, breaks.size());
    EXPECT_EQ("\n", Attr(breaks[0].element, ATTR_TEXT));
    EXPECT_EQ(3000u, breaks[0].begin);
    EXPECT_EQ(4000u, breaks[0].end);
    // Inside the span the break takes the span's begin.
    EXPECT_EQ(3500u, breaks[1].begin);
    for (const auto& b : breaks) {
        ASSERT_TRUE(b.element->GetParent());
        EXPECT_EQ(ELEM_P, b.element->GetParent()->GetType());
    }
}

TEST(WalkerText, NestedSpansHaveTheParagraphAsParent)
{
    Walk w(Doc(Para("<span>a<span>b<span tts:color=\"#123456\">c</span></span></span>")));
    ASSERT_EQ(ERR_NONE, w.result);
    for (const char* t : {"a", "b", "c"}) {
        auto e = w.Text(t);
        ASSERT_TRUE(e) << t;
        ASSERT_TRUE(e->GetParent()) << t;
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
    EXPECT_TRUE(log.Has("Error in parsing for node div; error code=5")) << log.Dump();
    EXPECT_TRUE(log.Has("Error in parsing for node body; error code=5"));
    EXPECT_TRUE(log.Has("Error in parsing for node tt; error code=5"));
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
    EXPECT_EQ(10000u, timed[0].begin);
    EXPECT_EQ(20000u, timed[0].end);
    EXPECT_EQ(12000u, timed[1].begin);
    EXPECT_EQ(13000u, timed[1].end);
}

}  // namespace
