#include "CAttrMap.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <utility>
#include <vector>

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
    // Iteration itself must be in ascending key order, whatever order the
    // keys were added or erased in.
    EXPECT_EQ((std::vector<CAttrMap::value_type>(reference.begin(), reference.end())),
              (std::vector<CAttrMap::value_type>(flat.begin(), flat.end())));
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

// Equality is about contents, not about the order the keys came in.
TEST(AttrMap, EqualityIgnoresInsertionOrder)
{
    CAttrMap a{{40, "x"}, {2, "y"}, {13, "z"}};
    CAttrMap b{{13, "z"}, {40, "x"}, {2, "y"}};
    EXPECT_EQ(a, b);
    b.Set(2, "other");
    EXPECT_NE(a, b);
    CAttrMap c{{13, "z"}, {40, "x"}};
    EXPECT_NE(a, c);
    c.Set(3, "y");
    EXPECT_NE(a, c);
}

TEST(AttrMap, FindAndErasedEntriesStayConsistent)
{
    CAttrMap m{{5, "a"}, {1, "b"}, {9, "c"}, {3, "d"}};
    // Erasing an entry other than the last moves the last one into its place.
    EXPECT_TRUE(m.Erase(1));
    EXPECT_FALSE(m.Erase(1));
    EXPECT_EQ("d", *m.Get(3));
    EXPECT_EQ("c", *m.Get(9));
    m.Set(1, "e");
    auto it = m.find(3);
    ASSERT_NE(m.end(), it);
    EXPECT_EQ(3, it->first);
    ++it;
    EXPECT_EQ(5, it->first);
    EXPECT_EQ(m.end(), m.find(4));
    EXPECT_EQ((std::map<int, std::string>{{1, "e"}, {3, "d"}, {5, "a"}, {9, "c"}}), AsStdMap(m));
}

TEST(AttrMap, KeysOutsideTheTableAreNotHeld)
{
    CAttrMap m;
    m.Set(-1, "x");
    m.Set(CAttrMap::kMaxKeys, "x");
    EXPECT_TRUE(m.empty());
    EXPECT_EQ(nullptr, m.Get(-1));
    EXPECT_EQ(nullptr, m.Get(CAttrMap::kMaxKeys));
    EXPECT_FALSE(m.Erase(-1));
    m.Set(0, "low");
    m.Set(CAttrMap::kMaxKeys - 1, "high");
    EXPECT_EQ((std::map<int, std::string>{{0, "low"}, {CAttrMap::kMaxKeys - 1, "high"}}), AsStdMap(m));
}

// Own entries move when the map makes room, so a value read from the map
// itself must be taken before that (a dangling read shows under ASan).
TEST(AttrMap, ValueFromTheSameMapSurvivesItsGrowth)
{
    const std::string value(40, 'v');
    CAttrMap m{{9, value}};
    for (int key : {3, 12, 1, 20, 7})
        m.Set(key, *m.Get(9));
    m.SetAll(m, 9);
    for (int key : {1, 3, 7, 9, 12, 20})
        EXPECT_EQ(value, *m.Get(key)) << key;
    EXPECT_EQ(6u, m.size());
}

TEST(AttrMap, MovedFromMapIsEmptyAndUsable)
{
    CAttrMap source{{7, "text"}, {2, "x"}};
    CAttrMap target(std::move(source));
    EXPECT_EQ((std::map<int, std::string>{{2, "x"}, {7, "text"}}), AsStdMap(target));
    EXPECT_TRUE(source.empty());                 // NOLINT(bugprone-use-after-move)
    EXPECT_EQ(nullptr, source.Get(7));           // NOLINT(bugprone-use-after-move)
    EXPECT_EQ(source.begin(), source.end());     // NOLINT(bugprone-use-after-move)
    source.Set(7, "again");
    EXPECT_EQ("again", *source.Get(7));
    CAttrMap other{{1, "y"}};
    other = std::move(target);
    EXPECT_EQ((std::map<int, std::string>{{2, "x"}, {7, "text"}}), AsStdMap(other));
    EXPECT_TRUE(target.empty());  // NOLINT(bugprone-use-after-move)
}

}  // namespace
