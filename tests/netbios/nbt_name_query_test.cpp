// Name queries against a scripted UDP peer.

#include "netbios/nbt_name_query.h"

#include <gtest/gtest.h>

#include <optional>
#include <set>

#include "netbios/fred.h"
#include "support/driven_loop.h"
#include "support/hex.h"

namespace {

using std::chrono::milliseconds;
constexpr milliseconds kSoon{40}, kLate{5000};

class NameQuery : public ::testing::Test, public ZnCallback<bool> {
 protected:
  NameQuery() {
    EXPECT_TRUE(peer_.Bind(ZnInetAddr::AddressLoopback(), ZnSocket::Datagram, false, 0, false));
    EXPECT_TRUE(peer_.SetBlocking(false) && peer_.LocalAddress(address_));
    query_->SetNamePort(address_.GetPort());
  }

  void Dispatch(bool found) override {
    calls_++;
    result_ = found;
    if (deleteInCallback_) query_.reset();
  }

  bool Lookup(int retries, milliseconds interval, bool broadcast = false) {
    calls_ = 0;
    result_.reset();
    return query_->Lookup(ZnMachine("fred", ZnMachine::Server), {ZnInetAddr::AddressLoopback()}, this, retries,
                          interval, broadcast);
  }
  // The next request that has come, as hex; empty when none has. Its id is taken off to id_.
  std::string Received() {
    uint8_t buffer[1024];
    size_t length = 0;
    if (peer_.ReadMessage(buffer, sizeof(buffer), length, caller_) != ZnFile::IoStatus::Partial) return {};
    const std::string digits = ToHex(ZnByteBuffer(buffer, length));
    id_ = digits.substr(0, 4);
    return digits.substr(4);
  }
  // A datagram to whoever asked, with the id of the question in front or another.
  void Answer(const std::string& digits, ZnSocket* from = nullptr) { Send(id_ + digits, from ? *from : peer_); }
  void Send(const std::string& digits, ZnSocket& from) {
    const ZnPacket bytes = Hex(digits);
    size_t length = 0;
    EXPECT_EQ(from.WriteMessage(bytes.Data(), bytes.Length(), length, caller_), ZnFile::IoStatus::Complete);
  }
  std::optional<bool> Result() {
    loop_.RunUntil([&] { return result_.has_value(); });
    return result_;
  }
  ZnDList<ZnInetAddr> Addresses() {
    ZnDList<ZnInetAddr> addresses;
    query_->LookupResults(addresses);
    return addresses;
  }

  DrivenLoop loop_;
  ZnSocket peer_;
  ZnInetAddr address_, caller_;
  std::string id_;
  std::unique_ptr<ZnNBTNameQuery> query_ = std::make_unique<ZnNBTNameQuery>(&loop_, uint16_t{0});
  bool deleteInCallback_ = false;
  int calls_ = 0;
  std::optional<bool> result_;
};

#define OTHER_HEX "20 4547464345464545434143414341434143414341434143414341434143414342 00"
#define ANSWER_HEX "0000 0001 0000 0000" FRED_HEX "0020 0001 00000000 000C 0000 C0A80001 0000 0A000001"

TEST_F(NameQuery, OnlyTheResponseToThisQuestionCounts) {
  ASSERT_TRUE(Lookup(0, kLate));
  EXPECT_EQ(Received(), ToHex(Hex("0100 0001 0000 0000 0000" FRED_HEX "0020 0001")));
  Send((id_ == "beef" ? "BEEE" : "BEEF") + std::string("8500" ANSWER_HEX), peer_);  // an id of another time
  Answer("0500" ANSWER_HEX);                                                        // a question
  Answer("8500 0000 0001 0000 0000 C00C 0020");                                     // cut short
  Answer("8500 0000 0001 0000 0000" OTHER_HEX "0020 0001 00000000 0006 0000 C0A80001");
  Answer("8500 0000 0000 0000 0000");
  Send("00", peer_);                    // garbage
  Send(std::string(1400, 'F'), peer_);  // longer than any answer
  loop_.RunFor(20);
  EXPECT_FALSE(result_.has_value());

  Answer("8500" ANSWER_HEX);
  Answer("8500" ANSWER_HEX);  // a second one finds nobody waiting
  EXPECT_EQ(Result(), true);
  loop_.RunFor(5);
  EXPECT_EQ(calls_, 1);
  EXPECT_EQ(Addresses(), (ZnDList<ZnInetAddr>{ZnInetAddr(192, 168, 0, 1), ZnInetAddr(10, 0, 0, 1)}));

  // The next query doesn't keep the old results. Of two records the one for another name says nothing.
  ASSERT_TRUE(Lookup(0, kLate));
  Received();
  Answer("8500 0000 0002 0000 0000" OTHER_HEX "0020 0001 00000000 0006 0000 C0A80001" FRED_HEX
         "000A 0001 00000000 0000");
  EXPECT_EQ(Result(), true);
  EXPECT_TRUE(Addresses().IsEmpty());
}

// A process that guessed the id could send a user and his password elsewhere. A broadcast is answered by whom it finds.
TEST_F(NameQuery, StrangersAnswerOnlyBroadcasts) {
  ZnSocket stranger;
  ASSERT_TRUE(stranger.Bind(ZnInetAddr(127, 0, 0, 9), ZnSocket::Datagram, false, 0, false));
  for (bool broadcast : {false, true}) {
    ASSERT_TRUE(Lookup(0, kLate, broadcast));
    Received();
    Answer("8500" ANSWER_HEX, &stranger);
    loop_.RunFor(20);
    EXPECT_EQ(result_.has_value(), broadcast);
  }
}

TEST_F(NameQuery, IdAndPortCantBeGuessed) {
  std::set<std::string> ids;
  std::set<uint16_t> ports;
  for (int i = 0; i < 16; i++) {
    ASSERT_TRUE(Lookup(0, kLate));
    Received();
    ids.insert(id_);
    ports.insert(caller_.GetPort());
  }
  EXPECT_GE(ids.size(), 14U);
  EXPECT_GE(ports.size(), 14U);
}

TEST_F(NameQuery, OwnerMayDeleteTheQueryInTheCallback) {
  deleteInCallback_ = true;
  ASSERT_TRUE(Lookup(0, kSoon));
  EXPECT_EQ(Result(), false);
  query_ = std::make_unique<ZnNBTNameQuery>(&loop_, uint16_t{0});
  query_->SetNamePort(address_.GetPort());
  ASSERT_TRUE(Lookup(0, kLate));
  Received();  // of the query that is gone
  Received();
  Answer("8500" ANSWER_HEX);
  EXPECT_EQ(Result(), true);
  EXPECT_FALSE(query_);
}

}  // namespace
