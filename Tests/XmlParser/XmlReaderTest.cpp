// The XML reader: encodings, broken and oversized input, libxml2 messages,
// files, the read / Reset lifecycle, and walking a loaded document (which
// nodes are visited, names, text content, attributes, null pointers).

#include "CXmlParser.h"
#include "LogCapture.h"

#include <gtest/gtest.h>
#include <libxml/tree.h>

#include <dlfcn.h>
#include <unistd.h>

#include <atomic>
#include <cstring>
#include <fstream>
#include <string>
#include <thread>
#include <tuple>
#include <utility>

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
using TTML::XMLATTRPTR;
using TTML::XMLNODEPTR;

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

// Only UTF-8 and UTF-16 may reach libxml2; whatever is refused leaves the
// reader empty. Each row: what the detector reports, then the text read.
TEST(XmlEncoding, DetectedNumberDecidesWhetherTheDocumentIsRead)
{
    const std::string doc = kSmallDoc, declared = "<?xml version=\"1.0\"?>" + doc;
    const std::pair<std::string, const char*> inputs[] = {
        {doc, "0 Hello"},
        {declared, "1 Hello"},
        {"\xEF\xBB\xBF" + doc, "1 Hello"},
        {Utf16(doc, false, true), "2 Hello"},
        {Utf16(doc, true, true), "3 Hello"},
        {Utf16(declared, false, false), "2 Hello"},
        {std::string("<\0\0\0t\0\0\0t\0\0\0/\0\0\0>\0\0\0", 20), "4 refused"},
        {std::string("\x4C\x6F\xA7\x94\x93\x40", 6), "6 refused"},
    };
    for (const auto& in : inputs) {
        LogCapture log;
        CXmlParser reader;
        const bool read = reader.ReadMemory(in.first.data(), static_cast<int>(in.first.size()));
        std::string got = read ? FirstParagraphText(reader) : "refused";
        for (int n = 0; n < 10; ++n) {
            if (log.Has("XmlCharEncoding is: [" + std::to_string(n) +
                            "] where 0 = None, 1 = UTF8, 2 = UTF16LE and 3 = UTF16BE", DLOG_INFO))
                got = std::to_string(n) + " " + got;
        }
        EXPECT_EQ(in.second, got);
        EXPECT_EQ(read, reader.GetRootElement() != nullptr) << in.second;
        EXPECT_EQ(read ? 0 : 1, log.CountContaining("xmlEncoding is not supported : ", DLOG_WARN)) << in.second;
    }
}

// --- Rejected input --------------------------------------------------------

// A failed read leaves no document behind, so the next read needs no Reset
// and no pointer from the broken tree can leak out. libxml2 writes its
// messages to standard error unless told otherwise; here they must arrive as
// warnings of our own log instead. Each row: bytes (null: a null pointer),
// length, the warning that starts with this.
TEST(XmlBadInput, IsRefusedAndLeavesTheReaderEmpty)
{
    const std::tuple<const char*, int, const char*> inputs[] = {
        {"", 0, "Invalid XML data (length 0)"},
        {nullptr, 10, "Invalid XML data (length 10)"},
        {"<tt/>", -5, "Invalid XML data (length -5)"},
        {"<tt>\n<p>text</tt>", 17, "libxml2: line 2: "},
        {"<tt></tt>", 6, "libxml2: line 1: "},  // the length cuts the end tag
    };
    for (const auto& in : inputs) {
        CXmlParser reader;
        {
            LogCapture log;
            ::testing::internal::CaptureStderr();
            EXPECT_FALSE(reader.ReadMemory(std::get<0>(in), std::get<1>(in)));
            EXPECT_EQ(std::string::npos, ::testing::internal::GetCapturedStderr().find("parser error"));
            EXPECT_TRUE(log.HasContaining(std::get<2>(in), DLOG_WARN)) << log.Dump();
            EXPECT_EQ(nullptr, reader.GetRootElement());
            EXPECT_TRUE(log.Has("m_xmlDoc is NULL", DLOG_WARN)) << log.Dump();
        }
        EXPECT_TRUE(reader.ReadMemory(kSmallDoc, sizeof(kSmallDoc) - 1));
        EXPECT_EQ("Hello", FirstParagraphText(reader));
    }
}

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
// text node, yet its text is part of the element's content. A missing,
// broken or non-file path is false.
TEST_F(XmlFile, ReadsWithoutMergingCdata)
{
    CXmlParser reader;
    for (const std::string& path : {m_path + ".missing", std::string(), std::string("/tmp"), m_path})
        EXPECT_FALSE(reader.ReadFile(path)) << path;  // m_path is still empty
    Write("<tt>\n  <head/>\n  <body><div><p><![CDATA[1 < 2]]></p></div></body>\n</tt>\n");
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

// --- Lifecycle -------------------------------------------------------------

using XmlLifecycleDeathTest = XmlFile;

TEST_F(XmlLifecycleDeathTest, ReadingOverALoadedDocumentIsFatal)
{
    Write(kSmallDoc);
    for (bool fromFile : {false, true}) {
        EXPECT_DEATH(
            {
                CXmlParser reader;
                reader.ReadMemory(kSmallDoc, sizeof(kSmallDoc) - 1);
                fromFile ? reader.ReadFile(m_path) : reader.ReadMemory(kSmallDoc, sizeof(kSmallDoc) - 1);
            },
            "[Aa]ssertion failed: !m_xmlDoc");
    }
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

// A reader keeps its parser context from one document to the next, and
// starts a new one after a document of many names: each read stands alone.
TEST(XmlLifecycle, DocumentsInARowReadAlike)
{
    std::string many = "<tt>";
    for (int i = 0; i < 9000; ++i)
        many += "<e" + std::to_string(i) + "/>";
    many += "</tt>";
    CXmlParser reader;
    for (const std::string& doc : {std::string(kSmallDoc), many, std::string("<tt><p>"), std::string(kSmallDoc)}) {
        LogCapture log;
        const bool read = reader.ReadMemory(doc.data(), static_cast<int>(doc.size()));
        EXPECT_EQ(doc != "<tt><p>", read) << doc.substr(0, 20);
        if (doc == kSmallDoc) {
            EXPECT_EQ("Hello", FirstParagraphText(reader));
        } else if (doc == many) {
            EXPECT_EQ("e8999", reader.GetNodeName(reader.GetRootElement()->last));
        }
        reader.Reset();
    }
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

// --- Walking the tree ------------------------------------------------------

// A reader holding one document.
struct Doc {
    CXmlParser reader;
    XMLNODEPTR root = nullptr;

    explicit Doc(const std::string& xml)
    {
        EXPECT_TRUE(reader.ReadMemory(xml.data(), static_cast<int>(xml.size()))) << xml;
        root = reader.GetRootElement();
    }

    // "parent:child,child" with "#text" for text nodes; element children only when `elements`.
    std::string Walk(XMLNODEPTR parent, bool elements)
    {
        std::string out = reader.GetNodeName(parent) + ":";
        XMLNODEPTR n = elements ? reader.GetChildElementList(parent) : reader.GetChildNodeList(parent);
        for (; n; n = elements ? reader.GetNextElementNode(n) : reader.GetNextNode(n))
            out += std::string(out.back() == ':' ? "" : ",") + (reader.IsTextNode(n) ? "#" : "") +
                   reader.GetNodeName(n);
        return out;
    }

    std::string Attributes()
    {
        std::string out;
        for (XMLATTRPTR a = reader.GetAttributeList(root); a; a = reader.GetNextAttr(a))
            out += reader.GetAttrName(a) + "=" + reader.GetAttrValue(a) + ";";
        return out;
    }
};

// Blank text between elements, comments and processing instructions are
// never walked; CDATA arrives merged into text; names have no prefix.
TEST(XmlTree, WalksElementsAndTextInDocumentOrder)
{
    const std::pair<const char*, const char*> docs[] = {
        {"<tt>\n  <head>\n    <styling/>\n  </head>\n  <body/>\n</tt>", "tt:head,body tt:head,body"},
        {"<tt><!-- c --><?pi x?><head/>one<!-- c --><body/>two<?pi y?></tt>", "tt:head,#text,body,#text tt:head,body"},
        {"<p><![CDATA[1 < 2]]></p>", "p:#text p:"},
        {"<p>a <span>b</span> c<br/>d</p>", "p:#text,span,#text,br,#text p:span,br"},
        {"<tt:tt xmlns:tt=\"http://www.w3.org/ns/ttml\"><tt:head/><tt:body><tt:div/></tt:body></tt:tt>",
         "tt:head,body tt:head,body"},
    };
    for (const auto& d : docs) {
        Doc doc(d.first);
        EXPECT_EQ(d.second, doc.Walk(doc.root, false) + " " + doc.Walk(doc.root, true)) << d.first;
    }
}

// The root's children, then head's: text "HEAD" and a comment come first and
// must not match; prefixes and letter case play no part.
TEST(XmlTree, ChildByNameMatchesLocalNameIgnoringCase)
{
    Doc doc("<tt:tt xmlns:tt=\"http://www.w3.org/ns/ttml\" xmlns:ebuttm=\"urn:ebu:tt:metadata\">"
            "HEAD<!--head--><tt:head><ebuttm:documentMetadata/><tt:metadata/></tt:head>"
            "<tt:body><tt:div/></tt:body><tt:headz/></tt:tt>");
    XMLNODEPTR head = doc.reader.GetChildNodeByName(doc.root, "head");
    std::string found;
    for (const char* name : {"HEAD", "HEADZ", "Body", "DOCUMENTMETADATA", "tt:head", "hea", "div", "text", ""}) {
        XMLNODEPTR n = doc.reader.GetChildNodeByName(doc.root, name);
        n = n ? n : doc.reader.GetChildNodeByName(head, name);
        found += (n ? doc.reader.GetNodeName(n) : "-") + " ";
    }
    EXPECT_EQ("head headz body documentMetadata - - - - - ", found);
}

// The text goes on into markup, so the special characters must come back
// escaped; entities are resolved, child elements' text is not included.
// Text nodes (`true`: the root's first walked child) that need no escaping
// skip the encoder.
TEST(XmlTree, ContentIsTheDirectTextReEscaped)
{
    const std::tuple<const char*, bool, const char*> cases[] = {
        {"<p>a &lt; b</p>", false, "a &lt; b"},
        {"<p><![CDATA[1 < 2]]></p>", true, "1 &lt; 2"},
        {"<p>x &amp; y &gt; z</p>", false, "x &amp; y &gt; z"},
        {"<p>\"q\" &apos;s&apos;</p>", false, "\"q\" 's'"},
        {"<p>caf\xC3\xA9</p>", false, "caf&#xE9;"},
        {"<p>caf\xC3\xA9</p>", true, "caf&#xE9;"},
        // Declared encoding: non-ASCII stays as UTF-8 text, not a character reference.
        {"<?xml version=\"1.0\" encoding=\"UTF-8\"?><p>caf\xC3\xA9</p>", false, "caf\xC3\xA9"},
        {"<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><p>caf\xE9</p>", false, "caf\xC3\xA9"},
        {"<?xml version=\"1.0\" encoding=\"UTF-8\"?><p>caf\xC3\xA9 &amp;</p>", true, "caf\xC3\xA9 &amp;"},
        {"<p>a&#13;b\tc</p>", true, "a&#13;b\tc"},
        {"<p>a<span>b</span>c</p>", false, "ac"},
        {"<p/>", false, ""},
        {"<p xml:space=\"preserve\"> </p>", false, " "},
    };
    for (const auto& c : cases) {
        Doc doc(std::get<0>(c));
        XMLNODEPTR node = std::get<1>(c) ? doc.reader.GetChildNodeList(doc.root) : doc.root;
        EXPECT_EQ(std::get<2>(c), doc.reader.GetElementContent(node)) << std::get<0>(c);
    }
}

// --- Attributes ------------------------------------------------------------

// Attribute value normalisation turns the tab in `blanks` into a space.
const char kAttrDoc[] = "<tt xmlns=\"http://www.w3.org/ns/ttml\" xmlns:ttp=\"http://www.w3.org/ns/ttml#parameter\" "
                        "ttp:profile=\"urn:ebu:tt:distribution:2014-01\" id=\"a&amp;b\" refs=\"&#60;&#x41;\" "
                        "empty=\"\" blanks=\" a\tb \" ttp:timeBase=\"media\"/>";

// In document order by local name; looked up by local name whatever the
// namespace, so "profile" finds ttp:profile; an absent name ("!") leaves the
// caller's value alone.
TEST(XmlTree, AttributesComeInOrderAndAreFoundByLocalName)
{
    Doc doc(kAttrDoc);
    EXPECT_EQ("profile=urn:ebu:tt:distribution:2014-01;id=a&b;refs=<A;empty=;blanks= a b ;timeBase=media;",
              doc.Attributes());
    std::string found;
    for (std::string name : {"profile", "timeBase", "id", "refs", "blanks", "empty", "Profile", "ttp:profile", ""}) {
        std::string value = "old";
        found += (doc.reader.GetAttrValue(doc.root, name, value) ? "" : "!") + value + "|";
    }
    EXPECT_EQ("urn:ebu:tt:distribution:2014-01|media|a&b|<A| a b ||!old|!old|!old|", found);
}

// Trees changed after the read are walked as libxml2 would: attributes
// without a value node (the parser always makes one) are passed over, and a
// replaced or split value is still looked up.
TEST(XmlTree, AttributesEditedAfterTheReadAreReadAsLibxml2Does)
{
    Doc doc("<tt/>");
    for (const char* name : {"bare1", "a", "bare2", "b", "bare3"})
        xmlNewProp(doc.root, BAD_CAST name, name[0] == 'b' && name[1] == 'a' ? nullptr : BAD_CAST "x");
    ASSERT_EQ(nullptr, doc.root->properties->children);
    xmlSetProp(doc.root, BAD_CAST "a", BAD_CAST "second");
    xmlAddChild(reinterpret_cast<xmlNodePtr>(xmlHasProp(doc.root, BAD_CAST "b")), xmlNewText(BAD_CAST "y"));
    std::string a = "a", b = "b", first, second;
    EXPECT_TRUE(doc.reader.GetAttrValue(doc.root, a, first) && doc.reader.GetAttrValue(doc.root, b, second));
    EXPECT_EQ("second xy", first + " " + second);
    EXPECT_EQ("a=second;b=xy;", doc.Attributes());
}

// A released subtree leaves its siblings walkable; the root, the document
// node and nodes of another document stay, with a warning.
TEST(XmlTree, ReleasedSubtreeIsGoneAndTheRestStays)
{
    Doc doc("<tt><body><p>a<span>b</span></p><p>c</p></body></tt>");
    Doc other("<tt><p/></tt>");
    XMLNODEPTR body = doc.reader.GetChildElementList(doc.root);
    LogCapture log;
    doc.reader.ReleaseNode(doc.reader.GetChildElementList(body));
    EXPECT_EQ("body:p", doc.Walk(body, false));
    EXPECT_EQ("c", doc.reader.GetElementContent(doc.reader.GetChildElementList(body)));
    EXPECT_EQ(0, log.CountContaining("", DLOG_WARN)) << log.Dump();

    for (XMLNODEPTR kept : {doc.root, doc.root->parent, other.reader.GetChildElementList(other.root)})
        doc.reader.ReleaseNode(kept);
    doc.reader.ReleaseNode(nullptr);
    EXPECT_EQ("tt:body", doc.Walk(doc.root, false));
    EXPECT_EQ("tt:p", other.Walk(other.root, false));
    EXPECT_EQ(3, log.CountContaining("is not releasable; kept until Reset", DLOG_WARN)) << log.Dump();
    EXPECT_EQ(1, log.Count("pNodePtr is NULL", DLOG_WARN)) << log.Dump();
}

// --- Null pointers ---------------------------------------------------------

// Each accessor refuses a null pointer (or a missing document) with an empty
// result; those whose pointer has a name warn once, naming it.
TEST(XmlNullArgument, GivesEmptyResultsAndNamesThePointer)
{
    CXmlParser r;
    LogCapture log;
    std::string name = "id", value = "old";
    ::testing::internal::CaptureStdout();
    r.Dump();
    EXPECT_EQ("", ::testing::internal::GetCapturedStdout());
    EXPECT_EQ(nullptr, r.GetRootElement());
    EXPECT_EQ("", r.GetEncoding());
    EXPECT_EQ(nullptr, r.GetAttributeList(nullptr));
    EXPECT_FALSE(r.GetAttrValue(static_cast<XMLNODEPTR>(nullptr), name, value));
    EXPECT_EQ("old", value);
    EXPECT_EQ("", r.GetElementContent(nullptr));
    EXPECT_EQ(nullptr, r.GetNextAttr(nullptr));
    EXPECT_EQ("", r.GetAttrName(nullptr));
    EXPECT_EQ("", r.GetAttrValue(static_cast<XMLATTRPTR>(nullptr)));
    EXPECT_FALSE(r.GetChildElementList(nullptr) || r.GetNextElementNode(nullptr) || r.GetChildNodeList(nullptr) ||
                 r.GetNextNode(nullptr) || r.GetChildNodeByName(nullptr, "head") || r.IsTextNode(nullptr));
    EXPECT_EQ("", r.GetNodeName(nullptr));
    EXPECT_EQ("m_xmlDoc is NULL\nm_xmlDoc is NULL\nm_xmlDoc is NULL\npNodePtr is NULL\npNodePtr is NULL\n"
              "pNodePtr is NULL\nattrPtr is NULL\nattrPtr is NULL\n",
              log.Dump());
    EXPECT_EQ(8, log.CountContaining("", DLOG_WARN));
}

}  // namespace
