#include "proj/classic/LruMap.h"

#include <vector>

#include <gtest/gtest.h>

namespace ClassicProj {
namespace {

using IntMap = LruMap<int, int>;

// Keys 1, 2, 3 with ten times their value, 3 used last.
IntMap givenFull() {
    IntMap map(3);
    for (const int key : {1, 2, 3}) map.insert(key, 10 * key);
    return map;
}

// Looks keys up in ascending order, which makes it their order of use.
std::vector<int> keysIn(IntMap& map) {
    std::vector<int> keys;
    for (int key = 0; key < 10; ++key)
        if (map.find(key) != nullptr) keys.push_back(key);
    return keys;
}

TEST(LruMapTest, FindsWhatWasInserted) {
    IntMap map = givenFull();
    for (const int key : {1, 2, 3, 3, 1}) {
        ASSERT_NE(map.find(key), nullptr) << key;
        EXPECT_EQ(*map.find(key), 10 * key);
    }
    EXPECT_EQ(map.find(4), nullptr);
    EXPECT_EQ(map.size(), 3U);
}

TEST(LruMapTest, IsEmptyAtFirst) {
    IntMap map(3);
    EXPECT_EQ(map.find(0), nullptr);
    EXPECT_EQ(map.size(), 0U);
}

TEST(LruMapTest, KnowsWhatWasUsedLast) {
    IntMap map = givenFull();
    ASSERT_NE(map.findLastUsed(3), nullptr);
    EXPECT_EQ(*map.findLastUsed(3), 30);
    EXPECT_EQ(map.findLastUsed(1), nullptr);
    map.find(1);
    ASSERT_NE(map.findLastUsed(1), nullptr);
    EXPECT_EQ(*map.findLastUsed(1), 10);
    EXPECT_EQ(IntMap(3).findLastUsed(0), nullptr);
}

TEST(LruMapTest, GivesUpTheLeastRecentlyUsed) {
    IntMap map = givenFull();
    map.insert(4, 40);
    EXPECT_EQ(keysIn(map), (std::vector<int>{2, 3, 4}));
}

TEST(LruMapTest, KeepsWhatIsFoundAgain) {
    IntMap map = givenFull();
    map.find(1);
    map.insert(4, 40);
    EXPECT_EQ(keysIn(map), (std::vector<int>{1, 3, 4}));
}

TEST(LruMapTest, TakesNoUseOfAMissingKeyForOne) {
    IntMap map = givenFull();
    map.find(5);
    map.insert(4, 40);
    EXPECT_EQ(keysIn(map), (std::vector<int>{2, 3, 4}));
}

TEST(LruMapTest, HoldsAsManyAsTheBound) {
    IntMap map(1);
    map.insert(1, 10);
    map.insert(2, 20);
    EXPECT_EQ(keysIn(map), (std::vector<int>{2}));
    EXPECT_EQ(map.size(), 1U);
}

TEST(LruMapTest, LeavesValuesInPlace) {
    IntMap map(3);
    const int* const first = map.insert(1, 10);
    map.insert(2, 20);
    map.insert(3, 30);
    EXPECT_EQ(map.find(1), first);
}

}  // namespace
}  // namespace ClassicProj
