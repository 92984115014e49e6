#include "runtime/dictionary.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <list>
#include <random>

namespace {

// A key whose hash is its number modulo 100: keys a hundred apart always share a bucket.
struct Key {
  unsigned number;
  uint32_t HashValue() const { return number % 100; }
  bool operator==(const Key&) const = default;
};

}  // namespace

template <>
struct std::hash<Key> {
  size_t operator()(const Key& key) const noexcept { return key.number; }
};

namespace {

using Table = ZnDictionary<Key, int>;

std::vector<unsigned> Order(Table& table) {
  std::vector<unsigned> keys;
  for (auto& entry : table) keys.push_back(entry.key.number);
  return keys;
}

TEST(Dictionary, OrderIsByBucketThenByInsertion) {
  Table table;
  for (unsigned key : {7, 4, 103, 3, 0, 6}) EXPECT_TRUE(table.Insert({key}, 0));
  EXPECT_THAT(Order(table), testing::ElementsAre(4, 0, 6, 7, 103, 3));
  EXPECT_TRUE(table.Remove({7}));
  table.Insert({7}, 0);
  EXPECT_THAT(Order(table), testing::ElementsAre(4, 0, 6, 103, 3, 7));
}

TEST(Dictionary, TheThirteenthInsertionRebuilds) {
  Table table;
  for (unsigned key = 0; key < 12; key++) table.Insert({100 * (12 - key) + key % 5}, static_cast<int>(key));
  EXPECT_EQ(table.BucketCount(), 4U);
  EXPECT_FALSE(table.Insert({1200}, 9));  // refused, but a full table is rebuilt before the key is looked for
  EXPECT_EQ(table.BucketCount(), 16U);
  EXPECT_EQ(table.Limit(), 48U);
  EXPECT_EQ(table.Count(), 12U);
  EXPECT_EQ(*table.Find({1200}), 0);
  // By bucket, and in each bucket in the order in which the old table was walked.
  EXPECT_THAT(Order(table), testing::ElementsAre(1200, 700, 200, 1101, 601, 101, 1002, 502, 903, 403, 804, 304));
}

TEST(Dictionary, PointersSurviveOtherEntriesRemoval) {
  Table table;
  for (unsigned key = 0; key < 10; key++) table.Insert({key * 100}, static_cast<int>(key));
  int* value = table.Find({500});
  auto at = std::find_if(table.begin(), table.end(), [](const auto& entry) { return entry.key.number == 500; });
  table.Remove({400});
  table.Remove({600});
  EXPECT_EQ(table.Find({500}), value);
  EXPECT_EQ((++at)->key.number, 700U);
}

// Against a plain list.
TEST(Dictionary, AgreesWithAListAfterAnyHistory) {
  Table table;
  std::list<std::pair<unsigned, int>> list;
  std::mt19937 random(1);
  auto in_list = [&](unsigned key) {
    return std::find_if(list.begin(), list.end(), [key](const auto& each) { return each.first == key; });
  };
  for (int step = 0; step < 20000; step++) {
    auto key = static_cast<unsigned>(random() % 600);
    auto known = in_list(key);
    if (step % 2500 == 2499) {
      table.RemoveIf([](const auto& entry) { return entry.key.number % 3 == 0; });
      list.remove_if([](const auto& each) { return each.first % 3 == 0; });
    } else if (random() % 3 > 0) {
      EXPECT_EQ(table.Insert({key}, step), known == list.end());
      if (known == list.end()) list.emplace_back(key, step);
    } else {
      EXPECT_EQ(table.Remove({key}), known != list.end());
      if (known != list.end()) list.erase(known);
    }
    ASSERT_EQ(table.Count(), list.size());
  }
  std::vector<unsigned> expected;
  for (const auto& each : list) expected.push_back(each.first);
  std::vector<unsigned> order = Order(table);
  EXPECT_THAT(order, testing::UnorderedElementsAreArray(expected));
  auto bucket = [&](unsigned key) { return key % 100 % table.BucketCount(); };
  EXPECT_TRUE(std::ranges::is_sorted(order, {}, bucket));
  for (const auto& each : list) EXPECT_EQ(*table.Find({each.first}), each.second);
}

}  // namespace
