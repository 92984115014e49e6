// The documents about the configuration say what the program does.

// GCC 12 takes the library's regular expressions for uninitialized when a sanitizer is on.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif

#include <map>
#include <regex>
#include <set>
#include <sstream>

#include "config/config_fixture.h"

namespace {

const std::string kNone = "none";
const std::string kUsers = "nfsserver/shares/smb/";

std::string FileText(const std::string& path) {
  std::ifstream file(std::string(HALDEN_SOURCE_DIR) + "/" + path);
  EXPECT_TRUE(file) << path;
  return {std::istreambuf_iterator<char>(file), {}};
}

// docs/configuration.md: key -> what stands between its braces in the defaults, or kNone.
std::map<std::string, std::string> DocumentedKeys() {
  static const std::regex heading("## .*: `(.*)`"), row("\\| `([a-z/]+)` \\| `?(.*?)`? \\| \\S.* \\|");
  static const std::regex names("USER|MACHINE|SHARE"), bar("\\\\\\|");
  std::map<std::string, std::string> keys;
  std::istringstream document(FileText("docs/configuration.md"));
  std::string prefix;
  std::smatch match;
  for (std::string line; std::getline(document, line);) {
    if (std::regex_match(line, match, heading)) prefix = std::regex_replace(match.str(1), names, "*");
    if (!std::regex_match(line, match, row)) continue;
    const std::string values = match.str(2) == "{}" ? "" : std::regex_replace(match.str(2), bar, "|");
    EXPECT_TRUE(keys.emplace(prefix + match.str(1), values).second) << "twice: " << line;
  }
  return keys;
}

TEST(ConfigurationDocument, HasTheDefaultsAsTheyAre) {
  std::set<std::string> documented, defaults;
  for (const auto& [key, values] : DocumentedKeys())
    if (values != kNone) documented.insert("[" + key + "={" + values + "}]");
  std::istringstream builtin(ZnSMBNFSConfig::defaults);
  for (std::string line; std::getline(builtin, line);)
    if (!line.empty()) defaults.insert(line);
  EXPECT_EQ(documented, defaults);
  EXPECT_GT(documented.size(), 60U);
}

// Keys without a default are found where they are read.
TEST(ConfigurationDocument, HasEveryKeyThatIsRead) {
  const auto keys = DocumentedKeys();
  const std::map<std::string, std::string> readers = {
      {"load_user.cpp", "*/"}, {"load_machine.cpp", "*/*/"}, {"load_share.cpp", "*/*/*/"}};
  static const std::regex name("\"/([a-z]+)\""), whole("\"(nfsserver/[a-z]+/[a-z/]+)\"");
  size_t read = 0;
  for (const auto& [file, level] : readers) {
    const std::string source = FileText("src/config/" + file);
    for (std::sregex_iterator i(source.begin(), source.end(), name), end; i != end; ++i, read++)
      EXPECT_TRUE(keys.contains(kUsers + level + i->str(1))) << level << i->str(1);
  }
  for (const char* file :
       {"config/load_server.cpp", "config/smbnfs_config.cpp", "config/client_config.cpp", "tree/find.cpp"}) {
    const std::string source = FileText(std::string("src/") + file);
    for (std::sregex_iterator i(source.begin(), source.end(), whole), end; i != end; ++i, read++)
      EXPECT_TRUE(i->str(1).starts_with("nfsserver/shares/") || keys.contains(i->str(1))) << i->str(1);
  }
  EXPECT_GT(read, 50U);
}

class SampleProfile : public ConfigTest {};

TEST_F(SampleProfile, LoadsWithUtf8NamesAndItsPassword) {
  Write("profile", FileText("docs/sample-profile.txt"));
  const std::string account =
      "[nfsserver/shares/smb/fred/unixname={(root)}][nfsserver/shares/smb/fred/*/unixname={(root)}]";
  ASSERT_EQ(Initialise(account), "");
  ZnSMBNFSServerConfig server;
  ZnSMBNFSUserConfig user;
  ZnSMBNFSMachineConfig machine;
  EXPECT_EQ(ZnSMBNFSConfig::LoadServer(server).AsUtf8(), "");
  EXPECT_EQ(server.rpcencoding, ZnCodeset::Utf8);
  EXPECT_EQ(ZnSMBNFSConfig::LoadUserConfig("fred", user).AsUtf8(), "");
  EXPECT_EQ(Joined(user.machinenames), "pc1");
  EXPECT_EQ(ZnSMBNFSConfig::LoadMachineConfig("fred", "pc1", machine).AsUtf8(), "");
  EXPECT_EQ(machine.winname.AsUtf8() + ":" + machine.password.AsUtf8(), "Fred:change me");
  EXPECT_TRUE(ZnSMBNFSConfig::CheckValueExistsInConfig("fred", "pc1", "docs"));
}

}  // namespace
