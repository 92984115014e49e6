#include "session/file_turns.h"

#include <gtest/gtest.h>

#include "support/driven_loop.h"

namespace {

enum Kind { Beside, Read, Write, Alone };

class FileTurnsTest : public testing::Test {
 protected:
  FileTurnsTest() {
    handle.IncTop();
    for (ZnSMBNFSNode* node : {&share, &directory, &below, &file, &other}) {
      handle.IncBottom();
      node->handle = handle;
      node->sharenode = &share;
      node->parent = &share;
    }
    below.parent = file.parent = &directory;
    file.parent = &below;
    directory.attribs.type = below.attribs.type = ZnNFSEnum::NFDIR;
  }

  // Asks for the turn `name`.
  void Ask(const std::string& name, ZnSMBNFSNode& node, Kind kind, uint64_t begin = 0, uint64_t end = 0) {
    const auto done = [this, name](const ZnSmbOutcome&) { told += name; };
    auto& turn = had[name];
    if (kind == Beside) turn = turns.Beside(node, done);
    if (kind == Alone) turn = turns.Alone(node, done);
    if (kind == Read || kind == Write) turn = turns.Bytes(node, {begin, end, kind == Write}, done);
  }
  // The names of those whose turn it is.
  std::string There() {
    loop.RunFor(1);
    std::string names;
    for (auto& [name, turn] : had) names += turn->IsThere() ? name : "";
    return names;
  }
  std::string After(const std::string& leaves) {
    had.erase(leaves);
    return There();
  }

  ZnSMBNFSHandle handle;
  ZnSMBNFSNode share, directory, below, file, other;  // share/directory/below/file, share/other
  DrivenLoop loop;
  ZnWakeups wakeups{&loop};
  ZnFileTurns turns{wakeups};
  std::map<std::string, ZnFileTurnPlace> had;
  std::string told;
};

TEST_F(FileTurnsTest, WhoGoesTogether) {
  struct {
    const char* what;
    Kind first, second;
    uint64_t begin, end;  // of the second; the first has bytes 100 to 200
    bool together;
  } const kCases[] = {
      {"two reads of the same bytes", Read, Read, 100, 200, true},
      {"a write beside another", Write, Write, 200, 300, true},
      {"a write before another", Write, Write, 0, 100, true},
      {"a write far behind the end", Write, Write, 1U << 30, UINT64_MAX, true},
      {"a write over the last byte of another", Write, Write, 199, 300, false},
      {"a write over the first byte of another", Write, Write, 0, 101, false},
      {"a write within another", Write, Write, 120, 130, false},
      {"a write around a read", Read, Write, 0, 300, false},
      {"a read within a write", Write, Read, 150, 151, false},
      {"a read beside a write", Write, Read, 200, 300, true},
      {"a read of nothing within a write", Write, Read, 150, 150, true},
      {"an open and a write", Beside, Write, 0, 10, true},
      {"a write and an open", Write, Beside, 0, 0, true},
      {"a change of size behind a write", Write, Alone, 0, 0, false},
      {"a write behind a change of size", Alone, Write, 0, 10, false},
      {"an open behind a removal", Alone, Beside, 0, 0, false},
      {"two changes of size", Alone, Alone, 0, 0, false},
  };
  for (const auto& each : kCases) {
    Ask("1", file, each.first, 100, 200);
    Ask("2", file, each.second, each.begin, each.end);
    EXPECT_EQ(There(), each.together ? "12" : "1") << each.what;
    EXPECT_EQ(After("1"), "2") << each.what;
    EXPECT_EQ(told, each.together ? "" : "2") << each.what;
    told.clear();
    had.clear();
    EXPECT_EQ(turns.NodesInUse(), 0U);
  }
}

TEST_F(FileTurnsTest, TurnsComeInTheOrderInWhichTheyWereAskedFor) {
  Ask("a", file, Write, 0, 10);
  Ask("b", file, Alone);
  Ask("c", file, Write, 10, 20);
  Ask("d", file, Read, 0, 5);
  Ask("e", file, Write, 15, 16);
  Ask("f", other, Alone);
  EXPECT_EQ(There(), "af");
  EXPECT_EQ(After("a"), "bf");
  EXPECT_EQ(After("b"), "cdf");
  EXPECT_EQ(After("d"), "cf");
  EXPECT_EQ(After("c"), "ef");
  EXPECT_EQ(told, "bcde");
}

TEST_F(FileTurnsTest, WhoeverGivesUpLetsTheOthersIn) {
  Ask("a", file, Write, 0, 10);
  Ask("b", file, Alone);
  Ask("c", file, Write, 10, 20);
  EXPECT_EQ(After("b"), "a");  // c was behind b, and stays in its place
  EXPECT_EQ(After("a"), "c");
  Ask("d", file, Alone);
  Ask("e", file, Alone);
  had.erase("c");
  had.erase("d");  // its turn has come, and it wasn't told yet
  EXPECT_EQ(There(), "e");
  EXPECT_EQ(told, "ce");
}

TEST_F(FileTurnsTest, BytesThatWereLeftStandInNobodysWay) {
  Ask("a", file, Write, 0, 10);
  Ask("b", file, Write, 10, 20);
  Ask("c", file, Read, 50, 60);
  had.erase("a");
  had.erase("c");
  Ask("d", file, Write, 0, 10);
  Ask("e", file, Write, 50, 60);
  EXPECT_EQ(There(), "bde");
}

TEST_F(FileTurnsTest, ADirectorysTurnWaitsForWhatIsBelowAndHoldsItUp) {
  Ask("a", file, Write, 0, 10);
  Ask("b", below, Beside);
  Ask("c", other, Write, 0, 10);
  Ask("d", directory, Alone);
  Ask("e", file, Write, 10, 20);
  EXPECT_EQ(There(), "abc");
  had.erase("a");
  EXPECT_EQ(After("b"), "cd");
  ZnSMBNFSNode late;
  handle.IncBottom();
  late.handle = handle;
  late.parent = &below;
  Ask("f", late, Write, 0, 10);  // used only now
  Ask("g", below, Alone);
  Ask("h", late, Beside);
  EXPECT_EQ(There(), "cd");
  EXPECT_EQ(After("d"), "cef");
  had.erase("f");
  EXPECT_EQ(After("e"), "cg");
  EXPECT_EQ(After("g"), "ch");
}

TEST_F(FileTurnsTest, DirectoriesOneBelowTheOtherComeInOrder) {
  Ask("a", below, Alone);
  Ask("b", directory, Alone);
  Ask("c", below, Alone);
  Ask("d", file, Beside);
  EXPECT_EQ(There(), "a");
  EXPECT_EQ(After("a"), "b");
  EXPECT_EQ(After("b"), "c");
  EXPECT_EQ(After("c"), "d");
}

TEST_F(FileTurnsTest, ANodeMayDieWhileThereAreTurnsAtIt) {
  auto dying = std::make_unique<ZnSMBNFSNode>();
  handle.IncBottom();
  dying->handle = handle;
  dying->parent = &directory;
  Ask("a", *dying, Write, 0, 10);
  Ask("b", *dying, Alone);
  dying.reset();
  Ask("c", directory, Alone);
  EXPECT_EQ(There(), "ac");
  EXPECT_EQ(After("a"), "bc");
}

}  // namespace
