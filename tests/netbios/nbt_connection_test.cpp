// The session service over real loopback connections, against a peer that does what the test says.

#include "netbios/nbt_connection.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <functional>
#include <memory>

#include "netbios/fred.h"
#include "runtime/random.h"
#include "support/driven_loop.h"
#include "support/hex.h"

namespace {

using namespace std::chrono_literals;

using ::testing::ElementsAre;
using End = ZnNbtConnection::End;
using Strings = std::vector<std::string>;

#define REQUEST_HEX "81000044" FRED_HEX "20 4549455046444645434143414341434143414341434143414341434143414141 00"
constexpr size_t kRequestSize = 4 + 2 * 34;
constexpr size_t kLongest = ZnNbtSessionHeader::kLongestPayload;

// The other end: a listener, and the connection it accepted last.
class Peer {
 public:
  Peer() {
    EXPECT_TRUE(listener_.Bind(ZnInetAddr::AddressLoopback(), ZnSocket::Stream, false, 0, false));
    EXPECT_TRUE(listener_.SetBlocking(false) && listener_.Listen(10) && listener_.LocalAddress(address_));
  }
  ZnMachine Machine() const {
    ZnMachine machine("fred", ZnMachine::Server);
    machine.Name(address_);
    return machine;
  }
  // A retarget response that leads here.
  std::string Retarget() const {
    ZnPacket port;
    for (int shift : {8, 0}) port.Append(static_cast<uint8_t>(address_.GetPort() >> shift));
    return "840000067F000001" + ToHex(port);
  }
  // Whether somebody called.
  bool Accept() {
    if (!connection_.AcceptFrom(listener_.Fd())) return false;
    received_.Clear();
    return connection_.SetBlocking(false) && connection_.SetDelay(true);
  }
  void Send(const ZnByteBuffer& bytes) {
    size_t moved = 0;
    EXPECT_EQ(connection_.Write(bytes.Data(), bytes.Length(), moved), ZnFile::IoStatus::Complete);
  }
  void Send(const std::string& digits) { Send(Hex(digits)); }
  // All that has come since Accept.
  const ZnByteBuffer& Received() {
    static uint8_t buffer[1 << 20];
    size_t moved = 0;
    while (connection_.Read(buffer, sizeof(buffer), moved) != ZnFile::IoStatus::Closed && moved > 0) {
      received_.Append(buffer, moved);
    }
    return received_;
  }
  // Reads to the end: whether that is a reset.
  bool WasReset() {
    Received();
    return connection_.Error().Code() == ECONNRESET;
  }
  // Ends the connection; with `reset` so that the other side's next write fails.
  void HangUp(bool reset = false) {
    EXPECT_TRUE(!reset || connection_.SetLinger(true, 0));
    connection_.Close();
  }

 private:
  ZnSocket listener_, connection_;
  ZnInetAddr address_;
  ZnByteBuffer received_;
};

std::string NameOf(End end) {
  constexpr const char* kNames[] = {"not reached", "not answered", "hung up", "not written"};
  return kNames[static_cast<size_t>(end)];
}

class NbtConnection : public ::testing::Test, public ZnNbtConnection::Owner {
 protected:
  // Everything the connection tells, in order: "established", the end, or a message's bytes.
  void Tell(const std::string& event) {
    events_.push_back(event);
    if (onEvent_) onEvent_(event);
  }
  void SessionEstablished() override { Tell("established"); }
  void MessageReceived(std::span<const uint8_t> message) override {
    Tell(message.size() < 100 ? ToHex(ZnPacket(message.data(), message.size())) : std::to_string(message.size()));
    // Good to the end of this call, whatever the owner did in it.
    last_ = ZnByteBuffer(message.data(), message.size());
  }
  void SessionEnded(End end) override { Tell(NameOf(end)); }

  bool Connect(Peer& peer) {
    return connection_->Connect(ZnMachine("host", ZnMachine::Workstation), peer.Machine(), patience_);
  }
  // The peer takes the call and waits for the session request.
  void TakeCall(Peer& peer) {
    bool called = false;
    ASSERT_TRUE(loop_.RunUntil([&] { return called = called || peer.Accept(); }));
    loop_.RunUntil([&] { return peer.Received().Length() >= kRequestSize; });
    EXPECT_EQ(ToHex(peer.Received()), ToHex(Hex(REQUEST_HEX)));
  }
  void Call() {
    events_.clear();
    ASSERT_TRUE(Connect(peer_));
    TakeCall(peer_);
  }
  void Establish() {
    Call();
    peer_.Send("82000000");
    ASSERT_TRUE(HasEvents(1) && connection_->IsEstablished());
    events_.clear();
  }
  bool HasEvents(size_t count) {
    return loop_.RunUntil([&] { return events_.size() >= count; });
  }
  bool HasCome(size_t bytes) {
    return loop_.RunUntil([&] { return peer_.Received().Length() >= bytes; });
  }

  DrivenLoop loop_;
  Peer peer_;
  std::chrono::milliseconds patience_ = 10s;
  std::unique_ptr<ZnNbtConnection> connection_ = std::make_unique<ZnNbtConnection>(&loop_, this);
  Strings events_;
  ZnByteBuffer last_;
  std::function<void(const std::string&)> onEvent_;
};

TEST_F(NbtConnection, ResponsesToTheRequest) {
  const struct {
    const char* name;
    std::string bytes;
    bool hangUp;
    std::string event;
  } cases[] = {
      {"positive with a body", "82000001 00", false, "established"},
      {"keepalive in front", "85000000 82000000", false, "established"},
      {"message before its time", "00000002 4142 82000000", false, "established"},
      {"unknown packet in front", "77000003 010203 82000000", false, "established"},
      {"negative", "83000001 80", false, "not reached"},
      {"retarget cut short", "84000005 7F00000100", false, "not reached"},
      {"retarget to port 0 of nowhere", "84000006 000000000000", false, "not reached"},
      {"end of connection", "", true, "not reached"},
      {"end inside a body", "82000004 00", true, "not reached"},
      {"silence", "", false, "not answered"},
  };
  patience_ = 300ms;
  for (const auto& one : cases) {
    SCOPED_TRACE(one.name);
    Call();
    peer_.Send(one.bytes);
    if (one.hangUp) peer_.HangUp();
    EXPECT_TRUE(HasEvents(1));
    EXPECT_THAT(events_, ElementsAre(one.event));
    EXPECT_EQ(connection_->IsEstablished(), one.event == "established");
  }
}

TEST_F(NbtConnection, MessagesCutAtEveryByteAndGlued) {
  Establish();
  const ZnPacket bytes = Hex("85000000 00000003 414243 00000000 82000000 84000006 7F0000010001 00000002 4445");
  for (size_t cut = 0; cut < bytes.Length(); cut++) {
    events_.clear();
    peer_.Send(ZnByteBuffer(bytes.Data(), cut));
    loop_.RunFor(2);
    peer_.Send(ZnByteBuffer(&bytes.Data()[cut], bytes.Length() - cut));
    EXPECT_TRUE(HasEvents(3));
    EXPECT_THAT(events_, ElementsAre("414243", "", "4445")) << cut;
  }
  for (size_t i = 0; i < bytes.Length(); i++) peer_.Send(ZnByteBuffer(&bytes.Data()[i], 1)), loop_.RunFor(2);
  EXPECT_EQ(events_.size(), 6U);
}

TEST_F(NbtConnection, LongestPayloadBothWays) {
  Establish();
  const ZnByteBuffer payload = ZnRandom::RndBuffer(kLongest);
  ZnByteBuffer packet = Hex("0001FFFF");
  packet.Append(payload);

  const ZnPacket head(payload.Data(), 3);
  EXPECT_EQ(connection_->Send(head, ZnByteBuffer(payload.Data(), kLongest - 2)), 0U) << "a byte too much";
  EXPECT_GT(connection_->Send(head, ZnByteBuffer(&payload.Data()[3], kLongest - 3)), 0U);
  EXPECT_GT(connection_->Send(Hex("42")), 0U);
  ZnByteBuffer expected = Hex(REQUEST_HEX);
  expected.Append(packet);
  expected.Append(Hex("0000000142"));
  ASSERT_TRUE(HasCome(expected.Length()));
  EXPECT_TRUE(peer_.Received() == expected);

  for (size_t sent = 0, part = 0; sent < packet.Length(); sent += part) {
    part = std::min<size_t>(packet.Length() - sent, 30000);
    peer_.Send(ZnByteBuffer(packet.Data() + sent, part));
    loop_.RunFor(2);
  }
  EXPECT_TRUE(HasEvents(1));
  EXPECT_TRUE(last_ == payload);
}

// What the socket doesn't take at once goes out in order when there is room.
TEST_F(NbtConnection, ABacklogGoesOutWhole) {
  Establish();
  ZnByteBuffer expected = Hex(REQUEST_HEX);
  for (int i = 0; i < 300; i++) {
    const ZnByteBuffer tail = ZnRandom::RndBuffer(0xFF00);
    expected.Append(Hex("0000FF0141"));
    expected.Append(tail);
    ASSERT_GT(connection_->Send(Hex("41"), tail), 0U);
  }
  loop_.RunFor(20);
  ASSERT_TRUE(HasCome(expected.Length()));
  EXPECT_TRUE(peer_.Received() == expected);
}

TEST_F(NbtConnection, RetargetsWithoutEndEndTheConversation) {
  Peer other;
  Call();
  peer_.Send(other.Retarget());
  for (int calls = 1; calls < 6; calls++) {
    TakeCall(other);
    other.Send(other.Retarget());
  }
  EXPECT_TRUE(HasEvents(1));
  EXPECT_THAT(events_, ElementsAre("not reached"));
  EXPECT_FALSE(other.Accept());
}

TEST_F(NbtConnection, NothingSurvivesIntoTheNextConversation) {
  connection_->KeepAliveInterval(20ms);
  Establish();
  EXPECT_TRUE(loop_.RunUntil([&] { return ToHex(peer_.Received()).ends_with("85000000"); })) << "keepalives go out";
  for (const char* cut : {"00000010 43", "0000"}) {
    peer_.Send(cut);
    loop_.RunFor(5);
    for (int i = 0; i < 100; i++) ASSERT_GT(connection_->Send(Hex("41"), ZnRandom::RndBuffer(0xFF00)), 0U);
    loop_.RunFor(5);
    connection_->Close();
    EXPECT_FALSE(connection_->IsEstablished() || connection_->Send(Hex("41")) > 0);

    Call();
    loop_.RunFor(50);
    EXPECT_EQ(peer_.Received().Length(), kRequestSize);
    peer_.Send("82000000 00000001 44");
    EXPECT_TRUE(HasEvents(2));
    EXPECT_THAT(events_, ElementsAre("established", "44"));
  }
}

// Which messages the other end can't have: after a hang-up those that it hadn't acknowledged, after an end of ours only
// those that were never written. What the system still holds then is taken back.
TEST_F(NbtConnection, KnowsWhatWasCut) {
  size_t whole[2] = {};
  for (bool byPeer : {false, true}) {
    Establish();
    std::vector<uint64_t> ends = {connection_->Send(Hex("41"))};
    ASSERT_TRUE(HasCome(kRequestSize + 5));
    for (int i = 0; i < 200; i++) ends.push_back(connection_->Send(Hex("41"), ZnRandom::RndBuffer(0xFF00)));
    loop_.RunFor(50);
    byPeer ? peer_.HangUp() : connection_->Close();
    EXPECT_TRUE(loop_.RunUntil([&] { return !connection_->IsEstablished(); }));
    for (uint64_t end : ends) whole[byPeer] += !connection_->WasCutBefore(end);
    EXPECT_TRUE(byPeer || peer_.WasReset());
  }
  EXPECT_GE(whole[true], 1U) << "what the peer had read";
  EXPECT_GT(whole[false], whole[true]);
  EXPECT_LT(whole[false], 201U);
}

TEST_F(NbtConnection, AWriteThatFailsEndsIt) {
  Establish();
  EXPECT_FALSE(connection_->HasHungUp());
  peer_.HangUp(true);
  EXPECT_TRUE(connection_->HasHungUp());
  onEvent_ = [&](const std::string&) { connection_.reset(); };
  connection_->Send(Hex("41"));
  EXPECT_TRUE(events_.empty());
  EXPECT_TRUE(HasEvents(1));
}

}  // namespace
