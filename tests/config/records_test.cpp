#include <tuple>

#include "config/config_fixture.h"

namespace {

// An account that every Debian has, with number 1 and group 1.
constexpr char kFred[] =
    "[nfsserver/shares/smb/fred/unixname={(daemon)}][nfsserver/shares/smb/fred/*/unixname={(daemon)}]"
    "[nfsserver/shares/smb/fred/*/*/unixname={(daemon)}]";

class Records : public ConfigTest {
 public:
  // Loads the record of the server (""), of fred, of one of fred's machines or of the share "fred/pc/c", each with
  // settings of its own, written as "name={(value)}". Gives the error text.
  std::string LoadRecord(const std::string& of, const std::vector<std::string>& settings) {
    const std::string prefix = of.empty() ? "[nfsserver/" : "[nfsserver/shares/smb/" + of + "/";
    std::string text = kFred;
    for (const std::string& setting : settings) text += prefix + setting + "]";
    EXPECT_EQ(Initialise(text), "");
    if (of.empty()) return ZnSMBNFSConfig::LoadServer(server_).AsUtf8();
    if (of == "fred") return ZnSMBNFSConfig::LoadUserConfig("fred", user_).AsUtf8();
    if (of == "fred/pc/c") return ZnSMBNFSConfig::LoadShareConfig("fred", "pc", "c", share_).AsUtf8();
    return ZnSMBNFSConfig::LoadMachineConfig("fred", of.substr(5), machine_).AsUtf8();
  }

  ZnSMBNFSServerConfig server_;
  ZnSMBNFSUserConfig user_;
  ZnSMBNFSMachineConfig machine_;
  ZnSMBNFSShareConfig share_;
};

TEST_F(Records, WhatCantServeIsRefused) {
  const std::pair<const char*, const char*> cases[] = {
      {"", "server/encoding/rpc={(EBCDIC)}"}, {"", "network/addresses={}"},    {"fred", "unixperms={(0)}"},
      {"fred/pc", "password={(0)}"},          {"fred/pc", "sharenames={}"},    {"fred/pc", "encoding={(CP9999)}"},
      {"fred/pc/c", "password={(0)}"},        {"fred/pc/c", "unixperms={(0)}"}};
  for (const auto& [of, setting] : cases) EXPECT_NE(LoadRecord(of, {setting}), "") << of << " " << setting;
  EXPECT_EQ(ZnSMBNFSConfig::LoadMachineConfig("fred", "pc", machine_).AsUtf8(), "") << "a closed share alone";
}

TEST_F(Records, OfAUserWhoseAccountServesUnlessToldOtherwise) {
  const auto values = [this] { return std::tuple(user_.uid, user_.gid, user_.unixperms, user_.rootaccess); };
  ASSERT_EQ(LoadRecord("fred", {"logfile={(/tmp/%%USERNAME%%/%%USERNAME%%.log)}"}), "");
  EXPECT_EQ(Joined(user_.notmachines), "ls,cd,..+");
  EXPECT_EQ(user_.logfile.AsUtf8(), "/tmp/fred/fred.log");
  EXPECT_TRUE(user_.unixuser->MemberOf(1));
  EXPECT_EQ(values(), std::tuple(1, 1, 320, false));
  ASSERT_EQ(LoadRecord("fred", {"uid={(70000)}", "rootaccess={(1)}"}), "");
  EXPECT_EQ(values(), std::tuple(70000, 1, 320, true));
  // "*" is the user's own name, and "~" and the name its home.
  ASSERT_EQ(ZnSMBNFSConfig::LoadUserConfig("daemon", user_).AsUtf8(), "");
  EXPECT_EQ(user_.logfile, "/usr/sbin/.ostrelerrors");
}

TEST_F(Records, OfAMachine) {
  const auto values = [this] {
    return std::tuple(machine_.port, machine_.encoding, machine_.winname.AsUtf8(), machine_.smbtimeout,
                      machine_.timeoffset, machine_.hidedollar, machine_.unixperms);
  };
  ASSERT_EQ(LoadRecord("fred/pc", {"port={(8139)}"}), "");
  EXPECT_EQ(values(), std::tuple(8139, ZnCodeset::Utf8, "fred", 10, -1, true, 320));
  ASSERT_EQ(LoadRecord("fred/pc", {"encoding={(cp850)}", "hidedollar={(0)}", "winname={()}", "smbtimeout={(0)}"}), "");
  EXPECT_EQ(values(), std::tuple(139, ZnCodeset::Cp850, "", 10, -1, false, 320));
  EXPECT_TRUE(!machine_.cleartext && machine_.minauth == ZnMinAuth::Ntlm);
  ASSERT_EQ(LoadRecord("fred/pc", {"cleartext={(1)}", "minauth={(LM)}"}), "");
  EXPECT_TRUE(machine_.cleartext && machine_.minauth == ZnMinAuth::Lm);
  EXPECT_NE(LoadRecord("fred/pc", {"minauth={(none)}"}), "");
  EXPECT_EQ(machine_.signing, ZnSigning::Auto);
  ASSERT_EQ(LoadRecord("fred/pc", {"signing={(Always)}"}), "");
  EXPECT_EQ(machine_.signing, ZnSigning::Always);
  EXPECT_NE(LoadRecord("fred/pc", {"signing={(1)}"}), "");
  ASSERT_EQ(LoadRecord("fred/pc", {}), "");
  EXPECT_EQ(Joined(machine_.sharenames), "*") << "a second load doesn't add to the first";

  const std::tuple<const char*, const char*, const char*> names[] = {{"nbtname={(*)}", "pc1.corp.example", "pc1"},
                                                                     {"nbtname={()}", ".corp", ".corp"},
                                                                     {"nbtname={}", "Pc1", "Pc1"},
                                                                     {"nbtname={(Other.x)}", "pc", "Other.x"}};
  for (const auto& [setting, machine, name] : names) {
    ASSERT_EQ(LoadRecord(std::string("fred/") + machine, {setting}), "");
    EXPECT_EQ(machine_.nbtname.AsUtf8(), name) << setting;
  }
}

TEST_F(Records, CachedRecordsLastUntilTheConfigurationChanges) {
  ASSERT_EQ(Initialise(std::string(kFred) + "[nfsserver/shares/smb/fred/pc/port={(1)}]", true), "");
  for (const int port : {1, 2}) {
    for (int round = 0; round < 2; round++) {
      ASSERT_EQ(ZnSMBNFSConfig::LoadMachineConfig("fred", "pc", machine_).AsUtf8(), "");
      EXPECT_EQ(machine_.port, port);
      machine_.port = 0;
    }
    ZnSMBNFSConfig::SetClientConfig("fred", "[nfsserver/shares/smb/fred/pc/port={(2)}]");
  }
}

}  // namespace
