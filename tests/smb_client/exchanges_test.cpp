// Exchanges of one connection with a server that answers as a test says: in any order, late, twice, or not at all.

#include <memory>
#include <set>

#include "smb/client/connection.h"
#include "smb_client/scripted_server.h"

namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using Strings = std::vector<std::string>;
using Values = ZnSMBClientValues;

// Everything that is told is noted in order: "up", "lost ErrRead", "+7" for a reply to request 7, "-7 ErrTimedOut" for
// none, with " unserved" behind it.
class Exchanges : public testing::Test, public ZnSmbConnection::Owner, public ZnSmbExchangeOwner {
 protected:
  Exchanges() {
    peer.script = [this](const Request& request) -> Messages {
      if (answers) return {Reply(request)};
      return {};
    };
  }

  void Connect(unsigned most) {
    StartConnecting();
    loop.LetPass(5);
    ASSERT_THAT(Told(), ElementsAre("up"));
    connection->MostInFlight(most);
  }
  void StartConnecting() {
    ASSERT_TRUE(connection->Connect(ZnMachine("ME", ZnMachine::Workstation), peer.Machine(), 10s));
  }

  // Queues a request; the peer knows it by its number.
  ZnSmbExchangeId Ask(unsigned number, ZnSmbCaller caller = 1, size_t tail = 0) {
    ZnSMBCHeader header;
    header.command = Values::CmdRead;
    header.pid = static_cast<uint16_t>(number);
    ZnSmbRequest request{header.command, header.Pack(), {}, caller};
    request.message.Append(uint8_t{0});
    request.message.Append(U16(static_cast<unsigned>(tail)).data(), 2);
    request.tail.SetLength(tail);
    const ZnSmbExchangeId id = connection->Send(std::move(request), this);
    numbers[id] = number;
    return id;
  }
  void AskMany(unsigned first, unsigned last, ZnSmbCaller caller = 1) {
    for (unsigned number = first; number <= last; number++) Ask(number, caller);
  }
  // What has come at the peer since the last look, by number.
  std::vector<unsigned> Asked() {
    loop.LetPass(5);
    std::vector<unsigned> asked;
    for (; seen < peer.requests.size(); seen++) asked.push_back(peer.requests[seen].pid);
    return asked;
  }
  const Request& Asking(unsigned number) const {
    return *std::find_if(peer.requests.rbegin(), peer.requests.rend(), [&](const auto& r) { return r.pid == number; });
  }
  void Answer(unsigned number) { peer.Send(Reply(Asking(number))); }
  void SendSigned(unsigned number, const std::function<void(ZnByteBuffer&)>& sign) {
    const std::string plain = Reply(Asking(number));
    ZnByteBuffer reply(plain.data(), plain.size());
    sign(reply);
    peer.Send(std::string(reinterpret_cast<const char*>(reply.Data()), reply.Length()));
  }
  Strings Told() { return std::exchange(told, {}); }
  Strings ToldWithin(uint32_t milliseconds) {
    loop.LetPass(milliseconds);
    return Told();
  }

  VirtualLoop loop;
  ScriptedSmbPeer peer{&loop};
  std::unique_ptr<ZnSmbConnection> connection = std::make_unique<ZnSmbConnection>(&loop, this);
  bool answers = false;                            // the peer does, each request at once
  std::function<bool(const std::string&)> onTold;  // whether more replies are awaited
  Strings told;

 private:
  bool Tell(const std::string& what) {
    told.push_back(what);
    return onTold && onTold(what);
  }
  void Connected() override { Tell("up"); }
  void ConnectionLost(Values::Reason reason) override { Tell("lost " + Values::ReasonString(reason)); }
  bool Replied(ZnSmbExchangeId id, const ZnSMBCDecode& reply) override {
    EXPECT_EQ(reply.header.pid, numbers[id]);
    return Tell("+" + std::to_string(numbers[id]));
  }
  void NotReplied(ZnSmbExchangeId id, const ZnSmbNoReply& why) override {
    Tell("-" + std::to_string(numbers[id]) + " " + Values::ReasonString(why.reason) +
         (why.unserved ? " unserved" : ""));
  }

  std::map<ZnSmbExchangeId, unsigned> numbers;
  size_t seen = 0;
};

TEST_F(Exchanges, AsManyInFlightAsTheServerTakes) {
  const struct { unsigned count, most; } cases[] = {{0, 1}, {1, 1}, {2, 2}, {50, 50}, {1000, 50}};
  for (const auto& one : cases) {
    SCOPED_TRACE(one.count);
    Connect(one.count);
    AskMany(1, 60);
    EXPECT_EQ(Asked().size(), one.most);
    EXPECT_EQ(connection->InFlight(), one.most);
    EXPECT_EQ(connection->Waiting(), 60 - one.most);
    Answer(1);
    EXPECT_THAT(Asked(), ElementsAre(one.most + 1));
    EXPECT_THAT(Told(), ElementsAre("+1"));
    connection->Close();
    loop.LetPass(5);
    EXPECT_EQ(Told().size(), 59U);
  }
}

TEST_F(Exchanges, RepliesInAnyOrder) {
  Connect(50);
  AskMany(1, 50);
  EXPECT_EQ(Asked().size(), 50U);
  std::string glued;
  Strings expected;
  for (unsigned i = 0; i < 50; i++) {
    const unsigned number = 1 + i * 17 % 50;
    glued += ScriptedSmbPeer::Packet(0, Reply(Asking(number)));
    expected.push_back("+" + std::to_string(number));
  }
  peer.SendRaw(glued.substr(0, 777));
  loop.LetPass(5);
  peer.SendRaw(glued.substr(777));
  EXPECT_EQ(ToldWithin(5), expected);
  EXPECT_EQ(connection->InFlight(), 0U);
}

// Ids come again only when all others of a place have been used, and never the two that mean something else.
TEST_F(Exchanges, IdsOfManyExchanges) {
  Connect(50);
  answers = true;
  unsigned next = 50;
  onTold = [&](const std::string&) { return next < 55000 && Ask(++next) == 0; };
  AskMany(1, 50);
  while (peer.requests.size() < 55000 && connection->IsUp()) loop.LetPass(5);
  ASSERT_EQ(peer.requests.size(), 55000U);
  std::set<unsigned> recent;
  for (size_t i = peer.requests.size() - 50000; i < peer.requests.size(); i++) recent.insert(peer.requests[i].mid);
  EXPECT_EQ(recent.size(), 50000U);
  EXPECT_FALSE(recent.contains(0) || recent.contains(0xFFFF));
}

// Requests 1 (answered), 2 (given up) and 3 are known to the server when the message comes.
TEST_F(Exchanges, MessagesThatNobodyWaitsFor) {
  const struct {
    const char* what;
    std::function<std::string(Request)> message;  // made of request 3
    Strings told;
  } cases[] = {
      {"a reply again", [&](auto) { return Reply(Asking(1)); }, {}},
      {"a reply to what was given up", [&](auto) { return Reply(Asking(2)); }, {}},
      {"the request for a lock that we never had",
       [](auto request) { return request.command = 0x24, request.mid = 0xFFFF, Reply(request); },
       {}},
      {"an id of later",
       [](auto request) { return request.mid += 64, Reply(request); },
       {"lost ErrRead", "-3 ErrRead"}},
      {"an id of a place that isn't taken yet",
       [](auto request) { return request.mid += 10, Reply(request); },
       {"lost ErrRead", "-3 ErrRead"}},
      {"an id that can't be",
       [](auto request) { return request.mid = 63, Reply(request); },
       {"lost ErrRead", "-3 ErrRead"}},
      {"id 0", [](auto request) { return request.mid = 0, Reply(request); }, {"lost ErrRead", "-3 ErrRead"}},
      {"another command",
       [](auto request) { return request.command++, Reply(request); },
       {"lost ErrRead", "-3 ErrRead"}},
      {"another command for what was given up",
       [&](auto request) { return request.mid = Asking(2).mid, request.command++, Reply(request); },
       {"lost ErrRead", "-3 ErrRead"}},
      {"nothing", [](auto) { return std::string(); }, {"lost ErrRead", "-3 ErrRead"}},
      {"cut", [](auto request) { return Reply(request, "ab").substr(0, 36); }, {"lost ErrRead", "-3 ErrRead"}},
      {"something else", [](auto) { return std::string(40, 'x'); }, {"lost ErrRead", "-3 ErrRead"}},
  };
  for (const auto& one : cases) {
    SCOPED_TRACE(one.what);
    Connect(50);
    Ask(1);
    const ZnSmbExchangeId second = Ask(2);
    Ask(3);
    Asked();
    Answer(1);
    connection->GiveUp(second);
    EXPECT_THAT(ToldWithin(5), ElementsAre("+1"));
    peer.Send(one.message(Asking(3)));
    EXPECT_EQ(ToldWithin(5), one.told);
    EXPECT_EQ(connection->IsUp(), one.told.empty());
    if (!one.told.empty()) continue;
    Answer(3);
    EXPECT_THAT(ToldWithin(5), ElementsAre("+3"));
  }
}

// ---- time

TEST_F(Exchanges, ASlowOneTimesOutAlone) {
  Connect(2);
  AskMany(1, 2);
  Asked();
  for (unsigned number = 2; number <= 11; number++) {
    Answer(number);
    Ask(number + 1);
    EXPECT_THAT(ToldWithin(900), ElementsAre("+" + std::to_string(number)));
  }
  EXPECT_THAT(ToldWithin(1100), ElementsAre("-1 ErrTimedOut"));
  Asked();
  EXPECT_EQ(connection->InFlight(), 2U) << "the server is still at it";
  Ask(13);
  EXPECT_THAT(Asked(), IsEmpty());
  Answer(1);
  EXPECT_THAT(Asked(), ElementsAre(13)) << "in the place that the late reply made free";
  EXPECT_THAT(Told(), IsEmpty());
}

TEST_F(Exchanges, SilenceEndsTheConnection) {
  connection->ReplyTimeout(3s);
  Connect(50);
  EXPECT_THAT(ToldWithin(10000), IsEmpty()) << "nothing was asked";
  AskMany(1, 2);
  EXPECT_THAT(ToldWithin(2900), IsEmpty());
  EXPECT_THAT(ToldWithin(200), ElementsAre("lost ErrTimedOut", "-1 ErrTimedOut", "-2 ErrTimedOut"));

  Connect(50);  // a length that lies is silence too
  Ask(1);
  Asked();
  peer.SendRaw(std::string("\0\1\xFF\xFF", 4));
  EXPECT_THAT(ToldWithin(6200), ElementsAre("-1 ErrTimedOut")) << "something has come";
  Ask(2);
  EXPECT_THAT(ToldWithin(3200), ElementsAre("lost ErrTimedOut", "-2 ErrTimedOut"));
}

// Replies that come one by one over a slow line are late only if the line stands still.
TEST_F(Exchanges, TheTimeOfTheNextBeginsWhenTheOldestIsAnswered) {
  Connect(50);
  AskMany(1, 4);
  Asked();
  for (unsigned number = 1; number <= 3; number++) {
    EXPECT_THAT(ToldWithin(8000), IsEmpty());
    Answer(number);
    EXPECT_EQ(ToldWithin(5), Strings{"+" + std::to_string(number)});
  }
  EXPECT_THAT(ToldWithin(9900), IsEmpty());
  EXPECT_THAT(ToldWithin(200), ElementsAre("lost ErrTimedOut", "-4 ErrTimedOut"));
}

// With every place taken by requests that the server owes an answer to, nothing can go on.
TEST_F(Exchanges, EveryPlaceOverdueEndsTheConnection) {
  Connect(2);
  AskMany(1, 3);
  Asked();
  for (int i = 0; i < 3; i++) {
    loop.LetPass(4000);
    peer.SendRaw(ScriptedSmbPeer::Packet(0x85, ""));
  }
  EXPECT_THAT(Told(), ElementsAre("-1 ErrTimedOut", "lost ErrTimedOut", "-2 ErrTimedOut", "-3 ErrTimedOut unserved"));
}

TEST_F(Exchanges, AReplyOfManyMessages) {
  Connect(50);
  int awaited = 3;
  onTold = [&](const std::string&) { return --awaited > 0; };
  Ask(1);
  Asked();
  for (int i = 0; i < 3; i++) {
    EXPECT_THAT(ToldWithin(9000), IsEmpty()) << "each has its own deadline";
    Answer(1);
    EXPECT_THAT(ToldWithin(5), ElementsAre("+1"));
  }
  EXPECT_EQ(connection->InFlight(), 0U);
  Answer(1);
  EXPECT_THAT(ToldWithin(5), IsEmpty());
  EXPECT_TRUE(connection->IsUp());
}

// ---- giving up, and the end

TEST_F(Exchanges, GivenUpBeforeAndAfterItWentOut) {
  Connect(1);
  const ZnSmbExchangeId first = Ask(1);
  const ZnSmbExchangeId second = Ask(2);
  Ask(3);
  connection->GiveUp(first);
  EXPECT_THAT(Asked(), ElementsAre(2));
  connection->GiveUp(second);
  connection->GiveUp(second);
  EXPECT_THAT(Asked(), IsEmpty()) << "the server takes one at a time";
  Answer(2);
  EXPECT_THAT(Asked(), ElementsAre(3));
  Answer(3);
  EXPECT_THAT(ToldWithin(5), ElementsAre("+3"));
}

TEST_F(Exchanges, WhatTheServerCantHaveServed) {
  Ask(1);
  EXPECT_THAT(Told(), IsEmpty()) << "never from within";
  EXPECT_THAT(ToldWithin(5), ElementsAre("-1 ErrNotConnected unserved"));

  Connect(2);
  AskMany(1, 3);
  Asked();
  const ZnSmbExchangeId gone = Ask(4);
  connection->Close();
  connection->GiveUp(gone);
  EXPECT_THAT(Told(), IsEmpty());
  EXPECT_THAT(ToldWithin(5), ElementsAre("-1 ErrDisconnect", "-2 ErrDisconnect", "-3 ErrDisconnect unserved"));

  peer.ReceiveRoom(4096);
  Connect(50);
  AskMany(1, 2);
  Asked();
  Answer(2);  // with which the server's system acknowledges both
  loop.LetPass(5);
  Told();
  peer.hangUpUnread = true;
  for (unsigned number = 3; number < 50; number++) Ask(number, 1, 60000);
  loop.LetPass(20);
  ASSERT_GT(told.size(), 40U);
  EXPECT_EQ(told[1].substr(0, 3), "-1 ");
  EXPECT_FALSE(told[1].ends_with("unserved"));
  EXPECT_TRUE(told.back().ends_with("unserved")) << told.back();
}

TEST_F(Exchanges, OwnersMayDoAnythingInACallback) {
  const struct {
    const char* when;
    std::function<void()> prepare;
  } cases[] = {
      {"up", [] {}},
      {"+1", [&] { Answer(1); }},
      {"-1 ErrTimedOut", [&] { Answer(3), loop.LetPass(10500); }},
      {"lost ErrDisconnect", [&] { peer.HangUp(); }},
      {"-1 ErrDisconnect", [&] { peer.HangUp(); }},
  };
  for (const auto& one : cases) {
    for (const char* what : {"delete", "close", "connect"}) {
      SCOPED_TRACE(std::string(what) + " in " + one.when);
      connection = std::make_unique<ZnSmbConnection>(&loop, this);
      bool done = false;
      onTold = [&](const std::string& told_) {
        if (done || told_ != one.when) return false;
        done = true;
        if (*what == 'd') return connection.reset(), true;
        if (what[1] == 'l') return connection->Close(), true;
        StartConnecting();
        return true;
      };
      StartConnecting();
      loop.LetPass(5);
      if (connection && connection->IsUp()) {
        connection->MostInFlight(50);
        AskMany(1, 3);
        Asked();
        one.prepare();
        loop.LetPass(20);
      }
      EXPECT_TRUE(done);
      EXPECT_EQ(connection && connection->IsUp(), what[1] == 'o');
      Told();
    }
  }
}

TEST_F(Exchanges, WhoClosesOnItsLastReplyHearsNothingMore) {
  Connect(50);
  AskMany(1, 2);
  onTold = [&](const std::string& what) {
    if (what == "+1") connection->Close();
    return false;
  };
  Asked();
  Answer(1);
  EXPECT_THAT(ToldWithin(20), ElementsAre("+1", "-2 ErrDisconnect"));
}

// ---- signatures

// Each message has the code of its place in the order of requests, in whatever order they are answered; from the first
// request behind SignWith on.
TEST_F(Exchanges, SignedRequestsAndReplies) {
  ZnSmbSigning signing;
  signing.Start(ZnByteBuffer("a session key...", 16));
  const struct {
    const char* what;
    bool good;
    std::function<void(ZnByteBuffer&)> change;
  } cases[] = {
      {"as agreed", true, [](auto&) {}},
      {"a byte changed", false, [](auto& reply) { reply.Writable()[9] ^= 1; }},
      {"a byte more", false, [](auto& reply) { reply.Append(uint8_t{0}); }},
      {"the number of another", false, [&](auto& reply) { signing.Sign(reply, 4); }},
      {"no signature", false, [](auto& reply) { memset(reply.Writable() + 14, 0, 8); }},
  };
  for (const auto& one : cases) {
    SCOPED_TRACE(one.what);
    Connect(50);
    Ask(1);
    Asked();
    connection->SignWith(signing);
    Ask(2, 1, 5);
    Ask(3);
    Asked();
    for (unsigned number : {2, 3}) {
      const std::string& raw = Asking(number).message;
      EXPECT_TRUE(signing.Verify(reinterpret_cast<const uint8_t*>(raw.data()), raw.size(), 2 * number - 2)) << number;
    }
    Answer(1);  // asked for before
    SendSigned(3, [&](auto& reply) { signing.Sign(reply, 5), one.change(reply); });
    SendSigned(2, [&](auto& reply) { signing.Sign(reply, 3); });
    EXPECT_EQ(ToldWithin(5), one.good
                                 ? Strings({"+1", "+3", "+2"})
                                 : Strings({"+1", "lost ErrBadSignature", "-2 ErrBadSignature", "-3 ErrBadSignature"}));
  }
}

// ---- turns

TEST_F(Exchanges, CallersTakeTurns) {
  Connect(4);
  AskMany(1, 100, 1);
  EXPECT_EQ(Asked().size(), 4U);
  Ask(201, 2);
  Ask(202, 2);
  Ask(301, 3);
  for (unsigned number = 1; number <= 4; number++) Answer(number);
  EXPECT_THAT(Asked(), testing::UnorderedElementsAre(5, 201, 301, 6)) << "one of each, whoever came with how many";
  Answer(201);
  EXPECT_THAT(Asked(), ElementsAre(202));
}

}  // namespace
