// What changes do to the tree, beside listings and queries that the server answered before or after it made them.

#include "support/tree_fixture.h"

namespace {

using E = ZnSMBNFSEnum;
using Sizes = std::map<std::string, uint32_t>;  // of the entries of a directory, by their names
using Command = std::unique_ptr<ZnSMBNFSCommand>;

class Changes : public TreeTest {
 protected:
  static constexpr uint32_t kWhenSet = 777;  // seconds

  // A change of the directory `d`, which holds "a" of 1 byte and "b" of 2.
  struct Change {
    const char* name;
    std::function<Command(Changes&, ZnSMBNFSNode* d)> begin;
    Sizes after;
  };

  Changes() {
    List(Share(), {Entry("d", true)});
    d_ = Child(Share(), "d");
    session_ = Session();
  }
  Command At(const char* name, const char* newname = "") { return CommandAt(*name ? Child(d_, name) : d_, newname); }
  // A request is sent, and keeps its command until the test ends it.
  Command Sent(Command command, void (ZnSMBNFSFileSystem::*step)(ZnSMBNFSCommand*)) {
    (filesystem.*step)(command.get());
    return command;
  }
  void Complete(Command& command, bool good = true) {
    if (!good) command->sessionstatus = E::SSTError;
    filesystem.CompleteRequest(command.get());
    while (turns.Next()) continue;
  }
  Command Written(const char* name, uint32_t offset, size_t bytes) {
    Command command = At(name);
    command->offset = offset;
    command->data = ZnByteBuffer("1234567890", bytes);
    return Sent(std::move(command), &ZnSMBNFSFileSystem::BWriteToFile);
  }
  Command Renamed(const char* from, const char* to) {
    Command command = At(from, to);
    command->node2 = d_;
    return Sent(std::move(command), &ZnSMBNFSFileSystem::BRename);
  }
  Command SetTime(const char* name) {
    Command command = At(name);
    command->ownsattr.mode = command->ownsattr.size = command->ownsattr.atime.seconds = ZnNFSEnum::kUnchanged;
    command->ownsattr.mtime = {{}, kWhenSet, 0};
    command->sattr = &command->ownsattr;
    return Sent(std::move(command), &ZnSMBNFSFileSystem::BSetAllAttributes);
  }
  // What was made is asked for.
  void Found(const char* name, uint32_t size) {
    Command command = Sent(CommandAt(d_, name), &ZnSMBNFSFileSystem::BFindEntry);
    command->files.Append(Entry(name, false, size));
    Complete(command);
  }
  Sizes Shown() {
    Sizes sizes;
    for (const auto& child : d_->children) sizes[child.key.AsUtf8()] = child.value->attribs.size;
    return sizes;
  }
  size_t Listings() { return static_cast<size_t>(std::ranges::count(session_->requests, E::SCRequestDirs)); }

  static const Change kChanges[];
  ZnSMBNFSNode* d_;
  StandInSession* session_;
};

const Changes::Change Changes::kChanges[] = {
    {"create",
     [](Changes& t, auto*) { return t.Sent(t.At("", "n"), &ZnSMBNFSFileSystem::BCreateFile); },
     {{"a", 1}, {"b", 2}, {"n", 3}}},
    {"remove", [](Changes& t, auto*) { return t.Sent(t.At("a"), &ZnSMBNFSFileSystem::BRemoveFile); }, {{"b", 2}}},
    {"rename", [](Changes& t, auto*) { return t.Renamed("a", "c"); }, {{"b", 2}, {"c", 1}}},
    {"rename over", [](Changes& t, auto*) { return t.Renamed("a", "b"); }, {{"b", 1}}},
    {"write", [](Changes& t, auto*) { return t.Written("a", 1, 9); }, {{"a", 10}, {"b", 2}}},
    {"truncate", [](Changes& t, auto*) { return t.Written("b", 0, 0); }, {{"a", 1}, {"b", 0}}},
    {"set time", [](Changes& t, auto*) { return t.SetTime("a"); }, {{"a", 1}, {"b", 2}}},
};

// c and C: a change begins and ends. l, e and L: a listing of its directory begins, brings its entries and ends.
TEST_F(Changes, AListingThatOverlapsAChangeNeitherUndoesNorHidesIt) {
  const Sizes before{{"a", 1}, {"b", 2}};
  const auto entries = [](const Sizes& sizes, bool timeset) {
    std::vector<ZnSMBCFileObject> listed;
    for (const auto& [name, size] : sizes) {
      listed.push_back(Entry(name, false, size));
      if (timeset && name == "a") listed.back().modified = {kWhenSet, 0};
    }
    return listed;
  };
  for (const Change& change : kChanges) {
    const bool settime = change.name == std::string("set time");
    for (const std::string order :
         {"cCleL", "clCeL", "cleCL", "cleLC", "lcCeL", "lceCL", "lceLC", "lecCL", "lecLC", "leLcC"}) {
      const bool maybebefore = order.find('l') < order.find('C'), maybeafter = order.find('c') < order.find('L');
      for (const bool after : {false, true}) {
        if (!(after ? maybeafter : maybebefore)) continue;
        SCOPED_TRACE(std::string(change.name) + " " + order + (after ? " after" : " before"));
        NeedsUpdate(d_);
        List(d_, entries(before, false));
        d_->contentstime = {};
        const ZnNFSTimeVal shown = d_->attribs.mtime;
        Command changing, listing;
        for (const char event : order) {
          if (event == 'c') changing = change.begin(*this, d_);
          if (event == 'l') {
            listing = Sent(CommandAt(d_), &ZnSMBNFSFileSystem::BUpdateNodeContents);
            filesystem.ListingBegins(listing.get());
          }
          if (event == 'e') {
            for (const auto& entry : entries(after ? change.after : before, after && settime)) {
              listing->files.Append(entry);
              EXPECT_TRUE(filesystem.TakeListed(listing.get()));
            }
          }
          if (event == 'L') Complete(listing);
          if (event != 'C') continue;
          Complete(changing);
          if (changing->sessioncommand == E::SCRequestCreateFile) Found("n", 3);
        }
        EXPECT_EQ(Shown(), change.after);
        EXPECT_NE(d_->contentstime, ZnMoment{}) << "the listing keeps its age";
        EXPECT_TRUE(!settime || Child(d_, "a")->attribs.mtime.seconds == kWhenSet);
        const ZnNFSTimeVal now = d_->attribs.mtime;
        const bool names = change.after.size() != 2 || change.after.contains("c");
        EXPECT_EQ(std::pair(now.seconds, now.useconds) > std::pair(shown.seconds, shown.useconds), names);
      }
    }
  }
}

TEST_F(Changes, AQueryThatOverlapsAChangeTellsNothingNew) {
  for (const std::string order : {"cqCQ", "cqQC", "qcCQ", "qcQC"}) {
    NeedsUpdate(d_);
    List(d_, {Entry("a", false, 9)});
    ZnSMBNFSNode* a = Child(d_, "a");
    OutOfDate(a, false);
    Command truncation, query;
    for (const char event : order) {
      if (event == 'c') truncation = Written("a", 4, 0);
      if (event == 'q') query = Sent(CommandAt(a), &ZnSMBNFSFileSystem::BUpdateNode);
      if (event == 'C') Complete(truncation);
      if (event != 'Q') continue;
      query->files.Append(Entry("a", false, 9));
      Complete(query);
    }
    EXPECT_EQ(a->attribs.size, 4U) << order;
  }
}

// Else the attributes of a file that is written all the time, or of a directory in which there are always changes,
// would never be up to date, and each call would ask for them.
TEST_F(Changes, AQueryIsTakenWhileAnOpenFileIsWrittenOrEntriesCome) {
  List(d_, {Entry("a", false, 1)});
  ZnSMBNFSNode* a = Child(d_, "a");
  ZnSMBNFSFile open;
  a->file = &open;
  const ZnNFSTimeVal shown = d_->attribs.mtime;
  for (ZnSMBNFSNode* node : {a, d_}) {
    OutOfDate(node, false);
    Command query = Sent(CommandAt(node), &ZnSMBNFSFileSystem::BUpdateNode);
    Command change = node == a ? Written("a", 1, 9) : Sent(At("", "n"), &ZnSMBNFSFileSystem::BCreateFile);
    Complete(change);
    query->files.Append(Entry(node->name, node == d_, 1));
    Complete(query);
    EXPECT_NE(node->attribtime, ZnMoment{});
  }
  EXPECT_EQ(a->attribs.size, 10U);
  EXPECT_GT(d_->attribs.mtime.seconds, shown.seconds) << "the server's is of before";
  a->file = nullptr;
}

TEST_F(Changes, ARefusedRemovalAndWhatMayHaveBeenMadeLeaveTheListingOutOfDate) {
  List(d_, {Entry("a")});
  Command listing, removal = Sent(At("a"), &ZnSMBNFSFileSystem::BRemoveFile);
  d_->contentstime = {};
  listing = Sent(CommandAt(d_), &ZnSMBNFSFileSystem::BUpdateNodeContents);
  filesystem.ListingBegins(listing.get());
  Complete(removal, false);
  Complete(listing);
  EXPECT_EQ(d_->contentstime, ZnMoment{}) << "the listing may be older than what the server knew then";
  const struct {
    unsigned refusal;
    ZnNFSEnum::Status failure;
    bool outdated;
  } cases[] = {
      {0, ZnNFSEnum::NFSERR_IO, true}, {1, ZnNFSEnum::NFSERR_EXIST, true}, {1, ZnNFSEnum::NFSERR_ACCES, false}};
  for (const auto& test : cases) {
    List(d_, {});
    Command making = Sent(At("", "n"), &ZnSMBNFSFileSystem::BMakeDirectory);
    making->refusal = test.refusal;
    making->failure = test.failure;
    Complete(making, false);
    EXPECT_EQ(d_->contentstime == ZnMoment{}, test.outdated) << test.failure;
  }
}

TEST_F(Changes, WhoWantsADirectoryThatIsBeingListedFollowsThatListing) {
  const auto ask = [&] { return Sent(CommandAt(d_), &ZnSMBNFSFileSystem::BUpdateNodeContents); };
  const auto asked = [&](size_t listings, size_t ended) {
    EXPECT_EQ(Listings(), listings);
    EXPECT_EQ(handler.steps, static_cast<int>(ended));
    session_->requests.clear();
    handler.steps = 0;
  };
  handler.steps = 0;
  Command first = ask(), dies = ask(), second = ask();
  asked(1, 0);
  filesystem.ListingBegins(first.get());
  dies.reset();
  Complete(first);
  asked(0, 2);

  d_->contentstime = {};
  first = ask(), second = ask();
  first->failure = ZnNFSEnum::NFSERR_NAMETOOLONG;
  Complete(first, false);
  asked(1, 2);
  EXPECT_EQ(second->error, ZnNFSEnum::NFSERR_NAMETOOLONG);

  first = ask(), second = ask();
  Command third = ask();
  first.reset();
  asked(2, 0);  // the second lists
  filesystem.ListingBegins(second.get());
  OutOfDate(d_, true);
  Complete(second);
  asked(1, 1);  // and for the third that was too early
  filesystem.Prune(d_);
  third->sessionstatus = E::SSTError;
  filesystem.CompleteRequest(third.get());
  EXPECT_EQ(third->error, ZnNFSEnum::NFSERR_STALE);
}

TEST_F(Changes, ChangesOfOneNameTakeTurnsInTheirOrder) {
  List(d_, {Entry("e", true)});
  ZnSMBNFSNode* e = Child(d_, "e");
  using Names = std::vector<std::pair<ZnSMBNFSNode*, ZnUniString>>;
  std::map<std::string, Command> commands;
  const auto take = [&](const std::string& name, const Names& names) {
    Command& command = commands[name] = CommandAt(d_);
    const int steps = handler.steps;
    filesystem.BTakeNames(command.get(), names);
    return handler.steps > steps;
  };
  const auto ends = [&](const std::string& name) {
    const int steps = handler.steps;
    commands.erase(name);
    return handler.steps - steps;
  };
  EXPECT_TRUE(take("create x", {{d_, "x"}}));
  EXPECT_TRUE(take("remove y", {{d_, "y"}}));
  EXPECT_TRUE(take("remove x elsewhere", {{e, "x"}}));
  EXPECT_FALSE(take("create X", {{d_, "X"}})) << "one entry for servers that fold cases";
  EXPECT_FALSE(take("rename x to y", {{d_, "x"}, {d_, "y"}}));
  EXPECT_FALSE(take("rename y to x", {{d_, "y"}, {d_, "x"}}));
  EXPECT_FALSE(take("link x", {{d_, "-)x"}}));
  EXPECT_EQ(ends("remove y"), 0) << "the rename waits for x, too";
  EXPECT_EQ(ends("create x"), 1);
  EXPECT_EQ(ends("rename x to y"), 0) << "it dies where it waits";
  EXPECT_EQ(ends("create X"), 1);
  EXPECT_EQ(ends("rename y to x"), 1);
  EXPECT_TRUE(take("create y", {{d_, "y"}}));
  EXPECT_EQ(ends("link x"), 0);
  EXPECT_TRUE(take("rename in place", {{d_, "x"}, {d_, "X"}}));
  auto gone = CommandAt(d_);
  filesystem.BTakeNames(gone.get(), {{nullptr, "x"}});
  EXPECT_EQ(gone->error, ZnNFSEnum::NFSERR_STALE);
}

}  // namespace
