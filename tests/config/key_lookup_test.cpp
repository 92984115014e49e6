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

TEST_F(KeyLookup, ValuesAreAsManyAsWereAskedFor) {
  ASSERT_EQ(Initialise("[none={}][two={(1)(2)}][text={(x)}][f={(1:0:1)}][g={(1:2)}]"), "");
  for (const char* key : {"none", "two", "absent"}) {
    int32_t value = 99;
    EXPECT_FALSE(ZnSMBNFSConfig::GetValue(key, "", "", "", "", value, 0, 9)) << key;
    EXPECT_EQ(value, 99);
  }
  ZnDList<ZnUniString> list{"a", "b"};  // bounds count what the list held before
  EXPECT_FALSE(ZnSMBNFSConfig::GetValue("text", "", "m", "s", "/ignored without a user", list, 1, 1));
  EXPECT_EQ(Joined(list), "a,b,x");
  std::vector<bool> flags;
  EXPECT_TRUE(ZnSMBNFSConfig::GetValue("f", "", "", "", "", flags, 1, 3));
  EXPECT_EQ(flags, (std::vector<bool>{true, false, true}));
  EXPECT_FALSE(ZnSMBNFSConfig::GetValue("f", "", "", "", "", flags, 1, 2));
  EXPECT_FALSE(ZnSMBNFSConfig::GetValue("g", "", "", "", "", flags, 1, 3));
}

}  // namespace
