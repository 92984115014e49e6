#include "config/config_fixture.h"

namespace {

class ClientConfig : public ConfigTest {
 protected:
  static std::string Set(const char* user, const std::string& text) {
    return ZnSMBNFSConfig::SetClientConfig(user, text).AsUtf8();
  }
  static bool Changed() {
    bool changed = false;
    ZnSMBNFSConfig::Refresh(changed);
    return changed;
  }
};

TEST_F(ClientConfig, GetGivesTheUsersOwnEntriesOfTheUserFile) {
  ASSERT_EQ(Load("[nfsserver/shares/smb/fred/pc/port={(1)}]",
                 "# mine\n[nfsserver/shares/smb/fred/pc/winname={(a\\)b)}][nfsserver/shares/smb/freda/x={(2)}]"),
            "");
  ZnUniString text = "old";
  EXPECT_TRUE(ZnSMBNFSConfig::GetClientConfig("fred", text).IsEmpty());
  EXPECT_EQ(text.AsUtf8(), "# mine\n[nfsserver/shares/smb/fred/pc/winname={(a\\)b)}]\n");
}

TEST_F(ClientConfig, RefusalsChangeNothing) {
  ASSERT_EQ(Load(""), "");
  const std::string good = "[nfsserver/shares/smb/fred/pc/port={(1)}]";
  EXPECT_EQ(Set("fred", good + "]"), R"e(Error: found "]" at character 42 in line 1 whilst looking for "[")e");
  for (const char* key : {"fred", "freda/x", "*/x", "fred/pc/uid", "fred/gid", "fred/unixname"}) {
    const std::string name = std::string("nfsserver/shares/smb/") + key;
    EXPECT_TRUE(Set("fred", good + "[" + name + "={(0)}]").ends_with(": " + name)) << name;
  }
  EXPECT_EQ(Value("fred", "pc", "", "/port"), "139");
  EXPECT_FALSE(Changed());
}

TEST_F(ClientConfig, SetMergesSingleValuesAndRemovesByEmptyOnes) {
  ASSERT_EQ(Load("[nfsserver/mount/mountpoint={(/smb)}][nfsserver/shares/smb/fred/pc/c/lowercase={(1)}]"
                 "[nfsserver/shares/smb/fred/logfile={(//%%USERNAME%%)}][nfsserver/shares/smb/fred/tv/port={(3)}]"),
            "");
  EXPECT_EQ(Set("fred",
                "[nfsserver/shares/smb/fred/pc={()}][nfsserver/shares/smb/fred/tv/port={(1)(2)}]"
                "[nfsserver/shares/smb/fred/mac/port={(9)}]"),
            "S:fred:/smb/fred/:/fred");
  EXPECT_TRUE(Changed());
  EXPECT_EQ(Value("fred", "pc", "c", "/lowercase"), "0");
  EXPECT_EQ(Value("fred", "tv", "", "/port"), "3");
  EXPECT_EQ(Value("fred", "mac", "", "/port"), "9");
  EXPECT_EQ(Set("root", "[nfsserver/mount/port={(77)}][nfsserver/shares/smb/*/logfile={(/log)}]"),
            "S:root:/smb/root/:/log");
  EXPECT_EQ(Global("nfsserver/mount/port"), "77");
}

TEST(StoredPassword, DecodesForItsUserOnly) {
  for (const std::string& password :
       {std::string(), {"seven.."}, {"eight..."}, {"Gr\u00FC\u00DFe"}, std::string(190, 'p')}) {
    ZnUniString value = password;
    ASSERT_TRUE(ZnSMBNFSConfig::EncryptString(value, "fred").IsEmpty());
    EXPECT_EQ(value.Length() % 16, 0U);
    EXPECT_EQ(value.SearchFirstNotIn("0123456789ABCDEF"), ZnUniString::kNotFound);
    ZnUniString others = value;
    ZnSMBNFSConfig::DecryptString(others, "Fred");
    EXPECT_NE(others.AsUtf8(), password);
    EXPECT_TRUE(ZnSMBNFSConfig::DecryptString(value, "fred").IsEmpty());
    EXPECT_EQ(value.AsUtf8(), password);
  }
}

TEST(StoredPassword, RefusesWhatIsNoEncodedText) {
  for (const char* stored : {"0", "00112233445566778899AABB", "0011223344556677F", "0000000000000000", "no digits"}) {
    ZnUniString value = stored;
    EXPECT_EQ(ZnSMBNFSConfig::DecryptString(value, "fred").AsUtf8(), "The password was not a correctly encoded string");
    EXPECT_EQ(value.AsUtf8(), stored);
  }
  for (const std::string& password : {std::string(191, 'p'), std::string("\xE2\x82\xAC")}) {
    ZnUniString value = password;
    EXPECT_FALSE(ZnSMBNFSConfig::EncryptString(value, "fred").IsEmpty());
    EXPECT_EQ(value.AsUtf8(), password);
  }
}

}  // namespace
