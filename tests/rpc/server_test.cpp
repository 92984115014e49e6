// The servers, driven by raw datagrams over loopback. The loop is a stand-in: each test says itself when the socket is
// ready.

#include <gtest/gtest.h>

#include <vector>

#include "rpc/nfs_server.h"
#include "support/hex.h"

namespace {

using namespace ZnRPCEnum;

class StandInLoop : public ZnEventLoopBase {
 public:
  int EnterEventLoop() override { return 0; }
  bool AddTimeoutEvent(ZnMoment, ZnEventCallback*) override { return false; }
  bool RemoveTimeoutEvent(ZnMoment, ZnEventCallback*) override { return false; }
  bool AddFileEvent(unsigned, bool read, bool write, ZnEventCallback* added) override {
    EXPECT_NE(read, write);
    (read ? callback : writer) = added;
    return !full;
  }
  bool RemoveFileEvent(unsigned, bool read, bool write, ZnEventCallback* removed) override {
    EXPECT_NE(read, write);
    EXPECT_EQ(std::exchange(read ? callback : writer, nullptr), removed);
    return true;
  }
  bool ShouldContinue() override { return false; }

  ZnEventCallback* callback = nullptr;
  ZnEventCallback* writer = nullptr;
  bool full = false;
};

// Notes what reaches one of the operations.
class RecordingServer : public ZnNFSServer {
 public:
  using ZnNFSServer::ZnNFSServer;

  ZnPacket written;

  void ProcWrite(const ZnInetAddr& from, ZnRPCAuthBlock& auth, uint32_t xid, ZnNFSWriteargs& args) override {
    written = args.data;
    ZnNFSServer::ProcWrite(from, auth, xid, args);
  }
};

// The replies to a call with xid 12345678.
constexpr const char* kGarbageArgs = "123456780000000100000000000000000000000000000004";

class NfsServerTest : public testing::Test {
 public:
  NfsServerTest() {
    EXPECT_TRUE(server.error().IsEmpty());
    ZnInetAddr bound;
    EXPECT_TRUE(server.LocalAddress(bound));
    address = ZnInetAddr::AddressLoopback();
    address.Port(bound.GetPort());
    EXPECT_TRUE(client.Bind(ZnInetAddr::AddressLoopback(), ZnSocket::Datagram, false, 0, false));
    client.SetBlocking(false);
    client.LocalAddress(self);
  }

  // Sends a datagram and lets the server read it.
  void Send(const ZnByteBuffer& datagram) {
    size_t sent = 0;
    ASSERT_NE(client.WriteMessage(datagram.Data(), datagram.Length(), sent, address), ZnFile::IoStatus::Failed);
    loop.callback->Dispatch(ZnEvent::Fired);
  }

  // The next datagram that comes back once the loop goes on, as hex; empty when there is none.
  std::string Reply() {
    if (loop.writer) loop.writer->Dispatch(ZnEvent::Fired);
    uint8_t bytes[65536];
    size_t length = 0;
    ZnInetAddr from;
    if (client.ReadMessage(bytes, sizeof bytes, length, from) != ZnFile::IoStatus::Partial) return "";
    EXPECT_EQ(from, address);
    return ToHex(ZnByteBuffer(bytes, length));
  }

  // One call of xid 12345678 with no credentials.
  ZnPacket Call(uint32_t program, uint32_t version, uint32_t procedure, const ZnPacket& args = {}) {
    return ZnRPCMessageFromClient{{}, 0x12345678, CALL, {{}, 2, program, version, procedure, {}, {}, args}}.Pack();
  }

  StandInLoop loop;
  RecordingServer server{&loop, 0};
  ZnSocket client;
  ZnInetAddr address, self;
};

TEST_F(NfsServerTest, TheLargestWriteOfACallerWithSixteenGroupsArrivesWhole) {
  ZnNFSWriteargs args;
  args.data.SetLength(8192);
  for (size_t i = 0; i < args.data.Length(); i++) args.data.Writable()[i] = static_cast<uint8_t>(i * 7);
  ZnRPCMessageFromClient call{{}, 1, CALL, {{}, 2, 100003, 2, 8, {}, {}, args.Pack()}};
  call.call_body.credentials.flavour = AUTH_UNIX;
  call.call_body.credentials.auth_body.machinename = ZnUniString(std::string(255, 'm'));
  for (uint32_t gid = 0; gid < 16; gid++) call.call_body.credentials.auth_body.grouplist.Append({{}, gid});
  Send(call.Pack());
  EXPECT_EQ(server.written, args.data);
  EXPECT_NE(Reply(), "");

  // A longer datagram than any call of the protocol is cut, and what is missing isn't made up.
  server.written.Clear();
  args.data.SetLength(9300);
  Send(Call(100003, 2, 8, args.Pack()));
  EXPECT_TRUE(server.written.IsEmpty());
  EXPECT_EQ(Reply(), kGarbageArgs);
}

TEST_F(NfsServerTest, RepliesMayLeaveLaterAndHoldNothingOfEarlierOnes) {
  ZnNFSReadres large;
  large.data.SetLength(8192);
  server.SendSuccess(self, 1, large);
  EXPECT_EQ(Reply().size(), 2 * (24 + 4 + 68 + 4 + 8192U));
  server.SendSuccess(self, 2, ZnNFSStat{{}, ZnNFSEnum::NFSERR_STALE});
  EXPECT_EQ(Reply(), "00000002000000010000000000000000000000000000000000000046");
  server.SendSuccess(self, 3, Hex("0a0b"));
  EXPECT_EQ(Reply(), "0000000300000001000000000000000000000000000000000a0b");
  server.SendAuthError(self, 4, AUTH_REJECTEDCRED);
  EXPECT_EQ(Reply(), "0000000400000001000000010000000100000002");
}

}  // namespace
