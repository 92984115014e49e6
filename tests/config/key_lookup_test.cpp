#include "config/config_fixture.h"

namespace {

// The keys that fit user u, machine m and share s, the one that holds first.
const struct {
  const char* machine;
  const char* share;
  std::vector<std::string> keys;
} kOrders[] = {
    {"m", "s", {"u/m/s", "*/m/s", "u/*/s", "u/m/*", "*/*/s", "*/m/*", "u/*/*", "*/*/*"}},
    {"m", "", {"u/m", "*/m", "u/*", "*/*"}},
    {"", "ignored", {"u", "*"}},
};

std::string Entry(const std::string& key, const std::string& value) {
  return "[nfsserver/shares/smb/" + key + "/setting={(" + value + ")}]";
}

class KeyLookup : public ConfigTest {};

TEST_F(KeyLookup, EachKeyHoldsAgainstAllBehindIt) {
  for (const auto& [machine, share, keys] : kOrders) {
    for (size_t i = 0; i < keys.size(); i++) {
      for (size_t j = i; j < keys.size(); j++) {
        ASSERT_EQ(Initialise(Entry(keys[j], "loser") + Entry(keys[i], "winner")), "");
        EXPECT_EQ(Value("u", machine, share, "/setting"), "winner") << keys[i] << " against " << keys[j];
      }
    }
  }
  ASSERT_EQ(Initialise(Entry("u*/m", "part") + Entry("u", "user") + Entry("u/m/s", "share")), "");
  EXPECT_EQ(Value("u", "m", "", "/setting"), "(none)");  // only whole names are wildcards, and levels don't mix
  EXPECT_EQ(Value("u", "m", "t", "/setting"), "(none)");
}

}  // namespace
