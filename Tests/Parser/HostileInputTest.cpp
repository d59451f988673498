// Hostile documents, each made here when the test runs (none is stored), go
// through the parser's whole per-document path: each is either refused with
// the warning that names why, or accepted with the intervals it should have.

#include "LogCapture.h"
#include "ParserTestUtil.h"

#include <gtest/gtest.h>

using namespace ParserTest;

namespace {

using Intervals_t = std::vector<std::pair<unsigned long long, unsigned long long>>;

struct HostileCase {
    const char* name;
    std::string bytes;
    int transport;        // 0 IMSC 1 text, 2 EBU-TT-D
    int result;
    std::string warning;  // a warning containing this, when not empty
    Intervals_t intervals;  // of an accepted document
};

void PrintTo(const HostileCase& c, std::ostream* os)
{
    *os << c.name;
}

// `body` is the content of the div (region r1), `rootAttrs` and `divAttrs`
// extra attributes of tt and div.
std::string Imsc(const std::string& body, const std::string& rootAttrs = "", const std::string& divAttrs = "")
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
           "<tt xmlns=\"http://www.w3.org/ns/ttml\" xmlns:ttp=\"http://www.w3.org/ns/ttml#parameter\""
           " xmlns:tts=\"http://www.w3.org/ns/ttml#styling\" xmlns:foo=\"urn:example:foo\""
           " ttp:profile=\"http://www.w3.org/ns/ttml/profile/imsc1/text\" " +
           rootAttrs +
           "><head><layout><region xml:id=\"r1\" tts:origin=\"10% 10%\" tts:extent=\"80% 80%\"/></layout></head>"
           "<body><div region=\"r1\" " +
           divAttrs + ">" + body + "</div></body></tt>\n";
}

std::string Ebu(const std::string& p)
{
    DocParts d;
    d.body = "<div region=\"r1\">" + p + "</div>";
    return MakeDoc(d);
}

// Every element text reads one internal entity `refs` times, each `size`
// characters long once expanded.
std::string EntityBlowup(size_t size, int refs)
{
    std::string doc = Ebu("<p begin=\"00:00:01.000\" end=\"00:00:02.000\"></p>");
    std::string text;
    for (int i = 0; i < refs; ++i)
        text += "&big;";
    doc.replace(doc.find("</p>"), 0, text);
    doc.replace(doc.find("<tt "), 0, "<!DOCTYPE tt [<!ENTITY big \"" + std::string(size, 'x') + "\">]>\n");
    return doc;
}

std::string WithDoctype(const std::string& doctype)
{
    std::string doc = MakeDoc();
    return doc.replace(doc.find("<tt "), 0, doctype + "\n");
}

const char* const kSubset = "Document declares an internal DTD subset: refused";

const HostileCase kCases[] = {
    // 20 MB of text from a 20 KB document if the entity were expanded.
    {"InternalEntityBlowup", EntityBlowup(10000, 2000), 2, TTML::ERR_INVALID, kSubset, {}},
    {"InternalElementDeclaration", WithDoctype("<!DOCTYPE tt [<!ELEMENT tt ANY>]>"), 2, TTML::ERR_INVALID, kSubset, {}},
    {"DoctypeWithoutDeclarations", WithDoctype("<!DOCTYPE tt []>"), 2, TTML::ERR_NONE, "", {{1000, 2000}}},
    {"UnknownAttributesEbu", Ebu("<p foo=\"1\" xml:foo=\"2\" begin=\"00:00:01.000\" end=\"00:00:02.000\">x</p>"), 2,
     TTML::ERR_NONE, "", {{1000, 2000}}},
    {"UnknownAttributesImsc", Imsc("<p foo:bar=\"1\" unknown=\"2\" begin=\"1s\" end=\"2s\">x</p>"), 0, TTML::ERR_NONE,
     "", {{1000, 2000}}},
    // 2^64 ms is about 5.1e12 hours.
    {"EbuEndPast2To64Ms", Ebu("<p begin=\"00:00:01.000\" end=\"99999999999999:00:00.000\">x</p>"), 2,
     TTML::ERR_INVALID, "Time out of range in end: ", {}},
    {"ImscBeginPast2To64Ms", Imsc("<p begin=\"9999999999999h\" end=\"99999999999999h\">x</p>"), 0, TTML::ERR_INVALID,
     "Time out of range in begin: ", {}},
    {"ImscTicksPast2To64Ms", Imsc("<p begin=\"1s\" end=\"99999999999999999999999t\">x</p>"), 0, TTML::ERR_INVALID,
     "Time out of range in end: ", {}},
    {"ImscParentPlusChildBeginWraps", Imsc("<p begin=\"3000000000000h\" end=\"3000000000001h\">x</p>", "",
                                           "begin=\"3000000000000h\""),
     0, TTML::ERR_INVALID, "Time out of range in begin: parent begin 10800000000000000000 ms", {}},
    {"ImscLargeParentPlusChildBegin", Imsc("<p begin=\"1s\" end=\"2s\">x</p>", "", "begin=\"1000000000h\""), 0,
     TTML::ERR_NONE, "", {{3600000000001000ULL, 3600000000002000ULL}}},
    // A refused rate leaves the default: 1 tick, 30 frames per second.
    {"ImscTickRateZero", Imsc("<p begin=\"10t\" end=\"20t\">x</p>", "ttp:tickRate=\"0\""), 0, TTML::ERR_NONE,
     "ttp:tickRate must be above 0: 0; ignored", {{10000, 20000}}},
    {"ImscTickRateNegative", Imsc("<p begin=\"10t\" end=\"20t\">x</p>", "ttp:tickRate=\"-1\""), 0, TTML::ERR_NONE,
     "ttp:tickRate must be above 0: -1; ignored", {{10000, 20000}}},
    {"ImscFrameRateZero", Imsc("<p begin=\"45f\" end=\"00:00:02:15\">x</p>", "ttp:frameRate=\"0\""), 0,
     TTML::ERR_NONE, "ttp:frameRate must be a whole number above 0: 0; ignored", {{1500, 2500}}},
    {"ImscFrameRateNegative", Imsc("<p begin=\"45f\" end=\"60f\">x</p>", "ttp:frameRate=\"-25\""), 0,
     TTML::ERR_NONE, "ttp:frameRate must be a whole number above 0: -25; ignored", {{1500, 2000}}},
};

class HostileInput : public ::testing::TestWithParam<HostileCase> {};

TEST_P(HostileInput, RefusedWithReasonOrAcceptedWithIntervals)
{
    const HostileCase& c = GetParam();
    LogCapture log;
    Intervals_t got;
    int result = -1;
    {
        SyncParser p(1);
        result = p.Run(c.bytes, c.transport);
        if (p.Last())
            got = Intervals(*p.Last());
        EXPECT_EQ(p.delivered.Count(), c.result == TTML::ERR_NONE ? 1u : 0u);
    }
    EXPECT_EQ(result, c.result) << log.Dump();
    EXPECT_EQ(got, c.intervals);
    if (!c.warning.empty()) {
        EXPECT_TRUE(log.HasContaining(c.warning, DLOG_WARN)) << log.Dump();
    }
    // A read document leaves no reset of an empty reader behind, not even
    // when the parser goes away.
    if (!log.Has("Unable to create XML DOM!!!")) {
        EXPECT_FALSE(log.HasContaining("m_xmlDoc is NULL")) << log.Dump();
    }
}

INSTANTIATE_TEST_SUITE_P(Parser, HostileInput, ::testing::ValuesIn(kCases),
                         [](const ::testing::TestParamInfo<HostileCase>& info) { return info.param.name; });

}  // namespace
