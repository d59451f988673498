// IMSC 1 image documents through the parser task's per-document path: each
// div becomes one timed element carrying the image its reference names in the
// record's sub-sample data; a paragraph the walk reaches, or a div without
// begin, refuses the document.

#include "../Image/PngMaker.h"
#include "../Parser/ParserTestUtil.h"
#include "CIMSC1ImageProfile.h"
#include "CSubSampleBuilder.h"
#include "LogCapture.h"
#include "RowPrinter.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using namespace TTML;
using ParserTest::ImagesShown;
using ParserTest::MakeRecord;

// r2 shows its background only while something is shown in it.
const char kRegion[] = "<region xml:id=\"r1\" tts:origin=\"10px 10px\" tts:extent=\"100px 50px\"/>"
                       "<region xml:id=\"r2\" tts:showBackground=\"whenActive\"/>";

std::string ImageDoc(const std::string& body, const std::string& bodyAttrs = "",
                     const std::string& layout = kRegion)
{
    return WalkTest::Doc(body, "", layout, ParserTest::kImageRoot + " tts:extent=\"640px 480px\"", "", bodyAttrs);
}

// A div in region r1 naming `image` (no attribute when empty); no begin or
// end attribute when that is empty.
std::string Div(const char* begin, const char* end, const std::string& image, const std::string& children = "",
                const char* region = "r1")
{
    std::string div = std::string("<div region=\"") + region + "\"";
    if (*begin)
        div += std::string(" begin=\"") + begin + "\"";
    if (*end)
        div += std::string(" end=\"") + end + "\"";
    if (!image.empty())
        div += " smpte:backgroundImage=\"" + image + "\"";
    return children.empty() ? div + "/>" : div + ">" + children + "</div>";
}

// Finding images by position or name, and refusing corrupt ones, is the image
// component's and tested there; here only what the walk asks it for.
const std::vector<CSubSampleBuilder::Entry> kTwo = {{"a.png", MakePng(4, 3)}, {"b.png", MakePng(7, 5)}};

// One document through the parser task, with kTwo as its sub-sample data.
struct ImageRun : ParserTest::SyncParser {
    int result = -1;
    int resolved = -2;

    explicit ImageRun(const std::string& xml)
    {
        SubRawData* record = MakeRecord(xml, 1);
        EXPECT_TRUE(CSubSampleBuilder::Build(kTwo, record->subSampleData));
        result = parser.ProcessRecord(record, &resolved);
    }
};

struct DivCase {
    const char* name;
    std::string body;
    std::string bodyAttrs;
    int result;
    std::string shown;                   // ImagesShown() of the accepted document
    std::vector<std::string> logged;     // messages containing these
    std::vector<std::string> notLogged;  // no message contains these
};

const std::string kSubs = "urn:mpeg:14496-30:subs:";
const char kNotFound[] = " not found in the sub-sample data";
const char kRefusedDiv[] = "begin/end/showBG attributes not found in the map.";
const char kWhenActive[] = "Empty DIV found with BG as when active";
const char kParagraph[] = "This shouldnot be executed, definitely its invalid document :)";

const DivCase kDivCases[] = {
    {"SubSamplesByPosition", Div("1s", "2s", kSubs + "1") + Div("2s", "3s", kSubs + "2"), "", ERR_NONE,
     "1000-2000:1=4x3 2000-3000:2=7x5", {}, {kNotFound}},
    // Only the part after the last colon of a urn counts, whatever precedes.
    {"UrnAsksForTheLastPart", Div("1s", "2s", "urn:x:y:z:2"), "", ERR_NONE, "1000-2000:2=7x5", {}, {}},
    {"NonUrnReferencePassesUnchanged", Div("1s", "2s", "#img2") + Div("2s", "3s", "urnx:2"), "", ERR_NONE,
     "1000-2000:none 2000-3000:none",
     {std::string("Image \"#img2\"") + kNotFound, std::string("Image \"urnx:2\"") + kNotFound}, {}},
    // showBackground applies to regions; the div takes its region's.
    {"WhenActiveWithoutImageIsUntimed", Div("1s", "2s", "", "", "r2") + Div("3s", "4s", "a.png"), "", ERR_NONE,
     "3000-4000:a.png=4x3", {kWhenActive}, {}},
    {"WhenActiveWithImageIsTimed", Div("1s", "2s", "a.png", "", "r2"), "", ERR_NONE, "1000-2000:a.png=4x3", {},
     {kWhenActive}},
    // Shows only its region's background for its interval.
    {"AlwaysWithoutImageIsTimed", Div("1s", "2s", "") + Div("2s", "3s", "a.png"), "", ERR_NONE,
     "1000-2000:none 2000-3000:a.png=4x3", {}, {kWhenActive, kNotFound}},
    {"MissingBeginWithoutAncestorRefuses", Div("", "2s", "a.png"), "", ERR_INVALID, "", {kRefusedDiv}, {}},
    {"MissingEndRefuses", Div("1s", "", "a.png"), "", ERR_INVALID, "", {kRefusedDiv}, {}},
    // The div's own times count from body's begin, which it also inherits.
    {"BeginFromBody", Div("", "2s", "a.png"), "begin=\"1s\"", ERR_NONE, "1000-3000:a.png=4x3", {}, {kRefusedDiv}},
    {"ParagraphUnderBodyRefuses", Div("1s", "2s", "a.png") + "<p begin=\"2s\" end=\"3s\">text</p>", "", ERR_INVALID,
     "", {kParagraph}, {}},
    // A div's children are never walked: neither its paragraph nor a nested
    // div and its image, nor its own sets.
    {"ChildrenOfADivAreNotWalked",
     Div("1s", "4s", "a.png", "<p>text</p><set begin=\"2s\" end=\"3s\" tts:opacity=\"0.5\"/>" +
                                  Div("1s", "2s", kSubs + "9")),
     "", ERR_NONE, "1000-4000:a.png=4x3", {}, {kParagraph, std::string("Image \"9\"")}},
    // A set of body reaches the div, whose interval is split at it; the
    // set's piece is a copy made before the image is attached.
    {"SetPiecesCarryNoImage", "<set begin=\"2s\" end=\"3s\" tts:opacity=\"0.5\"/>" + Div("1s", "4s", "a.png"), "",
     ERR_NONE, "1000-2000:a.png=4x3 2000-3000:none 3000-4000:a.png=4x3", {}, {}},
};

class ImageDiv : public ::testing::TestWithParam<DivCase> {};

TEST_P(ImageDiv, WalksIntoImageElements)
{
    const DivCase& c = GetParam();
    LogCapture log;
    ImageRun run(ImageDoc(c.body, c.bodyAttrs));
    EXPECT_EQ(run.resolved, 1);
    ASSERT_EQ(run.result, c.result) << log.Dump();
    if (c.result == ERR_NONE) {
        ASSERT_NE(run.Last(), nullptr);
        EXPECT_EQ(ImagesShown(*run.Last()), c.shown);
    } else {
        EXPECT_EQ(run.Last(), nullptr);
    }
    for (const auto& part : c.logged)
        EXPECT_TRUE(log.HasContaining(part)) << "missing: " << part << "\n" << log.Dump();
    for (const auto& part : c.notLogged)
        EXPECT_FALSE(log.HasContaining(part)) << "unexpected: " << part << "\n" << log.Dump();
}

INSTANTIATE_TEST_SUITE_P(Imsc, ImageDiv, ::testing::ValuesIn(kDivCases), TTMLTest::RowName());

// The parser hands the profile number to the attribute checks (their
// narrowing is tabled with the handler): a dropped value leaves the default,
// a kept one reaches the div through its region.
TEST(ImageProfile, NarrowsWhatTheDivTakesFromItsRegion)
{
    ImageRun run(ImageDoc(Div("1s", "2s", "a.png"), "",
                          "<region xml:id=\"r1\" tts:extent=\"50% 20%\" tts:writingMode=\"RL\"/>"));
    ASSERT_EQ(run.result, ERR_NONE);
    std::list<CElementSPTR> elements;
    run.Last()->GetElementListForInterval({1000, 2000}, elements);
    ASSERT_EQ(elements.size(), 1u);
    EXPECT_EQ(WalkTest::Attr(elements.front(), ATTR_EXTENT) + " " + WalkTest::Attr(elements.front(), ATTR_WRITINGMODE),
              "auto rl");
}

// The util lives for one document: the next document's references reach its
// own sub-sample data, and the elements keep their images after the walk.
TEST(ImageProfile, EachDocumentUsesItsOwnSubSamples)
{
    ParserTest::SyncParser p;
    const std::vector<std::vector<CSubSampleBuilder::Entry>> data = {
        {{"x.png", MakePng(4, 3)}}, {{"x.png", MakePng(9, 2)}}, {}};
    for (const auto& images : data) {
        SubRawData* record = MakeRecord(ImageDoc(Div("1s", "2s", kSubs + "1")), 1);
        EXPECT_TRUE(images.empty() || CSubSampleBuilder::Build(images, record->subSampleData));
        EXPECT_EQ(p.parser.ProcessRecord(record), ERR_NONE);
    }
    p.parser.Destroy();
    std::string shown;
    for (const auto& doc : p.delivered.docs)
        shown += ImagesShown(*doc) + ";";
    EXPECT_EQ(shown, "1000-2000:1=4x3;1000-2000:1=9x2;1000-2000:none;");
}

// Direct calls that the parser never makes but that must not crash.
class ExposedImageProfile : public CIMSC1ImageProfile {
public:
    using CIMSC1ImageProfile::t_HandlePElement;
};

TEST(ImageProfile, RefusesMissingInputs)
{
    ExposedImageProfile profile;
    ASSERT_TRUE(profile.Initialize());
    LogCapture log;
    CProfile::TTMLProfileData noRecord;
    EXPECT_EQ(profile.ProcessSubtitles(nullptr), ERR_NULL_POINTER);
    EXPECT_EQ(profile.ProcessSubtitles(&noRecord), ERR_NULL_POINTER);
    EXPECT_EQ(log.Count("Invalid parameters"), 2);
    CElementSPTR none;
    EXPECT_EQ(profile.t_HandlePElement(nullptr, none, none), ERR_NULL_POINTER);
    EXPECT_TRUE(log.Has("NULL pointer"));
}

}  // namespace
