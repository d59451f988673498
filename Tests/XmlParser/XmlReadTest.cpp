// Reading documents into the reader: encodings, broken and oversized input,
// libxml2 messages, files, and the read / Reset lifecycle.

#include "CXmlParser.h"
#include "LogCapture.h"
#include "RowPrinter.h"

#include <gtest/gtest.h>

#include <dlfcn.h>
#include <unistd.h>

#include <atomic>
#include <cstring>
#include <fstream>
#include <string>
#include <thread>

namespace {
std::atomic<int> g_trimCalls{0};
}

// Counts the reader's heap trims; everything else goes to the C library.
extern "C" int malloc_trim(size_t pad) noexcept
{
    ++g_trimCalls;
    using TrimFn = int (*)(size_t);
    static TrimFn real = reinterpret_cast<TrimFn>(dlsym(RTLD_NEXT, "malloc_trim"));
    return real ? real(pad) : 0;
}

namespace {

using TTML::CXmlParser;
using TTML::XMLNODEPTR;

std::string EncodingLine(int number)
{
    return "XmlCharEncoding is: [" + std::to_string(number) +
           "] where 0 = None, 1 = UTF8, 2 = UTF16LE and 3 = UTF16BE";
}

// ASCII text in UTF-16, optionally behind its byte-order mark.
std::string Utf16(const std::string& ascii, bool bigEndian, bool bom)
{
    std::string out = bom ? (bigEndian ? "\xFE\xFF" : "\xFF\xFE") : "";
    for (char c : ascii)
        out += bigEndian ? std::string{'\0', c} : std::string{c, '\0'};
    return out;
}

const char kSmallDoc[] = "<tt><head/><body><div><p>Hello</p></div></body></tt>";

// tt/body/div/p, or null where the walk breaks.
XMLNODEPTR Paragraph(CXmlParser& reader)
{
    XMLNODEPTR node = reader.GetRootElement();
    for (const char* name : {"body", "div", "p"})
        node = reader.GetChildNodeByName(node, name);
    return node;
}

// The text of tt/body/div/p.
std::string FirstParagraphText(CXmlParser& reader)
{
    return reader.GetElementContent(reader.GetChildNodeList(Paragraph(reader)));
}

// --- Encodings -------------------------------------------------------------

struct EncodingCase {
    const char* name;
    std::string bytes;
    int number;     // what the detector reports
    bool accepted;  // a document is read
};

class XmlEncoding : public ::testing::TestWithParam<EncodingCase> {};

// Only UTF-8 and UTF-16 may reach libxml2; whatever is refused must leave the
// reader empty, and the detected number is always logged.
TEST_P(XmlEncoding, DetectedNumberDecidesWhetherTheDocumentIsRead)
{
    const EncodingCase& c = GetParam();
    LogCapture log;
    CXmlParser reader;
    EXPECT_EQ(c.accepted, reader.ReadMemory(c.bytes.data(), static_cast<int>(c.bytes.size()))) << log.Dump();
    EXPECT_TRUE(log.Has(EncodingLine(c.number), DLOG_INFO)) << log.Dump();
    EXPECT_EQ(c.accepted ? 0 : 1, log.Count("xmlEncoding is not supported : " + std::to_string(c.number), DLOG_WARN));
    if (c.accepted) {
        EXPECT_EQ("Hello", FirstParagraphText(reader));
        EXPECT_EQ("tt", reader.GetNodeName(reader.GetRootElement()));
    } else {
        EXPECT_EQ(nullptr, reader.GetRootElement());
    }
}

const std::string kDoc = kSmallDoc;
const std::string kDeclared = "<?xml version=\"1.0\"?>" + kDoc;

INSTANTIATE_TEST_SUITE_P(
    Signatures, XmlEncoding,
    ::testing::Values(EncodingCase{"PlainUtf8NoDeclaration", kDoc, 0, true},
                      EncodingCase{"Utf8Declaration", kDeclared, 1, true},
                      EncodingCase{"Utf8ByteOrderMark", "\xEF\xBB\xBF" + kDoc, 1, true},
                      EncodingCase{"Utf16LeByteOrderMark", Utf16(kDoc, false, true), 2, true},
                      EncodingCase{"Utf16BeByteOrderMark", Utf16(kDoc, true, true), 3, true},
                      EncodingCase{"Utf16LeDeclarationNoMark", Utf16(kDeclared, false, false), 2, true},
                      EncodingCase{"Ucs4Le", std::string("<\0\0\0t\0\0\0t\0\0\0/\0\0\0>\0\0\0", 20), 4, false},
                      EncodingCase{"Ebcdic", std::string("\x4C\x6F\xA7\x94\x93\x40", 6), 6, false}),
    TTMLTest::RowName());

TEST(XmlDeclaredEncoding, Latin1IsConvertedAndReported)
{
    CXmlParser reader;
    const std::string doc = "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><p>caf\xE9</p>";
    ASSERT_TRUE(reader.ReadMemory(doc.data(), static_cast<int>(doc.size())));
    EXPECT_EQ("ISO-8859-1", reader.GetEncoding());
    // Declared encoding: non-ASCII stays as UTF-8 text, not a character reference.
    EXPECT_EQ("caf\xC3\xA9", reader.GetElementContent(reader.GetRootElement()));
}

// --- Rejected input --------------------------------------------------------

const int kWhole = 1 << 30;

struct BadInputCase {
    const char* name;
    const char* bytes;  // null: a null pointer
    int length;         // kWhole: the length of `bytes`
    const char* why;    // the warning that starts with this
};

class XmlBadInput : public ::testing::TestWithParam<BadInputCase> {};

// A failed read leaves no document behind, so the next read needs no Reset
// and no pointer from the broken tree can leak out. libxml2 writes its
// messages to standard error unless told otherwise; here they must arrive as
// warnings of our own log instead.
TEST_P(XmlBadInput, IsRefusedAndLeavesTheReaderEmpty)
{
    const BadInputCase& c = GetParam();
    CXmlParser reader;
    {
        LogCapture log;
        ::testing::internal::CaptureStderr();
        EXPECT_FALSE(reader.ReadMemory(c.bytes, c.length == kWhole ? static_cast<int>(strlen(c.bytes)) : c.length));
        EXPECT_EQ(std::string::npos, ::testing::internal::GetCapturedStderr().find("parser error"));
        EXPECT_TRUE(log.HasContaining(c.why, DLOG_WARN)) << log.Dump();
        EXPECT_EQ(nullptr, reader.GetRootElement());
        EXPECT_TRUE(log.Has("m_xmlDoc is NULL", DLOG_WARN)) << log.Dump();
    }
    EXPECT_TRUE(reader.ReadMemory(kSmallDoc, sizeof(kSmallDoc) - 1));
    EXPECT_EQ("Hello", FirstParagraphText(reader));
}

INSTANTIATE_TEST_SUITE_P(
    Cases, XmlBadInput,
    ::testing::Values(BadInputCase{"EmptyBuffer", "", 0, "Invalid XML data (length 0)"},
                      BadInputCase{"NullPointer", nullptr, 10, "Invalid XML data (length 10)"},
                      BadInputCase{"NegativeLength", "<tt/>", -5, "Invalid XML data (length -5)"},
                      BadInputCase{"UnclosedElement", "<tt>\n<p>text</tt>", kWhole, "libxml2: line 2: "},
                      BadInputCase{"LengthCutsTag", "<tt></tt>", 6, "libxml2: line 1: "}),
    TTMLTest::RowName());

// One message per element must not turn into one log line per element.
TEST(XmlMessages, FloodOfMessagesIsCapped)
{
    std::string doc = "<tt>";
    for (int i = 0; i < 500; ++i)
        doc += "<x:p/>";  // undeclared prefix: a namespace error, yet well-formed
    doc += "</tt>";
    CXmlParser reader;
    LogCapture log;
    EXPECT_TRUE(reader.ReadMemory(doc.data(), static_cast<int>(doc.size())));
    int shown = log.CountContaining("libxml2: line", DLOG_WARN);
    EXPECT_GT(shown, 0) << log.Dump();
    EXPECT_LE(shown, 20) << log.Dump();
    EXPECT_TRUE(log.HasContaining("further messages not shown", DLOG_WARN)) << log.Dump();
}

// --- Files -----------------------------------------------------------------

class XmlFile : public ::testing::Test {
protected:
    void SetUp() override
    {
        char path[] = "/tmp/xmlreader-fileXXXXXX";
        int fd = mkstemp(path);
        ASSERT_GE(fd, 0);
        close(fd);
        m_path = path;
    }
    void TearDown() override { unlink(m_path.c_str()); }
    void Write(const std::string& text) { std::ofstream(m_path, std::ios::binary) << text; }

    std::string m_path;
};

// Files keep their blanks out but CDATA as a node of its own: not walked, no
// text node, yet its text is part of the element's content.
TEST_F(XmlFile, ReadsWithoutMergingCdata)
{
    Write("<tt>\n  <head/>\n  <body><div><p><![CDATA[1 < 2]]></p></div></body>\n</tt>\n");
    CXmlParser reader;
    ASSERT_TRUE(reader.ReadFile(m_path));
    EXPECT_EQ("head", reader.GetNodeName(reader.GetChildNodeList(reader.GetRootElement())));
    XMLNODEPTR p = Paragraph(reader);
    ASSERT_NE(nullptr, p);
    EXPECT_EQ(nullptr, reader.GetChildNodeList(p));
    EXPECT_FALSE(reader.IsTextNode(p->children));
    EXPECT_EQ("1 &lt; 2", reader.GetElementContent(p));
}

// The size limit is checked before anything is parsed, from memory and file.
TEST_F(XmlFile, OversizedDocumentIsRefused)
{
    std::string doc = "<tt><p>" + std::string(CXmlParser::kMaxDocumentBytes, 'a') + "</p></tt>";
    ASSERT_EQ(0, truncate(m_path.c_str(), CXmlParser::kMaxDocumentBytes + 1));  // sparse: costs no disk
    CXmlParser reader;
    LogCapture log;
    EXPECT_FALSE(reader.ReadMemory(doc.data(), static_cast<int>(doc.size())));
    EXPECT_TRUE(log.HasContaining("XML data too large", DLOG_WARN)) << log.Dump();
    EXPECT_FALSE(reader.ReadFile(m_path));
    EXPECT_TRUE(log.HasContaining("XML file too large", DLOG_WARN)) << log.Dump();
    // Just below the limit is still read.
    doc.resize(CXmlParser::kMaxDocumentBytes - 9);
    doc += "</p></tt>";
    EXPECT_TRUE(reader.ReadMemory(doc.data(), static_cast<int>(doc.size())));
}

TEST_F(XmlFile, MissingOrBrokenFileIsFalse)
{
    CXmlParser reader;
    LogCapture log;
    EXPECT_FALSE(reader.ReadFile(m_path + ".missing"));
    EXPECT_FALSE(reader.ReadFile(""));
    Write("<tt><p></tt>");
    EXPECT_FALSE(reader.ReadFile(m_path));
    EXPECT_FALSE(reader.ReadFile("/tmp"));
    EXPECT_EQ(nullptr, reader.GetRootElement());
}

// --- Lifecycle -------------------------------------------------------------

using XmlLifecycleDeathTest = XmlFile;

TEST_F(XmlLifecycleDeathTest, ReadingOverALoadedDocumentIsFatal)
{
    Write(kSmallDoc);
    EXPECT_DEATH(
        {
            CXmlParser reader;
            reader.ReadMemory(kSmallDoc, sizeof(kSmallDoc) - 1);
            reader.ReadMemory(kSmallDoc, sizeof(kSmallDoc) - 1);
        },
        "[Aa]ssertion failed: !m_xmlDoc");
    EXPECT_DEATH(
        {
            CXmlParser reader;
            reader.ReadMemory(kSmallDoc, sizeof(kSmallDoc) - 1);
            reader.ReadFile(m_path);
        },
        "[Aa]ssertion failed: !m_xmlDoc");
}

TEST(XmlLifecycle, ResetFreesTheDocumentAndAlwaysTrimsTheHeap)
{
    CXmlParser reader;
    LogCapture log;
    int trims = g_trimCalls;
    reader.Reset();
    EXPECT_EQ(trims + 1, g_trimCalls);
    EXPECT_EQ(1, log.Count("m_xmlDoc is NULL", DLOG_WARN)) << log.Dump();

    ASSERT_TRUE(reader.ReadMemory(kSmallDoc, sizeof(kSmallDoc) - 1));
    log.Clear();
    reader.Reset();
    EXPECT_EQ(trims + 2, g_trimCalls);
    EXPECT_FALSE(log.Has("m_xmlDoc is NULL")) << log.Dump();
    EXPECT_EQ(nullptr, reader.GetRootElement());
    // Empty again, so a second read is allowed.
    EXPECT_TRUE(reader.ReadMemory(kSmallDoc, sizeof(kSmallDoc) - 1));
    EXPECT_EQ("Hello", FirstParagraphText(reader));
}

// Several readers may live in one process, on different threads, and one
// going away must not pull libxml2 from under the others.
TEST(XmlLifecycle, ReadersOnSeveralThreadsStayIndependent)
{
    LogCapture log;
    std::atomic<int> wrong{0};
    auto work = [&wrong](int rounds) {
        for (int i = 0; i < rounds; ++i) {
            CXmlParser reader;
            if (!reader.ReadMemory(kSmallDoc, sizeof(kSmallDoc) - 1) || FirstParagraphText(reader) != "Hello")
                ++wrong;
            reader.Reset();
            const char bad[] = "<tt><p></tt>";
            if (reader.ReadMemory(bad, sizeof(bad) - 1))
                ++wrong;
        }
    };
    std::thread a(work, 50);
    std::thread b(work, 50);
    a.join();
    b.join();
    EXPECT_EQ(0, wrong.load());
    EXPECT_GE(log.CountContaining("libxml2: line 1: ", DLOG_WARN), 100);
    CXmlParser later;
    EXPECT_TRUE(later.ReadMemory(kSmallDoc, sizeof(kSmallDoc) - 1));
}

}  // namespace
