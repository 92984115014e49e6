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
  auto each = list.begin();
  for (auto& entry : table) {
    EXPECT_EQ(entry.key.number, each->first);
    EXPECT_EQ(*table.Find(entry.key), (each++)->second);
  }
}

}  // namespace
