#include <sys/stat.h>
#include <utime.h>

#include <array>
#include <set>

#include "config/config_fixture.h"

namespace {

class Layers : public ConfigTest {
 protected:
  static std::multiset<std::string> Names(const ZnDList<ZnUniString>& list) {
    std::multiset<std::string> names;
    for (const ZnUniString& name : list) names.insert(name.AsUtf8());
    return names;
  }
};

TEST_F(Layers, LaterLayersReplaceWholeKeys) {
  const std::string user = std::string(ZnDatabase::fileheader) + "[nfsserver/mount/port={(1)}]";
  const std::string profile = std::string(ZnSMBNFSConfig::headertext) + "\n[nfsserver/mount/port={(2)}]";
  const std::array<std::string, 4> cases[] = {{"", "", "", "4242"},
                                              {"", user, "", "1"},
                                              {profile, user, "", "2"},
                                              {profile, user, "[nfsserver/mount/port={(3)}]", "3"},
                                              {profile, user, "[nfsserver/mount/port={}]", "(none)"}};
  for (const auto& [ofProfile, ofUser, commandLine, port] : cases) {
    Write("profile", ofProfile);
    Write("user", ofUser);
    ASSERT_EQ(Initialise(commandLine), "");
    EXPECT_EQ(Global("nfsserver/mount/port"), port);
  }
}

TEST_F(Layers, FailuresSayWhichTextAndWhere) {
  const std::string where = "Error: found \"x\" at character 1 in line 2 whilst looking for \"[\"";
  EXPECT_EQ(Load("\nx"), "Failed to parse contents of config file: " + Path("profile") + "\n" + where);
  EXPECT_EQ(Load("", "\nx"), "Failed to parse contents of user file: " + Path("user") + "\n" + where);
  Write("user", "");
  EXPECT_EQ(Initialise("\nx"), "Failed to parse command line arguments: " + where);
  EXPECT_EQ(ZnSMBNFSConfig::Initialise(Path("profile"), "", "", false).AsUtf8(),
            "The config database has already been initialised.");

  std::filesystem::remove(Path("profile"));
  EXPECT_EQ(Initialise(), "Failed to stat() configuration file: " + Path("profile") + "\nNo such file or directory");
  const std::string refusal = "Failed to read from config file: " + Path("profile");
  ASSERT_EQ(mkfifo(Path("profile").c_str(), 0600), 0);
  EXPECT_EQ(Initialise(), refusal);
  std::filesystem::remove(Path("profile"));
  Write("profile", "");
  std::filesystem::resize_file(Path("profile"), 100 << 20);
  EXPECT_EQ(Initialise(), refusal);
}

TEST_F(Layers, RefreshTellsAChangeOnce) {
  ASSERT_EQ(Load(""), "");
  const utimbuf earlier{1000, 1000};
  utime(Path("profile").c_str(), &earlier);
  for (const bool expected : {true, false}) {
    bool changed = !expected;
    EXPECT_TRUE(ZnSMBNFSConfig::Refresh(changed).IsEmpty());
    EXPECT_EQ(changed, expected);
  }
  std::filesystem::remove(Path("profile"));
  bool changed = true;
  EXPECT_EQ(ZnSMBNFSConfig::Refresh(changed).AsUtf8(),
            "Failed to stat() configuration file: " + Path("profile") + "\nNo such file or directory");
  EXPECT_FALSE(changed);
}

TEST_F(Layers, UsersAndSharesAreWhatHasKeys) {
  ASSERT_EQ(Initialise("[nfsserver/shares/smb/fred/x={}][nfsserver/shares/smb/ann/pc/y={}][nfsserver/shares/smb/x={}]"
                       "[nfsserver/shares/smb/fred/pc/c/password={}][nfsserver/shares/smb/fred/pc/c/winname={}]"
                       "[nfsserver/shares/smb/fred/pc/a/b/uid={}][nfsserver/shares/smb/fred/pc/port={}]"
                       "[nfsserver/shares/smb/fred/pc/password={}][nfsserver/shares/smb/fred/pc/winname={}]"),
            "");
  ZnDList<ZnUniString> users, shares;
  EXPECT_TRUE(ZnSMBNFSConfig::ListUsers(users).IsEmpty());
  EXPECT_EQ(Names(users), (std::multiset<std::string>{"ann", "fred", "x"}));
  EXPECT_TRUE(ZnSMBNFSConfig::GetShareList("fred", "pc", shares).IsEmpty());
  EXPECT_EQ(Names(shares), (std::multiset<std::string>{"a/b", "c", "c", "port"}));
  EXPECT_TRUE(ZnSMBNFSConfig::CheckValueExistsInConfig("fred", "pc", "c"));
  EXPECT_FALSE(ZnSMBNFSConfig::CheckValueExistsInConfig("fred", "pc", "*"));
}

}  // namespace
