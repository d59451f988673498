// EBU-TT-D rules: the attribute validators, names and defaults, and the
// document-level refusals (regions, metadata, fonts, empty paragraphs).

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
    std::string value = c.in;
    EXPECT_EQ(c.code, handler.ValidateAttribute(static_cast<TTMLAttr>(c.attr), value));
    if (c.code == ERR_NONE) {
        EXPECT_EQ(c.stored, value);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Ebu, EbuValidator,
    ::testing::Values(
        ValidatorCase{"BeginClockTime", ATTR_BEGIN, "00:00:01.000", ERR_NONE, "1000"},
        ValidatorCase{"BeginHours", ATTR_BEGIN, "01:02:03.5", ERR_NONE, "3723500"},
        ValidatorCase{"BeginOffsetDropped", ATTR_BEGIN, "1s", ERR_IGNORE, ""},
        ValidatorCase{"EndClockTime", ATTR_END, "00:01:00", ERR_NONE, "60000"},
        ValidatorCase{"EndTicksDropped", ATTR_END, "100t", ERR_IGNORE, ""},
        ValidatorCase{"DurNotChecked", ATTR_DUR, "00:00:01.000", ERR_NOT_SUPPORTED, ""},
        ValidatorCase{"UnderlineAnyCase", ATTR_TEXTDECORATION, "UnderLine", ERR_NONE, "2"},
        ValidatorCase{"DecorationNone", ATTR_TEXTDECORATION, "None", ERR_NONE, "none"},
        ValidatorCase{"TwoDecorationsDropped", ATTR_TEXTDECORATION, "underline lineThrough", ERR_IGNORE, ""},
        ValidatorCase{"ObliqueDropped", ATTR_FONTSTYLE, "oblique", ERR_IGNORE, ""},
        ValidatorCase{"ItalicLowered", ATTR_FONTSTYLE, "Italic", ERR_NONE, "italic"},
        ValidatorCase{"OpacityUnsupported", ATTR_OPACITY, "0.5", ERR_NOT_SUPPORTED, ""},
        ValidatorCase{"TextOutlineUnsupported", ATTR_TEXTOUTLINE, "black 2px", ERR_NOT_SUPPORTED, ""},
        ValidatorCase{"ZIndexUnsupported", ATTR_ZINDEX, "1", ERR_NOT_SUPPORTED, ""},
        ValidatorCase{"TickRateUnsupported", ATTR_TICKRATE, "10", ERR_NOT_SUPPORTED, ""},
        ValidatorCase{"ParaBackgroundUnsupported", ATTR_PARABACKGROUNDCOLOR, "#ffffff", ERR_NOT_SUPPORTED, ""},
        ValidatorCase{"UnknownName", -1, "x", ERR_NOT_SUPPORTED, ""},
        ValidatorCase{"PixelOrigin", ATTR_ORIGIN, "10px 10px", ERR_INVALID, ""},
        ValidatorCase{"PixelExtent", ATTR_EXTENT, "640px 480px", ERR_INVALID, ""},
        ValidatorCase{"PercentExtent", ATTR_EXTENT, "80% 20%", ERR_NONE, "80% 20%"},
        ValidatorCase{"SmpteTimeBase", ATTR_TIMEBASE, "smpte", ERR_INVALID, ""},
        ValidatorCase{"EmptyId", ATTR_ID, "", ERR_INVALID, ""},
        ValidatorCase{"RoleCaption", ATTR_ROLE, "caption", ERR_NONE, "caption"},
        ValidatorCase{"TwoRolesDropped", ATTR_ROLE, "caption dialog", ERR_IGNORE, ""},
        ValidatorCase{"CellResolution", ATTR_CELLRESOLUTION, "40 24", ERR_NONE, "40 24"},
        ValidatorCase{"CellResolutionZero", ATTR_CELLRESOLUTION, "0 15", ERR_IGNORE, ""},
        ValidatorCase{"FrameRateMultiplier", ATTR_FRAMERATEMULTIPLIER, "1000 1001", ERR_NONE, "1000 1001"},
        ValidatorCase{"RegionAnything", ATTR_REGION, "whatever", ERR_NONE, "whatever"},
        ValidatorCase{"ColorName", ATTR_COLOR, "white", ERR_IGNORE, ""},
        ValidatorCase{"RegionBackground", ATTR_REGIONBACKGROUNDCOLOR, "#FF000080", ERR_NONE, "#FF000080"},
        ValidatorCase{"ShowBackgroundLowered", ATTR_SHOWBACKGROUND, "WhenActive", ERR_NONE, "whenactive"},
        ValidatorCase{"FillLineGapNamedButUnchecked", ATTR_FILLLINEGAP, "true", ERR_NOT_SUPPORTED, ""}),
    TTMLTest::RowName());

TEST(EbuNames, FiftyOneKeysFromTheSharedTable)
{
    CEBUAttrHandler handler;
    int named = 0;
    for (int attr = 0; attr < TTML_ATTR_COUNT; ++attr) {
        const std::string key = handler.ToAttrString(static_cast<TTMLAttr>(attr));
        if (key.empty())
            continue;
        ++named;
        EXPECT_EQ(kTTMLAttrKeys[attr], key);
        std::string lookup = key;
        EXPECT_EQ(attr, handler.ToAttrEnum(lookup));
    }
    EXPECT_EQ(51, named);
    for (const char* imscOnly : {"altText", "aspectRatio", "progressivelyDecodable", "backgroundImage",
                                 "forcedDisplay", "timeContainer"}) {
        std::string name = imscOnly;
        EXPECT_EQ(-1, handler.ToAttrEnum(name)) << imscOnly;
    }
}

TEST(EbuNames, DefaultsStartTheBody)
{
    CEBUAttrHandler handler;
    auto defaults = handler.GetDefaultAttrValues();
    EXPECT_EQ(18u, defaults.size());
    EXPECT_EQ("#00000000", *defaults.Get(ATTR_PARABACKGROUNDCOLOR));
    EXPECT_EQ("0c", *defaults.Get(ATTR_LINEPADDING));
    EXPECT_EQ("lrtb", *defaults.Get(ATTR_WRITINGMODE));
    EXPECT_EQ(0u, defaults.count(ATTR_COLOR));
}

struct FontCase {
    const char* name;
    const char* family;
    int code;
};

class EbuFailedFont : public ::testing::TestWithParam<FontCase> {};

TEST_P(EbuFailedFont, FirstFamilyDecides)
{
    CEBUAttrHandler handler;
    handler.OnErrorDownloadableFonts({"Other", "MyFont"});
    std::string value = GetParam().family;
    EXPECT_EQ(GetParam().code, handler.ValidateAttribute(ATTR_FONTFAMILY, value));
}

INSTANTIATE_TEST_SUITE_P(Ebu, EbuFailedFont,
                         ::testing::Values(FontCase{"FailedAlone", "MyFont", ERR_INVALID},
                                           FontCase{"FailedFirst", "MyFont,default", ERR_INVALID},
                                           FontCase{"FailedSecond", "default,MyFont", ERR_NONE},
                                           FontCase{"CaseMatters", "myfont", ERR_NONE},
                                           FontCase{"Empty", "", ERR_IGNORE}),
                         TTMLTest::RowName());

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

INSTANTIATE_TEST_SUITE_P(
    Ebu, EbuDocument,
    ::testing::Values(
        DocCase{"Valid", Doc(Para("x")), ERR_NONE},
        DocCase{"NoRegion", Doc("<div><p begin=\"00:00:01.000\" end=\"00:00:02.000\">x</p></div>", "", ""),
                ERR_INVALID},
        // The refused region is not registered, which leaves none.
        DocCase{"OnlyRegionInPixels", Doc(Para("x"), "", "<region xml:id=\"r1\" tts:origin=\"10px 10px\"/>"),
                ERR_INVALID},
        DocCase{"PixelExtentOnParagraph", Doc(Para("x", "tts:extent=\"10px 10px\"")), ERR_INVALID},
        DocCase{"EmptyIdOnParagraph", Doc(Para("x", "xml:id=\"\"")), ERR_INVALID},
        DocCase{"EmptyIdOnStyle", Doc(Para("x"), "<style xml:id=\"\"/>"), ERR_INVALID},
        DocCase{"PixelOriginOnSpan", Doc(Para("<span tts:origin=\"1px 1px\">x</span>")), ERR_INVALID},
        DocCase{"VersionV10", VersionDoc("v1.0"), ERR_NONE},
        DocCase{"VersionEmpty", VersionDoc(""), ERR_NONE},
        DocCase{"VersionLater", VersionDoc("v1.1"), ERR_INVALID},
        DocCase{"OnlyUntimedText", Doc("<div region=\"r1\"><p>x</p></div>"), ERR_INVALID},
        // A refused root only loses its own attributes (regions: see below).
        DocCase{"PixelExtentOnRoot", Doc(Para("x"), "", WalkTest::kRegion, "tts:extent=\"640px 480px\""),
                ERR_NONE}),
    TTMLTest::RowName());

TEST(EbuDocumentDetail, RefusedRegionIsNotRegistered)
{
    Walk w(Doc(Para("x"), "", std::string(WalkTest::kRegion) + "<region xml:id=\"r2\" tts:origin=\"1px 1px\"/>"));
    ASSERT_EQ(ERR_NONE, w.result);
    EXPECT_TRUE(w.profile.Registry()->GetRegion("r1"));
    EXPECT_FALSE(w.profile.Registry()->GetRegion("r2"));
}

TEST(EbuDocumentDetail, SmpteRootKeepsTheDocumentsOwnTimeBaseUnset)
{
    Walk w(Doc(Para("x"), "", WalkTest::kRegion, "ttp:cellResolution=\"50 30\" ttp:timeBase=\"smpte\""));
    ASSERT_EQ(ERR_NONE, w.result);
    // The root stopped at the time base and passed nothing on.
    EXPECT_EQ("", w.info.GetTimeBase());
}

TEST(EbuDocumentDetail, FailedDownloadableFontRejectsTheDocument)
{
    const std::string xml =
        Doc(Para("x", "style=\"s\""), "<style xml:id=\"s\" tts:fontFamily=\"WebFont, default\"/>");
    Walk fine(xml);
    EXPECT_EQ(ERR_NONE, fine.result);
    Walk failed(xml, 0, 0, {"WebFont"});
    EXPECT_EQ(ERR_INVALID, failed.result);
}

TEST(EbuDocumentDetail, UnsupportedStylingHasNoEffect)
{
    Walk w(Doc(Para("<span tts:opacity=\"0.5\" tts:textOutline=\"red 2px\" tts:zIndex=\"3\" "
                    "tts:fontStyle=\"Italic\" tts:textDecoration=\"Underline\" dur=\"00:00:05.000\">x</span>")));
    ASSERT_EQ(ERR_NONE, w.result);
    auto text = w.Text("x");
    ASSERT_TRUE(text);
    EXPECT_EQ("<absent>", Attr(text, ATTR_OPACITY));
    EXPECT_EQ("<absent>", Attr(text, ATTR_TEXTOUTLINE));
    EXPECT_EQ("<absent>", Attr(text, ATTR_ZINDEX));
    EXPECT_EQ("<absent>", Attr(text, ATTR_DUR));
    EXPECT_EQ("italic", Attr(text, ATTR_FONTSTYLE));
    EXPECT_EQ("2", Attr(text, ATTR_TEXTDECORATION));
}

TEST(EbuDocumentDetail, OffsetBeginIsDroppedAndTheParentsUsed)
{
    Walk w(Doc(Para("<span begin=\"1s\">x</span>")));
    ASSERT_EQ(ERR_NONE, w.result);
    EXPECT_EQ("1000", Attr(w.Text("x"), ATTR_BEGIN));
}

// An empty paragraph occupies its interval only with showBackground always.
struct EmptyParaCase {
    const char* name;
    const char* pAttrs;
    int emptySpans;
    bool warned;
};

class EbuEmptyParagraph : public ::testing::TestWithParam<EmptyParaCase> {};

TEST_P(EbuEmptyParagraph, YieldsAnEmptySpan)
{
    const auto& c = GetParam();
    LogCapture log;
    // A second paragraph keeps the document timed in every case.
    Walk w(Doc("<div region=\"r1\"><p " + std::string(c.pAttrs) +
               "/><p begin=\"00:00:05.000\" end=\"00:00:06.000\">x</p></div>"));
    ASSERT_EQ(ERR_NONE, w.result) << log.Dump();
    int empty = 0;
    for (const auto& t : w.TimedElements()) {
        if (Attr(t.element, ATTR_TEXT).empty()) {
            ++empty;
            EXPECT_EQ(ELEM_SPAN, t.element->GetType());
            EXPECT_EQ(1000u, t.begin);
            EXPECT_EQ(2000u, t.end);
            ASSERT_TRUE(t.element->GetParent());
            EXPECT_EQ(ELEM_P, t.element->GetParent()->GetType());
        }
    }
    EXPECT_EQ(c.emptySpans, empty);
    EXPECT_EQ(c.warned, log.Has("begin/end/showBG attributes not found in P. just ignore it"));
}

INSTANTIATE_TEST_SUITE_P(
    Ebu, EbuEmptyParagraph,
    ::testing::Values(
        EmptyParaCase{"DefaultAlways", "begin=\"00:00:01.000\" end=\"00:00:02.000\"", 1, false},
        EmptyParaCase{"WhenActive", "begin=\"00:00:01.000\" end=\"00:00:02.000\" tts:showBackground=\"whenActive\"",
                      0, false},
        EmptyParaCase{"MissingBegin", "end=\"00:00:02.000\"", 0, true},
        EmptyParaCase{"OffsetEndDropped", "begin=\"00:00:01.000\" end=\"2s\"", 0, true}),
    TTMLTest::RowName());

}  // namespace
