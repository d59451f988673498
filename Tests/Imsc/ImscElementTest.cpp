// IMSC 1 element: attribute filtering by the handler's tables, creation from
// the parent (timed sets included) and image data. How sets split intervals
// is shown through whole walks in ImscProfileTest.

#include "CIMSCAttrHandler.h"
#include "CIMSCElement.h"
#include "LogCapture.h"

#include <gtest/gtest.h>

#include <list>
#include <memory>
#include <string>

using namespace TTML;

namespace {

class ImscElementTest : public ::testing::Test {
protected:
    void SetUp() override { CElement::SetAttributeHandler(&m_handler); }
    void TearDown() override { CElement::SetAttributeHandler(nullptr); }

    static std::shared_ptr<CIMSCElement> Make(int type) { return std::make_shared<CIMSCElement>(type); }

    CIMSCAttrHandler m_handler;
};

// One row per rule of the filter: a style keeps everything for the elements
// that reference it; a span keeps what applies to spans; other elements keep
// what is inheritable (to pass it down) or applies to them.
TEST_F(ImscElementTest, StoresWhatTheTablesAllow)
{
    const struct {
        int elem;
        int attr;
        bool stored;
    } cases[] = {
        {ELEM_STYLE, ATTR_EXTENT, true},  {ELEM_SPAN, ATTR_COLOR, true},         {ELEM_SPAN, ATTR_LINEPADDING, false},
        {ELEM_P, ATTR_LINEPADDING, true}, {ELEM_P, ATTR_OPACITY, false},         {ELEM_TT, ATTR_EXTENT, true},
        {ELEM_TT, ATTR_ORIGIN, false},    {ELEM_DIV, ATTR_SHOWBACKGROUND, false}, {ELEM_UNKNOWN, ATTR_PADDING, false},
    };
    const std::string kept = "v";
    for (const auto& c : cases) {
        auto copied = Make(c.elem);
        auto moved = Make(c.elem);
        copied->AddAttrValue(c.attr, kept);
        moved->AddAttrValue(c.attr, std::string(kept));
        std::string value;
        EXPECT_EQ(c.stored, copied->GetAttrValue(c.attr, value)) << "element " << c.elem << " attribute " << c.attr;
        EXPECT_EQ(c.stored, moved->GetAttrValue(c.attr, value)) << "element " << c.elem << " attribute " << c.attr;
    }
}

TEST_F(ImscElementTest, OutOfRangeAttributeIsRefusedAndNoHandlerFiltersNothing)
{
    LogCapture log;
    auto style = Make(ELEM_STYLE);
    style->AddAttrValue(TTML_ATTR_COUNT, "x");
    style->AddAttrValue(-1, "x");
    EXPECT_TRUE(style->GetAttrMap().empty());
    EXPECT_EQ(2, log.Count("Can't insert any invalid attribute.")) << log.Dump();

    CElement::SetAttributeHandler(nullptr);
    auto span = Make(ELEM_SPAN);
    span->AddAttrValue(ATTR_LINEPADDING, "1c");
    EXPECT_EQ(1u, span->GetAttrMap().size());
}

// A root starts from the IMSC defaults; a child copies its parent's map
// whole: filtering happens only on AddAttrValue.
TEST_F(ImscElementTest, RootTakesTheDefaultsAndChildrenTheParentsMapUnfiltered)
{
    CElementSPTR none, p = Make(ELEM_P);
    p->CreateFromParent(none);
    EXPECT_EQ(m_handler.GetDefaultAttrValues(), p->GetAttrMap());
    p->AddAttrValue(ATTR_LINEPADDING, "1c");
    auto span = Make(ELEM_SPAN);
    span->CreateFromParent(p);
    std::string value;
    EXPECT_TRUE(span->GetAttrValue(ATTR_LINEPADDING, value));
    EXPECT_EQ(p, span->GetParent());
}

TEST_F(ImscElementTest, ChildrenTakeTheParentsTimedSetsButSetsDoNot)
{
    auto p = Make(ELEM_P);
    CElementSPTR red = Make(ELEM_SET);
    p->AddSetElement("2000", "4000", red);
    CElementSPTR parent = p;

    auto span = Make(ELEM_SPAN);
    span->CreateFromParent(parent);
    std::list<CElementSPTR> covering;
    span->GetSetElementList(2000, 4000, covering);
    ASSERT_EQ(1u, covering.size());
    EXPECT_EQ(red, covering.front());  // shared, not copied

    auto set = Make(ELEM_SET);
    set->CreateFromParent(parent);
    EXPECT_EQ(0u, set->GetSetElementCount());
    // The child's list is its own: consuming it leaves the parent's.
    span->ClearSetElementList();
    EXPECT_EQ(1u, p->GetSetElementCount());
}

TEST_F(ImscElementTest, ImageDataIsSharedUntilReset)
{
    // CImageData belongs to the image component; an opaque alias of another
    // owner stands in for it (it is never dereferenced here).
    auto owner = std::make_shared<int>(0);
    std::shared_ptr<CImageData> image(owner, reinterpret_cast<CImageData*>(owner.get())), empty;
    auto div = Make(ELEM_DIV);
    div->SetImageData(image);
    EXPECT_TRUE(div->IsImageProfile());
    EXPECT_EQ(image, div->GetImageData());
    div->ResetImageData();
    EXPECT_FALSE(div->IsImageProfile());
    EXPECT_EQ(2, owner.use_count());  // owner and image: the element let go
    // An image the utility could not provide arrives empty.
    div->SetImageData(image);
    div->SetImageData(empty);
    EXPECT_FALSE(div->IsImageProfile());
}

}  // namespace
