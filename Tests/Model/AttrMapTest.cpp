#include "CAttrMap.h"

#include <gtest/gtest.h>

#include <map>
#include <random>

using TTML::CAttrMap;

namespace {

std::map<int, std::string> AsStdMap(const CAttrMap& m)
{
    return std::map<int, std::string>(m.begin(), m.end());
}

// The flat map must behave exactly like the ordered map it replaced: random
// sets, replacements and erasures, then the same contents in the same order.
TEST(AttrMap, BehavesLikeAnOrderedMap)
{
    std::mt19937 rng(7);
    CAttrMap flat;
    std::map<int, std::string> reference;
    for (int step = 0; step < 5000; ++step) {
        int key = static_cast<int>(rng() % 58);
        if (rng() % 4 == 0) {
            EXPECT_EQ(reference.erase(key) == 1, flat.Erase(key));
        } else {
            std::string value = std::to_string(rng() % 1000);
            reference[key] = value;
            flat.Set(key, value);
        }
        ASSERT_EQ(reference.size(), flat.size());
    }
    EXPECT_EQ(reference, AsStdMap(flat));
    for (int key = -1; key <= 58; ++key) {
        const std::string* v = flat.Get(key);
        ASSERT_EQ(reference.count(key) == 1, v != nullptr) << key;
        if (v) {
            EXPECT_EQ(reference[key], *v);
        }
        EXPECT_EQ(reference.count(key), flat.count(key));
    }
}

TEST(AttrMap, CopiesAreIndependentAndEqual)
{
    CAttrMap parent{{27, "#ffffff"}, {3, "0c"}, {27, "#ff0000"}};
    EXPECT_EQ((std::map<int, std::string>{{3, "0c"}, {27, "#ff0000"}}), AsStdMap(parent));
    CAttrMap child = parent;
    EXPECT_EQ(parent, child);
    child.Set(7, "text");
    child.Set(3, "1c");
    EXPECT_NE(parent, child);
    EXPECT_EQ("0c", *parent.Get(3));
    EXPECT_EQ(nullptr, parent.Get(7));
    CAttrMap other{{1, "x"}};
    other = parent;
    EXPECT_EQ(parent, other);
}

}  // namespace
