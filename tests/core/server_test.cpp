// The command machine and the filters of calls, driven without a kernel: calls go in by the procedures, replies come
// out of a socket.

#include "core/server.h"

#include <arpa/inet.h>
#include <sys/socket.h>

#include "runtime/poll_event_loop.h"
#include "support/tree_fixture.h"

namespace {

using E = ZnSMBNFSEnum;

// Tells every step that a call takes, as "status: action".
class TracedServer : public ZnSMBNFSServer {
 public:
  TracedServer(ZnProcess* process, ZnEventLoopBase* loop, const ZnSMBNFSServerConfig& config)
      : ZnSMBNFSServer(process, loop, config,
                       [](auto* server, auto* eventloop, const auto& settings) -> std::unique_ptr<ZnSMBNFSFileSystem> {
                         auto made = std::make_unique<TestFileSystem>(server, eventloop, settings);
                         filesystem = made.get();
                         return made;
                       }) {
    last = this;
  }
  ~TracedServer() override { last = nullptr; }

  static ZnSMBNFSServerConfig Config(const std::vector<const char*>& addresses) {
    ZnSMBNFSServerConfig config;
    config.port = 0;
    for (const char* address : addresses) config.addresses.Append(address);
    return config;
  }
  std::vector<std::string> steps;
  static TestFileSystem* filesystem;  // of the server made last
  static TracedServer* last;

 protected:
  void StepTaken(const ZnSMBNFSCommand& command, const ZnSMBNFSStep& step) override {
    steps.push_back(E::StatusString(command.status).AsUtf8() + ": " + step.name);
  }
};

TestFileSystem* TracedServer::filesystem = nullptr;
TracedServer* TracedServer::last = nullptr;

// A UDP socket that plays the caller.
class Caller {
 public:
  Caller() : fd_(socket(AF_INET, SOCK_DGRAM | SOCK_NONBLOCK, 0)) {
    sockaddr_in any{AF_INET, 0, {htonl(INADDR_LOOPBACK)}, {}};
    EXPECT_EQ(bind(fd_, reinterpret_cast<sockaddr*>(&any), sizeof any), 0);
    socklen_t length = sizeof any;
    getsockname(fd_, reinterpret_cast<sockaddr*>(&any), &length);
    address = ZnInetAddr(any);
  }
  ~Caller() { close(fd_); }

  // The next reply once the loop goes on, as 32-bit words; empty when there is none.
  std::vector<uint32_t> Reply() const {
    if (TracedServer::last) TracedServer::last->WriteCallback(nullptr, ZnEvent::Fired);
    uint32_t words[4096];
    ssize_t length = recv(fd_, words, sizeof words, 0);
    std::vector<uint32_t> reply;
    for (ssize_t i = 0; i < length / 4; i++) reply.push_back(ntohl(words[i]));
    return reply;
  }
  ZnInetAddr address;

 private:
  int fd_;
};

constexpr size_t kStatusWord = 6;  // of a successful reply: the first word of the result

class Server : public ::testing::Test {
 protected:
  Server() : profile_(TestProfile::Machine("u", "m", {"S"})) { root_.bytes[5] = 9; }

  void Getattr(TracedServer& server, uint32_t xid, ZnNFSFileHandle handle) {
    server.ProcGetattr(caller_.address, auth_, xid, handle);
  }
  void Lookup(TracedServer& server, uint32_t xid, const char* name) {
    ZnNFSDiropargs args;
    args.dir = root_;
    args.name = name;
    server.ProcLookup(caller_.address, auth_, xid, args);
  }

  TestProfile profile_;
  ZnUnixProcess process_;
  ZnEventLoop loop_{&process_};
  Caller caller_;
  ZnRPCAuthBlock auth_;
  ZnNFSFileHandle root_;
};

TEST_F(Server, TheFirstGetattrOrStatfsDefinesTheRoot) {
  for (bool bystatfs : {false, true}) {
    TracedServer server(&process_, &loop_, TracedServer::Config({"_"}));
    ASSERT_TRUE(server.error().IsEmpty());
    Lookup(server, 1, "u");
    EXPECT_EQ(caller_.Reply(), (std::vector<uint32_t>{1, 1, 1, 1, 2})) << "MSG_DENIED, AUTH_ERROR, rejected credential";
    if (bystatfs) {
      server.ProcStatfs(caller_.address, auth_, 2, root_);
    } else {
      Getattr(server, 2, root_);
    }
    EXPECT_EQ(caller_.Reply().at(kStatusWord), 0U);
    Lookup(server, 3, "u");
    EXPECT_EQ(caller_.Reply().at(kStatusWord), 0U);
    ZnNFSFileHandle other = root_;
    other.bytes[0] ^= 1;
    Getattr(server, 4, other);
    EXPECT_EQ(caller_.Reply().at(kStatusWord), 70U);
  }
}

TEST_F(Server, OnlyADirectRepetitionIsFiltered) {
  TracedServer server(&process_, &loop_, TracedServer::Config({"_"}));
  std::vector<bool> answered;
  for (uint32_t xid : {7U, 7U, 8U, 7U}) {
    Getattr(server, xid, root_);
    answered.push_back(!caller_.Reply().empty());
  }
  EXPECT_EQ(answered, (std::vector<bool>{true, false, true, true}));
}

TEST_F(Server, AddressesAndTheWildcard) {
  struct Case {
    std::vector<const char*> addresses;
    bool served;
  };
  for (const Case& c : {Case{{"*"}, true}, Case{{"_"}, true}, Case{{"10.1.2.3"}, false}, Case{{"nonsense"}, false},
                        Case{{"nonsense", "127.0.0.1"}, true}, Case{{"10.1.2.3", "127.0.0.1"}, true},
                        Case{{"*", "127.0.0.1"}, false}, Case{{"*", "10.1.2.3"}, true}}) {
    TracedServer server(&process_, &loop_, TracedServer::Config(c.addresses));
    Getattr(server, 1, root_);
    EXPECT_EQ(!caller_.Reply().empty(), c.served) << c.addresses.front() << " of " << c.addresses.size();
  }
}

TEST_F(Server, EveryTableStartsWithTheHandleAndEndsWithAReply) {
  for (const ZnSMBNFSProcedure& procedure : ZnAllProcedures()) {
    printf("%s (%d)\n", procedure.name, procedure.number);
    std::set<E::Status> on;
    for (const ZnSMBNFSStep& step : procedure.steps) {
      printf("  %-16s %-60s %s\n", E::StatusString(step.on).AsUtf8().c_str(), step.name,
             E::StatusString(step.next).AsUtf8().c_str());
      EXPECT_TRUE(on.insert(step.on).second) << procedure.name << " has two rows for one status";
    }
    EXPECT_EQ(procedure.steps.front().on, E::STStart);
    for (const ZnSMBNFSStep& step : procedure.steps)
      EXPECT_TRUE(on.contains(step.next)) << procedure.name << " " << step.name;
  }
}

TEST_F(Server, RunsFollowTheTables) {
  TracedServer server(&process_, &loop_, TracedServer::Config({"_"}));
  Getattr(server, 1, root_);
  EXPECT_EQ(server.steps,
            (std::vector<std::string>{"STStart: NBFindByHandle", "STLookup: paranoidupdate: BUpdateNodeContents",
                                      "STUpdate: BUpdateNode", "STUpdate2: reply"}));
  server.steps.clear();
  Lookup(server, 2, "nobody");
  EXPECT_EQ(server.steps, (std::vector<std::string>{"STStart: NBFindByHandle", "STLookup: BUpdateNodeContents",
                                                    "STUpdate: NBFindByName"}));
  caller_.Reply();
  EXPECT_EQ(caller_.Reply().at(kStatusWord), 2U);
}

TEST_F(Server, ADirectoryHasNoSizeToSet) {
  TracedServer server(&process_, &loop_, TracedServer::Config({"_"}));
  Getattr(server, 1, root_);
  caller_.Reply();
  ZnNFSSattrargs args;
  args.file = root_;
  args.attributes.size = 0;
  server.ProcSetattr(caller_.address, auth_, 2, args);
  EXPECT_EQ(caller_.Reply().at(kStatusWord), 21U);
}

TEST_F(Server, ARetransmissionOfACallInFlightIsServedByTheFirstReply) {
  TracedServer server(&process_, &loop_, TracedServer::Config({"_"}));
  Getattr(server, 1, root_);
  caller_.Reply();
  ZnNFSFileHandle at = root_;
  for (const char* name : {"u", "m", "S"}) {
    ZnNFSDiropargs args;
    args.dir = at;
    args.name = name;
    server.ProcLookup(caller_.address, auth_, static_cast<uint32_t>(name[0]), args);
    std::vector<uint32_t> reply = caller_.Reply();
    ASSERT_EQ(reply.at(kStatusWord), 0U) << name;
    for (size_t i = 0; i < at.bytes.size(); i++) {
      at.bytes[i] = static_cast<uint8_t>(reply.at(kStatusWord + 1 + i / 4) >> (24 - i % 4 * 8));
    }
  }
  auto list = [&](uint32_t xid) {
    ZnNFSReaddirargs args;
    args.dir = at;
    args.count = 4096;
    server.ProcReaddir(caller_.address, auth_, xid, args);
  };
  auto* session = static_cast<StandInSession*>(*TracedServer::filesystem->sessions().begin());
  list(100);
  list(101);
  list(100);
  ASSERT_EQ(session->queue.size(), 2U) << "the call that waits isn't begun again";
  EXPECT_TRUE(caller_.Reply().empty());
  session->answer = [](ZnSMBNFSCommand&) { return true; };
  while (!session->queue.empty()) session->Request(session->queue.front(), ZnSMBNFSEnum::SCRequestDirs);
  EXPECT_EQ(caller_.Reply().at(0), 100U);
  EXPECT_EQ(caller_.Reply().at(0), 101U);
  EXPECT_TRUE(caller_.Reply().empty());
  Getattr(server, 102, root_);
  EXPECT_EQ(caller_.Reply().at(0), 102U);
  list(100);
  EXPECT_EQ(caller_.Reply().at(0), 100U) << "an answered call runs again";
}

TEST_F(Server, TheTimerComesAgain) {
  ZnSMBNFSServerConfig config = TracedServer::Config({"_"});
  config.cleanupdelay = -5;  // counts as one second
  TracedServer server(&process_, &loop_, config);
  struct Stopper : ZnEventCallback {
    explicit Stopper(ZnEventLoopBase* eventloop) : loop(eventloop) {}
    void Dispatch(ZnEvent::cbdispatch value) override {
      if (value == ZnEvent::Fired) loop->ExitEventLoop(5);
    }
    ZnEventLoopBase* loop;
  } stopper(&loop_);
  loop_.AddTimeoutEvent(ZnSteadyClock::now() + std::chrono::milliseconds(2200), &stopper);
  EXPECT_EQ(loop_.EnterEventLoop(), 5);
}

}  // namespace
