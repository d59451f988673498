#include "CAttrMap.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <utility>
#include <vector>

using TTML::CAttrMap;

namespace {

using Reference = std::map<int, std::string>;

Reference AsStdMap(const CAttrMap& m)
{
    return Reference(m.begin(), m.end());
}

// The flat map must behave exactly like an ordered map: random sets,
// replacements, erasures and copies (each copy then changed on its own, as
// an element's map is after inheriting), keys outside the table included.
TEST(AttrMap, BehavesLikeAnOrderedMap)
{
    std::mt19937 rng(7);
    std::vector<CAttrMap> flats(1);
    std::vector<Reference> refs(1);
    for (int step = 0; step < 6000; ++step) {
        const size_t i = rng() % flats.size();
        const int key = static_cast<int>(rng() % (CAttrMap::kMaxKeys + 2)) - 1;
        const unsigned op = rng() % 16;
        if (op == 0 && flats.size() < 8) {
            flats.push_back(flats[i]);
            refs.push_back(refs[i]);
        } else if (op == 1) {
            const size_t j = rng() % flats.size();
            flats[j] = flats[i];
            refs[j] = refs[i];
        } else if (op < 5) {
            ASSERT_EQ(refs[i].erase(key) == 1, flats[i].Erase(key)) << key;
        } else {
            std::string value = std::to_string(rng() % 1000);
            if (key >= 0 && key < CAttrMap::kMaxKeys)
                refs[i][key] = value;
            flats[i].Set(key, value);
        }
        ASSERT_EQ(refs[i].size(), flats[i].size());
    }
    for (size_t i = 0; i < flats.size(); ++i) {
        const CAttrMap& flat = flats[i];
        // Iteration is in ascending key order, whatever order keys came in.
        EXPECT_EQ((std::vector<CAttrMap::value_type>(refs[i].begin(), refs[i].end())),
                  (std::vector<CAttrMap::value_type>(flat.begin(), flat.end())));
        for (int key = -1; key <= CAttrMap::kMaxKeys; ++key) {
            const std::string* v = flat.Get(key);
            const auto it = refs[i].find(key);
            ASSERT_EQ(it != refs[i].end(), v != nullptr) << key;
            ASSERT_EQ(refs[i].count(key), flat.count(key));
            ASSERT_EQ(v == nullptr, flat.find(key) == flat.end());
            if (v) {
                EXPECT_EQ(it->second, *v);
                EXPECT_EQ(key, flat.find(key)->first);
            }
        }
        for (size_t j = 0; j < flats.size(); ++j)
            EXPECT_EQ(refs[i] == refs[j], flat == flats[j]) << i << " " << j;
    }
}

// Equality is about contents, not about the order the keys came in; of a
// key given twice, the later value counts.
TEST(AttrMap, EqualityIgnoresInsertionOrder)
{
    const CAttrMap a{{40, "w"}, {2, "y"}, {13, "z"}, {40, "x"}};
    EXPECT_EQ(a, (CAttrMap{{13, "z"}, {40, "x"}, {2, "y"}}));
    EXPECT_NE(a, (CAttrMap{{13, "z"}, {40, "x"}, {3, "y"}}));
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
    EXPECT_EQ((Reference{{2, "x"}, {7, "text"}}), AsStdMap(target));
    EXPECT_TRUE(source.empty());              // NOLINT(bugprone-use-after-move)
    EXPECT_EQ(nullptr, source.Get(7));        // NOLINT(bugprone-use-after-move)
    EXPECT_EQ(source.begin(), source.end());  // NOLINT(bugprone-use-after-move)
    source.Set(7, "again");
    EXPECT_EQ("again", *source.Get(7));
    CAttrMap other{{1, "y"}};
    other = std::move(target);
    EXPECT_EQ((Reference{{2, "x"}, {7, "text"}}), AsStdMap(other));
    EXPECT_TRUE(target.empty());  // NOLINT(bugprone-use-after-move)
}

}  // namespace
