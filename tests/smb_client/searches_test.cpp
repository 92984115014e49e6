// Listings: replies in pieces, servers that lie about sizes and offsets, and the searches that they keep open for us.

#include "smb_client/operations_fixture.h"

namespace {

using namespace std::string_literals;

class Searches : public OperationsTest {
 protected:
  void SetUp() override { Connect(); }

  // Runs a listing that a reply to find first makes as the test wants.
  Reason List(const Script& answer) {
    Replace(kTrans2, answer);
    listed.Flush();
    return ReasonOf(Listing());
  }
  // One entry of search 0x55, and there are more.
  static Messages More(const Request& request) {
    const std::string first = request.Word(14) == 1 ? U16(0x55) : "";
    return {TransReply(request, first + U16(1) + U16(0) + U16(0) + U16(0), DirEntry("x", 1, 100))};
  }
};

// A reply whose words say what the test wants, with 40 bytes behind them.
ScriptedSmbPeer::Script Claim(unsigned params, unsigned paramsAt, unsigned bytes, unsigned bytesAt) {
  return [=](const auto& request) {
    return Messages{Reply(request,
                          U16(params) + U16(bytes) + U16(0) + U16(params) + U16(paramsAt) + U16(0) + U16(bytes) +
                              U16(bytesAt) + U16(0) + U16(0),
                          std::string(40, 's'))};
  };
}
// A piece, of this much data in all.
ScriptedSmbPeer::Script Piece(const std::string& params, const std::string& data, size_t totalData) {
  return [=](const auto& request) {
    return Messages{
        TransReply(request, params, data, static_cast<unsigned>(params.size()), static_cast<unsigned>(totalData))};
  };
}

TEST_F(Searches, LiesAboutSizesAndPlacesEndThem) {
  const unsigned start = 35 + 20;
  const struct {
    const char* what;
    Script answer;
    Reason reason = Values::ErrRead;
  } cases[] = {
      {"parameters in front of the data section", Claim(2, start - 1, 0, 0)},
      {"data in front of it", Claim(0, 0, 2, 0)},
      {"parameters behind the message", Claim(2, start + 39, 0, 0)},
      {"data far behind it", Claim(0, 0, 2, 0xFFFF)},
      {"data inside the parameters", Claim(4, start, 4, start + 2)},
      {"more parameters than asked for", Piece("12345678901", "", 0)},
      {"more data announced than asked for", Piece("", "d", 65535)},
      {"more than announced", Piece("", "ddd", 2)},
      {"a piece of nothing", Piece("", "", 2)},
      {"a piece that never comes", Piece("", "d", 2), Values::ErrTimedOut},
      {"too few words", [](const auto& request) { return Messages{Reply(request, U16(0), std::string(40, 's'))}; }},
      {"setup words",
       [](const auto& request) { return Messages{Reply(request, std::string(18, '\0') + U16(1) + U16(0))}; }},
  };
  for (const auto& test : cases) {
    SCOPED_TRACE(test.what);
    EXPECT_EQ(List(test.answer), test.reason);
    Again();
  }
}

TEST_F(Searches, AReplyInPieces) {
  const std::string params = U16(1) + U16(2) + U16(1) + U16(0) + U16(0);
  const std::string data = DirEntry("one", 1, 100) + DirEntry("two", 2, 100);
  EXPECT_EQ(List([&](const Request& request) {
              const auto all = static_cast<unsigned>(data.size());
              return Messages{TransReply(request, params, data.substr(0, 30), 10, all),
                              TransReply(request, "", data.substr(30, 120), 10, all),
                              TransReply(request, "", data.substr(150), 10, all)};
            }),
            Values::ErrNone);
  ASSERT_EQ(listed.Count(), 2U);
  EXPECT_EQ(listed[1].path, "two");
}

TEST_F(Searches, LyingListingsEnd) {
  const std::string one = DirEntry("one", 1, 100);
  const struct {
    const char* what;
    unsigned count;
    std::string entries;
    size_t kept;
    Reason reason = Values::ErrRead;
  } cases[] = {
      {"more entries than data", 2, one, 1},
      {"no next entry where one is counted", 2, DirEntry("one", 1, 0) + one, 1},
      {"next entry behind the data", 2, DirEntry("one", 1, 0x7FFFFFFF).substr(0, 97) + one, 1},
      {"next entry backwards", 2, U32(0xFFFFFFFC) + one.substr(4) + one, 1},
      {"a cut entry", 1, one.substr(0, 90), 0},
      {"65535 of none", 65535, "", 0},
      {"long short name", 1, one.substr(0, 68) + "\x18" + one.substr(69), 0},
      {"a distance in the last entry, which means nothing", 1, U32(0xFFFFFFFF) + one.substr(4), 1, Values::ErrNone},
  };
  for (const auto& test : cases) {
    SCOPED_TRACE(test.what);
    EXPECT_EQ(List([&](const Request& request) {
                return Messages{TransReply(request, U16(1) + U16(test.count) + U16(1) + U16(0) + U16(0), test.entries)};
              }),
              test.reason);
    EXPECT_EQ(listed.Count(), test.kept);
  }
}

TEST_F(Searches, EndlessListingsEndAtAMillion) {
  constexpr int kEntries = 500;
  std::string entries;
  for (int i = 0; i < kEntries; i++) entries += DirEntry("x", 1, 96);
  size_t kept = 0;
  Replace(kTrans2, [&](const Request& request) {
    const std::string first = request.Word(14) == 1 ? U16(1) : "";
    return Messages{TransReply(request, first + U16(kEntries) + U16(0) + U16(0) + U16(0), entries)};
  });
  EXPECT_EQ(ReasonOf(Listing([&] { return kept += listed.Count(), listed.Flush(), true; })), Values::ErrRead);
  EXPECT_EQ(kept + listed.Count(), 1000000U);
}

// A search that stays open costs the server one of few.
TEST_F(Searches, AreClosedWhenTheirListingEndsEarly) {
  const auto next = [&](const Script& script) -> Script {
    return [=](const Request& request) { return request.Word(14) == 1 ? More(request) : script(request); };
  };
  const struct {
    const char* what;
    Script answer;
    Reason reason;
    bool closes = true;
    bool took = true;
  } cases[] = {
      {"nobody takes the entries", More, Values::ErrInternal, true, false},
      {"refused", next(Refuse(1, 5)), Values::ErrSMB},
      {"no more", next(Refuse(1, 18)), Values::ErrNone, false},
      {"not even one", Refuse(1, 18), Values::ErrNone, false},
      {"refused at first", Refuse(1, 5), Values::ErrSMB, false},
      {"garbage", next(Piece(U16(1) + U16(0) + U32(0), "garbage", 7)), Values::ErrRead},
      {"nothing in it", next(Piece(std::string(8, '\0'), "", 0)), Values::ErrNone},
      {"the end", next(Piece(U16(0) + U16(1) + U32(0), "", 0)), Values::ErrNone, false},
  };
  for (const auto& test : cases) {
    SCOPED_TRACE(test.what);
    Again();
    Replace(kTrans2, test.answer);
    Asked();
    EXPECT_EQ(ReasonOf(Listing([&] { return test.took; })), test.reason);
    LetPass(5);
    EXPECT_EQ(Last().command == kFindClose, test.closes);
    EXPECT_EQ(Last().words == U16(0x55), test.closes);
  }
}

TEST_F(Searches, AreClosedWhenNobodyWaitsAnyLonger) {
  for (const size_t rounds : {0U, 1U, 3U}) {
    for (const bool inside : {false, true}) {
      SCOPED_TRACE(rounds);
      Replace(kTrans2, More);
      std::optional<Request> kept;
      size_t taken = 0;
      ZnSmbCall call;
      call = Listing([&] {
        taken++;
        if (taken < rounds) return true;
        if (inside) call.reset();
        Replace(kTrans2, [&](const Request& request) { return kept = request, Messages(); });
        return true;
      })([](const ZnSmbOutcome&) { FAIL() << "withdrawn"; });
      if (rounds == 0) Replace(kTrans2, [&](const Request& request) { return kept = request, Messages(); });
      LetPass(5);
      call.reset();
      listed.Flush();
      if (kept) {
        for (const auto& message : More(*kept)) peer.Send(message);
      }
      LetPass(5);
      EXPECT_EQ(Last().command, kFindClose);
      EXPECT_EQ(Last().words, U16(0x55));
      EXPECT_TRUE(listed.IsEmpty());
    }
  }
}

}  // namespace
