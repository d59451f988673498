// The public IMSC 1 samples through the whole parser path (record, profile
// resolution, walk, delivery): every document is either delivered or refused
// for a named reason, and a set of them shows the intervals, texts and
// attributes worked out by hand from the document.

#include "../Parser/ParserTestUtil.h"
#include "LogCapture.h"
#include "TTMLAttr.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <map>
#include <ostream>
#include <sstream>

using namespace ParserTest;

namespace {

namespace fs = std::filesystem;

const fs::path kSampleDir = fs::path(INTERTITLE_TESTDATA) / "imsc1" / "ttml";
// Bit value 8: documents without a declaration default to IMSC 1 text.
const int kImscMode = 9;

std::string TestName(std::string file)
{
    file = file.substr(0, file.rfind('.'));
    std::replace_if(file.begin(), file.end(), [](unsigned char c) { return !std::isalnum(c); }, '_');
    return file;
}

// Text documents the parser refuses, each because nothing in it ends up with
// both a begin and an end, so the split finds no timed element.
const std::map<std::string, const char*> kRefused = {
    // Paragraphs with only dur in a seq division that has no begin: a dur is
    // resolved only against a begin, so none of them is timed.
    {"backgroundColor/BackgroundColor010.ttml", "dur without any begin"},
    // No begin or end anywhere: untimed content is never shown.
    {"foreign/Parameters006.ttml", "no timing"},
    {"p/Paragraph002.ttml", "no timing"},
    // No body.
    {"structure/Structure002.ttml", "no content"},
};

#define SKIP_WITHOUT_SAMPLES()                                                                        \
    do {                                                                                              \
        if (SampleFiles(kSampleDir, ".ttml").empty())                                                 \
            GTEST_SKIP() << "IMSC 1 samples not found in " << kSampleDir                              \
                         << " (set INTERTITLE_TESTDATA to the shared test data folder)";              \
    } while (0)

// ---- Every document ---------------------------------------------------------------

class ImscSample : public ::testing::TestWithParam<std::string> {};

TEST_P(ImscSample, IsDeliveredOrRefusedForItsReason)
{
    SKIP_WITHOUT_SAMPLES();
    const std::string& file = GetParam();
    const std::string xml = ReadFile(kSampleDir / file);
    ASSERT_FALSE(xml.empty()) << file;

    LogCapture log;
    SyncParser p(kImscMode);
    int resolved = -2;
    const int result = p.Run(xml, -1, &resolved);

    if (xml.find("ttp:profile=\"" + std::string(kImscImage) + "\"") != std::string::npos) {
        // The image walker's own suite judges these; here only the
        // resolution and that a result is delivered exactly when accepted.
        EXPECT_EQ(resolved, 1);
        EXPECT_EQ(p.delivered.Count(), result == TTML::ERR_NONE ? 1u : 0u) << log.Dump();
        return;
    }
    EXPECT_EQ(resolved, 0);
    auto refused = kRefused.find(file);
    if (refused != kRefused.end()) {
        EXPECT_EQ(result, TTML::ERR_INVALID) << refused->second;
        EXPECT_TRUE(log.Has("XML Document Error: No text element in subtitle list")) << log.Dump();
        EXPECT_EQ(p.delivered.Count(), 0u);
        return;
    }
    ASSERT_EQ(result, TTML::ERR_NONE) << log.Dump();
    ASSERT_EQ(p.delivered.Count(), 1u);
    EXPECT_FALSE(Intervals(*p.Last()).empty());
    EXPECT_GT(p.Last()->GetLastEndTime(), 0u);
}

INSTANTIATE_TEST_SUITE_P(Parser, ImscSample, ::testing::ValuesIn(SampleFiles(kSampleDir, ".ttml")),
                         [](const ::testing::TestParamInfo<std::string>& info) { return TestName(info.param); });
// Without the sample folder the list is empty; that is reported by the skips
// of the other tests, not as an error.
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(ImscSample);

// ---- Hand-derived results ---------------------------------------------------------

using Interval = std::pair<unsigned long long, unsigned long long>;

// Cell resolution, root extent, frame rate and tick rate of the document.
const char* const kPlainRoot = "32 15||30|1";

struct DocCase {
    const char* file;
    const char* intervals;  // all, as "begin-end" in ms; '*' marks the probed one (else the last)
    std::string texts;      // shown in the probed interval, in order, '|'-joined
    const char* attrs;      // "key=values ..." of the probed interval's elements, values '|'-joined
    const char* root = kPlainRoot;
    // A twin of the sample: each text replaced once, in order; named by `twin`.
    std::vector<std::pair<std::string, std::string>> edits = {};
    const char* twin = "";
};

std::string CaseName(const DocCase& c)
{
    return TestName(c.file) + (*c.twin ? "_" + std::string(c.twin) : "");
}

void PrintTo(const DocCase& c, std::ostream* os)
{
    *os << CaseName(c);
}

// The sample with the case's edits; false when an edit finds nothing to
// replace, so that a twin never silently tests the original.
bool CaseDocument(const DocCase& c, std::string& xml)
{
    xml = ReadFile(kSampleDir / c.file);
    for (const auto& e : c.edits) {
        size_t at = xml.find(e.first);
        if (at == std::string::npos)
            return false;
        xml.replace(at, e.first.size(), e.second);
    }
    return true;
}

// The case's intervals without the mark; probe becomes the marked one, else the last.
std::string Unmarked(std::string intervals, Interval& probe)
{
    const size_t mark = intervals.find('*');
    const size_t at = mark != std::string::npos ? mark + 1 : intervals.rfind(' ') + 1;  // npos + 1 is 0
    probe = {std::stoull(intervals.substr(at)), std::stoull(intervals.substr(intervals.find('-', at) + 1))};
    if (mark != std::string::npos)
        intervals.erase(mark, 1);
    return intervals;
}

const DocCase kDocs[] = {
    // Inner divisions 0-5 s, 5-10 s, 10-20 s in an untimed one; each p 0-5 s
    // counts from its division's begin. No layout: the anonymous region.
    {"div/Div001.ttml", "0-5000 *5000-10000 10000-15000", "This text must be green.",
     "color=#008000ff region=anonymous"},
    // Four sibling divisions at 0, 5, 10, 15 s, each p 0-5 s after its
    // division's begin; the third division's xml:lang reaches its text.
    {"div/Div003.ttml", "0-5000 5000-10000 *10000-15000 15000-20000", "このテキストは赤くなければならない。",
     "lang=ja"},
    // An untimed p takes its division's 0-1 s; the region's referenced style
    // (tbrl, black background) reaches the text through the region reference.
    {"displayAlign/DisplayAlign004.ttml", "0-1000", "あいAB34三四",
     "writingmode=tbrl region=tbrlCenter regionbackgroundcolor=#000000ff"},
    // Clock times on two divisions (0-30 s) with regions; untimed paragraphs
    // take both. Blank text between elements never reaches the walker.
    {"fillLineGap/FillLineGap002.ttml", "0-30000", "Paragraph 1|Paragraph 2|Paragraph 1|Paragraph 2",
     "region=bottom|bottom|top|top", "50 30||30|1"},
    // A seq division without begin: children with their own begin keep it,
    // so all six paragraphs (0-1 s each) show together.
    {"zIndex/ZIndex001.ttml", "0-1000",
     "tts:zIndex=\"1000\"|tts:zIndex=\"1\"|tts:zIndex=\"0\"|tts:zIndex=\"auto\"|tts:zIndex=\"-1\"|"
     "tts:zIndex=\"-1000\"",
     "region=r1|r2|r3|r4|r5|r6"},
    // Nested spans: each text run takes the colour of its innermost span; the
    // single blanks between runs are kept.
    {"span/Span004.ttml", "0-10000", "Some of this text must |red |and| |green|.",
     "color=#ffffffff|#ff0000ff|#ffffffff|#ff0000ff|#008000ff|#ffffffff"},
    // A line break inside a span is a text of its own, timed like the span.
    {"span/Span005.ttml", "0-10000", "This text must |appear|\n|on two lines.", ""},
    // xml:space preserve on the root reaches the text through body.
    {"tt/Tt002.ttml", "0-10000", "This text\n must appear on two lines.", ""},
    // style="style1 style2": the second style's colour and italics win, the
    // first one's bold stays; the region's showBackground reaches the text.
    {"styling/idrefs-style-001.ttml", "0-10000", "Should be: background black, text: bold, italic, yellow color",
     "color=#ffff00 fontweight=bold fontstyle=italic showbackground=whenactive", "50 30||30|1"},
    // A style on body reaches the text through div, p and span.
    {"styling/styleInheritance-001.ttml", "0-10000", "Inherited styles", "fontstyle=italic", "1 1||30|1"},
    // Region attributes reach the paragraphs: forcedDisplay and the region
    // backgrounds (black, green).
    {"forcedDisplay/forcedDisplay1.ttml", "1000-9000",
     "Hidden if displayForcedOnlyMode is true.|This text should be displayed in all circumstances.",
     "forceddisplay=false|true regionbackgroundcolor=#000000ff|#008000ff"},
    // No profile declaration (IMSC 1 text by subtitle mode); xml:space
    // preserve on the root keeps the blanks around the span and its line feed.
    {"space/space-preserve-001.ttml", "0-10000", " |Two- \nline Subtitle.| ", "", "50 30||30|1"},
    // Root extent in pixels is kept; the region's inline styles (black
    // background, 48px) reach the text through the division's region.
    {"wrap/WrapOption001.ttml", "0-10000",
     "The text in this caption wraps automatically no matter how much text is in the paragraph.",
     "regionbackgroundcolor=#000000ff fontsize=48px", "32 15|640px 480px|30|1"},
    // The foreign f:p is walked as a p by its local name but has no times, so
    // only the real paragraph (0-5 s) shows.
    {"foreign/Foreign001.ttml", "0-5000", "This text must be visible.", ""},
    // Two divisions at once (tt-prefixed names); the root's xml:lang reaches
    // the texts through body.
    {"div/content-in-multiple-div-001.ttml", "0-10000",
     "A line within one div element.|A line within another div element.", "lang=de|de", "50 30||30|1"},

    // ---- Twins: the features the samples leave out, each on a sample ----
    // Body begins at 2 s: the untimed outer div starts there, the inner ones
    // at 2+0, 2+5, 2+10 s, and each p 0-5 s after its own division's begin.
    {"div/Div001.ttml", "2000-7000 7000-12000 12000-17000", "This test is over.", "", kPlainRoot,
     {{"<body>", "<body begin=\"2s\">"}}, "BodyBegin"},
    // Frames at 25 per second and ticks at 10 per second: 125f-250f is 5-10 s
    // and 150t-250t is 15-25 s, so the intervals stay those of the sample.
    {"div/Div002.ttml", "0-5000 *5000-10000 10000-15000 15000-20000", "This text must be green.", "", "32 15||25|10",
     {{"xml:lang=\"en\">", "ttp:frameRate=\"25\" ttp:tickRate=\"10\" xml:lang=\"en\">"},
      {"begin=\"5s\" end=\"10s\"", "begin=\"125f\" end=\"250f\""},
      {"begin=\"15s\" end=\"25s\"", "begin=\"150t\" end=\"250t\""}},
     "FramesAndTicks"},
    // The seq division given a begin: each p is made from the division and so
    // carries begin 0; with a begin, dur only caps the end (0+1 s), and
    // nothing moves the next child on. All 23 show at once, 0-1 s, each with
    // its background as a paragraph background.
    {"backgroundColor/BackgroundColor010.ttml", "0-1000",
     "#FFFFFF|#FFFFFF7F|rgb(255,128,255)|rgba(128,255,255,63)|transparent|black|silver|gray|white|maroon|red|"
     "purple|fuchsia|magenta|green|lime|olive|yellow|navy|blue|teal|aqua|cyan",
     "parabackgroundcolor=#FFFFFF|#FFFFFF7F|rgb(255,128,255)|rgba(128,255,255,63)|#00000000|#000000ff|#c0c0c0ff|"
     "#808080ff|#ffffffff|#800000ff|#ff0000ff|#800080ff|#ff00ffff|#ff00ffff|#008000ff|#00ff00ff|#808000ff|#ffff00ff|"
     "#000080ff|#0000ffff|#008080ff|#00ffffff|#00ffffff",
     kPlainRoot, {{"timeContainer=\"seq\"", "timeContainer=\"seq\" begin=\"0s\""}}, "SeqWithBegin"},
    // A set on the p from 2 to 4 s cuts every text of the p at 2 and 4 s; in
    // between each run is a copy coloured yellow, the red span's too.
    {"span/Span002.ttml", "0-2000 *2000-4000 4000-10000", "This word must be |red|.",
     "color=#ffff00ff|#ffff00ff|#ffff00ff", kPlainRoot,
     {{"<p begin=\"0s\" end=\"10s\">",
       "<p begin=\"0s\" end=\"10s\"><set begin=\"2s\" end=\"4s\" tts:color=\"yellow\"/>"}},
     "SetOnParagraph"},
    // display none on a span of a document without layout: the anonymous
    // region is made only after the walk, so while the span is added it has
    // no region, and without one display is not looked at: the text stays.
    {"span/Span002.ttml", "0-10000", "This word must be |red|.", "display=auto|none|auto", kPlainRoot,
     {{"<span tts:color=\"red\">", "<span tts:color=\"red\" tts:display=\"none\">"}}, "DisplayNoneWithoutLayout"},
    // The same in a declared region, showBackground always inherited: the
    // span stays in the interval with its text emptied.
    {"span/Span002.ttml", "0-10000", "This word must be ||.", "display=auto|none|auto", kPlainRoot,
     {{"</head>", "<layout><region xml:id=\"r1\"/></layout></head>"},
      {"<div>", "<div region=\"r1\">"},
      {"<span tts:color=\"red\">", "<span tts:color=\"red\" tts:display=\"none\">"}},
     "DisplayNone"},
    // Through a style that also sets showBackground whenActive: the span is
    // left out of the interval altogether.
    {"span/Span002.ttml", "0-10000", "This word must be |.", "", kPlainRoot,
     {{"</head>",
       "<styling><style xml:id=\"hide\" tts:display=\"none\" tts:showBackground=\"whenActive\"/></styling>"
       "<layout><region xml:id=\"r1\"/></layout></head>"},
      {"<div>", "<div region=\"r1\">"},
      {"<span tts:color=\"red\">", "<span tts:color=\"red\" style=\"hide\">"}},
     "DisplayNoneWhenActive"},
    // display none on the division is kept by everything below it, whatever
    // the p says: all three runs are emptied.
    {"span/Span002.ttml", "0-10000", "||", "display=none|none|none", kPlainRoot,
     {{"</head>", "<layout><region xml:id=\"r1\"/></layout></head>"},
      {"<div>", "<div region=\"r1\" tts:display=\"none\">"},
      {"<p begin=\"0s\" end=\"10s\">", "<p begin=\"0s\" end=\"10s\" tts:display=\"auto\">"}},
     "DisplayNoneOnDivision"},
};

class ImscSampleResult : public ::testing::TestWithParam<DocCase> {};

TEST_P(ImscSampleResult, MatchesHandDerivedValues)
{
    SKIP_WITHOUT_SAMPLES();
    const DocCase& c = GetParam();
    LogCapture log;
    SyncParser p(kImscMode);
    std::string xml;
    ASSERT_TRUE(CaseDocument(c, xml)) << "an edit of the twin found nothing to replace";
    int resolved = -2;
    ASSERT_EQ(p.Run(xml, -1, &resolved), TTML::ERR_NONE) << log.Dump();
    EXPECT_EQ(resolved, 0);
    ASSERT_NE(p.Last(), nullptr);
    const TTML::CSubtitleInfo& doc = *p.Last();

    Interval probe;
    const std::string expected = Unmarked(c.intervals, probe);
    std::string intervals;
    for (const Interval& i : Intervals(doc))
        intervals += (intervals.empty() ? "" : " ") + std::to_string(i.first) + "-" + std::to_string(i.second);
    ASSERT_EQ(intervals, expected);
    EXPECT_EQ(doc.GetLastEndTime(), Intervals(doc).back().second);
    EXPECT_EQ(ValuesIn(doc, probe, TTML::ATTR_TEXT), c.texts);
    std::istringstream pairs(c.attrs);
    for (std::string pair; pairs >> pair;) {
        const std::string key = pair.substr(0, pair.find('='));
        const auto attr = std::find(std::begin(TTML::kTTMLAttrKeys), std::end(TTML::kTTMLAttrKeys), key);
        ASSERT_NE(attr, std::end(TTML::kTTMLAttrKeys)) << key;
        EXPECT_EQ(ValuesIn(doc, probe, static_cast<TTML::TTMLAttr>(attr - std::begin(TTML::kTTMLAttrKeys))),
                  pair.substr(key.size() + 1))
            << key;
    }
    EXPECT_EQ(doc.GetTimeBase(), "media");
    std::ostringstream root;
    root << doc.GetCellResolution() << "|" << doc.GetTTExtent() << "|" << doc.GetEffectiveFrameRate() << "|"
         << doc.GetTickRate();
    EXPECT_EQ(root.str(), c.root);
}

INSTANTIATE_TEST_SUITE_P(Parser, ImscSampleResult, ::testing::ValuesIn(kDocs),
                         [](const ::testing::TestParamInfo<DocCase>& info) { return CaseName(info.param); });

}  // namespace
