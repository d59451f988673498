// Element model: attribute storage, creation from a parent or the profile
// defaults, referenced styles, weak parents, element names and the style,
// region and agent registries.

#include "CEBUAttrHandler.h"
#include "CElement.h"
#include "CElementHandler.h"
#include "CIMSCAttrHandler.h"
#include "CStyleRegionInfo.h"
#include "LogCapture.h"

#include <gtest/gtest.h>

#include <tuple>

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

// A missing attribute leaves the caller's string alone.
TEST_F(ElementTest, OnlyNumbersOfTheTableAreStored)
{
    for (const auto& [attr, stored] : {std::pair{0, true}, {TTML_ATTR_COUNT - 1, true}, {TTML_ATTR_COUNT, false},
                                       {-1, false}}) {
        CElement e(ELEM_P);
        LogCapture log;
        e.AddAttrValue(attr, "x");
        std::string value = "untouched";
        EXPECT_EQ(stored, e.GetAttrValue(attr, value)) << attr;
        EXPECT_EQ(stored ? "x" : "untouched", value);
        EXPECT_EQ(stored ? 1u : 0u, e.GetAttrMap().size()) << attr;
        EXPECT_EQ(stored ? 0 : 1, log.Count("Can't insert any invalid attribute.", DLOG_WARN)) << log.Dump();
    }
}

// ---- Creation from a parent ---------------------------------------------------------

TEST_F(ElementTest, NullParentTakesTheDefaultsOfTheLastInstalledHandlerOrWarnsWithoutOne)
{
    auto e = Make(ELEM_BODY, {{ATTR_LANG, "en"}});
    CElementSPTR none;
    LogCapture log;
    e->CreateFromParent(none);
    EXPECT_EQ((AttrMap{{ATTR_LANG, "en"}}), e->GetAttrMap());
    EXPECT_TRUE(log.Has("NULL pointer error", DLOG_WARN)) << log.Dump();

    CIMSCAttrHandler first;
    CEBUAttrHandler second;
    CElement::SetAttributeHandler(&first);
    CElement::SetAttributeHandler(&second);
    e->CreateFromParent(none);
    EXPECT_EQ(second.GetDefaultAttrValues(), e->GetAttrMap());
    EXPECT_NE(first.GetDefaultAttrValues(), e->GetAttrMap());
    EXPECT_EQ(nullptr, e->GetParent());
}

// The parent's map replaces the child's own. Inherited maps are shared until
// written: every later write, on either side and at any depth, must stay
// with the element it was made on.
TEST_F(ElementTest, WritesAfterInheritingStayWithTheirElement)
{
    auto parent = Make(ELEM_DIV, {{ATTR_COLOR, "#ff0000"}, {ATTR_BEGIN, "1000"}});
    auto child = Make(ELEM_P, {{ATTR_FONTSIZE, "80%"}, {ATTR_COLOR, "#000000"}});
    child->CreateFromParent(parent);
    EXPECT_EQ(parent->GetAttrMap(), child->GetAttrMap());
    EXPECT_EQ(parent, child->GetParent());
    auto grandchild = Make(ELEM_SPAN);
    grandchild->CreateFromParent(child);
    parent->AddAttrValue(ATTR_COLOR, "#0000ff");
    parent->AddAttrValue(ATTR_ID, "d1");
    child->AddAttrValue(ATTR_FONTSIZE, "50%");
    child->RemoveAttrValue(ATTR_BEGIN);
    EXPECT_EQ((AttrMap{{ATTR_COLOR, "#0000ff"}, {ATTR_BEGIN, "1000"}, {ATTR_ID, "d1"}}), parent->GetAttrMap());
    EXPECT_EQ((AttrMap{{ATTR_COLOR, "#ff0000"}, {ATTR_FONTSIZE, "50%"}}), child->GetAttrMap());
    EXPECT_EQ((AttrMap{{ATTR_COLOR, "#ff0000"}, {ATTR_BEGIN, "1000"}}), grandchild->GetAttrMap());
}

TEST_F(ElementTest, SelfAsParentKeepsTheMapAndParentsAreHeldWeakly)
{
    auto e = Make(ELEM_SPAN, {{ATTR_COLOR, "#ff0000"}});
    e->CreateFromParent(e);
    EXPECT_EQ((AttrMap{{ATTR_COLOR, "#ff0000"}}), e->GetAttrMap());
    EXPECT_EQ(e, e->GetParent());
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
    const AttrMap before = p->GetAttrMap();
    CElementSPTR missing;
    LogCapture log;
    p->CopyReferencedAttr(missing);
    EXPECT_EQ(before, p->GetAttrMap());
    EXPECT_TRUE(log.Has("Referenced element not found", DLOG_WARN)) << log.Dump();
}

// ---- Element names ---------------------------------------------------------------

// Lookup ignores case; names outside the table warn.
TEST(ElementHandler, NamesAndTheirWarnings)
{
    const std::tuple<const char*, int, const char*> cases[] = {
        {"actor", ELEM_ACTOR, ""},
        {"set", ELEM_SET, ""},
        {"documentEbuttVersion", ELEM_DOCUMENTEBUTTVERSION, ""},
        {"P", ELEM_P, ""},
        {"", ELEM_UNKNOWN, "Empty string"},
        {"image", ELEM_UNKNOWN, "No matching element found: image"},
        {"tt:p", ELEM_UNKNOWN, "No matching element found: tt:p"},
    };
    CElementHandler handler;
    for (const auto& [name, type, warning] : cases) {
        LogCapture log;
        EXPECT_EQ(type, handler.ToElemEnum(name)) << name;
        EXPECT_EQ(*warning ? 1u : 0u, log.Lines().size()) << log.Dump();
        EXPECT_EQ(*warning ? 1 : 0, log.Count(warning, DLOG_WARN)) << log.Dump();
    }
}

// ---- Registries -----------------------------------------------------------------

// Styles and regions are kept apart; the first of an id stays, and Reset
// releases them.
TEST(StyleRegionInfo, FirstRegistrationOfAnIdStaysUntilReset)
{
    CStyleRegionInfo info;
    auto s1 = Make(ELEM_STYLE), s2 = Make(ELEM_STYLE), r1 = Make(ELEM_REGION), r2 = Make(ELEM_REGION);
    std::weak_ptr<CElement> watch = s1;
    info.AddStyle("a", s1);
    info.AddStyle("a", s2);
    EXPECT_TRUE(info.IsEmptyRegionList());
    EXPECT_EQ(nullptr, info.GetRegion("a"));
    info.AddRegion("a", r1);
    info.AddRegion("a", r2);
    EXPECT_EQ(s1, info.GetStyle("a"));
    EXPECT_EQ(r1, info.GetRegion("a"));
    EXPECT_EQ(nullptr, info.GetRegion("A"));
    EXPECT_FALSE(info.IsEmptyRegionList());
    s1.reset();
    EXPECT_FALSE(watch.expired());
    info.Reset();
    EXPECT_TRUE(watch.expired());
    EXPECT_TRUE(info.IsEmptyRegionList());
}

}  // namespace
