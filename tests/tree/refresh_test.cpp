// Users, machines and shares from the configuration.

#include "support/tree_fixture.h"

class Refresh : public TreeTest {
 protected:
  Refresh()
      : TreeTest(
            "[nfsserver/shares/smb/nobody-there/machinenames={(x)}]\n[nfsserver/shares/smb/u/*/unixname={(root)}]\n"
            "[nfsserver/shares/smb/u/m/HIDDEN$/password={()}]\n") {}
};

TEST_F(Refresh, UsersWithoutAnAccountAndHiddenSharesAreNotShown) {
  Update(filesystem.root());
  EXPECT_EQ(Names(filesystem.root()), std::vector<std::string>{"u"});
  ZnSMBNFSNode* machine = Walk({"u", "m"});
  Update(machine);
  const auto names = Names(machine);
  EXPECT_EQ(std::set<std::string>(names.begin(), names.end()), (std::set<std::string>{"S", "T"}));
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
