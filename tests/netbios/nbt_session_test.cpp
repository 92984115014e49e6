// The session service over real loopback connections, against a peer that does what the test says.

#include "netbios/nbt_session.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>

#include "netbios/fred.h"
#include "runtime/random.h"
#include "support/driven_loop.h"
#include "support/hex.h"

namespace {

using namespace std::chrono_literals;

using ::testing::ElementsAre;
using enum ZnNBTSession::cbdispatch;
using Events = std::vector<ZnNBTSession::cbdispatch>;

#define REQUEST_HEX "81000044" FRED_HEX "20 4549455046444645434143414341434143414341434143414341434143414141 00"
constexpr size_t kRequestSize = 4 + 2 * 34;

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
    uint8_t buffer[4096];
    size_t moved = 0;
    while (connection_.Read(buffer, sizeof(buffer), moved) != ZnFile::IoStatus::Closed && moved > 0) {
      received_.Append(buffer, moved);
    }
    return received_;
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

class Session : public ::testing::Test, public ZnNBTSession::SessionCallback {
 protected:
  void Dispatch(ZnNBTSession::cbdispatch event) override {
    events_.push_back(event);
    if (onEvent_) onEvent_(event);
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
    session_->Bind(ZnMachine("host", ZnMachine::Workstation));
    ASSERT_TRUE(session_->Connect(peer_.Machine()));
    TakeCall(peer_);
  }
  void Establish() {
    Call();
    peer_.Send("82000000");
    ASSERT_TRUE(loop_.RunUntil([&] { return session_->IsEstablished(); }));
    events_.clear();
  }
  bool HasEvents(size_t count) {
    return loop_.RunUntil([&] { return events_.size() >= count; });
  }
  std::string NextMessage() {
    loop_.RunUntil([&] { return session_->HasMessage(); });
    return session_->HasMessage() ? ToHex(session_->ReadMessage()) : "no message";
  }

  DrivenLoop loop_;
  Peer peer_;
  std::unique_ptr<ZnNBTSession> session_ = std::make_unique<ZnNBTSession>(&loop_, this);
  Events events_;
  std::function<void(ZnNBTSession::cbdispatch)> onEvent_;
};

TEST_F(Session, ResponsesToTheRequest) {
  const struct {
    const char* name;
    std::string bytes;
    bool hangUp;
    Events events;
  } cases[] = {
      {"positive with a body", "82000001 00", false, {SessionConnected}},
      {"keepalive in front", "85000000 82000000", false, {SessionConnected}},
      {"message before its time", "00000002 4142 82000000", false, {SessionConnected}},
      {"unknown packet in front", "77000003 010203 82000000", false, {SessionConnected}},
      {"retarget cut short", "84000005 7F00000100", false, {SessionDisconnected}},
      {"retarget to port 0 of nowhere", "84000006 000000000000", false, {SessionDisconnected}},
      {"end of connection", "", true, {SessionDisconnected}},
      {"end inside a body", "82000004 00", true, {SessionDisconnected}},
      {"silence", "", false, {SessionTimedOut, SessionDisconnected}},
  };
  session_->SetSessionTimeout(300ms);
  for (const auto& one : cases) {
    SCOPED_TRACE(one.name);
    Call();
    peer_.Send(one.bytes);
    if (one.hangUp) peer_.HangUp();
    EXPECT_TRUE(HasEvents(one.events.size()));
    EXPECT_EQ(events_, one.events);
    EXPECT_EQ(session_->IsEstablished(), one.events[0] == SessionConnected);
    EXPECT_EQ(session_->WasEstablished(), one.events[0] == SessionConnected);
    EXPECT_FALSE(session_->HasMessage());
  }
}

TEST_F(Session, MessagesSplitAndGlued) {
  Establish();
  const ZnPacket bytes = Hex("85000000 00000003 414243 00000000 82000000 84000006 7F0000010001 00000002 4445");
  for (size_t piece : {bytes.Length(), size_t{1}}) {
    for (size_t i = 0; i < bytes.Length(); i += piece) {
      peer_.Send(ZnByteBuffer(&bytes.Data()[i], piece));
      loop_.RunFor(1);
    }
    for (const char* message : {"414243", "", "4445"}) EXPECT_EQ(NextMessage(), message);
  }
  EXPECT_EQ(events_, Events(6, SessionMessage));
}

TEST_F(Session, LongestPayloadBothWays) {
  Establish();
  ZnByteBuffer payload = ZnRandom::RndBuffer(ZnNBTSession::kLongestPayload);
  ZnByteBuffer packet = Hex("0001FFFF");
  packet.Append(payload);

  ASSERT_TRUE(session_->WriteMessage(payload) && session_->WriteMessage(Hex("42")));
  ZnByteBuffer expected = Hex(REQUEST_HEX);
  expected.Append(packet);
  expected.Append(Hex("0000000142"));
  ASSERT_TRUE(loop_.RunUntil([&] { return peer_.Received().Length() >= expected.Length(); }));
  EXPECT_TRUE(peer_.Received() == expected);

  size_t sent = 0;
  ASSERT_TRUE(loop_.RunUntil([&] {
    size_t part = std::min<size_t>(packet.Length() - sent, 3000);
    if (part > 0) peer_.Send(ZnByteBuffer(packet.Data() + sent, part));
    sent += part;
    return !events_.empty();
  }));
  EXPECT_TRUE(session_->ReadMessage() == payload);

  payload.Append(uint8_t{0});
  EXPECT_FALSE(session_->WriteMessage(payload));
  EXPECT_TRUE(session_->IsEstablished());
}

TEST_F(Session, RetargetsWithoutEndEndTheConversation) {
  Peer other;
  Call();
  peer_.Send(other.Retarget());
  for (int calls = 1; calls < 6; calls++) {
    TakeCall(other);
    other.Send(other.Retarget());
  }
  EXPECT_TRUE(HasEvents(1));
  EXPECT_THAT(events_, ElementsAre(SessionDisconnected));
  EXPECT_FALSE(other.Accept());
}

TEST_F(Session, NothingSurvivesIntoTheNextConversation) {
  session_->SetKeepAliveInterval(20ms);
  Establish();
  EXPECT_TRUE(loop_.RunUntil([&] { return ToHex(peer_.Received()).ends_with("85000000"); })) << "keepalives go out";
  peer_.Send("00000002 4142 00000010 43");  // a message nobody takes, and the beginning of another
  ASSERT_TRUE(HasEvents(1));
  loop_.RunFor(5);
  ZnByteBuffer backlog;
  backlog.SetLength(ZnNBTSession::kLongestPayload);
  for (int i = 0; i < 100; i++) ASSERT_TRUE(session_->WriteMessage(backlog));
  session_->_disconnect(false);
  EXPECT_FALSE(session_->IsOpen() || session_->WriteMessage(Hex("41")) || session_->HasMessage());

  Call();
  loop_.RunFor(50);
  EXPECT_EQ(peer_.Received().Length(), kRequestSize);
  peer_.Send("82000000 00000001 44");
  EXPECT_EQ(NextMessage(), "44");
}

// In each callback the owner may delete the session, or end the conversation by starting the next.
TEST_F(Session, OwnerMayDoAnythingInACallback) {
  const struct {
    const char* bytes;
    ZnNBTSession::cbdispatch event;
  } cases[] = {{"82000000", SessionConnected},
               {"82000000 00000001 41 00000001 42", SessionMessage},
               {"83000001 80", SessionDisconnected},
               {"", SessionTimedOut}};
  for (const auto& one : cases) {
    for (bool again : {false, true}) {
      session_ = std::make_unique<ZnNBTSession>(&loop_, this);
      session_->SetSessionTimeout(100ms);
      bool done = false;
      onEvent_ = [&](ZnNBTSession::cbdispatch event) {
        if (done || event != one.event) return;
        done = true;
        if (!again) return session_.reset();
        session_->SetSessionTimeout(10s);
        EXPECT_TRUE(session_->Connect(peer_.Machine()));
      };
      Call();
      peer_.Send(one.bytes);
      ASSERT_TRUE(loop_.RunUntil([&] { return done; }));
      EXPECT_EQ(events_.back(), one.event);
      if (!again) continue;
      TakeCall(peer_);
      peer_.Send("82000000 00000001 43");
      EXPECT_EQ(NextMessage(), "43");
    }
  }
}

// So may it be in the write that finds the connection broken.
TEST_F(Session, BrokenConnectionIsToldByTheWriteThatFindsIt) {
  Establish();
  peer_.HangUp(true);
  onEvent_ = [&](ZnNBTSession::cbdispatch) { session_.reset(); };
  EXPECT_FALSE(session_->WriteMessage(Hex("41")));
  EXPECT_THAT(events_, ElementsAre(SessionDisconnected));
}

}  // namespace
