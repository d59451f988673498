// EBU-TT-D rules: the attribute validators and names, and the document-level
// refusals (regions, metadata, fonts, empty paragraphs).

#include "CEBUAttrHandler.h"
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

struct ValidatorCase {
    const char* name;
    int attr;
    const char* in;
    int code;
    const char* stored;  // value after the check when accepted
};

class EbuValidator : public ::testing::TestWithParam<ValidatorCase> {};

TEST_P(EbuValidator, ReturnsCodeAndStoredForm)
{
    const auto& c = GetParam();
    CEBUAttrHandler handler;
    handler.OnErrorDownloadableFonts({"Other", "MyFont"});
    std::string value = c.in;
    EXPECT_EQ(c.code, handler.ValidateAttribute(static_cast<TTMLAttr>(c.attr), value));
    if (c.code == ERR_NONE) {
        EXPECT_EQ(c.stored, value);
    }
}

// The rules of this profile's own validators. Where it uses the common
// checks (tabled in Tests/Model), documents below show what they refuse;
// attributes without a validator (opacity, zIndex, dur, ...) have no effect.
const ValidatorCase kValidators[] = {
    {"BeginClockTime", ATTR_BEGIN, "00:00:01.000", ERR_NONE, "1000"},
    {"BeginHours", ATTR_BEGIN, "01:02:03.5", ERR_NONE, "3723500"},
    {"BeginOffsetDropped", ATTR_BEGIN, "1s", ERR_IGNORE, ""},
    {"EndClockTime", ATTR_END, "00:01:00", ERR_NONE, "60000"},
    {"EndTicksDropped", ATTR_END, "100t", ERR_IGNORE, ""},
    {"UnderlineAnyCase", ATTR_TEXTDECORATION, "UnderLine", ERR_NONE, "2"},
    {"DecorationNone", ATTR_TEXTDECORATION, "None", ERR_NONE, "none"},
    {"TwoDecorationsDropped", ATTR_TEXTDECORATION, "underline lineThrough", ERR_IGNORE, ""},
    {"ObliqueDropped", ATTR_FONTSTYLE, "oblique", ERR_IGNORE, ""},
    {"ItalicLowered", ATTR_FONTSTYLE, "Italic", ERR_NONE, "italic"},
    {"UnknownName", -1, "x", ERR_NOT_SUPPORTED, ""},
    {"RegionAnything", ATTR_REGION, "whatever", ERR_NONE, "whatever"},
    // Fonts "Other" and "MyFont" failed to download: only the first family decides.
    {"FailedFontFirst", ATTR_FONTFAMILY, "MyFont,default", ERR_INVALID, ""},
    {"FailedFontSecond", ATTR_FONTFAMILY, "default,MyFont", ERR_NONE, "default,MyFont"},
    {"FailedFontCaseMatters", ATTR_FONTFAMILY, "myfont", ERR_NONE, "myfont"},
    {"FontFamilyEmpty", ATTR_FONTFAMILY, "", ERR_IGNORE, ""},
};

INSTANTIATE_TEST_SUITE_P(Ebu, EbuValidator, ::testing::ValuesIn(kValidators), TTMLTest::RowName());

// Whole documents and their walk result.
struct DocCase {
    const char* name;
    std::string xml;
    int result;
};

class EbuDocument : public ::testing::TestWithParam<DocCase> {};

TEST_P(EbuDocument, WalkResult)
{
    LogCapture log;
    Walk w(GetParam().xml);
    EXPECT_EQ(GetParam().result, w.result) << log.Dump();
}

std::string VersionDoc(const std::string& version)
{
    return Doc(Para("x"), "", WalkTest::kRegion, "",
               "<metadata><ebuttm:documentMetadata><ebuttm:documentEbuttVersion>" + version +
                   "</ebuttm:documentEbuttVersion></ebuttm:documentMetadata></metadata>");
}

const DocCase kDocs[] = {
    {"Valid", Doc(Para("x")), ERR_NONE},
    {"NoRegion", Doc("<div><p begin=\"00:00:01.000\" end=\"00:00:02.000\">x</p></div>", "", ""), ERR_INVALID},
    // The refused region is not registered, which leaves none.
    {"OnlyRegionInPixels", Doc(Para("x"), "", "<region xml:id=\"r1\" tts:origin=\"10px 10px\"/>"), ERR_INVALID},
    {"PixelExtentOnParagraph", Doc(Para("x", "tts:extent=\"10px 10px\"")), ERR_INVALID},
    {"EmptyIdOnStyle", Doc(Para("x"), "<style xml:id=\"\"/>"), ERR_INVALID},
    {"PixelOriginOnSpan", Doc(Para("<span tts:origin=\"1px 1px\">x</span>")), ERR_INVALID},
    {"VersionV10", VersionDoc("v1.0"), ERR_NONE},
    {"VersionEmpty", VersionDoc(""), ERR_NONE},
    {"VersionLater", VersionDoc("v1.1"), ERR_INVALID},
    {"OnlyUntimedText", Doc("<div region=\"r1\"><p>x</p></div>"), ERR_INVALID},
    // A refused root only loses its own attributes (regions: see below).
    {"PixelExtentOnRoot", Doc(Para("x"), "", WalkTest::kRegion, "tts:extent=\"640px 480px\""), ERR_NONE},
};

INSTANTIATE_TEST_SUITE_P(Ebu, EbuDocument, ::testing::ValuesIn(kDocs), TTMLTest::RowName());

TEST(EbuDocumentDetail, SmpteRootKeepsTheDocumentsOwnTimeBaseUnset)
{
    Walk w(Doc(Para("x"), "", WalkTest::kRegion, "ttp:cellResolution=\"50 30\" ttp:timeBase=\"smpte\""));
    ASSERT_EQ(ERR_NONE, w.result);
    // The root stopped at the time base and passed nothing on.
    EXPECT_EQ("", w.info.GetTimeBase());
    EXPECT_EQ("32 15", w.info.GetCellResolution());
}

TEST(EbuDocumentDetail, UnsupportedStylingAndOffsetTimesHaveNoEffect)
{
    Walk w(Doc(Para("<span tts:opacity=\"0.5\" tts:textOutline=\"red 2px\" tts:zIndex=\"3\" begin=\"1s\" "
                    "tts:fontStyle=\"Italic\" tts:textDecoration=\"Underline\" dur=\"00:00:05.000\">x</span>")));
    ASSERT_EQ(ERR_NONE, w.result);
    auto text = w.Text("x");
    ASSERT_TRUE(text);
    for (int attr : {ATTR_OPACITY, ATTR_TEXTOUTLINE, ATTR_ZINDEX, ATTR_DUR})
        EXPECT_EQ("<absent>", Attr(text, attr)) << attr;
    EXPECT_EQ("italic", Attr(text, ATTR_FONTSTYLE));
    EXPECT_EQ("2", Attr(text, ATTR_TEXTDECORATION));
    // The offset begin is dropped; the paragraph's is used.
    EXPECT_EQ("1000", Attr(text, ATTR_BEGIN));
}

// An empty paragraph occupies its interval, as an empty text run, only with
// showBackground always. A second paragraph keeps the document timed.
struct EmptyParaCase {
    const char* name;
    const char* pAttrs;
    const char* timed;  // "text@begin-end" of every timed element
    bool warned;
};

class EbuEmptyParagraph : public ::testing::TestWithParam<EmptyParaCase> {};

TEST_P(EbuEmptyParagraph, YieldsAnEmptySpan)
{
    const auto& c = GetParam();
    LogCapture log;
    Walk w(Doc("<div region=\"r1\"><p " + std::string(c.pAttrs) +
               "/><p begin=\"00:00:05.000\" end=\"00:00:06.000\">x</p></div>"));
    ASSERT_EQ(ERR_NONE, w.result) << log.Dump();
    std::string timed;
    for (const auto& t : w.TimedElements()) {
        EXPECT_EQ(ELEM_SPAN, t.element->GetType());
        ASSERT_TRUE(t.element->GetParent());
        EXPECT_EQ(ELEM_P, t.element->GetParent()->GetType());
        timed += (timed.empty() ? "" : " ") + Attr(t.element, ATTR_TEXT) + "@" + std::to_string(t.begin) + "-" +
                 std::to_string(t.end);
    }
    EXPECT_EQ(c.timed, timed);
    EXPECT_EQ(c.warned, log.Has("begin/end/showBG attributes not found in P. just ignore it"));
}

const EmptyParaCase kEmptyParagraphs[] = {
    {"DefaultAlways", "begin=\"00:00:01.000\" end=\"00:00:02.000\"", "@1000-2000 x@5000-6000", false},
    {"WhenActive", "begin=\"00:00:01.000\" end=\"00:00:02.000\" tts:showBackground=\"whenActive\"", "x@5000-6000",
     false},
    {"MissingBegin", "end=\"00:00:02.000\"", "x@5000-6000", true},
    {"OffsetEndDropped", "begin=\"00:00:01.000\" end=\"2s\"", "x@5000-6000", true},
};

INSTANTIATE_TEST_SUITE_P(Ebu, EbuEmptyParagraph, ::testing::ValuesIn(kEmptyParagraphs), TTMLTest::RowName());

}  // namespace
