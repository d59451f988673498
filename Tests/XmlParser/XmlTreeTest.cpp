// Walking a loaded document: which nodes are visited, names, text content and
// attributes, and what null pointers give.

#include "CXmlParser.h"
#include "LogCapture.h"
#include "RowPrinter.h"

#include <gtest/gtest.h>
#include <libxml/tree.h>

#include <string>

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

    // "parent:child,child" with "#text" for text nodes; element children only when `elements`.
    std::string Walk(XMLNODEPTR parent, bool elements)
    {
        std::string out = m_reader.GetNodeName(parent) + ":";
        XMLNODEPTR n = elements ? m_reader.GetChildElementList(parent) : m_reader.GetChildNodeList(parent);
        for (; n; n = elements ? m_reader.GetNextElementNode(n) : m_reader.GetNextNode(n))
            out += std::string(out.back() == ':' ? "" : ",") + (m_reader.IsTextNode(n) ? "#" : "") +
                   m_reader.GetNodeName(n);
        return out;
    }

    std::string Attributes(XMLNODEPTR node)
    {
        std::string out;
        for (XMLATTRPTR a = m_reader.GetAttributeList(node); a; a = m_reader.GetNextAttr(a))
            out += m_reader.GetAttrName(a) + "=" + m_reader.GetAttrValue(a) + ";";
        return out;
    }

    CXmlParser m_reader;
};

// --- Which nodes are walked ------------------------------------------------

struct WalkCase {
    const char* name;
    std::string xml;
    std::string nodes;
    std::string elements;
};

class XmlWalk : public XmlTree, public ::testing::WithParamInterface<WalkCase> {};

// Blank text between elements, comments and processing instructions are
// never walked; CDATA arrives merged into text; names have no prefix.
TEST_P(XmlWalk, VisitsElementsAndTextInDocumentOrder)
{
    XMLNODEPTR root = Load(GetParam().xml);
    EXPECT_EQ(GetParam().nodes, Walk(root, false));
    EXPECT_EQ(GetParam().elements, Walk(root, true));
}

INSTANTIATE_TEST_SUITE_P(
    Documents, XmlWalk,
    ::testing::Values(
        WalkCase{"BlankText", "<tt>\n  <head>\n    <styling/>\n  </head>\n  <body/>\n</tt>", "tt:head,body",
                 "tt:head,body"},
        WalkCase{"CommentsAndPis", "<tt><!-- c --><?pi x?><head/>one<!-- c --><body/>two<?pi y?></tt>",
                 "tt:head,#text,body,#text", "tt:head,body"},
        WalkCase{"Cdata", "<p><![CDATA[1 < 2]]></p>", "p:#text", "p:"},
        WalkCase{"MixedContent", "<p>a <span>b</span> c<br/>d</p>", "p:#text,span,#text,br,#text", "p:span,br"},
        WalkCase{"Prefixed",
                 "<tt:tt xmlns:tt=\"http://www.w3.org/ns/ttml\"><tt:head/><tt:body><tt:div/></tt:body></tt:tt>",
                 "tt:head,body", "tt:head,body"}),
    TTMLTest::RowName());

// --- Finding a child by name -----------------------------------------------

struct ChildCase {
    const char* name;
    const char* expected;  // local name of the match, or null for none
};

class XmlChildByName : public XmlTree, public ::testing::WithParamInterface<ChildCase> {};

const char kHeadDoc[] = "<tt:tt xmlns:tt=\"http://www.w3.org/ns/ttml\" "
                        "xmlns:ebuttm=\"urn:ebu:tt:metadata\">"
                        "HEAD<!--head--><tt:head><ebuttm:documentMetadata/><tt:metadata/></tt:head>"
                        "<tt:body><tt:div/></tt:body><tt:headz/></tt:tt>";

// The root's children, then head's: text "HEAD" and a comment come first and
// must not match; prefixes and letter case play no part.
TEST_P(XmlChildByName, MatchesLocalNameIgnoringCase)
{
    XMLNODEPTR root = Load(kHeadDoc);
    const ChildCase& c = GetParam();
    XMLNODEPTR found = m_reader.GetChildNodeByName(root, c.name);
    if (!found)
        found = m_reader.GetChildNodeByName(m_reader.GetChildNodeByName(root, "head"), c.name);
    EXPECT_EQ(c.expected ? c.expected : "<none>", found ? m_reader.GetNodeName(found) : "<none>");
}

INSTANTIATE_TEST_SUITE_P(Names, XmlChildByName,
                         ::testing::Values(ChildCase{"HEAD", "head"}, ChildCase{"HEADZ", "headz"},
                                           ChildCase{"Body", "body"},
                                           ChildCase{"DOCUMENTMETADATA", "documentMetadata"},
                                           ChildCase{"tt:head", nullptr}, ChildCase{"hea", nullptr},
                                           ChildCase{"div", nullptr}, ChildCase{"text", nullptr},
                                           ChildCase{"", nullptr}),
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
        ContentCase{"CdataInTextNode", "<p><![CDATA[1 < 2]]></p>", true, "1 &lt; 2"},
        ContentCase{"AmpersandAndGreaterThan", "<p>x &amp; y &gt; z</p>", false, "x &amp; y &gt; z"},
        ContentCase{"QuotesStayBare", "<p>\"q\" &apos;s&apos;</p>", false, "\"q\" 's'"},
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
        ContentCase{"PreservedBlankText", "<p xml:space=\"preserve\"> </p>", false, " "}),
    TTMLTest::RowName());

// --- Attributes ------------------------------------------------------------

// Attribute value normalisation turns the tab in `blanks` into a space.
const char kAttrDoc[] = "<tt xmlns=\"http://www.w3.org/ns/ttml\" xmlns:ttp=\"http://www.w3.org/ns/ttml#parameter\" "
                        "ttp:profile=\"urn:ebu:tt:distribution:2014-01\" id=\"a&amp;b\" refs=\"&#60;&#x41;\" "
                        "empty=\"\" blanks=\" a\tb \" ttp:timeBase=\"media\"/>";

TEST_F(XmlTree, AttributesComeInDocumentOrderByLocalName)
{
    EXPECT_EQ("profile=urn:ebu:tt:distribution:2014-01;id=a&b;refs=<A;empty=;blanks= a b ;timeBase=media;",
              Attributes(Load(kAttrDoc)));
}

// The parser always gives an attribute its value node; one built without
// (as other tree code may) must be passed over wherever it stands.
TEST_F(XmlTree, AttributesWithoutValueNodeAreSkipped)
{
    XMLNODEPTR root = Load("<tt/>");
    for (const char* name : {"bare1", "a", "bare2", "b", "bare3"})
        xmlNewProp(root, BAD_CAST name, name[0] == 'b' && name[1] == 'a' ? nullptr : BAD_CAST "v");
    ASSERT_EQ(nullptr, root->properties->children);
    EXPECT_EQ("a=v;b=v;", Attributes(root));
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
                                           LookupCase{"timeBase", true, "media"}, LookupCase{"id", true, "a&b"},
                                           LookupCase{"refs", true, "<A"}, LookupCase{"blanks", true, " a b "},
                                           LookupCase{"empty", true, ""}, LookupCase{"Profile", false, "old"},
                                           LookupCase{"ttp:profile", false, "old"}, LookupCase{"", false, "old"}),
                         [](const ::testing::TestParamInfo<LookupCase>& info) {
                             return "Case" + std::to_string(info.index);
                         });

// A value whose text was replaced, or split into two text nodes, after the
// read is still looked up as libxml2 does.
TEST_F(XmlTree, LookupFollowsValuesEditedAfterTheRead)
{
    XMLNODEPTR root = Load("<tt a=\"first\" b=\"x\"/>");
    xmlSetProp(root, BAD_CAST "a", BAD_CAST "second");
    xmlAddChild(reinterpret_cast<xmlNodePtr>(xmlHasProp(root, BAD_CAST "b")), xmlNewText(BAD_CAST "y"));
    std::string a = "a", b = "b", value;
    EXPECT_TRUE(m_reader.GetAttrValue(root, a, value));
    EXPECT_EQ("second", value);
    EXPECT_TRUE(m_reader.GetAttrValue(root, b, value));
    EXPECT_EQ("xy", value);
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
