#include "runtime/dictionary.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <list>
#include <random>

namespace {

struct Key {
  unsigned number;
  bool operator==(const Key&) const = default;
};

}  // namespace

template <>
struct std::hash<Key> {
  size_t operator()(const Key& key) const noexcept { return key.number % 400; }  // some share a hash
};

namespace {

using Table = ZnDictionary<Key, int>;

std::vector<unsigned> Order(Table& table) {
  std::vector<unsigned> keys;
  for (auto& entry : table) keys.push_back(entry.key.number);
  return keys;
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
    auto key = static_cast<unsigned>(random() % (step < 10000 ? 6000 : 60));
    auto known = in_list(key);
    if (random() % 3 > 0) {
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
  EXPECT_EQ(Order(table), expected);
  for (const auto& each : list) EXPECT_EQ(*table.Find({each.first}), each.second);
}

}  // namespace
