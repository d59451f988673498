// Element model: attribute storage, creation from a parent or the profile
// defaults, referenced styles, weak parents, the name table and the
// style, region and agent registries.

#include "CAgentInfo.h"
#include "CEBUAttrHandler.h"
#include "CElement.h"
#include "CElementHandler.h"
#include "CIMSCAttrHandler.h"
#include "CStyleRegionInfo.h"
#include "LogCapture.h"
#include "RowPrinter.h"

#include <gtest/gtest.h>

#include <map>

using namespace TTML;

namespace {

using AttrMap = TTML::CAttrMap;

CElementSPTR Make(int type, const AttrMap& attrs = {})
{
    auto e = std::make_shared<CElement>(type);
    for (const auto& kv : attrs)
        e->AddAttrValue(kv.first, kv.second);
    return e;
}

// Restores the process-wide handler so tests do not leak it to each other.
class ElementTest : public ::testing::Test {
protected:
    void TearDown() override { CElement::SetAttributeHandler(nullptr); }
};

// ---- Attribute storage --------------------------------------------------------

struct AddCase {
    const char* name;
    int attr;
    bool stored;
};

class AddAttrRange : public ::testing::TestWithParam<AddCase> {};

TEST_P(AddAttrRange, OnlyNumbersOfTheTableAreStored)
{
    CElement e(ELEM_P);
    LogCapture log;
    e.AddAttrValue(GetParam().attr, "x");
    std::string value;
    EXPECT_EQ(GetParam().stored, e.GetAttrValue(GetParam().attr, value));
    EXPECT_EQ(GetParam().stored ? 1u : 0u, e.GetAttrMap().size());
    EXPECT_EQ(GetParam().stored ? 0 : 1, log.Count("Can't insert any invalid attribute.", DLOG_WARN)) << log.Dump();
}

INSTANTIATE_TEST_SUITE_P(Table, AddAttrRange,
                         ::testing::Values(AddCase{"First", 0, true}, AddCase{"Last", 57, true},
                                           AddCase{"OnePastLast", 58, false}, AddCase{"Negative", -1, false}),
                         TTMLTest::RowName());

TEST_F(ElementTest, LaterValueReplacesEarlierAndMissingLeavesOutputAlone)
{
    CElement e(ELEM_SPAN);
    e.AddAttrValue(ATTR_COLOR, "#ff0000");
    e.AddAttrValue(ATTR_COLOR, "#00ff00");
    std::string value = "untouched";
    EXPECT_FALSE(e.GetAttrValue(ATTR_FONTSIZE, value));
    EXPECT_EQ("untouched", value);
    ASSERT_TRUE(e.GetAttrValue(ATTR_COLOR, value));
    EXPECT_EQ("#00ff00", value);
    e.RemoveAttrValue(ATTR_COLOR);
    e.RemoveAttrValue(ATTR_COLOR);  // absent: no effect
    EXPECT_TRUE(e.GetAttrMap().empty());
}

TEST_F(ElementTest, ImageOperationsWarnOnAPlainElement)
{
    CElement e(ELEM_P);
    LogCapture log;
    std::shared_ptr<CImageData> image;
    e.SetImageData(image);
    EXPECT_EQ(nullptr, e.GetImageData());
    e.ResetImageData();
    EXPECT_FALSE(e.IsImageProfile());
    EXPECT_EQ(3, log.Count("Something went wrong, this function shouldn't be called", DLOG_WARN)) << log.Dump();
}

// ---- Creation from a parent ---------------------------------------------------------

TEST_F(ElementTest, NullParentWithoutHandlerLeavesTheMapAndWarns)
{
    CElement::SetAttributeHandler(nullptr);
    auto e = Make(ELEM_BODY, {{ATTR_LANG, "en"}});
    CElementSPTR none;
    LogCapture log;
    e->CreateFromParent(none);
    EXPECT_EQ((AttrMap{{ATTR_LANG, "en"}}), e->GetAttrMap());
    EXPECT_TRUE(log.Has("NULL pointer error", DLOG_WARN)) << log.Dump();
}

TEST_F(ElementTest, NullParentTakesExactlyTheDefaultsOfTheLastInstalledHandler)
{
    CIMSCAttrHandler first;
    CEBUAttrHandler second;
    CElement::SetAttributeHandler(&first);
    CElement::SetAttributeHandler(&second);

    auto e = Make(ELEM_BODY, {{ATTR_LANG, "en"}});
    CElementSPTR none;
    e->CreateFromParent(none);
    EXPECT_EQ(second.GetDefaultAttrValues(), e->GetAttrMap());
    EXPECT_NE(first.GetDefaultAttrValues(), e->GetAttrMap());
    EXPECT_EQ(nullptr, e->GetParent());
}

TEST_F(ElementTest, ParentMapReplacesOwnAndLinkIsRecorded)
{
    auto parent = Make(ELEM_DIV, {{ATTR_COLOR, "#ff0000"}, {ATTR_BEGIN, "1000"}, {ATTR_ID, "d1"}});
    auto child = Make(ELEM_P, {{ATTR_FONTSIZE, "50%"}, {ATTR_COLOR, "#000000"}});
    child->CreateFromParent(parent);
    EXPECT_EQ(parent->GetAttrMap(), child->GetAttrMap());
    EXPECT_EQ(parent, child->GetParent());
    // A copy, not a shared map.
    parent->AddAttrValue(ATTR_COLOR, "#0000ff");
    std::string colour;
    child->GetAttrValue(ATTR_COLOR, colour);
    EXPECT_EQ("#ff0000", colour);
}

// Inherited maps are shared until written: every later write, on either
// side and at any depth, must stay with the element it was made on.
TEST_F(ElementTest, WritesAfterInheritingStayWithTheirElement)
{
    auto parent = Make(ELEM_DIV, {{ATTR_COLOR, "#ff0000"}, {ATTR_BEGIN, "1000"}});
    auto child = Make(ELEM_P);
    child->CreateFromParent(parent);
    auto grandchild = Make(ELEM_SPAN);
    grandchild->CreateFromParent(child);
    parent->AddAttrValue(ATTR_COLOR, "#0000ff");
    parent->AddAttrValue(ATTR_ID, "d1");
    child->AddAttrValue(ATTR_FONTSIZE, "50%");
    child->RemoveAttrValue(ATTR_BEGIN);
    EXPECT_EQ((AttrMap{{ATTR_COLOR, "#0000ff"}, {ATTR_BEGIN, "1000"}, {ATTR_ID, "d1"}}), parent->GetAttrMap());
    const std::map<int, std::string> childAttrs(child->GetAttrMap().begin(), child->GetAttrMap().end());
    EXPECT_EQ((std::map<int, std::string>{{ATTR_COLOR, "#ff0000"}, {ATTR_FONTSIZE, "50%"}}), childAttrs);
    EXPECT_EQ((AttrMap{{ATTR_COLOR, "#ff0000"}, {ATTR_BEGIN, "1000"}}), grandchild->GetAttrMap());
    // A long line of descendants, each adding one attribute, sees them all.
    AttrMap expected = grandchild->GetAttrMap();
    CElementSPTR last = grandchild;
    for (int attr = 1; attr <= 20; ++attr) {
        auto next = Make(ELEM_SPAN);
        next->CreateFromParent(last);
        next->AddAttrValue(attr, std::to_string(attr));
        expected.Set(attr, std::to_string(attr));
        last = next;
    }
    EXPECT_EQ(22u, last->GetAttrMap().size());
    EXPECT_EQ(expected, last->GetAttrMap());
}

TEST_F(ElementTest, SelfAsParentKeepsTheMap)
{
    auto e = Make(ELEM_SPAN, {{ATTR_COLOR, "#ff0000"}});
    e->CreateFromParent(e);
    EXPECT_EQ((AttrMap{{ATTR_COLOR, "#ff0000"}}), e->GetAttrMap());
    EXPECT_EQ(e, e->GetParent());
}

TEST_F(ElementTest, ParentIsHeldWeakly)
{
    auto child = Make(ELEM_SPAN);
    {
        auto parent = Make(ELEM_P);
        child->SetParent(parent);
        EXPECT_EQ(parent, child->GetParent());
    }
    EXPECT_EQ(nullptr, child->GetParent());
}

// ---- Referenced styles and regions ---------------------------------------------------

// The referenced style's id never replaces the element's own.
TEST_F(ElementTest, InheritedThenReferencedThenOwn)
{
    auto parent = Make(ELEM_DIV, {{ATTR_COLOR, "#ff0000"}, {ATTR_FONTSIZE, "80%"}, {ATTR_TEXTALIGN, "left"}});
    auto style = Make(ELEM_STYLE, {{ATTR_ID, "s1"}, {ATTR_COLOR, "#00ff00"}, {ATTR_FONTSIZE, "90%"}});
    auto p = Make(ELEM_P);
    p->CreateFromParent(parent);
    p->AddAttrValue(ATTR_ID, "p1");
    p->CopyReferencedAttr(style);
    p->AddAttrValue(ATTR_COLOR, "#0000ff");
    EXPECT_EQ((AttrMap{{ATTR_COLOR, "#0000ff"}, {ATTR_FONTSIZE, "90%"}, {ATTR_ID, "p1"}, {ATTR_TEXTALIGN, "left"}}),
              p->GetAttrMap());
}

TEST_F(ElementTest, MissingReferenceWarnsAndChangesNothing)
{
    auto p = Make(ELEM_P, {{ATTR_COLOR, "#ffffff"}});
    CElementSPTR missing;
    LogCapture log;
    p->CopyReferencedAttr(missing);
    EXPECT_EQ((AttrMap{{ATTR_COLOR, "#ffffff"}}), p->GetAttrMap());
    EXPECT_TRUE(log.Has("Referenced element not found", DLOG_WARN)) << log.Dump();
}

// ---- Element names ---------------------------------------------------------------

struct NameCase {
    const char* label;
    const char* name;
    int type;    // ToElemEnum
    bool valid;  // IsValidElement
    const char* warning;
};

void PrintTo(const NameCase& c, std::ostream* os)
{
    *os << c.label;
}

class ElementNames : public ::testing::TestWithParam<NameCase> {};

TEST_P(ElementNames, LookupIsCaseInsensitiveValidityIsNot)
{
    const NameCase& c = GetParam();
    CElementHandler handler;
    LogCapture log;
    EXPECT_EQ(c.type, handler.ToElemEnum(c.name));
    if (*c.warning)
        EXPECT_TRUE(log.Has(c.warning, DLOG_WARN)) << log.Dump();
    else
        EXPECT_TRUE(log.Lines().empty()) << log.Dump();
    EXPECT_EQ(c.valid, handler.IsValidElement(c.name));
}

INSTANTIATE_TEST_SUITE_P(
    Table, ElementNames,
    ::testing::Values(NameCase{"Actor", "actor", ELEM_ACTOR, true, ""}, NameCase{"Br", "br", ELEM_BR, true, ""},
                      NameCase{"EbuttLower", "documentebuttversion", ELEM_DOCUMENTEBUTTVERSION, true, ""},
                      NameCase{"EbuttCamel", "documentEbuttVersion", ELEM_DOCUMENTEBUTTVERSION, false, ""},
                      NameCase{"MetadataCamel", "documentMetadata", ELEM_DOCUMENTMETADATA, false, ""},
                      NameCase{"PUpper", "P", ELEM_P, false, ""}, NameCase{"Region", "region", ELEM_REGION, true, ""},
                      NameCase{"Styling", "styling", ELEM_STYLING, true, ""}, NameCase{"Tt", "tt", ELEM_TT, true, ""},
                      NameCase{"Set", "set", ELEM_SET, true, ""},
                      NameCase{"Empty", "", ELEM_UNKNOWN, false, "Empty string"},
                      NameCase{"Image", "image", ELEM_UNKNOWN, false, "No matching element found: image"},
                      NameCase{"Prefixed", "tt:p", ELEM_UNKNOWN, false, "No matching element found: tt:p"}),
    [](const ::testing::TestParamInfo<NameCase>& info) { return std::string(info.param.label); });

TEST(ElementHandler, ToElemEnumDoesNotChangeItsArgument)
{
    CElementHandler handler;
    const std::string name = "Span";
    EXPECT_EQ(ELEM_SPAN, handler.ToElemEnum(name));
    EXPECT_EQ("Span", name);
}

// ---- Registries -----------------------------------------------------------------

TEST(StyleRegionInfo, FirstRegistrationOfAnIdStays)
{
    CStyleRegionInfo info;
    auto s1 = Make(ELEM_STYLE), s2 = Make(ELEM_STYLE), r1 = Make(ELEM_REGION), r2 = Make(ELEM_REGION);
    EXPECT_TRUE(info.IsEmptyRegionList());
    info.AddStyle("a", s1);
    info.AddStyle("a", s2);
    info.AddRegion("a", r1);
    info.AddRegion("a", r2);
    EXPECT_EQ(s1, info.GetStyle("a"));
    EXPECT_EQ(r1, info.GetRegion("a"));
    EXPECT_EQ(nullptr, info.GetStyle("b"));
    EXPECT_EQ(nullptr, info.GetRegion("A"));
    EXPECT_FALSE(info.IsEmptyRegionList());
}

TEST(StyleRegionInfo, StylesAndRegionsAreSeparateAndResetReleasesThem)
{
    CStyleRegionInfo info;
    std::weak_ptr<CElement> watch;
    {
        auto style = Make(ELEM_STYLE);
        watch = style;
        info.AddStyle("x", style);
    }
    EXPECT_EQ(nullptr, info.GetRegion("x"));
    EXPECT_TRUE(info.IsEmptyRegionList());
    EXPECT_FALSE(watch.expired());
    info.Reset();
    EXPECT_TRUE(watch.expired());
    EXPECT_EQ(nullptr, info.GetStyle("x"));
}

TEST(AgentInfo, FirstAgentOfAnIdStaysAndCallerKeepsTheRefusedOne)
{
    CAgentInfo info;
    auto* first = new CAgent();
    first->SetAgentType("person");
    auto* refused = new CAgent();
    info.SetAgent("a1", first);
    info.SetAgent("a1", refused);
    EXPECT_EQ(first, info.GetAgent("a1"));
    EXPECT_EQ(nullptr, info.GetAgent("a2"));
    delete refused;  // still ours: a double free shows under the address sanitizer
    info.Reset();
    EXPECT_EQ(nullptr, info.GetAgent("a1"));
}

TEST(Agent, FirstNameOfATypeStays)
{
    CAgent agent;
    agent.SetActor("bob");
    agent.SetAgentName("full", "Alice Smith");
    agent.SetAgentName("full", "Someone Else");
    agent.SetAgentName("alias", "Al");
    EXPECT_EQ("Alice Smith", agent.GetAgentName("full"));
    EXPECT_EQ("Al", agent.GetAgentName("alias"));
    EXPECT_EQ("", agent.GetAgentName("family"));
    EXPECT_EQ("bob", agent.GetActor());
}

}  // namespace
