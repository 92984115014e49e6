// Users, machines and shares from the configuration.

#include "support/tree_fixture.h"

class Refresh : public TreeTest {
 protected:
  Refresh()
      : TreeTest(
            "[nfsserver/shares/smb/listed/unixname={(root)}]\n[nfsserver/shares/smb/listed/*/unixname={(root)}]\n"
            "[nfsserver/shares/smb/listed/machinenames={(one)(two)}]\n"
            "[nfsserver/shares/smb/nobody-there/machinenames={(x)}]\n"
            "[nfsserver/shares/smb/u/*/unixname={(root)}]\n"
            "[nfsserver/shares/smb/u/m/HIDDEN$/password={()}]\n") {}

  ZnNFSEnum::Status LookUp(ZnSMBNFSNode* node, const ZnUniString& name) {
    auto command = CommandAt(node, name);
    filesystem.NBFindByName(command.get(), ZnNameMatch::LookUp);
    return command->error;
  }
};

TEST_F(Refresh, UsersAreThoseWhoseRecordsLoad) {
  Update(filesystem.root());
  EXPECT_TRUE(Child(filesystem.root(), "u"));
  EXPECT_TRUE(Child(filesystem.root(), "listed"));
  EXPECT_FALSE(Child(filesystem.root(), "nobody-there")) << "no such account";
  EXPECT_EQ(Child(filesystem.root(), "u")->attribs.mode, 0040000U | 320U);
}

TEST_F(Refresh, ListedMachinesAndNoOthers) {
  ZnSMBNFSNode* user = Walk({"listed"});
  Update(user);
  auto names = Names(user);
  EXPECT_EQ(std::set<std::string>(names.begin(), names.end()), (std::set<std::string>{"one", "two"}));
  EXPECT_EQ(LookUp(user, "three"), ZnNFSEnum::NFSERR_NOENT);
}

TEST_F(Refresh, AWildcardTakesWhatCouldBeAMachine) {
  ZnSMBNFSNode* user = Walk({"u"});
  Update(user);
  struct Case {
    const char* name;
    bool good;
  };
  for (const Case& c : {Case{"pc1", true}, Case{"ls", false}, Case{"CD", false}, Case{"..+", false}, Case{"a/b", false},
                        Case{"a\tb", false}, Case{"My Halden Drives", false}, Case{"pc2.corp", true}}) {
    EXPECT_EQ(LookUp(user, c.name), c.good ? ZnNFSEnum::NFS_OK : ZnNFSEnum::NFSERR_NOENT) << c.name;
    EXPECT_EQ(Child(user, c.name) != nullptr, c.good) << c.name;
  }
  EXPECT_EQ(LookUp(user, std::string(256, 'x').c_str()), ZnNFSEnum::NFSERR_NOENT);
  ZnSMBNFSHandle handle = Child(user, "pc1")->handle;
  user->contentstime = {};
  Update(user);
  EXPECT_EQ(Child(user, "pc1")->handle, handle) << "stays over refreshes";
}

TEST_F(Refresh, LookedUpMachinesAreLimitedAndTheOneInUseStays) {
  ZnSMBNFSNode* user = Walk({"u"});
  ASSERT_EQ(LookUp(user, "first"), ZnNFSEnum::NFS_OK);
  static_cast<StandInSession*>(filesystem.GetSession(Child(user, "first")))->connected = true;
  for (int i = 0; i < 1100; i++) ASSERT_EQ(LookUp(user, ("pc" + std::to_string(i)).c_str()), ZnNFSEnum::NFS_OK);
  EXPECT_LE(user->children.Count(), 1025U);
  EXPECT_TRUE(Child(user, "first"));
  EXPECT_TRUE(Child(user, "pc1099"));
  EXPECT_FALSE(Child(user, "pc0"));
}

TEST_F(Refresh, SharesAreThoseWithAPasswordAndNoDollar) {
  ZnSMBNFSNode* machine = Walk({"u", "m"});
  Update(machine);
  auto names = Names(machine);
  EXPECT_EQ(std::set<std::string>(names.begin(), names.end()), (std::set<std::string>{"S", "T"}));
  ZnSMBNFSHandle handle = Child(machine, "S")->handle;
  machine->contentstime = {};
  Update(machine);
  EXPECT_EQ(Child(machine, "S")->handle, handle);
}

class EditedProfile : public TreeTest {
 protected:
  EditedProfile() : TreeTest(kUser) {}
  // The profile as it was at the start, with entries behind it.
  void Edit(const std::string& more) {
    profile_.Write(TestProfile::Machine("u", "m", {"S", "T"}, kUser + more));
    Update(filesystem.root());
  }
  bool IsThere(const ZnSMBNFSHandle& handle) {
    auto command = CommandAt(nullptr);
    command->handle = handle;
    filesystem.NBFindByHandle(command.get());
    return command->node.Get() != nullptr;
  }
  static constexpr char kUser[] = "[nfsserver/shares/smb/u/machinenames={(m)}]\n";
};

TEST_F(EditedProfile, TouchesOnlyWhatItChanges) {
  struct Case {
    const char* entry;                    // of user u
    const char* stays;                    // of the user, the machine, its shares and a file in S
    std::vector<ZnUniString> again = {};  // what shows at the next listings, all the same
  };
  const Case cases[] = {
      {"", "umSTf"},
      {"m/smbtimeout={(20)}", "umSTf"},
      {"m/S/attribttl={(99)}", "umSTf"},
      {"m/S/unixperms={(0)}", "umT"},
      {"m/S/hashchar={(36)}", "umT", {"u", "m", "S"}},
      {"m/sharenames={(T)}", "umT"},
      {"m/ipaddress={(10.0.0.9)}", "u", {"u", "m", "S"}},
      {"m/port={(445)}", "u", {"u", "m"}},
      {"m/winname={(another)}", "u", {"u", "m"}},
      {"m/encoding={(CP850)}", "u", {"u", "m"}},
      {"machinenames={(n)}][nfsserver/shares/smb/u/n/unixname={(root)}", "u", {"u", "n"}},
      {"machinenames={(*)}", "umSTf"},
      {"machinenames={(*)}][nfsserver/shares/smb/u/notmachines={(M)}", "u"},
      {"unixperms={(0)}", ""},
      {"m/New/password={()}][nfsserver/shares/smb/u/m/New/unixname={(root)}", "umSTf", {"u", "m", "New"}},
      {"broken", "umSTf"},
      {"m/port={(0)}", "umSTf"},
  };
  for (const Case& c : cases) {
    Edit("");
    List(Share(), {Entry("file")});
    const std::pair<char, ZnSMBNFSHandle> handles[] = {{'u', Walk({"u"})->handle},
                                                       {'m', Walk({"u", "m"})->handle},
                                                       {'S', Share()->handle},
                                                       {'T', Share("T")->handle},
                                                       {'f', Child(Share(), "file")->handle}};
    Edit(*c.entry ? "[nfsserver/shares/smb/u/" + std::string(c.entry) + "]" : "# nothing new");
    std::string there;
    for (const auto& [letter, handle] : handles)
      if (IsThere(handle)) there += letter;
    EXPECT_EQ(there, c.stays) << c.entry;
    EXPECT_TRUE(c.again.empty() || Walk(c.again)) << c.entry;
  }
}

TEST_F(EditedProfile, ReachesTheRecordsInUse) {
  StandInSession* session = Session();
  Update(Share());
  Edit(
      "[nfsserver/shares/smb/u/m/smbtimeout={(20)}][nfsserver/shares/smb/u/m/S/attribttl={(99)}]"
      "[nfsserver/server/paranoidupdate={(0)}][nfsserver/shares/smb/daemon/machinenames={()}]");
  EXPECT_EQ(session, Session());
  EXPECT_EQ(session->config.smbtimeout, 20);
  EXPECT_EQ(filesystem.GetTree(Share())->config.attribttl, 99);
  EXPECT_FALSE(filesystem.serverconfig().paranoidupdate);
  EXPECT_TRUE(Child(filesystem.root(), "daemon"));
}
