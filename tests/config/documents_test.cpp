// The documents about the configuration say what the program does.

// GCC 12 takes the library's regular expressions for uninitialized when a sanitizer is on.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif

#include <map>
#include <regex>
#include <sstream>

#include "config/config_fixture.h"
#include "config/known_keys.h"

namespace {

const std::string kNone = "none";

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

TEST(ConfigurationDocument, HasTheKnownKeysWithTheirDefaults) {
  std::map<std::string, std::string> known;
  for (const ZnKnownKey& key : ZnKnownKeys()) known[key.Full().AsUtf8()] = key.preset ? key.preset : kNone;
  EXPECT_EQ(DocumentedKeys(), known);
  EXPECT_EQ(known.size(), ZnKnownKeys().size());
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
  EXPECT_EQ(Joined(ZnSMBNFSConfig::Warnings()), "");
  EXPECT_EQ(machine.winname.AsUtf8() + ":" + machine.password.AsUtf8(), "Fred:change me");
  EXPECT_TRUE(ZnSMBNFSConfig::CheckValueExistsInConfig("fred", "pc1", "docs"));
}

}  // namespace
