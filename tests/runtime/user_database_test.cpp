#include "runtime/user_database.h"

#include <gtest/gtest.h>

#include "runtime/unix_user.h"

namespace {

class UserDatabase : public testing::TestWithParam<int> {
 protected:
  UserDatabase() { ZnUserCache::InitialiseCache(GetParam()); }
  ~UserDatabase() override {
    ZnUserCache::InitialiseCache(ZnUserCache::NoCache);
    ZnUserDatabaseIterator::FlushUserCache();
  }
};

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
