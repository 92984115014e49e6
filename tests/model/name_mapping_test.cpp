#include "model/name_mapping.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>

#include "config/share_config.h"

namespace {

ZnSMBNFSShareConfig Config(int32_t method = 0) {
  ZnSMBNFSShareConfig config;
  config.hashchars = "?\"<>*|:";
  config.hashchar = ';';
  config.hashmethod = method;
  return config;
}

TEST(NameMapping, Table) {
  const struct {
    const char *client, *share;
  } cases[] = {
      {"a?b", "a;3Fb"},   {"a;b", "a;;b"},        {"", ""},           {"\n", ";0A"},          {"end.", "end;2E"},
      {"end ", "end;20"}, {"a. .", "a. ;2E"},     {" a .b", " a .b"}, {"con", ";63on"},       {"Aux.c.d", ";41ux.c.d"},
      {"LPT9", ";4CPT9"}, {"nul .x", ";6Eul .x"}, {"com0", "com0"},   {"CONSOLE", "CONSOLE"}, {"x.con", "x.con"},
      {"COM¹", ";43OM¹"}, {";3F", ";;3F"},        {"\x7F", "\x7F"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(InternalToWindowsName(c.client, Config()), c.share) << c.client;
    EXPECT_EQ(WindowsToInternalName(c.share, Config()), c.client) << c.share;
  }
  for (const char* others : {"a;41b", "a; b", "a;", "end.", "aux.c", ";2Ea", "x;43on"})
    EXPECT_EQ(WindowsToInternalName(others, Config()), others);
  EXPECT_EQ(InternalToWindowsName("a?", Config(1)), "a;003F");
  EXPECT_EQ(WindowsToInternalName("a;003F", Config(1)), "a?");
  EXPECT_EQ(InternalToWindowsPath("\\a.\\con\\b?\\", Config()), "\\a;2E\\;63on\\b;3F\\");
  ZnSMBNFSShareConfig off = Config();
  off.hashchars = "";
  EXPECT_EQ(InternalToWindowsName("con?.", off), "con?.");
  ZnSMBNFSShareConfig lowercase = Config();
  lowercase.lowercase = true;
  EXPECT_EQ(InternalToWindowsName("con", lowercase),
            InternalToWindowsName("CON", lowercase).AsUtf8().replace(3, 2, "on"));
}

bool IsFit(const std::string& name) {
  const std::string kRefused = "?\"<>*|:";
  if (std::ranges::any_of(name, [&](char c) { return (c > 0 && c < ' ') || kRefused.find(c) != kRefused.npos; }))
    return false;
  if (name.ends_with('.') || name.ends_with(' ')) return false;
  std::string base = name.substr(0, name.find('.'));
  base.resize(base.find_last_not_of(' ') + 1);
  std::ranges::transform(base, base.begin(), [](char c) { return c >= 'A' && c <= 'Z' ? c + 32 : c; });
  for (const char* device : {"con", "prn", "aux", "nul"}) {
    if (base == device) return false;
  }
  const bool numbered = base.starts_with("com") || base.starts_with("lpt");
  return !(numbered && base.size() == 4 && base[3] >= '1' && base[3] <= '9');
}

// Over all short names of characters that matter and many long ones: every client's name comes back, no two share one
// name, all are fit.
TEST(NameMapping, NoTwoNamesBecomeOne) {
  const unsigned seed = std::random_device()();
  std::mt19937 random(seed);
  const std::string kUnits = ";3BF14?. cON\n0";
  for (int32_t method : {0, 1}) {
    const ZnSMBNFSShareConfig config = Config(method);
    std::map<std::string, std::string> owners;
    auto check = [&](const std::string& name) {
      const std::string share = InternalToWindowsName(name, config).AsUtf8();
      ASSERT_EQ(WindowsToInternalName(share, config), name.c_str()) << share << " seed " << seed;
      ASSERT_TRUE(IsFit(share)) << name << " becomes " << share;
      auto [owner, isnew] = owners.emplace(share, name);
      ASSERT_TRUE(isnew || owner->second == name) << share << " is " << owner->second << " and " << name;
    };
    for (size_t number = 1; number < size_t{14} * 14 * 14 * 14; number++) {
      std::string name;
      for (size_t rest = number; rest > 0; rest /= 14) name += kUnits[rest % 14];
      check(name);
    }
    const char* kParts[] = {";", ";3B", ";3F", ";;", ";41", "con", ".", " ", "x", "?", ";003B", ";003F", "\t", "COM7"};
    for (int round = 0; round < 20000; round++) {
      std::string name;
      for (size_t parts = 1 + random() % 8; parts > 0; parts--) name += kParts[random() % std::size(kParts)];
      check(name);
    }
  }
}

}  // namespace
