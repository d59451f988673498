// Run markup and font family resolution: no canvas needed for the strings,
// but the context is made by the graphics object as the renderer makes it.
#include "CFontFamilyMap.h"
#include "DrawingFixture.h"
#include "LogCapture.h"
#include "RowPrinter.h"

#include <sstream>

using namespace TTML;

namespace {

// Parts of a string separated by '|'.
std::vector<std::string> Parts(const std::string& list)
{
    std::vector<std::string> parts;
    std::stringstream in(list);
    for (std::string part; std::getline(in, part, '|');)
        parts.push_back(part);
    return parts;
}

size_t CountOf(const std::string& text, const std::string& part)
{
    size_t n = 0;
    for (size_t pos = text.find(part); pos != std::string::npos; pos = text.find(part, pos + 1))
        ++n;
    return n;
}

struct FormatCase {
    const char* name;
    std::map<int, std::string> attrs;
    const char* present;  // parts separated by '|'
    const char* absent;
};

class FormatText : public DrawingTest, public ::testing::WithParamInterface<FormatCase> {};

struct ReplaceCase {
    const char* name;
    int attribute;
    const char* value;
    const char* expected;  // in each of the two runs
};

class Replace : public DrawingTest, public ::testing::WithParamInterface<ReplaceCase> {};

}  // namespace

TEST_P(FormatText, OneRunOfMarkup)
{
    const FormatCase& c = GetParam();
    std::string markup = MakeContext()->FormatText(c.attrs);
    EXPECT_EQ(0u, markup.find("<font='")) << markup;
    EXPECT_EQ(markup.size() - 3, markup.rfind("</>")) << markup;
    for (const std::string& part : Parts(c.present))
        EXPECT_NE(std::string::npos, markup.find(part)) << part << " in " << markup;
    for (const std::string& part : Parts(c.absent))
        EXPECT_EQ(std::string::npos, markup.find(part)) << part << " in " << markup;
}

INSTANTIATE_TEST_SUITE_P(
    Cases, FormatText,
    ::testing::Values(
        FormatCase{"Defaults", {{ATTR_TEXT, "Hello"}}, "font_size=30 |color=#ffffffff|>Hello</>", "backing|font_weight"},
        FormatCase{"ScaledPixelSize", {{ATTR_TEXT, "a"}, {ATTR_FONTSIZE, "65.520000px"}}, "font_size=66 ", ""},
        FormatCase{"CellSizeFallsBackToContextSize", {{ATTR_TEXT, "a"}, {ATTR_FONTSIZE, "1c"}}, "font_size=30 ", ""},
        FormatCase{"ColourForms", {{ATTR_TEXT, "a"}, {ATTR_COLOR, "rgba(255,0,0,128)"}}, "color=#ff000080", ""},
        FormatCase{"WeightStyle", {{ATTR_TEXT, "a"}, {ATTR_FONTWEIGHT, "bold"}, {ATTR_FONTSTYLE, "italic"}},
                   "font_weight=bold|font_style=italic", ""},
        FormatCase{"UnderlineAndLineThrough", {{ATTR_TEXT, "a"}, {ATTR_TEXTDECORATION, "10"}},
                   "underline=on|strikethrough=on", ""},
        FormatCase{"DecorationNone", {{ATTR_TEXT, "a"}, {ATTR_TEXTDECORATION, "none"}}, "", "underline|strike"},
        FormatCase{"SpanBackground", {{ATTR_TEXT, "a"}, {ATTR_BACKGROUNDCOLOR, "#00000080"}},
                   "backing=on|backing_color=#00000080", ""},
        FormatCase{"TransparentBackgroundIsNone", {{ATTR_TEXT, "a"}, {ATTR_BACKGROUNDCOLOR, "transparent"}}, "",
                   "backing"},
        FormatCase{"Hidden",
                   {{ATTR_TEXT, "a"}, {ATTR_VISIBILITY, "hidden"}, {ATTR_BACKGROUNDCOLOR, "#ff0000"},
                    {ATTR_TEXTDECORATION, "2"}},
                   "color=#ffffff00", "backing|underline"},
        FormatCase{"EscapesMarkupCharacters", {{ATTR_TEXT, "a<b> & c"}}, ">a&lt;b&gt; &amp; c</>", ""},
        FormatCase{"LineBreak", {{ATTR_TEXT, "\n"}}, "><br/></>", ""}),
    TTMLTest::RowName());

// Guards: the caption settings' overrides reach every run (and its
// underline or line-through).
TEST_P(Replace, EveryRunIsRewritten)
{
    const ReplaceCase& c = GetParam();
    ITextContext* pContext = MakeContext();
    std::string markup =
        pContext->FormatText({{ATTR_TEXT, "one"}, {ATTR_COLOR, "#ff0000"}, {ATTR_TEXTDECORATION, "2"}}) +
        pContext->FormatText({{ATTR_TEXT, "two"}, {ATTR_COLOR, "#0000ff"}, {ATTR_TEXTDECORATION, "8"},
                              {ATTR_FONTWEIGHT, "bold"}, {ATTR_FONTSIZE, "20px"}});
    pContext->ReplaceAttribute(markup, c.attribute, c.value);
    EXPECT_EQ(2u, CountOf(markup, c.expected)) << markup;
    EXPECT_NE(std::string::npos, markup.find(">one</>")) << markup;
    EXPECT_NE(std::string::npos, markup.find(">two</>")) << markup;
}

INSTANTIATE_TEST_SUITE_P(
    Cases, Replace,
    ::testing::Values(ReplaceCase{"Size", ATTR_FONTSIZE, "52px", "font_size=52"},
                      ReplaceCase{"Colour", ATTR_COLOR, "#ffff00", " color=#ffff00ff"},
                      // The lines under and through the text take its new colour.
                      ReplaceCase{"LineColour", ATTR_COLOR, "#ffff00", "_color=#ffff00ff"},
                      ReplaceCase{"Weight", ATTR_FONTWEIGHT, "bold", "font_weight=bold"},
                      ReplaceCase{"Style", ATTR_FONTSTYLE, "italic", "font_style=italic"},
                      ReplaceCase{"Family", ATTR_FONTFAMILY, "Cpf03", "font='DejaVu Sans Mono'"}),
    TTMLTest::RowName());

TEST_F(DrawingTest, ReplaceColourKeepsHiddenRunsHiddenAndRefusesTheUnknown)
{
    ITextContext* pContext = MakeContext();
    std::string markup = pContext->FormatText({{ATTR_TEXT, "x"}, {ATTR_VISIBILITY, "hidden"}});
    pContext->ReplaceAttribute(markup, ATTR_COLOR, "#ffff00");
    EXPECT_NE(std::string::npos, markup.find("color=#ffff0000")) << markup;
    LogCapture log;
    const std::string before = markup;
    pContext->ReplaceAttribute(markup, ATTR_ORIGIN, "10px 10px");
    pContext->ReplaceAttribute(markup, ATTR_FONTSIZE, "2c");
    EXPECT_EQ(before, markup);
    EXPECT_TRUE(log.HasContaining("cannot be replaced in markup", DLOG_WARN)) << log.Dump();
    EXPECT_TRUE(log.Has("Font size [2c] is not in pixels", DLOG_WARN)) << log.Dump();
}

TEST_F(DrawingTest, UnicodeBidiWrapsOnceForTheDirection)
{
    ITextContext* pContext = MakeContext();
    std::string text = "abc";
    EXPECT_FALSE(pContext->ApplyUnicodeBidi("normal", text));
    EXPECT_EQ("abc", text);
    pContext->SetDirection("rtl");
    EXPECT_TRUE(pContext->ApplyUnicodeBidi("bidioverride", text));
    EXPECT_EQ("\xE2\x80\xAE" "abc" "\xE2\x80\xAC", text);
    EXPECT_FALSE(pContext->ApplyUnicodeBidi("bidioverride", text)) << "not nested twice";
    pContext->SetDirection("ltr");
    std::string other = "abc";
    EXPECT_TRUE(pContext->ApplyUnicodeBidi("embed", other));
    EXPECT_EQ("\xE2\x80\xAA" "abc" "\xE2\x80\xAC", other);
}

// Each list resolves to an installed family containing the given name.
TEST(FontFamily, ListsResolveToInstalledFamilies)
{
    const std::string fallback = CFontFamilyMap::DefaultFamily();
    EXPECT_TRUE(CFontFamilyMap::IsInstalled(fallback));
    EXPECT_FALSE(CFontFamilyMap::IsInstalled("NoSuchFamilyAnywhere"));
    EXPECT_EQ(fallback, CFontFamilyMap::Resolve("NoSuchFamilyAnywhere, AlsoMissing"));
    const std::vector<std::pair<const char*, const char*>> lists{
        {"proportionalSansSerif", "Sans"}, {"SERIF", "Serif"}, {"monospaceSerif", "Mono"},
        {"\"Noto Sans Mono\"", "Mono"}, {"'Letter Gothic 12 Pitch'", "Mono"}, {"NoSuchFamilyAnywhere, 'serif'", "Serif"},
        {"DejaVu Serif", "DejaVu Serif"}, {"cpf03", "Mono"}, {"", "Sans"}};
    for (const auto& list : lists) {
        const std::string family = CFontFamilyMap::Resolve(list.first);
        EXPECT_TRUE(CFontFamilyMap::IsInstalled(family)) << family;
        EXPECT_NE(std::string::npos, family.find(list.second)) << list.first << " -> " << family;
    }
}
