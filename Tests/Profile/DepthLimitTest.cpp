// Deeply nested documents are refused at the walker's limit instead of
// recursing on; shallower ones still parse.

#include "LogCapture.h"
#include "ProfileWalk.h"
#include "RowPrinter.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace TTML;
using WalkTest::Doc;
using WalkTest::Walk;

std::string Repeat(const std::string& s, int n)
{
    std::string out;
    for (int i = 0; i < n; ++i)
        out += s;
    return out;
}

// `levels` nested divs around one paragraph.
std::string DivChain(int levels)
{
    return Doc(Repeat("<div region=\"r1\">", levels) + "<p begin=\"00:00:01.000\" end=\"00:00:02.000\">deep</p>" +
               Repeat("</div>", levels));
}

// `levels` nested spans inside one paragraph.
std::string SpanChain(int levels)
{
    return Doc("<div region=\"r1\"><p begin=\"00:00:01.000\" end=\"00:00:02.000\">" + Repeat("<span>", levels) +
               "deep" + Repeat("</span>", levels) + "</p></div>");
}

struct DepthCase {
    const char* name;
    std::string xml;
    bool accepted;
};

class DepthLimit : public ::testing::TestWithParam<DepthCase> {};

TEST_P(DepthLimit, RefusesOnlyBeyondTheLimit)
{
    const auto& c = GetParam();
    LogCapture log;
    Walk w(c.xml);
    const bool refusedForDepth = log.Has("Document nesting deeper than 64 levels; refusing it");
    if (c.accepted) {
        EXPECT_EQ(ERR_NONE, w.result);
        EXPECT_FALSE(refusedForDepth);
        auto text = w.Text("deep");
        ASSERT_TRUE(text);
        ASSERT_TRUE(text->GetParent());
        EXPECT_EQ(ELEM_P, text->GetParent()->GetType());
    } else {
        EXPECT_EQ(ERR_INVALID, w.result);
        EXPECT_TRUE(refusedForDepth);
        // One refusal, not one per level.
        EXPECT_EQ(1, log.Count("Document nesting deeper than 64 levels; refusing it"));
    }
}

// tt, body and one div/p make the XML depth a few levels more than the
// chain; libxml2 itself stops at 256.
INSTANTIATE_TEST_SUITE_P(
    Walker, DepthLimit,
    ::testing::Values(DepthCase{"Divs40", DivChain(40), true}, DepthCase{"Divs58", DivChain(58), true},
                      DepthCase{"Divs70", DivChain(70), false}, DepthCase{"Divs240", DivChain(240), false},
                      DepthCase{"Spans40", SpanChain(40), true}, DepthCase{"Spans58", SpanChain(58), true},
                      DepthCase{"Spans70", SpanChain(70), false}, DepthCase{"Spans240", SpanChain(240), false}),
    TTMLTest::RowName());

TEST(DepthLimitReuse, ProfileWalksNormallyAfterARefusal)
{
    WalkTest::TestProfile profile;
    ASSERT_TRUE(profile.Initialize());
    EXPECT_EQ(ERR_INVALID, WalkTest::WalkAndReset(profile, SpanChain(100)));
    EXPECT_EQ(ERR_NONE, WalkTest::WalkAndReset(profile, SpanChain(10)));
    profile.Destroy();
}

}  // namespace
