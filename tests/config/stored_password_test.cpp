#include "config/config_fixture.h"

namespace {

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
