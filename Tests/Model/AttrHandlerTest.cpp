// Attribute registry: name lookups, range guards, the common value checks
// (through the EBU-TT-D rows, which name them unchanged), the clock-time fast
// path and the list of fonts that failed to download.

#include "CEBUAttrHandler.h"
#include "CIMSCAttrHandler.h"
#include "LogCapture.h"

#include <boost/regex.hpp>
#include <gtest/gtest.h>

#include <atomic>
#include <random>
#include <thread>
#include <utility>

using namespace TTML;

namespace {

// The protected parts a test reaches directly.
struct Exposed : CEBUAttrHandler {
    using CAttrHandler::t_GetDownloadableFontsInfo;
    using CAttrHandler::t_ValidateClockTimeFormat;
};

// ---- Names and range guards ----------------------------------------------------

TEST(AttrHandler, NamesFoldCaseAndAreKnownOnlyWhereTheProfileHasARow)
{
    CEBUAttrHandler ebu;
    CIMSCAttrHandler imsc;
    std::string name = "BackgroundColor";
    EXPECT_EQ(ATTR_BACKGROUNDCOLOR, ebu.ToAttrEnum(name));
    EXPECT_EQ("backgroundcolor", name);  // the caller's string is lower-cased
    std::string alt = "altText";  // IMSC 1 only
    EXPECT_FALSE(ebu.IsMappedAttribute(alt));
    EXPECT_EQ(ATTR_ALTTEXT, imsc.ToAttrEnum(alt));
    EXPECT_EQ("", ebu.ToAttrString(ATTR_ALTTEXT));
    std::string empty;
    EXPECT_EQ(-1, imsc.ToAttrEnum(empty));
    EXPECT_EQ("", imsc.ToAttrString(ATTR_TEXT));  // has a row but no key
    EXPECT_EQ("invalid", imsc.ToAttrString(static_cast<TTMLAttr>(TTML_ATTR_COUNT)));
}

TEST(AttrHandler, QueriesOutsideTheTablesWarnAndAreFalse)
{
    CIMSCAttrHandler handler;
    LogCapture log;
    // The corners are inside.
    handler.IsAppliesTo(TTML_ATTR_COUNT - 1, TTML_ELEM_COUNT - 1);
    handler.IsAppliesTo(0, 0);
    handler.IsInheritableAttribute(TTML_ATTR_COUNT - 1);
    handler.IsInheritableAttribute(0);
    EXPECT_TRUE(log.Lines().empty()) << log.Dump();
    for (const auto& [attr, elem] : {std::pair{TTML_ATTR_COUNT, 0}, {0, TTML_ELEM_COUNT}, {-1, 0}, {0, -1}})
        EXPECT_FALSE(handler.IsAppliesTo(attr, elem)) << attr << ", " << elem;
    EXPECT_EQ(4, log.Count("Invalid parameters", DLOG_WARN)) << log.Dump();
    EXPECT_FALSE(handler.IsInheritableAttribute(TTML_ATTR_COUNT));
    EXPECT_FALSE(handler.IsInheritableAttribute(-1));
    EXPECT_EQ(2, log.Count("Invalid attribute type", DLOG_WARN)) << log.Dump();
}

// ---- Common checks, through the EBU-TT-D rows ------------------------------------

struct CheckCase {
    TTMLAttr attr;
    const char* input;
    int code;
    const char* stored;  // the value after the check
};

void PrintTo(const CheckCase& c, std::ostream* os)
{
    *os << kTTMLAttrKeys[c.attr] << "(\"" << c.input << "\")";
}

class EbuChecks : public ::testing::TestWithParam<CheckCase> {};

TEST_P(EbuChecks, CodeAndStoredValue)
{
    const CheckCase& c = GetParam();
    CEBUAttrHandler handler;
    std::string value = c.input;
    LogCapture log;
    EXPECT_EQ(c.code, handler.ValidateAttribute(c.attr, value));
    EXPECT_EQ(c.stored, value);
    EXPECT_TRUE(log.Lines().empty()) << "checks never log: " << log.Dump();
}

const CheckCase kCheckCases[] = {
    // Keywords are lower-cased in place, kept or not; a list is one value.
    {ATTR_TEXTALIGN, "CENTER", ERR_NONE, "center"},
    {ATTR_WRITINGMODE, "horizontal-tb", ERR_IGNORE, "horizontal-tb"},
    {ATTR_SPACE, "", ERR_IGNORE, ""},
    {ATTR_ROLE, "Extension-Role", ERR_NONE, "extension-role"},
    {ATTR_ROLE, "caption music", ERR_IGNORE, "caption music"},
    // Only media time can be followed; an empty agent or id refuses the document.
    {ATTR_TIMEBASE, "Media", ERR_NONE, "media"},
    {ATTR_TIMEBASE, "smpte", ERR_INVALID, "smpte"},
    {ATTR_AGENT, "  a1", ERR_NONE, "a1"},
    {ATTR_AGENT, " \t", ERR_INVALID, ""},
    {ATTR_ID, "", ERR_INVALID, ""},
    {ATTR_LANG, "", ERR_IGNORE, ""},
    {ATTR_STYLE, "s1 s2", ERR_NONE, "s1 s2"},
    {ATTR_FRAMERATE, " 30", ERR_NONE, "30"},
    {ATTR_FRAMERATE, "25.5", ERR_IGNORE, "25.5"},
    {ATTR_CELLRESOLUTION, " 1000 1001", ERR_NONE, "1000 1001"},
    {ATTR_CELLRESOLUTION, "32 0", ERR_IGNORE, "32 0"},
    {ATTR_FRAMERATEMULTIPLIER, "32 15 1", ERR_IGNORE, "32 15 1"},
    // Colours: codes and rgb()/rgba() without blanks; no names in this profile.
    {ATTR_BACKGROUNDCOLOR, "rgba(255,255,255,128)", ERR_NONE, "rgba(255,255,255,128)"},
    {ATTR_REGIONBACKGROUNDCOLOR, "  #000000", ERR_NONE, "#000000"},
    {ATTR_COLOR, "#fff", ERR_IGNORE, "#fff"},
    {ATTR_COLOR, "rgb(0, 0, 0)", ERR_IGNORE, "rgb(0, 0, 0)"},
    {ATTR_COLOR, "rgb(256,0,0)", ERR_IGNORE, "rgb(256,0,0)"},
    {ATTR_COLOR, "white", ERR_IGNORE, "white"},
    // Percentages and cells; a lone "%" is an empty number.
    {ATTR_LINEHEIGHT, "Normal", ERR_NONE, "normal"},
    {ATTR_LINEHEIGHT, "%", ERR_NONE, "%"},
    {ATTR_LINEHEIGHT, "-10%", ERR_IGNORE, "-10%"},
    {ATTR_FONTSIZE, "10px", ERR_IGNORE, "10px"},
    {ATTR_LINEPADDING, "0.5C", ERR_NONE, "0.5c"},
    {ATTR_LINEPADDING, "-0.5c", ERR_IGNORE, "-0.5c"},
    {ATTR_PADDING, "1% 2% 3% 4%", ERR_NONE, "1% 2% 3% 4%"},
    {ATTR_PADDING, "1% 2% 3% 4% 5%", ERR_IGNORE, "1% 2% 3% 4% 5%"},
    {ATTR_PADDING, "1%  2%", ERR_IGNORE, "1%  2%"},
    // Pixel geometry refuses the document.
    {ATTR_ORIGIN, "  10.5% 20%", ERR_NONE, "10.5% 20%"},
    {ATTR_EXTENT, "10%", ERR_INVALID, "10%"},
    {ATTR_EXTENT, "10px 20px", ERR_INVALID, "10px 20px"},
};

INSTANTIATE_TEST_SUITE_P(Table, EbuChecks, ::testing::ValuesIn(kCheckCases),
                         [](const ::testing::TestParamInfo<CheckCase>& info) {
                             return std::string(kTTMLAttrKeys[info.param.attr]) + "_" + std::to_string(info.index);
                         });

// ---- Clock times ------------------------------------------------------------------

// The check is read by hand; its answer must always be the clock-time
// pattern's, and the value is never changed.
TEST(ClockTime, CheckAgreesWithThePattern)
{
    static const boost::regex pattern("(\\d\\d+)(:)([0-5]\\d)(:)([0-5]\\d)((\\.\\d+)|((:)\\d+(\\.\\d+)?))?");
    std::vector<std::string> values = {
        "00:00:05", "00:00:05.402", "01:02:03.1234567", "123456:59:59", "00:00:05:12", "00:00:05:12.5",
        "0:00:05",  "00:60:05",     "00:00:60",         "00:00:5",      "00:00:050",   "00:00:05.",
        "00:00:05.1.2", "00:00:05.4s", "00:00:05 ",     " 00:00:05",    "00:00:0\xd9\xa5", "5.4s", "", "00:05",
        "00:00:05:", "00:00:05:.5", "00:00:05:12."};
    // Then near misses built from clock-time pieces, half of them well formed.
    std::mt19937 rng(20240611);
    const std::string pieces[] = {"0", "5", "6", "9", "00", "59", "60", "99", "123", ":", ".", "x", " ", ""};
    for (int i = 0; i < 20000; ++i) {
        std::string value;
        for (int k = 1 + static_cast<int>(rng() % 8); k > 0; --k)
            value += pieces[rng() % std::size(pieces)];
        if (rng() % 2 == 0)
            value = std::to_string(rng() % 200) + ":" + pieces[rng() % 9] + ":" + pieces[rng() % 9] +
                    (rng() % 2 ? ":" + pieces[rng() % 11] : "") + (rng() % 2 ? "." + pieces[rng() % 9] : "");
        values.push_back(value);
    }
    int accepted = 0;
    for (const std::string& value : values) {
        std::string copy = value;
        const int code = Exposed::t_ValidateClockTimeFormat(copy);
        ASSERT_EQ(boost::regex_match(value, pattern) ? ERR_NONE : ERR_IGNORE, code) << '"' << value << '"';
        ASSERT_EQ(value, copy);
        accepted += code == ERR_NONE;
    }
    EXPECT_GT(accepted, 300);
    EXPECT_GT(static_cast<int>(values.size()) - accepted, 300);
}

// ---- Fonts that failed to download ----------------------------------------------------

// Each report replaces the list whole. The source thread replaces it while
// the parser thread copies it; every copy must be one whole list (the thread
// sanitizer checks the lock).
TEST(AttrHandler, FailedFontReportsReplaceTheListWholeAcrossThreads)
{
    Exposed handler;
    handler.OnErrorDownloadableFonts({"a", "b"});
    handler.OnErrorDownloadableFonts({"c"});
    EXPECT_EQ((std::list<std::string>{"c"}), handler.t_GetDownloadableFontsInfo());
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
