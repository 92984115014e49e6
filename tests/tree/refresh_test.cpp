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

TEST_F(Refresh, AChangedProfileMarksTheSessions) {
  StandInSession* session = Session();
  filesystem.GetTree(Share());
  EXPECT_FALSE(session->needsreload);
  std::filesystem::last_write_time(profile_.Path(),
                                   std::filesystem::file_time_type::clock::now() + std::chrono::seconds(5));
  Update(filesystem.root());
  EXPECT_TRUE(session->needsreload);
  EXPECT_TRUE(session->trees.front()->needsreload);
}
