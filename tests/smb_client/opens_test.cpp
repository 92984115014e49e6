// Opening files in every dialect, what becomes of those that nobody waits for, and the size of a disk.

#include "smb_client/operations_fixture.h"

namespace {

using namespace std::string_literals;
using testing::ElementsAre;

class Opens : public OperationsTest {
 protected:
  void SetUp() override { Connect(); }
};

TEST_F(Opens, SayTheSameInEveryDialect) {
  const struct {
    Values::Access access;
    Values::Sharing sharing;
    bool create;
    Values::Openfunction existing;
    unsigned oldMode, oldFunction;
    uint32_t ntAccess, ntSharing, ntDisposition;
  } cases[] = {
      {Values::AccessRead, Values::DenyNone, false, Values::OFOpen, 0x40, 1, 0x120089, 3, 1},
      {Values::AccessWrite, Values::DenyWrite, false, Values::OFTruncate, 0x21, 2, 0x120116, 1, 4},
      {Values::AccessReadWrite, Values::DenyAll, true, Values::OFFail, 0x12, 0x10, 0x12019F, 0, 2},
      {Values::AccessRead, Values::DenyRead, true, Values::OFOpen, 0x30, 0x11, 0x120089, 2, 3},
      {Values::AccessRead, Values::DenyNone, true, Values::OFTruncate, 0x40, 0x12, 0x120089, 3, 5},
  };
  for (const uint32_t capabilities : {uint32_t{0}, kAll}) {
    server.capabilities = capabilities;
    Again();
    for (const auto& test : cases) {
      ZnSMBCFileObject file = File("\\a");
      ASSERT_EQ(ReasonOf(Opening(&file, {test.access, test.sharing, test.create, test.existing})), Values::ErrNone);
      EXPECT_TRUE(file.isopen && file.fid == 0x4001 && file.access == test.access && file.attribs.archive);
      EXPECT_EQ(file.size, server.content.size());
      const Request& request = Last();
      if (capabilities == 0) {
        EXPECT_EQ(request.Word(3), test.oldMode);
        EXPECT_EQ(request.Word(8), test.oldFunction);
        EXPECT_EQ(file.modified, ZnTimeVal()) << "local to the server";
        continue;
      }
      ASSERT_EQ(request.command, kNtCreate);
      EXPECT_EQ(request.words.substr(5, 2), U16(4));
      EXPECT_EQ(request.words.substr(15, 4), U32(test.ntAccess));
      EXPECT_EQ(request.words.substr(31, 8), U32(test.ntSharing) + U32(test.ntDisposition));
      EXPECT_EQ(request.data, "\0\\\0a\0\0\0"s);
      EXPECT_EQ(file.modified, (ZnTimeVal{978307200, 0}));
      EXPECT_EQ(file.created, (ZnTimeVal{946684800, 0}));
    }
  }
}

TEST_F(Opens, AFileThatNobodyWaitsForIsClosedAgain) {
  for (const uint32_t capabilities : {uint32_t{0}, kAll}) {
    server.capabilities = capabilities;
    server.maxMpx = 1;
    Again();
    Asked();
    ZnSMBCFileObject file = File();
    ZnSmbCall call = Opening(&file)([](const ZnSmbOutcome&) { FAIL() << "withdrawn"; });
    call.reset();
    LetPass(5);
    EXPECT_THAT(Asked(), ElementsAre(capabilities == 0 ? kOpen : kNtCreate, kClose));
    EXPECT_EQ(Last().Word(0), 0x4001U);
    EXPECT_FALSE(file.isopen);

    // And one that is to be closed is, although the request has to wait.
    const ZnSmbCall first = Deleting()([](const ZnSmbOutcome&) {});
    call = Closing()([](const ZnSmbOutcome&) { FAIL() << "withdrawn"; });
    call.reset();
    LetPass(5);
    EXPECT_THAT(Asked(), ElementsAre(kDelete, kClose));
  }
}

TEST_F(Opens, ThatCantBeTrue) {
  const std::string noAccess = "\xFF"s + std::string(15, '\0') + U16(3) + std::string(12, '\0');
  for (const auto& [words, reason] :
       {std::pair{noAccess, Values::ErrBadValue}, {"\x2E"s + std::string(29, '\0'), Values::ErrRead}}) {
    Replace(kOpen, [&words = words](const Request& request) { return Messages{Reply(request, words)}; });
    ZnSMBCFileObject file = File();
    EXPECT_EQ(ReasonOf(Opening(&file)), reason);
    EXPECT_FALSE(file.isopen);
  }
}

// ---- the size of a disk

TEST_F(Opens, ADiskIsAskedForInTheWayThatTheServerKnows) {
  for (const unsigned dialect : {1U, 2U}) {
    for (const bool refused : {false, true}) {
      server.dialect = dialect;
      Again();
      Asked();
      if (refused) Replace(kTrans2, Refuse(1, 124));
      ZnSMBDiskSpace space;
      EXPECT_EQ(ReasonOf([&](const ZnSmbDone& done) { return client->GetDiskSpace(1, tree, &space, done); }),
                Values::ErrNone);
      EXPECT_TRUE(space.total == 4096000 && space.free == 1228800);
      const bool old = dialect == 1 || refused;
      EXPECT_EQ(Last().command, old ? kQueryDisk : kTrans2);
    }
  }
}

}  // namespace
