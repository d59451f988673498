// IMSC 1 element: attribute filtering by the handler's tables, inheritance
// of timed sets, region sets, the covering-set lookup and image data.

#include "CIMSCAttrHandler.h"
#include "CIMSCElement.h"
#include "LogCapture.h"

#include <gtest/gtest.h>

#include <list>
#include <memory>
#include <set>
#include <string>

using namespace TTML;

namespace {

class ImscElementTest : public ::testing::Test {
protected:
    void SetUp() override { CElement::SetAttributeHandler(&m_handler); }
    void TearDown() override { CElement::SetAttributeHandler(nullptr); }

    static std::shared_ptr<CIMSCElement> Make(int type) { return std::make_shared<CIMSCElement>(type); }

    static CElementSPTR MakeSet(const char* colour)
    {
        CElementSPTR set = std::make_shared<CIMSCElement>(ELEM_SET);
        set->AddAttrValue(ATTR_COLOR, colour);
        return set;
    }

    static std::string Colour(const CElementSPTR& e)
    {
        std::string value;
        e->GetAttrValue(ATTR_COLOR, value);
        return value;
    }

    CIMSCAttrHandler m_handler;
};

// ---- Attribute filter ---------------------------------------------------------

struct FilterCase {
    int elem;
    int attr;
    bool stored;
};

void PrintTo(const FilterCase& c, std::ostream* os)
{
    *os << "elem " << c.elem << " attr " << c.attr;
}

class ImscElementFilter : public ImscElementTest, public ::testing::WithParamInterface<FilterCase> {};

TEST_P(ImscElementFilter, StoresWhatTheTablesAllow)
{
    const FilterCase& c = GetParam();
    auto e = Make(c.elem);
    e->AddAttrValue(c.attr, "v");
    std::string value;
    EXPECT_EQ(c.stored, e->GetAttrValue(c.attr, value));
}

const FilterCase kFilterCases[] = {
    // A style keeps everything for the elements that reference it.
    {ELEM_STYLE, ATTR_EXTENT, true},
    // Spans keep only what applies to spans, inheritable or not.
    {ELEM_SPAN, ATTR_COLOR, true},
    {ELEM_SPAN, ATTR_LINEPADDING, false},
    // Others: inheritable (to pass down) or applicable.
    {ELEM_P, ATTR_COLOR, true},
    {ELEM_P, ATTR_LINEPADDING, true},
    {ELEM_P, ATTR_OPACITY, false},
    {ELEM_DIV, ATTR_BACKGROUNDIMAGE, true},
    {ELEM_REGION, ATTR_ZINDEX, true},
    {ELEM_TT, ATTR_EXTENT, true},
    {ELEM_TT, ATTR_ORIGIN, false},
    {ELEM_SET, ATTR_ORIGIN, true},
    {ELEM_DIV, ATTR_SHOWBACKGROUND, false},
    {ELEM_UNKNOWN, ATTR_COLOR, true},
    {ELEM_UNKNOWN, ATTR_PADDING, false},
};

INSTANTIATE_TEST_SUITE_P(Table, ImscElementFilter, ::testing::ValuesIn(kFilterCases),
                         [](const ::testing::TestParamInfo<FilterCase>& info) {
                             return std::to_string(info.index) + "_elem" + std::to_string(info.param.elem) + "_" +
                                    (info.param.attr == ATTR_TEXT ? "text" : kTTMLAttrKeys[info.param.attr]);
                         });

TEST_F(ImscElementTest, OutOfRangeAttributeIsRefusedWithAWarning)
{
    LogCapture log;
    auto e = Make(ELEM_STYLE);
    e->AddAttrValue(TTML_ATTR_COUNT, "x");
    e->AddAttrValue(-1, "x");
    EXPECT_TRUE(e->GetAttrMap().empty());
    EXPECT_EQ(2, log.Count("Can't insert any invalid attribute.")) << log.Dump();
}

TEST_F(ImscElementTest, LaterValueReplacesEarlierOne)
{
    auto e = Make(ELEM_SPAN);
    e->AddAttrValue(ATTR_COLOR, "#ff0000ff");
    e->AddAttrValue(ATTR_COLOR, "#00ff00ff");
    EXPECT_EQ("#00ff00ff", Colour(e));
}

TEST_F(ImscElementTest, WithoutAHandlerNothingIsFiltered)
{
    CElement::SetAttributeHandler(nullptr);
    auto e = Make(ELEM_SPAN);
    e->AddAttrValue(ATTR_LINEPADDING, "1c");
    EXPECT_EQ(1u, e->GetAttrMap().size());
}

// ---- Creation from the parent -------------------------------------------------------

TEST_F(ImscElementTest, RootStartsFromTheImscDefaults)
{
    auto tt = Make(ELEM_TT);
    CElementSPTR none;
    tt->CreateFromParent(none);
    EXPECT_EQ(m_handler.GetDefaultAttrValues(), tt->GetAttrMap());
}

// The parent's map is copied whole: filtering happens only on AddAttrValue.
TEST_F(ImscElementTest, ParentMapIsCopiedUnfiltered)
{
    CElementSPTR p = Make(ELEM_P);
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
    CElementSPTR red = MakeSet("red");
    p->AddSetElement("2000", "4000", red);
    CElementSPTR parent = p;

    auto span = Make(ELEM_SPAN);
    span->CreateFromParent(parent);
    ASSERT_EQ(1u, span->GetSetElementCount());
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

TEST_F(ImscElementTest, PlainParentOrSelfGivesNoSets)
{
    auto e = Make(ELEM_P);
    CElementSPTR set = MakeSet("red");
    e->AddSetElement("0", "1000", set);
    CElementSPTR self = e;
    e->CreateFromParent(self);
    EXPECT_EQ(1u, e->GetSetElementCount());

    CElementSPTR plain = std::make_shared<CElement>(ELEM_P);
    auto span = Make(ELEM_SPAN);
    span->CreateFromParent(plain);
    EXPECT_EQ(0u, span->GetSetElementCount());
}

// ---- Timed sets ------------------------------------------------------------------------

TEST_F(ImscElementTest, SetWithoutBeginOrEndIsIgnored)
{
    auto p = Make(ELEM_P);
    CElementSPTR set = MakeSet("red");
    p->AddSetElement("1000", "", set);
    p->AddSetElement("", "2000", set);
    CElementSPTR none;
    p->AddSetElement("1000", "2000", none);
    EXPECT_EQ(0u, p->GetSetElementCount());
    EXPECT_EQ(0u, p->GetSetRegionCount());
}

struct CoverCase {
    unsigned long long begin;
    unsigned long long end;
    const char* colours;  // covering sets' colours in record order
};

void PrintTo(const CoverCase& c, std::ostream* os)
{
    *os << c.begin << "-" << c.end;
}

class ImscElementCover : public ImscElementTest, public ::testing::WithParamInterface<CoverCase> {};

// Sets 1-5 s red and 3-8 s blue, in that order: the pieces between the
// points and which sets cover each.
TEST_P(ImscElementCover, CoveringSetsInRecordOrder)
{
    auto e = Make(ELEM_SPAN);
    CElementSPTR red = MakeSet("red");
    CElementSPTR blue = MakeSet("blue");
    e->AddSetElement("1000", "5000", red);
    e->AddSetElement("3000", "8000", blue);

    std::list<CElementSPTR> covering;
    e->GetSetElementList(GetParam().begin, GetParam().end, covering);
    std::string colours;
    for (const CElementSPTR& s : covering)
        colours += (colours.empty() ? "" : ",") + Colour(s);
    EXPECT_EQ(GetParam().colours, colours);
}

INSTANTIATE_TEST_SUITE_P(Table, ImscElementCover,
                         ::testing::Values(CoverCase{0, 1000, ""}, CoverCase{1000, 3000, "red"},
                                           CoverCase{3000, 5000, "red,blue"}, CoverCase{5000, 8000, "blue"},
                                           CoverCase{8000, 10000, ""}, CoverCase{0, 10000, ""},
                                           CoverCase{2000, 2500, "red"}, CoverCase{4000, 6000, "blue"}),
                         [](const ::testing::TestParamInfo<CoverCase>& info) {
                             return std::to_string(info.param.begin) + "_" + std::to_string(info.param.end);
                         });

TEST_F(ImscElementTest, SetKeysAreThePairsOfEveryRecord)
{
    auto e = Make(ELEM_P);
    CElementSPTR a = MakeSet("red");
    CElementSPTR b = MakeSet("blue");
    e->AddSetElement("1000", "5000", a);
    e->AddSetElement("3000", "8000", b);
    e->AddSetElement("1000", "5000", b);
    std::set<std::pair<unsigned long long, unsigned long long>> keys;
    e->GetSetKeys(keys);
    const std::set<std::pair<unsigned long long, unsigned long long>> expected = {{1000, 5000}, {3000, 8000}};
    EXPECT_EQ(expected, keys);
    EXPECT_EQ(3u, e->GetSetElementCount());
}

// ---- Region sets ---------------------------------------------------------------------

TEST_F(ImscElementTest, RegionKeepsEverySetAndMovesItsBackgroundColour)
{
    auto region = Make(ELEM_REGION);
    CElementSPTR timed = std::make_shared<CIMSCElement>(ELEM_SET);
    timed->AddAttrValue(ATTR_BACKGROUNDCOLOR, "#ff0000ff");
    CElementSPTR untimed = MakeSet("blue");
    region->AddSetElement("1000", "2000", timed);
    region->AddSetElement("", "", untimed);

    EXPECT_EQ(0u, region->GetSetElementCount());
    std::list<CElementSPTR> sets{untimed};  // replaced, not appended to
    region->GetSetRegionList(sets);
    ASSERT_EQ(2u, sets.size());
    EXPECT_EQ(timed, sets.front());
    EXPECT_EQ(untimed, sets.back());

    std::string value;
    EXPECT_FALSE(timed->GetAttrValue(ATTR_BACKGROUNDCOLOR, value));
    ASSERT_TRUE(timed->GetAttrValue(ATTR_REGIONBACKGROUNDCOLOR, value));
    EXPECT_EQ("#ff0000ff", value);

    region->ClearSetElementList();
    EXPECT_EQ(0u, region->GetSetRegionCount());
}

// ---- Image data ---------------------------------------------------------------------

TEST_F(ImscElementTest, ImageDataIsSharedUntilReset)
{
    // CImageData belongs to the image component; an opaque alias of another
    // owner stands in for it (it is never dereferenced here).
    auto owner = std::make_shared<int>(0);
    std::shared_ptr<CImageData> image(owner, reinterpret_cast<CImageData*>(owner.get()));

    auto div = Make(ELEM_DIV);
    EXPECT_FALSE(div->IsImageProfile());
    div->SetImageData(image);
    EXPECT_TRUE(div->IsImageProfile());
    EXPECT_EQ(image, div->GetImageData());
    EXPECT_EQ(3, owner.use_count());  // owner, image, element

    div->ResetImageData();
    EXPECT_FALSE(div->IsImageProfile());
    EXPECT_EQ(nullptr, div->GetImageData());
    EXPECT_EQ(2, owner.use_count());

    // An image the utility could not provide arrives empty.
    std::shared_ptr<CImageData> empty;
    div->SetImageData(image);
    div->SetImageData(empty);
    EXPECT_FALSE(div->IsImageProfile());
}

}  // namespace
