// Documents the parser must refuse as a whole, each beside a valid twin, and
// byte-level inputs (encodings, empty and broken XML). A refused document
// never reaches the callback.

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
    std::vector<std::string> logged;  // exact messages
    std::string loggedPart;           // a message containing this, when not empty
};

DocParts WithHead(const std::string& head)
{
    DocParts d;
    d.head = head;
    return d;
}

DocParts WithLayout(const std::string& layout)
{
    DocParts d;
    d.layout = layout;
    return d;
}

DocParts WithRoot(const std::string& attrs)
{
    DocParts d;
    d.rootAttrs = attrs;
    return d;
}

DocParts WithBody(const std::string& body)
{
    DocParts d;
    d.body = body;
    return d;
}

std::string Version(const std::string& v)
{
    return "<metadata><ebuttm:documentMetadata><ebuttm:documentEbuttVersion>" + v +
           "</ebuttm:documentEbuttVersion></ebuttm:documentMetadata></metadata>";
}

std::string Region(const std::string& origin, const std::string& extent)
{
    return "<region xml:id=\"r1\" tts:origin=\"" + origin + "\" tts:extent=\"" + extent + "\"/>";
}

// A chain of `depth` nested elements (open/close) around a timed paragraph.
std::string DivChain(int depth)
{
    std::string s;
    for (int i = 0; i < depth; ++i)
        s += "<div>";
    s += "<p region=\"r1\" begin=\"00:00:01.000\" end=\"00:00:02.000\">deep</p>";
    for (int i = 0; i < depth; ++i)
        s += "</div>";
    return s;
}

std::string SpanChain(int depth)
{
    std::string s = "<div region=\"r1\"><p begin=\"00:00:01.000\" end=\"00:00:02.000\">";
    for (int i = 0; i < depth; ++i)
        s += "<span>";
    s += "deep";
    for (int i = 0; i < depth; ++i)
        s += "</span>";
    return s + "</p></div>";
}

// UTF-8 (one- and two-byte sequences only) to UTF-16 with a byte-order mark.
std::string Utf16(const std::string& utf8, bool bigEndian)
{
    std::string out = bigEndian ? std::string("\xFE\xFF", 2) : std::string("\xFF\xFE", 2);
    for (size_t i = 0; i < utf8.size(); ++i) {
        unsigned char c = utf8[i];
        unsigned cp = c;
        if (c >= 0xC0 && i + 1 < utf8.size())
            cp = ((c & 0x1F) << 6) | (static_cast<unsigned char>(utf8[++i]) & 0x3F);
        char hi = static_cast<char>(cp >> 8), lo = static_cast<char>(cp & 0xFF);
        out += bigEndian ? std::string{hi, lo} : std::string{lo, hi};
    }
    return out;
}

std::string Utf16Doc(bool bigEndian)
{
    DocParts d;
    d.body = "<div region=\"r1\"><p begin=\"00:00:01.000\" end=\"00:00:02.000\"><span>Caf\xC3\xA9</span></p></div>";
    std::string xml = MakeDoc(d);
    xml.replace(xml.find("UTF-8"), 5, "UTF-16");
    return Utf16(xml, bigEndian);
}

const std::string kDomFailed = "Unable to create XML DOM!!!";
const std::string kWalkFailed5 = "Error in processing XML DOM. Error code = 5";
const std::string kNoData = "NULL pointer found or invalid data";
const std::string kReadFailed = "ReadMemory failed";

const RefusalCase kCases[] = {
    {"Valid", MakeDoc(), TTML::ERR_NONE, {}, ""},
    {"NoRegion", MakeDoc(WithLayout("")), TTML::ERR_INVALID, {kWalkFailed5}, ""},
    {"EbuttVersion10", MakeDoc(WithHead(Version("v1.0"))), TTML::ERR_NONE, {}, ""},
    {"EbuttVersionEmpty", MakeDoc(WithHead(Version(""))), TTML::ERR_NONE, {}, ""},
    {"EbuttVersion20", MakeDoc(WithHead(Version("v2.0"))), TTML::ERR_INVALID, {kWalkFailed5}, ""},
    {"PercentRegion", MakeDoc(WithLayout(Region("5% 5%", "90% 90%"))), TTML::ERR_NONE, {}, ""},
    {"PixelOrigin", MakeDoc(WithLayout(Region("10px 10px", "80% 80%"))), TTML::ERR_INVALID, {kWalkFailed5}, ""},
    {"PixelExtent", MakeDoc(WithLayout(Region("10% 10%", "640px 100px"))), TTML::ERR_INVALID, {kWalkFailed5}, ""},
    // The EBU-TT-D dispatch turns a failed root into success: a pixel extent
    // or an smpte time base on tt only costs the root's parameters.
    {"PixelExtentOnRoot", MakeDoc(WithRoot("ttp:timeBase=\"media\" tts:extent=\"1920px 1080px\"")),
     TTML::ERR_NONE, {}, ""},
    {"MediaTimeBase", MakeDoc(WithRoot("ttp:timeBase=\"media\"")), TTML::ERR_NONE, {}, ""},
    {"SmpteTimeBase", MakeDoc(WithRoot("ttp:timeBase=\"smpte\"")), TTML::ERR_NONE, {}, ""},
    {"SmpteTimeBaseOnDiv",
     MakeDoc(WithBody("<div region=\"r1\" ttp:timeBase=\"smpte\"><p begin=\"00:00:01.000\" end=\"00:00:02.000\">"
                      "x</p></div>")),
     TTML::ERR_INVALID, {kWalkFailed5}, ""},
    {"EmptyId",
     MakeDoc(WithBody("<div region=\"r1\"><p xml:id=\"\" begin=\"00:00:01.000\" end=\"00:00:02.000\">x</p></div>")),
     TTML::ERR_INVALID, {kWalkFailed5}, ""},
    {"NoTimedElement", MakeDoc(WithBody("<div region=\"r1\"><p><span>untimed</span></p></div>")), TTML::ERR_INVALID,
     {kWalkFailed5}, ""},
    {"Malformed", MakeDoc().substr(0, MakeDoc().size() / 2), TTML::ERR_INVALID, {kReadFailed, kDomFailed}, ""},
    {"NotXml", "subtitles, but not XML", TTML::ERR_INVALID, {kReadFailed, kDomFailed}, ""},
    {"Empty", "", TTML::ERR_INVALID, {kNoData, kDomFailed}, ""},
    {"EbcdicSignature", std::string("\x4C\x6F\xA7\x94", 4) + "<tt/>", TTML::ERR_INVALID, {kReadFailed, kDomFailed},
     "xmlEncoding is not supported : "},
    {"Ucs4Signature", std::string("\x00\x00\x00\x3C\x00\x00\x00\x74", 8), TTML::ERR_INVALID,
     {kReadFailed, kDomFailed}, "xmlEncoding is not supported : "},
    {"Utf16LittleEndianWithBom", Utf16Doc(false), TTML::ERR_NONE, {}, ""},
    {"Utf16BigEndianWithBom", Utf16Doc(true), TTML::ERR_NONE, {}, ""},
    // Real documents nest far less; the walker refuses long chains rather
    // than recursing without bound. libxml2 itself stops at 256.
    {"ShallowDivChain", MakeDoc(WithBody(DivChain(20))), TTML::ERR_NONE, {}, ""},
    {"DeepDivChain", MakeDoc(WithBody(DivChain(200))), TTML::ERR_INVALID, {kWalkFailed5}, ""},
    {"ShallowSpanChain", MakeDoc(WithBody(SpanChain(20))), TTML::ERR_NONE, {}, ""},
    {"DeepSpanChain", MakeDoc(WithBody(SpanChain(200))), TTML::ERR_INVALID, {kWalkFailed5}, ""},
};

class DocumentRefusal : public ::testing::TestWithParam<RefusalCase> {};

TEST_P(DocumentRefusal, ResultAndWarnings)
{
    const RefusalCase& c = GetParam();
    SyncParser p(1);
    LogCapture log;
    int resolved = -2;
    int result = p.Run(c.bytes, 2, &resolved);

    EXPECT_EQ(result, c.result) << log.Dump();
    EXPECT_EQ(p.delivered.Count(), c.result == TTML::ERR_NONE ? 1u : 0u);
    for (const auto& line : c.logged)
        EXPECT_TRUE(log.Has(line, DLOG_WARN)) << "missing: " << line << "\n" << log.Dump();
    if (!c.loggedPart.empty()) {
        EXPECT_TRUE(log.HasContaining(c.loggedPart, DLOG_WARN)) << log.Dump();
    }
    // A document that never became a DOM is not resolved at all.
    if (c.logged.size() > 1 && c.logged.back() == kDomFailed)
        EXPECT_EQ(resolved, -1);
    else
        EXPECT_EQ(resolved, 2);
    // Whatever happened, the reader is empty again for the next document.
    EXPECT_EQ(p.Run(MakeDoc(), 2), TTML::ERR_NONE);
}

INSTANTIATE_TEST_SUITE_P(Parser, DocumentRefusal, ::testing::ValuesIn(kCases),
                         [](const ::testing::TestParamInfo<RefusalCase>& info) { return info.param.name; });

TEST(DocumentContent, Utf16TextArrivesAsUtf8)
{
    for (bool bigEndian : {false, true}) {
        SyncParser p(1);
        ASSERT_EQ(p.Run(Utf16Doc(bigEndian), 2), TTML::ERR_NONE);
        ASSERT_NE(p.Last(), nullptr);
        EXPECT_EQ(TextsIn(*p.Last(), {1000, 2000}), "Caf\xC3\xA9") << "big endian: " << bigEndian;
    }
}

// What a refused root costs: none of its parameters reach the document.
TEST(DocumentContent, FailedRootKeepsNoneOfItsParameters)
{
    SyncParser p(1);
    ASSERT_EQ(p.Run(MakeDoc(WithRoot("ttp:cellResolution=\"40 20\" ttp:timeBase=\"smpte\"")), 2), TTML::ERR_NONE);
    ASSERT_NE(p.Last(), nullptr);
    EXPECT_EQ(p.Last()->GetTimeBase(), "");
    EXPECT_EQ(p.Last()->GetCellResolution(), "32 15");

    ASSERT_EQ(p.Run(MakeDoc(WithRoot("ttp:cellResolution=\"40 20\" ttp:timeBase=\"media\"")), 2), TTML::ERR_NONE);
    EXPECT_EQ(p.Last()->GetTimeBase(), "media");
    EXPECT_EQ(p.Last()->GetCellResolution(), "40 20");
}

}  // namespace
