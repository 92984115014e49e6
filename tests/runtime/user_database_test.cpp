#include "runtime/user_database.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <map>
#include <string>

#include "runtime/unix_user.h"

namespace {

// The accounts as the host's own command lists them, by name: "1:1:/usr/sbin".
std::map<std::string, std::string> Getent() {
  std::map<std::string, std::string> entries;
  FILE* command = popen("getent passwd | awk -F: '{print $1, $3 \":\" $4 \":\" $6}'", "r");
  char name[256], rest[4096];
  while (fscanf(command, "%255s %4095[^\n]", name, rest) == 2) entries.emplace(name, rest);
  pclose(command);
  return entries;
}

class UserDatabase : public testing::TestWithParam<int> {
 protected:
  UserDatabase() { ZnUserCache::InitialiseCache(GetParam()); }
  ~UserDatabase() override {
    ZnUserCache::InitialiseCache(ZnUserCache::NoCache);
    ZnUserDatabaseIterator::FlushUserCache();
  }
};

// Each account by walk, by name and by number, twice: from the host and from the cache.
TEST_P(UserDatabase, FindsWhatTheHostLists) {
  const auto expected = Getent();
  const auto facts = [](const auto& user) {
    return std::to_string(user.UserNumber()) + ":" + std::to_string(user.GroupNumber()) + ":" +
           user.HomeDirectory().AsUtf8();
  };
  std::map<std::string, std::string> walked;
  ZnUserDatabaseIterator walk;
  for (walk.Reset(); walk; ++walk) walked.emplace(walk.Current().Name().AsUtf8(), facts(walk.Current()));
  EXPECT_EQ(walked, expected);
  for (int round = 0; round < 2; round++) {
    for (const auto& [name, known] : expected) {
      ZnUserDatabaseIterator byName, byNumber;
      ASSERT_TRUE(byName.Find(name) && byNumber.Find(byName.Current().UserNumber())) << name;
      EXPECT_EQ(facts(byName.Current()), known);
      EXPECT_EQ(byNumber.Current().UserNumber(), byName.Current().UserNumber());
    }
    ZnUserDatabaseIterator none;
    EXPECT_FALSE(none.Find("no such user"));
    EXPECT_FALSE(none.Find(4000000001U));
  }
}

// A name that the host would cut or change is no name of an account, least of all of the account that would be left.
TEST_P(UserDatabase, NamesAreTakenWhole) {
  ZnUserDatabaseIterator users;
  ASSERT_TRUE(users.FindNameOrNumber("0"));
  EXPECT_EQ(users.Current().Name(), "root");
  EXPECT_FALSE(users.FindNameOrNumber("0a"));
  EXPECT_FALSE(users.Find(ZnUniString(std::u16string(u"root\0x", 6))));
  EXPECT_FALSE(users.Find(ZnUniString(u"root\u4e00")));
  EXPECT_FALSE(ZnUnixUser(ZnUniString(u"\u4e00root"), true).found());
}

INSTANTIATE_TEST_SUITE_P(CacheModes, UserDatabase, testing::Values(0, 1, 2, 3, -1));

}  // namespace
