// Long and short forms, and which names clients may make.

#include "support/tree_fixture.h"
#include "tree/name_gen.h"

using E = ZnSMBNFSEnum;

TEST(NameGen, Forms) {
  struct Case {
    const char *name, *shortform, *longform;
  };
  for (const Case& c : {Case{"readme.txt", "readme.tx", "readme.txt"}, Case{"a+b.c", "ab.c", "a+b.c"},
                        Case{"longfilename.html", "longfile.ht", "longfilename.html"},
                        Case{"a?b<c>.x|y", "a?b<c>.x|", "abc.xy"}, Case{" . ", "", ""}, Case{"name ", "name", "name"},
                        Case{".profile", ".pr", ".profile"}, Case{"a.b.c", "ab.c", "a.b.c"}, Case{"", "", ""}}) {
    EXPECT_EQ(ZnNameGen::ToShortName(c.name).AsUtf8(), c.shortform) << c.name;
    EXPECT_EQ(ZnNameGen::ToLongName(c.name).AsUtf8(), c.longform) << c.name;
  }
}

class NewNames : public TreeTest {};

TEST_F(NewNames, SettingsRefuse) {
  ZnSMBNFSNode* share = Share();
  List(share, {Entry("existing name.txt")});
  ZnSMBNFSShareConfig& config = filesystem.GetTree(share)->config;
  struct Case {
    int32_t allowed;
    const char* name;
    bool good;
  };
  for (const Case& c :
       {Case{0, "any?thing", true}, Case{E::ANMustBeLong, "a?b", false}, Case{E::ANMustBeLong, "ab", true},
        Case{E::ANMustBeShort, "name.tx", true}, Case{E::ANMustBeShort, "name.txt", false},
        Case{E::ANNoReserved, "Aux", false}, Case{E::ANNoReserved, "CLOCK$", false},
        Case{E::ANNoReserved, "Lpt3", false}, Case{E::ANNoReserved, "COM5", true},
        Case{E::ANNoReserved, "CONSOLE", true}, Case{E::ANNoMangled, "ab~", true}, Case{E::ANNoMangled, "a~.txt", true},
        Case{E::ANNoMangled, "a~b.txt", false}, Case{E::ANNoShortMatch, "existing2", true},
        Case{E::ANNoShortMatch, "existing name.txz", false}, Case{E::ANNoLongMatch, "existing? name.txt", false},
        Case{E::ANMustBeUpper, "ABC", true}, Case{E::ANMustBeUpper, "ABc", false},
        Case{E::ANMustBeLower, "abC", false}}) {
    config.allowednames = c.allowed;
    EXPECT_EQ(filesystem.ValidateName(share, c.name, config), c.good) << c.allowed << " " << c.name;
  }
  config.allowednames = E::ANNoLongMatch;
  EXPECT_TRUE(filesystem.ValidateName(share, "existing name.txt", config, Child(share, "existing name.txt")))
      << "a renamed entry isn't in its own way";
  config.allowednames = 0;
  config.bannedchars = "#";
  EXPECT_FALSE(filesystem.ValidateName(share, "a#b", config));
}
