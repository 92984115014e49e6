#include <sys/stat.h>

#include <array>
#include <set>
#include <tuple>

#include "config/config_fixture.h"

namespace {

class Layers : public ConfigTest {};

TEST_F(Layers, LaterLayersReplaceWholeKeys) {
  const std::string user = std::string(ZnDatabase::fileheader) + "[nfsserver/mount/port={(1)}]";
  const std::string profile = std::string(ZnSMBNFSConfig::headertext) + "\n[nfsserver/mount/port={(2)}]";
  const std::array<std::string, 4> cases[] = {{"", "", "", "4242"},
                                              {"", user, "", "1"},
                                              {"\xEF\xBB\xBF" + profile, user, "", "2"},
                                              {profile, user, "[nfsserver/mount/port={(3)}]", "3"}};
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

  std::filesystem::remove(Path("profile"));
  const std::string refusal = "Failed to read from config file: " + Path("profile");
  ASSERT_EQ(mkfifo(Path("profile").c_str(), 0600), 0);
  EXPECT_EQ(Initialise(), refusal);
  std::filesystem::remove(Path("profile"));
  Write("profile", "");
  std::filesystem::resize_file(Path("profile"), 100 << 20);
  EXPECT_EQ(Initialise(), refusal);
}

TEST_F(Layers, NumbersThatAreNoneEndTheStartAndSayWhere) {
  const std::pair<const char*, const char*> cases[] = {
      {"[nfsserver/mount/port={(99999)}]", "from 1 to 65535"},
      {"[nfsserver/mount/port={(4242)(4243)}]", "from 1 to 65535"},
      {"[nfsserver/shares/smb/fred/*/port={(139 )}]", "from 1 to 65535"},
      {"[nfsserver/shares/smb/*/*/*/showhidden={(yes)}]", "from 0 to 1"},
      {"[nfsserver/shares/smb/fred/pc/docs/attribttl={(-1)}]", "from 0 to 2147483647"},
      {"[nfsserver/shares/smb/fred/pc/smbtimeout={(18446744073709551626)}]", "from 0 to 2147483647"},
  };
  for (const auto& [entry, range] : cases) {
    const std::string key = std::string(entry).substr(1, std::string(entry).find('=') - 1);
    EXPECT_EQ(Load("# two lines\n  " + std::string(entry)),
              "Failed to parse contents of config file: " + Path("profile") + "\nError: the value of " + key +
                  " at character 3 in line 2 must be one number " + range);
  }
  EXPECT_EQ(Load("[nfsserver/shares/smb/fred/*/smbtimeout={(0)}][nfsserver/shares/smb/fred/uid={(-1)}]"), "");
}

TEST_F(Layers, UnknownKeysAreToldWithTheNearestKnownOne) {
  const std::string known = "; the nearest known one is nfsserver/";
  const std::pair<std::string, std::string> cases[] = {
      {"nfsserver/mount/prot", known + "mount/port"},
      {"nfsserver/share/smb/fred/pc1/port", known + "shares/smb/fred/pc1/port"},
      {"nfsserver/shares/smb/fred/pc1/docs/lower-case", known + "shares/smb/fred/pc1/docs/lowercase"},
      {"nfsserver/shares/smb/fred/pc1/contentsttl", known + "shares/smb/fred/pc1/*/contentsttl"},
  };
  for (const auto& [key, nearest] : cases) {
    ASSERT_EQ(Load("[" + key + "={(1)}][nfsserver/mount/port={(1)}]"), "");
    EXPECT_EQ(Joined(ZnSMBNFSConfig::Warnings()), "Unknown key " + key + " at character 1 in line 1" + nearest);
  }
  std::string many;
  for (int i = 0; i < 5000; i++) many += "[" + std::string(300, 'x') + std::to_string(i) + "={}]";
  ASSERT_EQ(Load(many), "");
  EXPECT_EQ(ZnSMBNFSConfig::Warnings().Count(), 21U);
}

// Each edit is taken over whole or not at all, and told once.
TEST_F(Layers, RefreshReadsAnEditedProfile) {
  const std::string key = "[nfsserver/mount/mountpoint={(";
  ASSERT_EQ(Load(key + "/a)}]"), "");
  ZnSMBNFSConfig::SetClientConfig("fred", "[nfsserver/shares/smb/fred/pc/port={(77)}]");
  const std::string profile = Path("profile");
  const std::tuple<const char*, std::string, std::string, const char*> cases[] = {
      {"good", key + "/bb)}]", "", "/bb"},
      {"broken", key + "/ccc)}",
       "Failed to parse contents of config file: " + profile +
           "\nError: found \"(EOF)\" at character 37 in line 1 whilst looking for \"]\"",
       "/bb"},
      {"out of range", key + "/ddd)}]\n[nfsserver/mount/port={(0)}]",
       "Failed to parse contents of config file: " + profile +
           "\nError: the value of nfsserver/mount/port at character 1 in line 2 must be one number from 1 to 65535",
       "/bb"},
      {"being written", "", "The config file is empty: " + profile, "/bb"},
      {"gone", "-", "Failed to stat() configuration file: " + profile + "\nNo such file or directory", "/bb"},
      {"good again", key + "/eeee)}]", "", "/eeee"},
  };
  for (const auto& [what, text, error, value] : cases) {
    std::filesystem::remove(profile);
    if (text != "-") Write("profile", text);
    bool changed = false;
    EXPECT_EQ(ZnSMBNFSConfig::Refresh(changed).AsUtf8(), error) << what;
    EXPECT_EQ(changed, error.empty() || std::string(what) == "good") << what;
    EXPECT_EQ(Global("nfsserver/mount/mountpoint"), value) << what;
    EXPECT_TRUE(ZnSMBNFSConfig::Refresh(changed).IsEmpty()) << what << ", the second time";
    EXPECT_FALSE(changed);
    EXPECT_EQ(ZnSMBNFSConfig::Refresh(changed, true).AsUtf8(), error) << what << ", by command";
  }
  EXPECT_EQ(Value("fred", "pc", "", "/port"), "77") << "what clients have set stays";
  Write("profile", "[nfsserver/mount/port={(1)}]");
  bool changed = false;
  ASSERT_TRUE(ZnSMBNFSConfig::Refresh(changed).IsEmpty());
  EXPECT_EQ(Joined(ZnSMBNFSConfig::Warnings()),
            "The change of nfsserver/mount/port counts from the next start of the daemon on");
}

TEST_F(Layers, UsersAndSharesAreWhatHasKeys) {
  using Names = std::multiset<ZnUniString>;
  ASSERT_EQ(Initialise("[nfsserver/shares/smb/fred/x={}][nfsserver/shares/smb/ann/pc/y={}][nfsserver/shares/smb/x={}]"
                       "[nfsserver/shares/smb/fred/pc/c/password={}][nfsserver/shares/smb/fred/pc/c/winname={}]"
                       "[nfsserver/shares/smb/fred/pc/a/b/uid={}][nfsserver/shares/smb/fred/pc/domain={}]"
                       "[nfsserver/shares/smb/fred/pc/password={}][nfsserver/shares/smb/fred/pc/winname={}]"),
            "");
  ZnDList<ZnUniString> users, shares;
  EXPECT_TRUE(ZnSMBNFSConfig::ListUsers(users).IsEmpty());
  EXPECT_EQ(Names(users.begin(), users.end()), (Names{"ann", "fred", "x"}));
  EXPECT_TRUE(ZnSMBNFSConfig::GetShareList("fred", "pc", shares).IsEmpty());
  EXPECT_EQ(Names(shares.begin(), shares.end()), (Names{"a/b", "c", "c", "domain"}));
  EXPECT_TRUE(ZnSMBNFSConfig::CheckValueExistsInConfig("fred", "pc", "c"));
  EXPECT_FALSE(ZnSMBNFSConfig::CheckValueExistsInConfig("fred", "pc", "*"));
}

}  // namespace
