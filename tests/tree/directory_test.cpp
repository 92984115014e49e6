// Listings merged into the tree, attributes, READDIR pages and look-ups by inexact names.

#include <random>

#include "support/tree_fixture.h"
#include "tree/name_gen.h"

class Directory : public TreeTest {};

TEST_F(Directory, HostileAndDoubledNamesAreNotShown) {
  ZnSMBNFSNode* share = Share();
  filesystem.GetTree(share)->config.hashchars = "/?";
  ZnUniString nul = "a";
  nul.Append(char16_t{0});
  const std::string longest(255, 'y');
  List(share, {Entry("."), Entry(".."), Entry(""), Entry("a/b"), Entry("a\\b"), Entry(nul), Entry("up;2F..;2Fetc"),
               Entry(std::string(256, 'x').c_str()), Entry(longest.c_str()), Entry("a;3Fb"), Entry("a;3Fb")});
  auto names = Names(share);
  EXPECT_EQ(std::multiset<std::string>(names.begin(), names.end()), (std::multiset<std::string>{longest, "a?b"}));
}

TEST_F(Directory, HiddenEntriesAndChangesWithinASecondShow) {
  ZnSMBNFSNode* share = Share();
  filesystem.GetTree(share)->config.hidden = 0011;
  ZnSMBCFileObject file = Entry("f"), directory = Entry("d", true);
  file.attribs.hidden = true;
  List(share, {file, directory});
  EXPECT_EQ(Child(share, "f")->attribs.mode, 0100711U);
  EXPECT_EQ(Child(share, "d")->attribs.mtime.useconds, 0U) << "a whole second of long ago is one that was set";
  directory.modified = {ZnTimeVal::now().seconds, 0};
  List(share, {directory});
  uint32_t first = Child(share, "d")->attribs.mtime.useconds;
  EXPECT_NE(first, 0U);
  List(share, {directory});
  EXPECT_NE(Child(share, "d")->attribs.mtime.useconds, first) << "a change within a second shows";
}

TEST_F(Directory, ARefreshDoesNotTakeBackWhatWasWritten) {
  ZnSMBNFSNode* share = Share();
  List(share, {Entry("f", false, 10)});
  ZnSMBNFSNode* node = Child(share, "f");
  ZnSMBNFSFile open;
  node->file = &open;
  Session()->answer = [](ZnSMBNFSCommand&) { return true; };
  auto write = CommandAt(node);
  write->offset = 10;
  write->data = ZnByteBuffer("12345", 5);
  filesystem.BWriteToFile(write.get());
  List(share, {Entry("f", false, 10)});
  EXPECT_EQ(node->attribs.size, 15U) << "the server still shows the old size of an open file";
  node->file = nullptr;
}

// A reader goes page by page while entries come and go, also the one that his cookie names, and one comes for each that
// he reads: he ends, and meets each that stays exactly once.
TEST_F(Directory, ReadersMeetEachEntryThatStaysOnceWhateverComesAndGoes) {
  ZnSMBNFSNode* share = Share();
  const auto seed = static_cast<unsigned>(time(nullptr));
  std::mt19937 random(seed);
  auto coming = [made = 0U]() mutable { return Entry(("c" + std::to_string(made++ * 2654435761U)).c_str()); };
  std::vector<ZnSMBCFileObject> there;
  std::multiset<std::string> seen, stay;
  for (int i = 0; i < 2000; i++) {
    there.push_back(i % 3 == 0 ? Entry(("s" + std::to_string(i)).c_str()) : coming());
    if (i % 3 == 0) stay.insert(there.back().path.AsUtf8());
  }
  List(share, there);
  uint32_t cookie = 0, eof = 0;
  for (int pages = 0; !eof; pages++) {
    ASSERT_LT(pages, 300) << "seed " << seed;
    ZnNFSList<ZnNFSDirEntry> page;
    filesystem.FillContents(share, cookie, 512, page, eof);
    size_t bytes = 0;
    for (const ZnNFSDirEntry& entry : page) {
      cookie = entry.cookie;
      bytes += entry.HowBig() + 4;
      if (entry.name.StartsWith("s")) seen.insert(entry.name.AsUtf8());
      there.push_back(coming());
    }
    EXPECT_LE(bytes, 512U);
    std::erase_if(there, [&](const auto& entry) {
      const ZnSMBNFSNode* child = Child(share, entry.path);
      return entry.path.StartsWith("c") && child && (child->id == cookie || random() % 10 == 0);
    });
    List(share, there);
  }
  EXPECT_EQ(seen, stay) << "seed " << seed;
  ZnNFSList<ZnNFSDirEntry> page;
  filesystem.FillContents(filesystem.root(), filesystem.root()->id, 4096, page, eof);
  EXPECT_EQ(page.Count(), 2U) << ".. and the user: the cookie of the root's . doesn't lead back to it";
}

// The rule itself: the entry of the name, then the link, then another letter case; and in look-ups, child by child, the
// long form first within each.
static ZnSMBNFSNode* WalkForName(ZnSMBNFSNode* directory, const ZnUniString& name, const ZnSMBNFSShareConfig& config,
                                 ZnNameMatch match) {
  auto fold = [&](ZnUniString form) {
    if (config.matchcase) form.LowerCase();
    return form;
  };
  auto find = [&](auto fits) -> ZnSMBNFSNode* {
    for (auto& child : directory->children) {
      bool link = child.key.StartsWith(config.linkstring) && !child.value->IsDirectory();
      if (fits(child.key, link ? child.key.SubString(config.linkstring.Length()) : child.key)) return child.value;
    }
    return nullptr;
  };
  using Name = const ZnUniString&;
  if (auto* exact = find([&](Name stored, Name) { return stored == name; })) return exact;
  if (auto* link = find([&](Name, Name shown) { return shown == name; })) return link;
  if (auto* other = find([&](Name, Name shown) { return fold(shown) == fold(name); })) return other;
  if (match == ZnNameMatch::Entry) return nullptr;
  return find([&](Name, Name shown) {
    return (config.matchlong && fold(ZnNameGen::ToLongName(shown)) == fold(ZnNameGen::ToLongName(name))) ||
           (config.matchshort && fold(ZnNameGen::ToShortName(shown)) == fold(ZnNameGen::ToShortName(name)));
  });
}

TEST_F(Directory, LookUpsFindWhatAWalkWouldFind) {
  unsigned seed = static_cast<unsigned>(time(nullptr));
  std::mt19937 random(seed);
  auto name = [&random] {
    std::string text = random() % 8 == 0 ? "-)" : "";
    for (size_t length = 1 + random() % 4; length > 0; length--) text += "aAbB.?*c: "[random() % 10];
    return text;
  };
  ZnSMBNFSNode* share = Share();
  ZnSMBNFSShareConfig& config = filesystem.GetTree(share)->config;
  for (int round = 0; round < 60; round++) {
    config.matchlong = random() % 2;
    config.matchshort = random() % 2;
    config.matchcase = random() % 2;
    std::vector<ZnSMBCFileObject> entries;
    for (size_t count = random() % 60; count > 0; count--) entries.push_back(Entry(name().c_str(), random() % 4 == 0));
    List(share, entries);
    for (int i = 0; i < 100; i++) {
      ZnUniString wanted = name().c_str();
      if (wanted == "." || wanted == "..") continue;
      for (ZnNameMatch match : {ZnNameMatch::Entry, ZnNameMatch::LookUp}) {
        ASSERT_EQ(filesystem.FindByName(share, wanted, match), WalkForName(share, wanted, config, match))
            << "seed " << seed << " name " << wanted.AsUtf8();
      }
    }
  }
}

TEST_F(Directory, ALargeDirectoryGoesInSlicesAndMayBePrunedMeanwhile) {
  ZnSMBNFSNode* share = Share();
  std::vector<ZnSMBCFileObject> many;
  for (int i = 0; i < 60000; i++) many.push_back(Entry(("f" + std::to_string(i)).c_str()));
  auto milliseconds = [](auto work) {
    const clock_t start = clock();
    work();
    return 1000 * (clock() - start) / CLOCKS_PER_SEC;
  };
  const auto inSlices = [&](ZnSMBNFSNode* node, const std::vector<ZnSMBCFileObject>& entries, auto meanwhile) {
    std::unique_ptr<ZnSMBNFSCommand> command;
    handler.steps = 0;
    EXPECT_LE(milliseconds([&] { command = BeginList(node, entries); }), 20);
    EXPECT_EQ(handler.steps, 0) << "it goes on in the next turn";
    meanwhile();
    bool more = true;
    while (more) EXPECT_LE(milliseconds([&] { more = turns.Next(); }), 20);
    EXPECT_EQ(handler.steps, 1);
    return command->error;
  };
  const auto makeDirectory = [&] {
    List(share, {Entry("d", true)});
    List(Child(share, "d"), many);
    return Child(share, "d");
  };
  EXPECT_EQ(inSlices(makeDirectory(), {many[30000]}, [] {}), ZnNFSEnum::NFS_OK);
  EXPECT_EQ(Names(Child(share, "d")), std::vector<std::string>{"f30000"});
  ZnSMBNFSNode* directory = makeDirectory();
  EXPECT_EQ(inSlices(directory, {}, [&] { filesystem.Prune(directory); }), ZnNFSEnum::NFSERR_STALE);
  makeDirectory();
  EXPECT_EQ(inSlices(share, {Entry("e")}, [] {}), ZnNFSEnum::NFS_OK) << "what is gone holds many itself";
  EXPECT_EQ(Names(share), std::vector<std::string>{"e"});
  EXPECT_EQ(Session()->handles.Count(), 1U);
}

TEST_F(Directory, NamesThatOthersMadeMakeWayForOursInWhicheverPartOfAListing) {
  ZnSMBNFSNode* share = Share();
  List(share, {Entry("gone"), Entry("a;b", false, 1), Entry("a;b", false, 1), Entry("a;;b", false, 2), Entry("z")});
  EXPECT_EQ(Names(share), (std::vector<std::string>{"gone", "a;b", "z", "a;b;;"}));
  ZnSMBNFSNode *ours = Child(share, "a;b"), *others = Child(share, "a;b;;");
  EXPECT_TRUE(ours->stored.IsEmpty());
  EXPECT_EQ(others->stored, "a;b");
  for (const std::vector<ZnSMBCFileObject>& again :
       {std::vector{Entry("a;;b"), Entry("a;b", false, 3)}, std::vector{Entry("a;b", false, 3), Entry("a;;b")}}) {
    List(share, again);
    EXPECT_EQ(Names(share), (std::vector<std::string>{"a;b", "a;b;;"}));
    EXPECT_EQ(Child(share, "a;b"), ours);
    EXPECT_EQ(Child(share, "a;b;;"), others);
    EXPECT_EQ(others->fileobject.size, 3U);
  }
  auto command = CommandAt(share);
  command->sessioncommand = ZnSMBNFSEnum::SCRequestDirs;
  command->sessionstatus = ZnSMBNFSEnum::SSTGetDirs;
  command->alreadylisted = true;
  filesystem.CompleteRequest(command.get());
  EXPECT_EQ(share->children.Count(), 2U) << "no listing has begun, so it held nothing";
}

TEST_F(Directory, AListingThatTheTreeHasNoRoomForLeavesWhatWasThere) {
  ZnSMBNFSNode* share = Share();
  Session()->config.treelimit = 1;
  List(share, {Entry("known")});
  const size_t before = Session()->treebytes;
  for (const std::string by : {"", ";others"}) {
    auto command = CommandAt(share);
    share->contentstime = {};
    Session()->answer = [&](ZnSMBNFSCommand& request) {
      for (int i = 0; i < 20000; i++) {
        request.files.Append(Entry((std::to_string(i) + by + std::string(200, 'x')).c_str()));
      }
      return true;
    };
    filesystem.BUpdateNodeContents(command.get());
    while (turns.Next()) continue;
    EXPECT_EQ(command->error, ZnNFSEnum::NFSERR_IO) << by;
    EXPECT_FALSE(command->listing);
    EXPECT_EQ(Names(share), std::vector<std::string>{"known"});
    EXPECT_EQ(Session()->treebytes, before);
    EXPECT_EQ(Session()->handles.Count(), 1U);
  }
}
