// Attribute registry: key table, name lookups, range guards, the common
// value checks and the downloadable-fonts list.

#include "LogCapture.h"
#include "TestAttrHandler.h"
#include "RowPrinter.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cctype>
#include <set>
#include <thread>

using namespace TTML;

namespace {

// ---- Key table --------------------------------------------------------------

TEST(AttrKeys, KeysAreDistinctLowerCaseAndOnlyTextHasNone)
{
    std::set<std::string> seen;
    for (int attr = 0; attr < TTML_ATTR_COUNT; ++attr) {
        const std::string key = kTTMLAttrKeys[attr];
        if (attr == ATTR_TEXT) {
            EXPECT_TRUE(key.empty());
            continue;
        }
        ASSERT_FALSE(key.empty()) << attr;
        for (char c : key)
            EXPECT_FALSE(std::isupper(static_cast<unsigned char>(c))) << key;
        EXPECT_TRUE(seen.insert(key).second) << "duplicate key " << key;
    }
}

// ---- Name lookups -------------------------------------------------------------

TEST(AttrHandler, ToAttrEnumLowerCasesTheCallersString)
{
    TestAttrHandler handler;
    std::string name = "BackgroundColor";
    EXPECT_EQ(ATTR_BACKGROUNDCOLOR, handler.ToAttrEnum(name));
    EXPECT_EQ("backgroundcolor", name);

    std::string mapped = "TextAlign";
    EXPECT_TRUE(handler.IsMappedAttribute(mapped));
    EXPECT_EQ("textalign", mapped);
}

TEST(AttrHandler, UnknownEmptyAndUnnamedNamesGiveMinusOne)
{
    TestAttrHandler ebuLike(false);
    std::string empty;
    std::string unknown = "Foo";
    std::string unnamed = "altText";  // keyed, but this profile does not name it
    EXPECT_EQ(-1, ebuLike.ToAttrEnum(empty));
    EXPECT_EQ(-1, ebuLike.ToAttrEnum(unknown));
    EXPECT_EQ("foo", unknown);
    EXPECT_EQ(-1, ebuLike.ToAttrEnum(unnamed));
    EXPECT_FALSE(ebuLike.IsMappedAttribute(unnamed));
    EXPECT_EQ("", ebuLike.ToAttrString(ATTR_ALTTEXT));
    // The text slot has no key even when everything is named.
    TestAttrHandler all;
    EXPECT_EQ("", all.ToAttrString(ATTR_TEXT));
}

TEST(AttrHandler, ToAttrStringOutOfRangeIsInvalid)
{
    TestAttrHandler handler;
    EXPECT_EQ("invalid", handler.ToAttrString(static_cast<TTMLAttr>(58)));
    EXPECT_EQ("invalid", handler.ToAttrString(static_cast<TTMLAttr>(-1)));
}

// ---- Range guards -----------------------------------------------------------

struct RangeCase {
    const char* name;
    int attr;
    int elem;
    bool valid;
};

class AppliesToRange : public ::testing::TestWithParam<RangeCase> {};

TEST_P(AppliesToRange, WarnsOnlyOutsideTheTable)
{
    TestAttrHandler handler;
    const RangeCase& c = GetParam();
    if (c.valid)
        handler.t_SetAppliesTo(c.attr, c.elem, true);
    LogCapture log;
    EXPECT_EQ(c.valid, handler.IsAppliesTo(c.attr, c.elem));
    EXPECT_EQ(c.valid ? 0 : 1, log.Count("Invalid parameters", DLOG_WARN)) << log.Dump();
}

INSTANTIATE_TEST_SUITE_P(Table, AppliesToRange,
                         ::testing::Values(RangeCase{"LastCell", 57, 20, true}, RangeCase{"FirstCell", 0, 0, true},
                                           RangeCase{"AttrTooLarge", 58, 0, false},
                                           RangeCase{"ElemUnknown", 0, 21, false},
                                           RangeCase{"AttrNegative", -1, 0, false},
                                           RangeCase{"ElemNegative", 0, -1, false}),
                         TTMLTest::RowName());

TEST(AttrHandler, InheritableRangeAndClearing)
{
    TestAttrHandler handler;
    handler.t_SetInheritable(ATTR_ORIGIN, false);
    LogCapture log;
    EXPECT_FALSE(handler.IsInheritableAttribute(ATTR_ORIGIN));
    EXPECT_TRUE(handler.IsInheritableAttribute(ATTR_COLOR));
    EXPECT_EQ(0, log.Count("Invalid attribute type"));
    EXPECT_FALSE(handler.IsInheritableAttribute(58));
    EXPECT_FALSE(handler.IsInheritableAttribute(-1));
    EXPECT_EQ(2, log.Count("Invalid attribute type", DLOG_WARN)) << log.Dump();
}

// ---- Common checks ------------------------------------------------------------

using Check = int (*)(std::string&);

struct CheckCase {
    const char* check;
    Check fn;
    const char* input;
    int code;
    const char* stored;  // value after the check
};

void PrintTo(const CheckCase& c, std::ostream* os)
{
    *os << c.check << "(\"" << c.input << "\")";
}

class CommonChecks : public ::testing::TestWithParam<CheckCase> {};

TEST_P(CommonChecks, CodeAndStoredValue)
{
    const CheckCase& c = GetParam();
    std::string value = c.input;
    LogCapture log;
    EXPECT_EQ(c.code, c.fn(value));
    EXPECT_EQ(c.stored, value);
    EXPECT_TRUE(log.Lines().empty()) << "checks never log: " << log.Dump();
}

#define CHECK_CASE(name, input, code, stored) CheckCase{#name, &TestAttrHandler::t_Validate##name, input, code, stored}

const CheckCase kCheckCases[] = {
    CHECK_CASE(TextAlign, "CENTER", 0, "center"),
    CHECK_CASE(TextAlign, "Justify", 1, "justify"),
    CHECK_CASE(FillLineGap, "TRUE", 0, "true"),
    CHECK_CASE(FillLineGap, "yes", 1, "yes"),
    CHECK_CASE(XmlSpace, "Preserve", 0, "preserve"),
    CHECK_CASE(XmlSpace, "", 1, ""),
    CHECK_CASE(Role, "Caption", 0, "caption"),
    CHECK_CASE(Role, "extension-role", 0, "extension-role"),
    CHECK_CASE(Role, "caption music", 1, "caption music"),
    CHECK_CASE(WrapOption, "NoWrap", 0, "nowrap"),
    CHECK_CASE(WrapOption, "none", 1, "none"),
    CHECK_CASE(ShowBackground, "WhenActive", 0, "whenactive"),
    CHECK_CASE(ShowBackground, "never", 1, "never"),
    CHECK_CASE(FontWeight, "BOLD", 0, "bold"),
    CHECK_CASE(FontWeight, "bolder", 1, "bolder"),
    CHECK_CASE(DisplayAlign, "After", 0, "after"),
    CHECK_CASE(DisplayAlign, "middle", 1, "middle"),
    CHECK_CASE(MultiRowAlign, "Auto", 0, "auto"),
    CHECK_CASE(MultiRowAlign, "left", 1, "left"),
    CHECK_CASE(Direction, "RTL", 0, "rtl"),
    CHECK_CASE(Direction, "auto", 1, "auto"),
    CHECK_CASE(WritingMode, "TbRl", 0, "tbrl"),
    CHECK_CASE(WritingMode, "horizontal-tb", 1, "horizontal-tb"),
    CHECK_CASE(UnicodeBidi, "BidiOverride", 0, "bidioverride"),
    CHECK_CASE(UnicodeBidi, "isolate", 1, "isolate"),
    CHECK_CASE(Overflow, "Hidden", 0, "hidden"),
    CHECK_CASE(Overflow, "scroll", 1, "scroll"),
    CHECK_CASE(TimeBase, "Media", 0, "media"),
    CHECK_CASE(TimeBase, "smpte", 5, "smpte"),
    CHECK_CASE(Agent, "  a1", 0, "a1"),
    CHECK_CASE(Agent, " \t", 5, ""),
    CHECK_CASE(Id, "s1", 0, "s1"),
    CHECK_CASE(Id, "", 5, ""),
    CHECK_CASE(Lang, "", 1, ""),
    CHECK_CASE(Lang, "en-GB", 0, "en-GB"),
    CHECK_CASE(Style, "", 1, ""),
    CHECK_CASE(Style, "s1 s2", 0, "s1 s2"),
    CHECK_CASE(ConformsToStandard, "", 0, ""),
    CHECK_CASE(FrameRate, " 30", 0, "30"),
    CHECK_CASE(FrameRate, "", 1, ""),
    CHECK_CASE(FrameRate, "25.5", 1, "25.5"),
    CHECK_CASE(FrameRate, "-25", 1, "-25"),
    // The clock-time shapes are tabled in ClockTimeCheckTest; these two check the logging.
    CHECK_CASE(ClockTimeFormat, "00:00:01", 0, "00:00:01"),
    CHECK_CASE(ClockTimeFormat, "00:00:01.", 1, "00:00:01."),
    CHECK_CASE(ColorFormat, "#FFFFFF", 0, "#FFFFFF"),
    CHECK_CASE(ColorFormat, "rgba(255,255,255,128)", 0, "rgba(255,255,255,128)"),
    CHECK_CASE(ColorFormat, "  #000000", 0, "#000000"),
    CHECK_CASE(ColorFormat, "#fff", 1, "#fff"),
    CHECK_CASE(ColorFormat, "rgb(0, 0, 0)", 1, "rgb(0, 0, 0)"),
    CHECK_CASE(ColorFormat, "rgb(256,0,0)", 1, "rgb(256,0,0)"),
    CHECK_CASE(ColorFormat, "white", 1, "white"),
    CHECK_CASE(LineHeight, "Normal", 0, "normal"),
    CHECK_CASE(LineHeight, "125%", 0, "125%"),
    CHECK_CASE(LineHeight, "%", 0, "%"),
    CHECK_CASE(LineHeight, "-10%", 1, "-10%"),
    CHECK_CASE(LineHeight, "10PX", 1, "10px"),
    CHECK_CASE(FontSize, "125%", 0, "125%"),
    CHECK_CASE(FontSize, "10px", 1, "10px"),
    CHECK_CASE(LinePadding, "0.5C", 0, "0.5c"),
    CHECK_CASE(LinePadding, "0.5", 1, "0.5"),
    CHECK_CASE(LinePadding, "-0.5c", 1, "-0.5c"),
    CHECK_CASE(Padding, "10%", 0, "10%"),
    CHECK_CASE(Padding, "1% 2% 3% 4%", 0, "1% 2% 3% 4%"),
    CHECK_CASE(Padding, "1% 2% 3% 4% 5%", 1, "1% 2% 3% 4% 5%"),
    CHECK_CASE(Padding, "1%  2%", 1, "1%  2%"),
    CHECK_CASE(Padding, "-1%", 1, "-1%"),
    CHECK_CASE(OriginExtent, "10% 20%", 0, "10% 20%"),
    CHECK_CASE(OriginExtent, "  10.5% 20%", 0, "10.5% 20%"),
    CHECK_CASE(OriginExtent, "10%", 5, "10%"),
    CHECK_CASE(OriginExtent, "10px 20px", 5, "10px 20px"),
    CHECK_CASE(FontFamily, "Arial, serif", 0, "Arial, serif"),
    CHECK_CASE(FontFamily, "", 1, ""),
};

#undef CHECK_CASE

INSTANTIATE_TEST_SUITE_P(Table, CommonChecks, ::testing::ValuesIn(kCheckCases),
                         [](const ::testing::TestParamInfo<CheckCase>& info) {
                             return std::string(info.param.check) + "_" + std::to_string(info.index);
                         });

struct BoolCase {
    const char* check;
    bool (*fn)(std::string&);
    const char* input;
    bool accepted;
    const char* stored;
};

void PrintTo(const BoolCase& c, std::ostream* os)
{
    *os << c.check << "(\"" << c.input << "\")";
}

class BoolChecks : public ::testing::TestWithParam<BoolCase> {};

TEST_P(BoolChecks, AcceptanceAndStoredValue)
{
    const BoolCase& c = GetParam();
    std::string value = c.input;
    EXPECT_EQ(c.accepted, c.fn(value));
    EXPECT_EQ(c.stored, value);
}

const BoolCase kBoolCases[] = {
    {"Boolean", &TestAttrHandler::t_ValidateBooleanValues, "TRUE", true, "true"},
    {"Boolean", &TestAttrHandler::t_ValidateBooleanValues, "False", true, "false"},
    {"Boolean", &TestAttrHandler::t_ValidateBooleanValues, "1", false, "1"},
    {"Integers", &TestAttrHandler::t_SpaceSeparatedIntegersValidation, "32 15", true, "32 15"},
    {"Integers", &TestAttrHandler::t_SpaceSeparatedIntegersValidation, " 1000 1001", true, "1000 1001"},
    {"Integers", &TestAttrHandler::t_SpaceSeparatedIntegersValidation, "0 15", false, "0 15"},
    {"Integers", &TestAttrHandler::t_SpaceSeparatedIntegersValidation, "32 0", false, "32 0"},
    {"Integers", &TestAttrHandler::t_SpaceSeparatedIntegersValidation, "32", false, "32"},
    {"Integers", &TestAttrHandler::t_SpaceSeparatedIntegersValidation, "32 15 1", false, "32 15 1"},
    {"Integers", &TestAttrHandler::t_SpaceSeparatedIntegersValidation, "", false, ""},
};

INSTANTIATE_TEST_SUITE_P(Table, BoolChecks, ::testing::ValuesIn(kBoolCases),
                         [](const ::testing::TestParamInfo<BoolCase>& info) {
                             return std::string(info.param.check) + "_" + std::to_string(info.index);
                         });

// ---- Downloadable fonts -----------------------------------------------------------

TEST(AttrHandler, DownloadableFontsAreReplacedWhole)
{
    TestAttrHandler handler;
    EXPECT_TRUE(handler.t_GetDownloadableFontsInfo().empty());
    handler.OnErrorDownloadableFonts({"a", "b"});
    handler.OnErrorDownloadableFonts({"c"});
    EXPECT_EQ((std::list<std::string>{"c"}), handler.t_GetDownloadableFontsInfo());
}

// The source thread replaces the list while the parser thread copies it;
// every copy must be one whole list (the thread sanitizer checks the lock).
TEST(AttrHandler, DownloadableFontsCopiesAreConsistentAcrossThreads)
{
    TestAttrHandler handler;
    std::atomic<bool> stop{false};
    std::thread writer([&] {
        for (int i = 0; i < 2000; ++i) {
            const std::string name = "font" + std::to_string(i % 7);
            handler.OnErrorDownloadableFonts(std::list<std::string>(static_cast<size_t>(i % 5 + 1), name));
        }
        stop = true;
    });
    int torn = 0;
    while (!stop) {
        const auto copy = handler.t_GetDownloadableFontsInfo();
        for (const auto& f : copy)
            torn += (f != copy.front());
    }
    writer.join();
    EXPECT_EQ(0, torn);
}

}  // namespace
