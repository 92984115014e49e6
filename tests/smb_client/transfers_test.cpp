// Reading, writing and sizes: pieces, their order, and servers that contradict themselves.

#include "smb_client/operations_fixture.h"

namespace {

using namespace std::string_literals;
using testing::Each;
using testing::IsEmpty;

std::string Pattern(size_t length) {
  std::string bytes(length, '\0');
  for (size_t i = 0; i < length; i++) bytes[i] = static_cast<char>(i * 2654435761U >> 13);
  return bytes;
}

constexpr size_t kPiece = 4096;  // what fits the usual buffer

class Transfers : public OperationsTest {
 protected:
  void ConnectTo(unsigned dialect, uint32_t capabilities, unsigned mpx = 50) {
    server.dialect = dialect;
    server.capabilities = capabilities;
    server.maxMpx = mpx;
    Connect();
    Asked();
  }
  // Answers the one held longest, or another, as the server does or in this way.
  void Answer(size_t index = 0, const Script& script = nullptr) {
    const Request request = held.at(index);
    held.erase(held.begin() + static_cast<ptrdiff_t>(index));
    const auto hold = server.replaced.extract(request.command);
    for (const auto& message : script ? script(request) : server(request)) peer.Send(message);
    server.replaced.insert_or_assign(request.command, hold.mapped());
    LetPass(5);
  }
  // Begins an operation whose end goes to `ended`.
  void Start(const Begin& begin) {
    ended.reset();
    call = begin([this](const ZnSmbOutcome& outcome) { ended = outcome; });
    LetPass(5);
  }

  ZnSmbCall call;
  std::optional<ZnSmbOutcome> ended;
};

// How much a request carries, and which request it is.
TEST_F(Transfers, TakeWhatTheServerOffers) {
  const struct {
    unsigned dialect;
    uint32_t capabilities;
    unsigned buffer;
    int read, write;
    size_t piece, largeRead, largeWrite;
  } cases[] = {
      {0, 0, 1024, kRead, kWrite, 764, 764, 764},
      {1, 0, 4356, kRead, kWrite, 4096, 4096, 4096},
      {2, 0, 4356, kReadX, kWriteX, 4096, 4096, 4096},
      {2, kLargeReads, 16644, kReadX, kWriteX, 16384, 61440, 16384},
      {2, kAll, 16644, kReadX, kWriteX, 16384, 61440, 61440},
  };
  for (const auto& test : cases) {
    SCOPED_TRACE(test.dialect);
    server.maxBuffer = test.buffer;
    ConnectTo(test.dialect, test.capabilities);
    const size_t length = 130000;
    server.content = Pattern(length);
    EXPECT_EQ(ReasonOf(Reading(0, length)), Values::ErrNone);
    EXPECT_TRUE(Read() == server.content);
    const auto reads = Asked();
    EXPECT_THAT(reads, Each(test.read));
    EXPECT_EQ(reads.size(), (length + test.largeRead - 1) / test.largeRead);

    std::string written(length, '\0');
    Script answer = [&](const Request& request) {
      const bool x = request.command == kWriteX;
      const size_t offset = x ? request.Word(3) | request.Word(4) << 16 : request.Word(2) | request.Word(3) << 16;
      const std::string bytes = request.data.substr(x ? 1 : 3);
      written.replace(offset, bytes.size(), bytes);
      return Messages{Reply(request, (x ? "\xFF\0\0\0"s : ""s) + U16(static_cast<unsigned>(bytes.size())) +
                                         (x ? std::string(6, '\0') : ""s))};
    };
    Replace(test.write, answer);
    EXPECT_EQ(ReasonOf(Writing(0, server.content)), Values::ErrNone);
    EXPECT_TRUE(written == server.content);
    const auto writes = Asked();
    EXPECT_THAT(writes, Each(test.write));
    EXPECT_EQ(writes.size(), (length + test.largeWrite - 1) / test.largeWrite);
    server.replaced.clear();
  }
}

TEST_F(Transfers, PiecesGoSideBySideAndComeInAnyOrder) {
  for (const unsigned mpx : {0U, 1U, 3U, 50U}) {
    SCOPED_TRACE(mpx);
    server.replaced.clear();
    ConnectTo(2, 0, mpx);
    const size_t most = std::max(mpx, 1U), pieces = 60;
    server.content = Pattern(pieces * kPiece - 7);
    Hold(kReadX);
    Start(Reading(0, pieces * kPiece));
    for (size_t left = pieces; left > 0; left--) {
      ASSERT_EQ(held.size(), std::min(most, left));
      ASSERT_FALSE(ended);
      Answer(held.size() - 1);  // the latest first
    }
    ASSERT_TRUE(ended && ended->Ok());
    EXPECT_TRUE(Read() == server.content);
  }
}

// The end of the file, whatever later pieces bring or say.
TEST_F(Transfers, AShortPieceInTheMiddleEndsTheData) {
  server.content = Pattern(3 * kPiece);
  const Script shorter = [](const Request& request) {
    return Messages{
        Reply(request, "\xFF\0\0\0"s + std::string(6, '\0') + U16(3) + U16(60) + std::string(10, '\0'), "\0abc"s)};
  };
  for (const bool refused : {false, true}) {
    for (const std::vector<size_t>& order : {std::vector<size_t>{0, 0, 0}, {1, 1, 0}, {2, 1, 0}}) {
      ConnectTo(2, 0);
      Hold(kReadX);
      Start(Reading(0, 3 * kPiece));
      for (const size_t index : order) {
        const unsigned offset = held.at(index).Word(3);
        Answer(index, offset == kPiece ? shorter : offset > kPiece && refused ? Refuse(1, 38) : nullptr);
      }
      ASSERT_TRUE(ended);
      EXPECT_EQ(ended->reason, Values::ErrNone);
      EXPECT_TRUE(Read() == server.content.substr(0, kPiece) + "abc");
    }
  }
}

TEST_F(Transfers, APieceThatFailsLeavesNoneInFlight) {
  ConnectTo(2, 0, 3);
  Hold(kWriteX);
  Start(Writing(0, Pattern(10 * kPiece)));
  Answer(1, Refuse(1, 112));
  Answer(1, Refuse(1, 5));
  EXPECT_FALSE(ended) << "the first one is still under way";
  EXPECT_EQ(held.size(), 1U) << "no further ones are begun";
  Answer();
  ASSERT_TRUE(ended);
  EXPECT_EQ(ended->Refusal(), 112U * 256 + 1) << "of the earliest place";
  EXPECT_EQ(peer.requests.size(), 4U + 3U);

  Start(Reading(0, 10));
  Replace(kRead, Refuse(1, 5));
  EXPECT_EQ(Run(Reading(0, 10)).Refusal(), 5U * 256 + 1);
  EXPECT_TRUE(buffer.IsEmpty());
}

TEST_F(Transfers, LargeFilesAreReachedWhereTheServerHasThem) {
  const uint64_t far = 6ULL << 30;
  ConnectTo(2, kAll);
  EXPECT_EQ(ReasonOf(Reading(far + 5, 10)), Values::ErrNone);
  EXPECT_EQ(Last().Word(3) | Last().Word(4) << 16, (far & 0xFFFFFFFF) + 5);
  EXPECT_EQ(Last().Word(10), 1U);
  EXPECT_EQ(ReasonOf(Writing(far + 5, "x")), Values::ErrNone);
  EXPECT_EQ(Last().Word(12), 1U);
  EXPECT_EQ(ReasonOf(Resizing(far)), Values::ErrNone);
  EXPECT_EQ(Last().command, kTrans2);
  EXPECT_EQ(Last().data.substr(Last().data.size() - 8), U64(far));
  EXPECT_EQ(ReasonOf(Writing(uint64_t{1} << 63, "x")), Values::ErrNotSupported);

  for (const unsigned dialect : {1U, 2U}) {
    ConnectTo(dialect, 0);
    EXPECT_EQ(ReasonOf(Reading(far, 10)), Values::ErrNone);
    EXPECT_TRUE(buffer.IsEmpty());
    EXPECT_EQ(ReasonOf(Writing(0xFFFFFFFF, "x")), Values::ErrNotSupported);
    EXPECT_EQ(ReasonOf(Resizing(far)), Values::ErrNotSupported);
    EXPECT_THAT(Asked(), IsEmpty());
    EXPECT_EQ(ReasonOf(Resizing(0xFFFFFFFF)), Values::ErrNone);
    EXPECT_EQ(Last().command, kWrite);
    EXPECT_EQ(Last().words, U16(0x4001) + U16(0) + U32(0xFFFFFFFF) + U16(0));
    EXPECT_EQ(ReasonOf(Reading(0xFFFFFFFE, 10)), Values::ErrNone);
    EXPECT_EQ(Last().Word(dialect == 2 ? 5 : 1), 1U) << "as far as requests can say";
  }
}

TEST_F(Transfers, NothingIsNothingToAskFor) {
  ConnectTo(2, kAll);
  buffer = ZnByteBuffer("old", 3);
  EXPECT_EQ(ReasonOf(Reading(7, 0)), Values::ErrNone);
  EXPECT_TRUE(buffer.IsEmpty());
  EXPECT_EQ(ReasonOf(Writing(7, "")), Values::ErrNone);
  EXPECT_THAT(Asked(), IsEmpty());
}

TEST_F(Transfers, WithdrawnOnesLeaveTheBufferAlone) {
  server.content = Pattern(5 * kPiece);
  ConnectTo(2, 0);
  Hold(kReadX);
  Start(Reading(0, 5 * kPiece));
  Answer(0);
  call.reset();
  while (!held.empty()) Answer(0);
  EXPECT_FALSE(ended);
  EXPECT_TRUE(buffer.IsEmpty());
  server.replaced.clear();
  EXPECT_EQ(ReasonOf(Reading(0, 10)), Values::ErrNone);
}

TEST_F(Transfers, ServersThatContradictThemselvesAreFound) {
  const auto with = [](const std::string& words, const std::string& data = "") -> Script {
    return [=](const Request& request) { return Messages{Reply(request, words, data)}; };
  };
  const std::string zeros(8, '\0'), chain = "\xFF\0\0\0"s;
  const auto readX = [&](unsigned length, unsigned offset, unsigned high, const std::string& data) {
    return with(chain + std::string(6, '\0') + U16(length) + U16(offset) + U16(high) + zeros, data);
  };
  const auto writeX = [&](unsigned count, unsigned high) {
    return with(chain + U16(count) + U16(0) + U16(high) + U16(0));
  };
  const Begin read = Reading(0, 10), write = Writing(0, "0123456789"), cut = Resizing(5);
  const uint64_t far = 6ULL << 30;  // where only the new requests get
  const Begin readfar = Reading(far, 10), writefar = Writing(far, "0123456789");
  const struct {
    const char* what;
    unsigned dialect;
    Begin run;
    int command;
    Script answer;
    Reason reason;
  } cases[] = {
      {"counts differ", 1, read, kRead, with(U16(3) + zeros, "\1\2\0ab"s), Values::ErrBadValue},
      {"more than asked for", 1, read, kRead, with(U16(11) + zeros, "\1\x0B\0abcdefghijk"s), Values::ErrBadValue},
      {"fewer than said", 1, read, kRead, with(U16(5) + zeros, "\1\5\0abc"s), Values::ErrBadValue},
      {"no data block", 1, read, kRead, with(U16(3) + zeros, "\5\3\0abc"s), Values::ErrRead},
      {"reserved words used", 1, read, kRead, with(U16(3) + "\1" + zeros.substr(1), "\1\3\0abc"s), Values::ErrRead},
      {"more than asked for", 2, readfar, kReadX, readX(11, 59, 0, "abcdefghijk"), Values::ErrBadValue},
      {"much more", 2, readfar, kReadX, readX(3, 59, 1, "abc"), Values::ErrBadValue},
      {"fewer than said", 2, readfar, kReadX, readX(5, 60, 0, "\0abc"s), Values::ErrBadValue},
      {"data in the words", 2, readfar, kReadX, readX(3, 40, 0, "abc"), Values::ErrRead},
      {"data behind the message", 2, readfar, kReadX, readX(3, 64, 0, "abc"), Values::ErrRead},
      {"a further command", 2, readfar, kReadX, with("\x2E"s + std::string(23, '\0'), "abc"), Values::ErrRead},
      {"nothing, from nowhere", 2, readfar, kReadX, readX(0, 0, 0, ""), Values::ErrNone},
      {"less written", 1, write, kWrite, with(U16(9)), Values::ErrServer},
      {"more written", 1, write, kWrite, with(U16(11)), Values::ErrServer},
      {"no count", 1, write, kWrite, with(""), Values::ErrRead},
      {"less written", 2, writefar, kWriteX, writeX(9, 0), Values::ErrServer},
      {"more written", 2, writefar, kWriteX, writeX(10, 1), Values::ErrServer},
      {"no count", 2, writefar, kWriteX, with(chain), Values::ErrRead},
      {"something written", 1, cut, kWrite, with(U16(1)), Values::ErrServer},
  };
  for (const auto& test : cases) {
    SCOPED_TRACE(test.what);
    server.replaced.clear();
    ConnectTo(test.dialect, test.dialect == 2 ? kAll : 0);
    Replace(test.command, test.answer);
    EXPECT_EQ(ReasonOf(test.run), test.reason);
    EXPECT_TRUE(client->IsConnected()) << "the two are still of one mind about requests";
    EXPECT_TRUE(buffer.IsEmpty());
  }
  Replace(kRead, with(U16(3) + zeros, "\1\3\0abc and what isn't the file's"s));
  EXPECT_EQ(ReasonOf(read), Values::ErrNone);
  EXPECT_EQ(Read(), "abc");
}

}  // namespace
