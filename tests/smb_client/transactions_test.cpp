// Transactions and what runs over them: replies in pieces, listings, the remote API, and servers that lie about sizes
// and offsets.

#include "smb_client/client_fixture.h"

namespace {

using namespace std::string_literals;
using smb_script::DirEntry;
using smb_script::Refusal;
using smb_script::Reply;
using smb_script::Request;
using smb_script::TransReply;
using smb_script::U16;
using smb_script::U32;

class Transactions : public ClientTest {
 protected:
  void SetUp() override { Connect(); }

  Result Transact() {
    return client.Transaction(tree, "\\PIPE\\X", ZnByteBuffer("\1", 2), ZnByteBuffer("pp", 2), ZnByteBuffer("d", 1),
                              &setup, &params, &data, nullptr);
  }

  ZnByteBuffer setup, params, data;
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

TEST_F(Transactions, LiesAboutSizesAndPlacesEndThem) {
  const unsigned start = 35 + 20;
  const struct {
    const char* what;
    Script answer;
    Values::Reason reason = Values::ErrRead;
  } cases[] = {
      {"parameters in front of the data section", Claim(2, start - 1, 0, 0)},
      {"data in front of it", Claim(0, 0, 2, 0)},
      {"parameters behind the message", Claim(2, start + 39, 0, 0)},
      {"data far behind it", Claim(0, 0, 2, 0xFFFF)},
      {"data inside the parameters", Claim(4, start, 4, start + 2)},
      {"more parameters than asked for", Piece("12345678901", "", 0)},
      {"more data than asked for", Piece("", std::string(16385, 'd'), 16385)},
      {"more data announced than asked for", Piece("", "d", 16385)},
      {"more than announced", Piece("", "ddd", 2)},
      {"a piece of nothing", Piece("", "", 2)},
      {"a piece that never comes", Piece("", "d", 2), Values::ErrTimedOut},
      {"a piece of another reply",
       [](Request request) {
         std::string first = TransReply(request, "", "d", 0, 2);
         request.mid++;
         return Messages{first, TransReply(request, "", "d", 0, 2)};
       }},
      {"too few words", [](const auto& request) { return Messages{Reply(request, U16(0), std::string(40, 's'))}; }},
  };
  for (const auto& test : cases) {
    SCOPED_TRACE(test.what);
    Replace(kTransaction, test.answer);
    EXPECT_EQ(Reason(Transact()), test.reason);
    EXPECT_TRUE(client.OutOfStep());
    Again();
  }
}

// ---- listings -------------------------------------------------------------------------------------------------------

TEST_F(Transactions, NoMoreFilesIsNoFailure) {
  Replace(kTrans2, [](const auto& request) { return Messages{Refusal(request, 1, 18)}; });
  EXPECT_EQ(Reason(List()), Values::ErrNone);
}

TEST_F(Transactions, LyingListingsEnd) {
  const std::string one = DirEntry("one", 1, 100);
  const struct {
    const char* what;
    unsigned count;
    std::string entries;
    size_t kept;
    Values::Reason reason = Values::ErrRead;
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
    Replace(kTrans2, [&](const auto& request) {
      return Messages{TransReply(request, U16(1) + U16(test.count) + U16(1) + U16(0) + U16(0), test.entries)};
    });
    listed.Flush();
    EXPECT_EQ(Reason(List()), test.reason);
    EXPECT_EQ(listed.Count(), test.kept);
    Again();
  }
}

TEST_F(Transactions, EndlessListingsEndAtAMillion) {
  constexpr int kEntries = 100;
  std::string entries;
  for (int i = 0; i < kEntries; i++) entries += DirEntry("x", 1, 100);
  Replace(kTrans2, [&](const auto& request) {
    std::string first = request.Word(14) == 1 ? U16(1) : "";
    return Messages{TransReply(request, first + U16(kEntries) + U16(0) + U16(0) + U16(0), entries)};
  });
  EXPECT_EQ(Reason(List()), Values::ErrRead);
  EXPECT_EQ(listed.Count(), 1000000U);
}

}  // namespace
