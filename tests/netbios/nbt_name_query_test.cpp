// Name queries against a scripted UDP peer.

#include "netbios/nbt_name_query.h"

#include <gtest/gtest.h>

#include <optional>

#include "netbios/fred.h"
#include "support/driven_loop.h"
#include "support/hex.h"

namespace {

const ZnTimeVal kSoon = {0, 40000}, kLate = {5, 0};

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

  bool Lookup(int retries, const ZnTimeVal& interval) {
    calls_ = 0;
    result_.reset();
    return query_->Lookup(ZnMachine("fred", ZnMachine::Server), {ZnInetAddr::AddressLoopback()}, this, retries,
                          interval, true);
  }
  // The next request that has come, as hex; empty when none has.
  std::string Received() {
    uint8_t buffer[1024];
    size_t length = 0;
    if (peer_.ReadMessage(buffer, sizeof(buffer), length, caller_) != ZnFile::IoStatus::Partial) return {};
    return ToHex(ZnByteBuffer(buffer, length));
  }
  void Answer(const std::string& digits) {
    const ZnPacket bytes = Hex(digits);
    size_t length = 0;
    EXPECT_EQ(peer_.WriteMessage(bytes.Data(), bytes.Length(), length, caller_), ZnFile::IoStatus::Complete);
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
  std::unique_ptr<ZnNBTNameQuery> query_ = std::make_unique<ZnNBTNameQuery>(&loop_, uint16_t{0});
  bool deleteInCallback_ = false;
  int calls_ = 0;
  std::optional<bool> result_;
};

#define ANSWER_HEX "0000 0001 0000 0000" FRED_HEX "0020 0001 00000000 000C 0000 C0A80001 0000 0A000001"

TEST_F(NameQuery, OnlyTheResponseToThisQuestionCounts) {
  ASSERT_TRUE(Lookup(0, kLate));
  EXPECT_EQ(Received(), ToHex(Hex("BEF4 0110 0001 0000 0000 0000" FRED_HEX "0020 0001")));
  Answer("BEEF 8500" ANSWER_HEX);                     // an id of another time
  Answer("BEF4 0500" ANSWER_HEX);                     // a question
  Answer("BEF4 8500 0000 0001 0000 0000 C00C 0020");  // cut short
  Answer("00");                                       // garbage
  Answer(std::string(1400, 'F'));                     // longer than any answer
  loop_.RunFor(20);
  EXPECT_FALSE(result_.has_value());

  Answer("BEF4 8500" ANSWER_HEX);
  Answer("BEF4 8500" ANSWER_HEX);  // a second one finds nobody waiting
  EXPECT_EQ(Result(), true);
  loop_.RunFor(5);
  EXPECT_EQ(calls_, 1);
  EXPECT_EQ(Addresses(), (ZnDList<ZnInetAddr>{ZnInetAddr(192, 168, 0, 1), ZnInetAddr(10, 0, 0, 1)}));

  // The next query has the next id, and neither the late answer nor the old results are its own.
  ASSERT_TRUE(Lookup(0, kLate));
  EXPECT_EQ(Received().substr(0, 4), "bef9");
  Answer("BEF4 8500" ANSWER_HEX);
  Answer("BEF9 8583 0000 0001 0000 0000" FRED_HEX "000A 0001 00000000 0000");  // an answer without addresses
  EXPECT_EQ(Result(), true);
  EXPECT_TRUE(Addresses().IsEmpty());
}

TEST_F(NameQuery, ResendsThenFails) {
  const struct {
    int retries;
    ZnTimeVal interval;
    int sent;
  } cases[] = {{0, kSoon, 1}, {2, kSoon, 3}, {-1, {}, 2}};
  query_->SetDefaults(1, kSoon);
  for (const auto& one : cases) {
    const ZnTimeVal start = ZnTimeVal::now();
    ASSERT_TRUE(Lookup(one.retries, one.interval));
    EXPECT_TRUE(query_->IsRunning());
    EXPECT_EQ(Result(), false);
    EXPECT_GE(ZnTimeVal::now().MillisecondsSince(start), 39 * one.sent);  // the loop's waits are rounded down
    const std::string first = Received();
    EXPECT_FALSE(first.empty());
    for (int i = 1; i < one.sent; i++) EXPECT_EQ(Received(), first);
    EXPECT_EQ(Received(), "");
    EXPECT_FALSE(query_->IsRunning());
  }
}

TEST_F(NameQuery, NodeStatusAsksForAllNames) {
  ZnMachine machine;
  machine.Name(ZnInetAddr::AddressLoopback());
  ASSERT_TRUE(query_->NodeStatus(machine, this, 0, kLate, false));
  EXPECT_EQ(Received(), ToHex(Hex("BEF4 0000 0001 0000 0000 0000"
                                  "20 434B414141414141414141414141414141414141414141414141414141414141 00 0021 0001")));
  Answer("BEF4 8400 0000 0001 0000 0000" FRED_HEX "0021 0001 00000000 0013 01 465245442020202020202020202020 20 0400");
  EXPECT_EQ(Result(), true);
  ZnDList<ZnMachine> machines;
  EXPECT_TRUE(query_->NodeStatusResults(machines));
  EXPECT_EQ(machines, (ZnDList<ZnMachine>{ZnMachine("FRED", 0x20)}));
}

TEST_F(NameQuery, CannotStart) {
  query_->SetNamePort(0);  // the host doesn't send there
  EXPECT_FALSE(Lookup(0, kSoon));
  EXPECT_FALSE(query_->IsRunning());
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
  Answer("BEF4 8500" ANSWER_HEX);
  EXPECT_EQ(Result(), true);
  EXPECT_FALSE(query_);
}

}  // namespace
