#include "runtime/dictionary.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

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
  auto at = table.At({500});
  table.Remove({400});
  table.Remove({600});
  EXPECT_EQ(table.Find({500}), value);
  EXPECT_EQ((++at)->key.number, 700U);
}

}  // namespace
