// Walking a loaded document: which nodes are visited, names, text content and
// attributes, and what null pointers give.

#include "CXmlParser.h"
#include "LogCapture.h"

#include <gtest/gtest.h>
#include <libxml/tree.h>

#include <string>
#include <tuple>
#include <utility>

namespace {

using TTML::CXmlParser;
using TTML::XMLATTRPTR;
using TTML::XMLNODEPTR;

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
        {"<?xml version=\"1.0\" encoding=\"UTF-8\"?><p>caf\xC3\xA9</p>", false, "caf\xC3\xA9"},
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

TEST(XmlTree, AttributesComeInDocumentOrderByLocalName)
{
    EXPECT_EQ("profile=urn:ebu:tt:distribution:2014-01;id=a&b;refs=<A;empty=;blanks= a b ;timeBase=media;",
              Doc(kAttrDoc).Attributes());
}

// Looked up by local name whatever the namespace, so "profile" finds
// ttp:profile; an absent name ("!") leaves the caller's value alone.
TEST(XmlTree, LookupFindsByLocalNameInAnyNamespace)
{
    Doc doc(kAttrDoc);
    std::string found;
    for (std::string name : {"profile", "timeBase", "id", "refs", "blanks", "empty", "Profile", "ttp:profile", ""}) {
        std::string value = "old";
        found += (doc.reader.GetAttrValue(doc.root, name, value) ? "" : "!") + value + "|";
    }
    EXPECT_EQ("urn:ebu:tt:distribution:2014-01|media|a&b|<A| a b ||!old|!old|!old|", found);
}

// The parser always gives an attribute its value node; one built without
// (as other tree code may) must be passed over wherever it stands.
TEST(XmlTree, AttributesWithoutValueNodeAreSkipped)
{
    Doc doc("<tt/>");
    for (const char* name : {"bare1", "a", "bare2", "b", "bare3"})
        xmlNewProp(doc.root, BAD_CAST name, name[0] == 'b' && name[1] == 'a' ? nullptr : BAD_CAST "v");
    ASSERT_EQ(nullptr, doc.root->properties->children);
    EXPECT_EQ("a=v;b=v;", doc.Attributes());
}

// A value whose text was replaced, or split into two text nodes, after the
// read is still looked up as libxml2 does.
TEST(XmlTree, LookupFollowsValuesEditedAfterTheRead)
{
    Doc doc("<tt a=\"first\" b=\"x\"/>");
    xmlSetProp(doc.root, BAD_CAST "a", BAD_CAST "second");
    xmlAddChild(reinterpret_cast<xmlNodePtr>(xmlHasProp(doc.root, BAD_CAST "b")), xmlNewText(BAD_CAST "y"));
    std::string a = "a", b = "b", first, second;
    EXPECT_TRUE(doc.reader.GetAttrValue(doc.root, a, first) && doc.reader.GetAttrValue(doc.root, b, second));
    EXPECT_EQ("second xy", first + " " + second);
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
