// The command machine and the filters of calls, driven without a kernel: calls go in by the procedures, replies come
// out of a socket.

#include "core/server.h"

#include <arpa/inet.h>
#include <sys/socket.h>

#include "model/log_catalogue.h"
#include "runtime/poll_event_loop.h"
#include "support/tree_fixture.h"
#include "support/virtual_loop.h"

namespace {

// Counts the steps that calls take.
class CountedServer : public ZnSMBNFSServer {
 public:
  CountedServer(ZnProcess* process, ZnEventLoopBase* loop, const ZnSMBNFSServerConfig& config)
      : ZnSMBNFSServer(process, loop, config,
                       [](auto* server, auto* eventloop, const auto& settings) -> std::unique_ptr<ZnSMBNFSFileSystem> {
                         auto made = std::make_unique<TestFileSystem>(server, eventloop, settings);
                         filesystem = made.get();
                         return made;
                       }) {
    last = this;
  }
  ~CountedServer() override { last = nullptr; }

  static ZnSMBNFSServerConfig Config(const std::vector<const char*>& addresses = {"_"}) {
    ZnSMBNFSServerConfig config;
    config.port = 0;
    for (const char* address : addresses) config.addresses.Append(address);
    return config;
  }
  unsigned steps = 0;
  static TestFileSystem* filesystem;  // of the server made last
  static CountedServer* last;

 protected:
  void StepTaken(const ZnSMBNFSCommand&, const ZnStep&) override { steps++; }
};

TestFileSystem* CountedServer::filesystem = nullptr;
CountedServer* CountedServer::last = nullptr;

// A UDP socket that plays the caller.
class Caller {
 public:
  Caller() : fd_(socket(AF_INET, SOCK_DGRAM | SOCK_NONBLOCK, 0)) {
    sockaddr_in any{AF_INET, 0, {htonl(INADDR_LOOPBACK)}, {}};
    EXPECT_EQ(bind(fd_, reinterpret_cast<sockaddr*>(&any), sizeof any), 0);
  }
  ~Caller() { close(fd_); }

  // Sends a call of NFS and has the server read it.
  template <class Args>
  void Call(CountedServer& server, uint32_t xid, uint32_t procedure, const Args& args) const {
    Send(server, xid, procedure, args);
    server.ReadCallback(nullptr, ZnEvent::Fired);
  }
  template <class Args>
  void Send(CountedServer& server, uint32_t xid, uint32_t procedure, const Args& args) const {
    const ZnPacket call =
        ZnRPCMessageFromClient{{}, xid, ZnRPCEnum::CALL, {{}, 2, 100003, 2, procedure, {}, {}, args.Pack()}}.Pack();
    ZnInetAddr bound;
    server.LocalAddress(bound);
    sockaddr_in to = bound.SockAddr();
    to.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    EXPECT_GT(sendto(fd_, call.Data(), call.Length(), 0, reinterpret_cast<sockaddr*>(&to), sizeof to), 0);
  }
  // The next reply once the turn ends, as 32-bit words; empty when there is none.
  std::vector<uint32_t> Reply() const {
    CountedServer::last->TurnEndCallback(nullptr, ZnEvent::Fired);
    return Received();
  }
  std::vector<uint32_t> Received() const {
    uint32_t words[4096];
    ssize_t length = recv(fd_, words, sizeof words, 0);
    std::vector<uint32_t> reply;
    for (ssize_t i = 0; i < length / 4; i++) reply.push_back(ntohl(words[i]));
    return reply;
  }

 private:
  int fd_;
};

constexpr size_t kStatusWord = 6;  // of a successful reply: the first word of the result

class Server : public ::testing::Test {
 protected:
  Server() : profile_(TestProfile::Machine("u", "m", {"S"})) { root_.bytes[5] = 9; }

  void Getattr(CountedServer& server, uint32_t xid, const ZnNFSFileHandle& handle) {
    caller_.Call(server, xid, 1, handle);
  }
  void Lookup(CountedServer& server, uint32_t xid, const char* name) {
    caller_.Call(server, xid, 4, ZnNFSDiropargs{{}, root_, name});
  }
  // The handle of the share.
  ZnNFSFileHandle Walk(CountedServer& server) {
    Getattr(server, 1, root_);
    EXPECT_EQ(caller_.Reply().at(kStatusWord), 0U);
    ZnNFSFileHandle at = root_;
    for (const char* name : {"u", "m", "S"}) {
      caller_.Call(server, 1, 4, ZnNFSDiropargs{{}, at, name});
      const std::vector<uint32_t> reply = caller_.Reply();
      EXPECT_EQ(reply.at(kStatusWord), 0U) << name;
      for (size_t i = 0; i < at.bytes.size(); i++) {
        at.bytes[i] = static_cast<uint8_t>(reply.at(kStatusWord + 1 + i / 4) >> (24 - i % 4 * 8));
      }
    }
    return at;
  }

  TestProfile profile_;
  ZnUnixProcess process_;
  ZnEventLoop loop_{&process_};
  Caller caller_;
  ZnNFSFileHandle root_;
};

TEST_F(Server, ARepeatedCallIsServedAnewOrGetsTheSameReplyAgain) {
  static ZnMoment now;
  now = ZnMoment(std::chrono::hours(1));
  ZnSteadyClock::SetClock([] { return now; });
  CountedServer server(&process_, &loop_, CountedServer::Config());
  for (const char* sending : {"first", "second, of a lone caller whose reply was lost"}) {
    Getattr(server, 1, root_);
    EXPECT_EQ(caller_.Reply().at(kStatusWord), 0U) << sending;
  }

  constexpr uint32_t kLookup = 4, kRemove = 10, kRmdir = 15;
  const ZnNFSDiropargs gone{{}, root_, "gone"}, other{{}, root_, "other"};
  const Caller second;
  std::vector<uint32_t> reply;
  auto serves = [&](uint32_t xid, uint32_t procedure, const ZnNFSDiropargs& args, const Caller* caller = nullptr) {
    server.steps = 0;
    (caller ? caller : &caller_)->Call(server, xid, procedure, args);
    reply = (caller ? caller : &caller_)->Reply();
    EXPECT_EQ(reply.at(0), xid);
    return server.steps > 0;
  };
  EXPECT_TRUE(serves(7, kRemove, gone));
  const std::vector<uint32_t> first = reply;
  EXPECT_TRUE(serves(8, kRemove, gone));
  EXPECT_TRUE(serves(7, kRemove, other));
  EXPECT_TRUE(serves(7, kRmdir, gone));
  EXPECT_TRUE(serves(7, kRemove, gone, &second));
  EXPECT_TRUE(serves(7, kLookup, gone));
  EXPECT_TRUE(serves(7, kLookup, gone)) << "changes nothing";
  now += ZnDuplicateCache::kLifetime;
  EXPECT_FALSE(serves(7, kRemove, gone));
  EXPECT_EQ(reply, first);
  now += std::chrono::seconds(1);
  EXPECT_TRUE(serves(7, kRemove, gone));
  for (uint32_t i = 1; i < ZnDuplicateCache::kMostReplies; i++) EXPECT_TRUE(serves(1000 + i, kRemove, gone));
  EXPECT_FALSE(serves(7, kRemove, gone));
  EXPECT_TRUE(serves(9, kRemove, gone));
  EXPECT_TRUE(serves(7, kRemove, gone)) << "the oldest makes way";
  ZnSteadyClock::SetClock(nullptr);
}

TEST_F(Server, FiltersComeBeforeAllElse) {
  struct Case {
    std::vector<const char*> addresses;
    bool served;
    ZnInetAddr bound;
  };
  const ZnInetAddr any, loopback = ZnInetAddr::AddressLoopback();
  for (const Case& c : {Case{{"*"}, true, any}, Case{{"_"}, true, loopback}, Case{{"10.1.2.3"}, false, any},
                        Case{{"nonsense"}, false, loopback}, Case{{"nonsense", "127.0.0.1"}, true, loopback},
                        Case{{"127.0.0.2"}, false, loopback}, Case{{"10.1.2.3", "127.0.0.1"}, true, any},
                        Case{{"*", "127.0.0.1"}, false, any}, Case{{"*", "10.1.2.3"}, true, any}}) {
    CountedServer server(&process_, &loop_, CountedServer::Config(c.addresses));
    ZnInetAddr bound;
    server.LocalAddress(bound);
    EXPECT_TRUE(bound.IsAddressEqual(c.bound)) << c.addresses.front() << " of " << c.addresses.size();
    Getattr(server, 1, root_);
    EXPECT_EQ(!caller_.Reply().empty(), c.served) << c.addresses.front() << " of " << c.addresses.size();
    EXPECT_EQ(CountedServer::filesystem->IsInitialised(), c.served);
  }

  ZnSMBNFSServerConfig config = CountedServer::Config();
  config.reservedports = true;
  CountedServer server(&process_, &loop_, config);
  Getattr(server, 1, root_);
  EXPECT_EQ(caller_.Reply(), (std::vector<uint32_t>{1, 1, 1, 1, 5})) << "MSG_DENIED, AUTH_ERROR, too weak";
  EXPECT_FALSE(CountedServer::filesystem->IsInitialised());
  const ZnRPCMessageFromClient call{{}, 2, ZnRPCEnum::CALL, {{}, 2, 100003, 2, 1, {}, {}, {}}};
  const ZnPacket arguments = root_.Pack();
  ZnXdrReader in(arguments);
  ZnInetAddr reserved = ZnInetAddr::AddressLoopback();
  reserved.Port(1023);
  server.HandleCall(call, in, reserved);
  EXPECT_TRUE(CountedServer::filesystem->IsInitialised());
}

TEST_F(Server, RefusedCallersWriteTenLinesAMinuteAndThenOneWithTheCount) {
  MyLogger logger;
  ZnLog::InitLogs(&logger, "");
  ZnLog::AddLogFile("<stderr>", false, false, ZnCodeset::Utf8);
  VirtualLoop loop;
  CountedServer server(&process_, &loop, CountedServer::Config({"*", "127.0.0.1"}));
  auto told = [&](uint32_t calls) {
    ::testing::internal::CaptureStderr();
    for (uint32_t xid = 0; xid < calls; xid++) Getattr(server, xid, root_);
    loop.LetPass(61000);
    const std::string text = ::testing::internal::GetCapturedStderr();
    size_t lines = 0;
    for (size_t at = 0; (at = text.find("notlocal", at)) != std::string::npos; at++) lines++;
    return std::pair(lines, text.find("Refused 15 more") != std::string::npos);
  };
  EXPECT_EQ(told(25), std::pair(size_t{10}, true));
  EXPECT_EQ(told(10), std::pair(size_t{10}, false));
  ZnLog::CleanUp();
}

TEST_F(Server, ATurnServesABoundedNumberOfCallsAndSendsTheirRepliesAtItsEnd) {
  CountedServer server(&process_, &loop_, CountedServer::Config());
  constexpr uint32_t kCalls = 40, kATurn = 16;
  for (uint32_t xid = 0; xid < kCalls; xid++) caller_.Send(server, xid, 1, root_);
  for (uint32_t xid = 0; xid < kCalls; xid++) {
    if (xid % kATurn == 0) {
      server.ReadCallback(nullptr, ZnEvent::Fired);
      EXPECT_TRUE(caller_.Received().empty());
      server.TurnEndCallback(nullptr, ZnEvent::Fired);
    }
    const std::vector<uint32_t> reply = caller_.Received();
    ASSERT_EQ(reply.size(), kStatusWord + 18) << "a status and attributes, whatever its buffer held before";
    EXPECT_EQ(reply[0], xid);
  }
  EXPECT_TRUE(caller_.Reply().empty());
}

TEST_F(Server, ARetransmissionOfACallInFlightIsServedByTheFirstReply) {
  CountedServer server(&process_, &loop_, CountedServer::Config());
  ZnNFSReaddirargs args;
  args.dir = Walk(server);
  args.count = 4096;
  auto list = [&](uint32_t xid) { caller_.Call(server, xid, 16, args); };
  auto* session = static_cast<StandInSession*>(*CountedServer::filesystem->sessions().begin());
  auto space = [&](uint32_t xid) { caller_.Call(server, xid, 17, args.dir); };
  list(100);
  space(101);
  list(100);
  ASSERT_EQ(session->queue.size(), 2U) << "the call that waits isn't begun again";
  session->queue.back()->Drop();
  space(101);
  ASSERT_EQ(session->queue.size(), 2U) << "a dropped call counts as lost";
  EXPECT_TRUE(caller_.Reply().empty());
  session->answer = [](ZnSMBNFSCommand&) { return true; };
  while (!session->queue.empty()) session->Request(session->queue.front(), session->queue.front()->sessioncommand);
  EXPECT_EQ(caller_.Reply().at(0), 100U);
  EXPECT_EQ(caller_.Reply().at(0), 101U);
  EXPECT_TRUE(caller_.Reply().empty());
}

}  // namespace
