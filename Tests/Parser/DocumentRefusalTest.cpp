// What the parser does with a document that fails on the way: bytes that never
// become a DOM and a walk that refuses the document never reach the callback,
// and the reader is ready for the next one. Which documents each profile
// refuses is the profile tests' business.

#include "LogCapture.h"
#include "ParserTestUtil.h"
#include "RowPrinter.h"

#include <gtest/gtest.h>

using namespace ParserTest;

namespace {

struct RefusalCase {
    const char* name;
    std::string bytes;
    int result;
    std::vector<std::string> logged;  // warnings, exact messages
};

DocParts NoRegion()
{
    DocParts d;
    d.layout.clear();
    return d;
}

const std::string kDomFailed = "Unable to create XML DOM!!!";

const RefusalCase kCases[] = {
    {"Valid", MakeDoc(), TTML::ERR_NONE, {}},
    {"WalkRefuses", MakeDoc(NoRegion()), TTML::ERR_INVALID, {"Error in processing XML DOM. Error code = 5"}},
    {"Malformed", MakeDoc().substr(0, MakeDoc().size() / 2), TTML::ERR_INVALID, {"ReadMemory failed", kDomFailed}},
    // Never handed to the reader.
    {"Empty", "", TTML::ERR_INVALID, {"NULL pointer found or invalid data", kDomFailed}},
};

class DocumentRefusal : public ::testing::TestWithParam<RefusalCase> {};

TEST_P(DocumentRefusal, ResultAndWarnings)
{
    const RefusalCase& c = GetParam();
    SyncParser p(1);
    LogCapture log;
    int resolved = -2;
    EXPECT_EQ(p.Run(c.bytes, 2, &resolved), c.result) << log.Dump();
    EXPECT_EQ(p.delivered.Count(), c.result == TTML::ERR_NONE ? 1u : 0u);
    for (const auto& line : c.logged)
        EXPECT_TRUE(log.Has(line, DLOG_WARN)) << "missing: " << line << "\n" << log.Dump();
    // A document that never became a DOM is not resolved at all.
    EXPECT_EQ(resolved, !c.logged.empty() && c.logged.back() == kDomFailed ? -1 : 2);
    // Whatever happened, the reader is empty again for the next document.
    EXPECT_EQ(p.Run(MakeDoc(), 2), TTML::ERR_NONE);
}

INSTANTIATE_TEST_SUITE_P(Parser, DocumentRefusal, ::testing::ValuesIn(kCases), TTMLTest::RowName());

// A document whose text is "Café", in UTF-16 with a byte-order mark.
TEST(DocumentContent, Utf16TextArrivesAsUtf8)
{
    DocParts d;
    d.body = "<div region=\"r1\"><p begin=\"00:00:01.000\" end=\"00:00:02.000\"><span>Caf\xE9</span></p></div>";
    std::string xml = MakeDoc(d);
    xml.replace(xml.find("UTF-8"), 5, "UTF-16");
    for (bool bigEndian : {false, true}) {
        std::string utf16 = bigEndian ? "\xFE\xFF" : "\xFF\xFE";
        for (char c : xml)  // Latin-1: every byte is its own code point
            utf16 += bigEndian ? std::string{'\0', c} : std::string{c, '\0'};
        SyncParser p(1);
        ASSERT_EQ(p.Run(utf16, 2), TTML::ERR_NONE);
        EXPECT_EQ(TextsIn(*p.Last(), {1000, 2000}), "Caf\xC3\xA9") << "big endian: " << bigEndian;
    }
}

// What a refused root costs: none of its parameters reach the document.
TEST(DocumentContent, FailedRootKeepsNoneOfItsParameters)
{
    SyncParser p(1);
    DocParts d;
    d.rootAttrs = "ttp:cellResolution=\"40 20\" ttp:timeBase=\"smpte\"";
    ASSERT_EQ(p.Run(MakeDoc(d), 2), TTML::ERR_NONE);
    EXPECT_EQ(p.Last()->GetTimeBase(), "");
    EXPECT_EQ(p.Last()->GetCellResolution(), "32 15");

    d.rootAttrs = "ttp:cellResolution=\"40 20\" ttp:timeBase=\"media\"";
    ASSERT_EQ(p.Run(MakeDoc(d), 2), TTML::ERR_NONE);
    EXPECT_EQ(p.Last()->GetTimeBase(), "media");
    EXPECT_EQ(p.Last()->GetCellResolution(), "40 20");
}

}  // namespace
