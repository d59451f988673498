// Walking a loaded document: which nodes are visited, names, text content and
// attributes, and what null pointers give.

#include "CXmlParser.h"
#include "LogCapture.h"
#include "RowPrinter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

namespace {

using TTML::CXmlParser;
using TTML::XMLATTRPTR;
using TTML::XMLNODEPTR;

class XmlTree : public ::testing::Test {
protected:
    XMLNODEPTR Load(const std::string& xml)
    {
        EXPECT_TRUE(m_reader.ReadMemory(xml.data(), static_cast<int>(xml.size()))) << xml;
        return m_reader.GetRootElement();
    }

    // "name" for elements, "#text" for text nodes.
    std::string Describe(XMLNODEPTR node)
    {
        return m_reader.IsTextNode(node) ? "#" + m_reader.GetNodeName(node) : m_reader.GetNodeName(node);
    }

    std::vector<std::string> Nodes(XMLNODEPTR parent)
    {
        std::vector<std::string> out;
        for (XMLNODEPTR n = m_reader.GetChildNodeList(parent); n; n = m_reader.GetNextNode(n))
            out.push_back(Describe(n));
        return out;
    }

    std::vector<std::string> Elements(XMLNODEPTR parent)
    {
        std::vector<std::string> out;
        for (XMLNODEPTR n = m_reader.GetChildElementList(parent); n; n = m_reader.GetNextElementNode(n))
            out.push_back(m_reader.GetNodeName(n));
        return out;
    }

    std::vector<std::string> Attributes(XMLNODEPTR node)
    {
        std::vector<std::string> out;
        for (XMLATTRPTR a = m_reader.GetAttributeList(node); a; a = m_reader.GetNextAttr(a))
            out.push_back(m_reader.GetAttrName(a) + "=" + m_reader.GetAttrValue(a));
        return out;
    }

    CXmlParser m_reader;
};

using Names = std::vector<std::string>;

// --- Which nodes are walked ------------------------------------------------

TEST_F(XmlTree, BlankTextBetweenElementsIsAbsent)
{
    XMLNODEPTR root = Load("<tt>\n  <head>\n    <styling/>\n  </head>\n  <body/>\n</tt>");
    EXPECT_EQ((Names{"head", "body"}), Nodes(root));
    EXPECT_EQ((Names{"styling"}), Nodes(m_reader.GetChildNodeByName(root, "head")));
}

TEST_F(XmlTree, CommentsAndProcessingInstructionsAreSkipped)
{
    XMLNODEPTR root = Load("<tt><!-- c --><?pi x?><head/>one<!-- c --><body/>two<?pi y?></tt>");
    EXPECT_EQ((Names{"head", "#text", "body", "#text"}), Nodes(root));
    EXPECT_EQ((Names{"head", "body"}), Elements(root));
    XMLNODEPTR body = m_reader.GetChildNodeByName(root, "body");
    EXPECT_EQ(nullptr, m_reader.GetNextElementNode(body));
    EXPECT_EQ("two", m_reader.GetElementContent(m_reader.GetNextNode(body)));
}

TEST_F(XmlTree, CdataIsMergedIntoText)
{
    XMLNODEPTR p = Load("<p><![CDATA[1 < 2]]></p>");
    EXPECT_EQ((Names{"#text"}), Nodes(p));
    EXPECT_EQ("1 &lt; 2", m_reader.GetElementContent(m_reader.GetChildNodeList(p)));
}

TEST_F(XmlTree, TextOfMixedContentKeepsItsPlace)
{
    XMLNODEPTR p = Load("<p>a <span>b</span> c<br/>d</p>");
    EXPECT_EQ((Names{"#text", "span", "#text", "br", "#text"}), Nodes(p));
    EXPECT_EQ((Names{"span", "br"}), Elements(p));
    EXPECT_TRUE(m_reader.IsTextNode(m_reader.GetChildNodeList(p)));
    EXPECT_FALSE(m_reader.IsTextNode(p));
}

TEST_F(XmlTree, PrefixedElementsGiveLocalNames)
{
    XMLNODEPTR root = Load("<tt:tt xmlns:tt=\"http://www.w3.org/ns/ttml\"><tt:head/><tt:body>"
                           "<tt:div><tt:p>x</tt:p></tt:div></tt:body></tt:tt>");
    EXPECT_EQ("tt", m_reader.GetNodeName(root));
    EXPECT_EQ((Names{"head", "body"}), Elements(root));
    XMLNODEPTR div = m_reader.GetChildElementList(m_reader.GetChildNodeByName(root, "body"));
    EXPECT_EQ((Names{"p"}), Elements(div));
}

// --- Finding a child by name -----------------------------------------------

struct ChildCase {
    const char* name;
    const char* expected;  // local name of the match, or null for none
};

class XmlChildByName : public XmlTree, public ::testing::WithParamInterface<ChildCase> {};

const char kHeadDoc[] = "<tt:tt xmlns:tt=\"http://www.w3.org/ns/ttml\" "
                        "xmlns:ebuttm=\"urn:ebu:tt:metadata\">"
                        "HEAD<!--head--><tt:head><ebuttm:documentMetadata/><tt:metadata/></tt:head>"
                        "<tt:body><tt:div/></tt:body><tt:head2/></tt:tt>";

// The root's children: text "HEAD" and a comment come first and must not
// match; prefixes and letter case play no part.
TEST_P(XmlChildByName, MatchesLocalNameIgnoringCase)
{
    XMLNODEPTR root = Load(kHeadDoc);
    XMLNODEPTR head = m_reader.GetChildNodeByName(root, "head");
    ASSERT_NE(nullptr, head);
    const ChildCase& c = GetParam();
    XMLNODEPTR found = m_reader.GetChildNodeByName(root, c.name);
    if (!found)
        found = m_reader.GetChildNodeByName(head, c.name);
    if (c.expected) {
        ASSERT_NE(nullptr, found);
        EXPECT_EQ(c.expected, m_reader.GetNodeName(found));
        EXPECT_FALSE(m_reader.IsTextNode(found));
    } else {
        EXPECT_EQ(nullptr, found);
    }
}

INSTANTIATE_TEST_SUITE_P(Names, XmlChildByName,
                         ::testing::Values(ChildCase{"HEAD", "head"}, ChildCase{"head", "head"},
                                           ChildCase{"Body", "body"}, ChildCase{"head2", "head2"},
                                           ChildCase{"documentmetadata", "documentMetadata"},
                                           ChildCase{"DOCUMENTMETADATA", "documentMetadata"},
                                           ChildCase{"tt:head", nullptr}, ChildCase{"hea", nullptr},
                                           ChildCase{"heads", nullptr}, ChildCase{"div", nullptr},
                                           ChildCase{"text", nullptr}, ChildCase{"", nullptr}),
                         [](const ::testing::TestParamInfo<ChildCase>& info) {
                             return "Case" + std::to_string(info.index);
                         });

// --- Text content ----------------------------------------------------------

struct ContentCase {
    const char* name;
    std::string xml;
    bool ofFirstChild;  // ask the root's first walked child instead of the root
    std::string expected;
};

class XmlContent : public XmlTree, public ::testing::WithParamInterface<ContentCase> {};

// The text goes on into markup, so the special characters must come back
// escaped; entities are resolved, child elements' text is not included.
TEST_P(XmlContent, IsTheDirectTextReEscaped)
{
    const ContentCase& c = GetParam();
    XMLNODEPTR node = Load(c.xml);
    if (c.ofFirstChild)
        node = m_reader.GetChildNodeList(node);
    ASSERT_NE(nullptr, node);
    EXPECT_EQ(c.expected, m_reader.GetElementContent(node));
}

INSTANTIATE_TEST_SUITE_P(
    Cases, XmlContent,
    ::testing::Values(
        ContentCase{"EscapedLessThan", "<p>a &lt; b</p>", false, "a &lt; b"},
        ContentCase{"EscapedLessThanInTextNode", "<p>a &lt; b</p>", true, "a &lt; b"},
        ContentCase{"AmpersandAndGreaterThan", "<p>x &amp; y &gt; z</p>", false, "x &amp; y &gt; z"},
        ContentCase{"QuotesStayBare", "<p>\"q\" &apos;s&apos;</p>", false, "\"q\" 's'"},
        ContentCase{"CharacterReference", "<p>&#x41;&#66;</p>", false, "AB"},
        ContentCase{"NonAsciiNoDeclaredEncoding", "<p>caf\xC3\xA9</p>", false, "caf&#xE9;"},
        ContentCase{"NonAsciiDeclaredUtf8", "<?xml version=\"1.0\" encoding=\"UTF-8\"?><p>caf\xC3\xA9</p>", false,
                    "caf\xC3\xA9"},
        // Text nodes that need no escaping skip the encoder: its other cases.
        ContentCase{"NonAsciiNoDeclaredEncodingInTextNode", "<p>caf\xC3\xA9</p>", true, "caf&#xE9;"},
        ContentCase{"NonAsciiDeclaredUtf8InTextNode",
                    "<?xml version=\"1.0\" encoding=\"UTF-8\"?><p>caf\xC3\xA9 &amp;</p>", true,
                    "caf\xC3\xA9 &amp;"},
        ContentCase{"CarriageReturnInTextNode", "<p>a&#13;b\tc</p>", true, "a&#13;b\tc"},
        ContentCase{"ChildElementTextLeftOut", "<p>a<span>b</span>c</p>", false, "ac"},
        ContentCase{"EmptyElement", "<p/>", false, ""},
        ContentCase{"WhitespaceInsideText", "<p>  two  words </p>", false, "  two  words "},
        ContentCase{"PreservedBlankText", "<p xml:space=\"preserve\"> </p>", false, " "}),
    TTMLTest::RowName());

// --- Attributes ------------------------------------------------------------

const char kAttrDoc[] = "<tt xmlns=\"http://www.w3.org/ns/ttml\" xmlns:ttp=\"http://www.w3.org/ns/ttml#parameter\" "
                        "ttp:profile=\"urn:ebu:tt:distribution:2014-01\" xml:lang=\"en\" id=\"a&amp;b\" "
                        "empty=\"\" ttp:timeBase=\"media\"/>";

TEST_F(XmlTree, AttributesComeInDocumentOrderByLocalName)
{
    XMLNODEPTR root = Load(kAttrDoc);
    EXPECT_EQ((Names{"profile=urn:ebu:tt:distribution:2014-01", "lang=en", "id=a&b", "empty=", "timeBase=media"}),
              Attributes(root));
}

// The parser always gives an attribute its value node; one built without
// (as other tree code may) must be passed over wherever it stands.
TEST_F(XmlTree, AttributesWithoutValueNodeAreSkipped)
{
    XMLNODEPTR root = Load("<tt/>");
    for (const char* name : {"bare1", "a", "bare2", "b", "bare3"})
        xmlNewProp(root, BAD_CAST name, name[0] == 'b' && name[1] == 'a' ? nullptr : BAD_CAST "v");
    ASSERT_EQ(nullptr, root->properties->children);
    EXPECT_EQ((Names{"a=v", "b=v"}), Attributes(root));
}

struct LookupCase {
    const char* name;
    bool found;
    const char* value;  // expected value; for absent ones the untouched old value
};

class XmlAttrLookup : public XmlTree, public ::testing::WithParamInterface<LookupCase> {};

// Looked up by local name whatever the namespace, so "profile" finds
// ttp:profile; an absent name leaves the caller's value alone.
TEST_P(XmlAttrLookup, FindsByLocalNameInAnyNamespace)
{
    const LookupCase& c = GetParam();
    XMLNODEPTR root = Load(kAttrDoc);
    std::string name = c.name;
    std::string value = "old";
    EXPECT_EQ(c.found, m_reader.GetAttrValue(root, name, value));
    EXPECT_EQ(c.value, value);
}

INSTANTIATE_TEST_SUITE_P(Names, XmlAttrLookup,
                         ::testing::Values(LookupCase{"profile", true, "urn:ebu:tt:distribution:2014-01"},
                                           LookupCase{"timeBase", true, "media"},
                                           LookupCase{"lang", true, "en"}, LookupCase{"id", true, "a&b"},
                                           LookupCase{"empty", true, ""}, LookupCase{"Profile", false, "old"},
                                           LookupCase{"ttp:profile", false, "old"},
                                           LookupCase{"missing", false, "old"}, LookupCase{"", false, "old"}),
                         [](const ::testing::TestParamInfo<LookupCase>& info) {
                             return "Case" + std::to_string(info.index);
                         });

TEST_F(XmlTree, LookupOnATextNodeFindsNothing)
{
    XMLNODEPTR text = m_reader.GetChildNodeList(Load("<p id=\"x\">t</p>"));
    ASSERT_TRUE(m_reader.IsTextNode(text));
    std::string name = "id";
    std::string value = "old";
    EXPECT_FALSE(m_reader.GetAttrValue(text, name, value));
    EXPECT_EQ("old", value);
    EXPECT_EQ(nullptr, m_reader.GetAttributeList(text));
}

// --- Null pointers ---------------------------------------------------------

struct NullCase {
    const char* name;
    std::function<bool(CXmlParser&)> isEmptyResult;
    const char* warning;  // null: nothing is logged
};

class XmlNullArgument : public ::testing::TestWithParam<NullCase> {};

// Each accessor refuses a null pointer (or a missing document) with an empty
// result and, where the pointer names matter, exactly one warning.
TEST_P(XmlNullArgument, GivesEmptyResultAndItsWarning)
{
    const NullCase& c = GetParam();
    CXmlParser reader;
    LogCapture log;
    EXPECT_TRUE(c.isEmptyResult(reader));
    if (c.warning) {
        EXPECT_EQ(1, log.Count(c.warning, DLOG_WARN)) << log.Dump();
        EXPECT_EQ(1u, log.Lines().size()) << log.Dump();
    } else {
        EXPECT_TRUE(log.Lines().empty()) << log.Dump();
    }
}

INSTANTIATE_TEST_SUITE_P(
    Accessors, XmlNullArgument,
    ::testing::Values(
        NullCase{"GetAttributeList", [](CXmlParser& r) { return !r.GetAttributeList(nullptr); }, "pNodePtr is NULL"},
        NullCase{"GetNextAttr", [](CXmlParser& r) { return !r.GetNextAttr(nullptr); }, "attrPtr is NULL"},
        NullCase{"GetAttrName", [](CXmlParser& r) { return r.GetAttrName(nullptr).empty(); }, "attrPtr is NULL"},
        NullCase{"GetAttrValueOfNode",
                 [](CXmlParser& r) {
                     std::string n = "id", v = "old";
                     return !r.GetAttrValue(static_cast<XMLNODEPTR>(nullptr), n, v) && v == "old";
                 },
                 "pNodePtr is NULL"},
        NullCase{"GetElementContent", [](CXmlParser& r) { return r.GetElementContent(nullptr).empty(); },
                 "pNodePtr is NULL"},
        NullCase{"GetRootElement", [](CXmlParser& r) { return !r.GetRootElement(); }, "m_xmlDoc is NULL"},
        NullCase{"GetEncoding", [](CXmlParser& r) { return r.GetEncoding().empty(); }, "m_xmlDoc is NULL"},
        NullCase{"Dump",
                 [](CXmlParser& r) {
                     ::testing::internal::CaptureStdout();
                     r.Dump();
                     return ::testing::internal::GetCapturedStdout().empty();
                 },
                 "m_xmlDoc is NULL"},
        NullCase{"GetAttrValueOfAttribute",
                 [](CXmlParser& r) { return r.GetAttrValue(static_cast<XMLATTRPTR>(nullptr)).empty(); }, nullptr},
        NullCase{"Walkers",
                 [](CXmlParser& r) {
                     return !r.GetChildElementList(nullptr) && !r.GetNextElementNode(nullptr) &&
                            !r.GetChildNodeList(nullptr) && !r.GetNextNode(nullptr) &&
                            !r.GetChildNodeByName(nullptr, "head") && !r.IsTextNode(nullptr) &&
                            r.GetNodeName(nullptr).empty();
                 },
                 nullptr}),
    TTMLTest::RowName());

}  // namespace
