// Attribute lookup by name for the shapes an attribute's value can take in
// the tree: one text node (read in place), character references among text,
// and text edited after the read. Entities and DTD defaults never get here:
// documents declaring them are refused when read.

#include "CXmlParser.h"
#include "RowPrinter.h"

#include <gtest/gtest.h>
#include <libxml/tree.h>

#include <string>

namespace {

using TTML::CXmlParser;
using TTML::XMLNODEPTR;

const char kDoc[] =
    "<?xml version=\"1.0\"?>"
    "<tt plain=\"v\" refs=\"&#60;&amp;&#x41;\" blanks=\" a\tb \"/>";

struct ValueCase {
    const char* name;
    bool found;
    const char* value;
};

class XmlAttrValue : public ::testing::TestWithParam<ValueCase> {
protected:
    XMLNODEPTR Load()
    {
        EXPECT_TRUE(m_reader.ReadMemory(kDoc, static_cast<int>(sizeof(kDoc) - 1)));
        return m_reader.GetRootElement();
    }

    CXmlParser m_reader;
};

TEST_P(XmlAttrValue, GivesTheValueWithReferencesResolved)
{
    const ValueCase& c = GetParam();
    XMLNODEPTR root = Load();
    ASSERT_NE(nullptr, root);
    std::string name = c.name;
    std::string value = "old";
    EXPECT_EQ(c.found, m_reader.GetAttrValue(root, name, value));
    EXPECT_EQ(c.value, value);
}

INSTANTIATE_TEST_SUITE_P(
    Shapes, XmlAttrValue,
    ::testing::Values(ValueCase{"plain", true, "v"}, ValueCase{"refs", true, "<&A"},
                      // Attribute value normalisation turns the tab into a space.
                      ValueCase{"blanks", true, " a b "}, ValueCase{"absent", false, "old"}),
    TTMLTest::RowName());

// A value node whose text was replaced or removed after the read is still
// looked up as libxml2 does.
TEST(XmlAttrValueEdited, FollowsTheCurrentTree)
{
    CXmlParser reader;
    const std::string doc = "<tt a=\"first\" b=\"x\"/>";
    ASSERT_TRUE(reader.ReadMemory(doc.data(), static_cast<int>(doc.size())));
    XMLNODEPTR root = reader.GetRootElement();
    xmlSetProp(root, BAD_CAST "a", BAD_CAST "second");
    xmlAttrPtr b = xmlHasProp(root, BAD_CAST "b");
    ASSERT_NE(nullptr, b);
    xmlAddChild(reinterpret_cast<xmlNodePtr>(b), xmlNewText(BAD_CAST "y"));  // two text nodes now
    std::string name = "a";
    std::string value;
    EXPECT_TRUE(reader.GetAttrValue(root, name, value));
    EXPECT_EQ("second", value);
    name = "b";
    EXPECT_TRUE(reader.GetAttrValue(root, name, value));
    EXPECT_EQ("xy", value);
}

}  // namespace
