// The client against a real server, where that is told (tests/integration/test_servers.py does): files that are larger
// than old requests can say.

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

#include "runtime/poll_event_loop.h"
#include "runtime/unix_process.h"
#include "smb/client/client.h"

namespace {

class RealServer : public testing::Test, private ZnSmbClient::Owner {
 protected:
  // Runs an operation to its end.
  ZnSmbOutcome Run(const std::function<ZnSmbCall(ZnSmbDone)>& begin) {
    ZnSmbOutcome ended;
    const ZnSmbCall call = begin([&](const ZnSmbOutcome& outcome) {
      ended = outcome;
      loop.ExitEventLoop(0);
    });
    loop.EnterEventLoop();
    return ended;
  }
  void ConnectionLost(ZnSMBClientValues::Reason) override {}

  ZnUnixProcess process;
  ZnEventLoop loop{&process};
  ZnSmbClient client{&loop, this};
};

}  // namespace

TEST_F(RealServer, LargeFilesAreWholeAtTheirEnd) {
  if (!getenv("HALDEN_SMB_PORT")) GTEST_SKIP() << "no real server";
  const std::filesystem::path disk = std::filesystem::path(getenv("HALDEN_SMB_ROOT")) / "large";
  ZnMachine machine(getenv("HALDEN_SMB_NAME"), ZnMachine::Server);
  ZnInetAddr address = ZnInetAddr::AddressLoopback();
  address.Port(std::stoi(getenv("HALDEN_SMB_PORT")));
  machine.Name(address);
  const ZnUniString user(getenv("HALDEN_SMB_USER")), password(getenv("HALDEN_SMB_PASSWORD"));
  ASSERT_TRUE(Run([&](ZnSmbDone done) { return client.Connect(machine, "TEST", user, password, done); }).Ok());
  ZnSMBCTreeObject tree(machine, getenv("HALDEN_SMB_SHARE"), ZnSMBClientValues::ServiceDisk);
  ASSERT_TRUE(Run([&](ZnSmbDone done) { return client.TreeConnect(&tree, "", done); }).Ok());

  constexpr uint64_t kSize = 6ULL << 30;
  ZnSMBCFileObject file(tree, "\\large");
  ZnSmbOpenMode mode;
  mode.access = ZnSMBClientValues::AccessReadWrite;
  mode.create = true;
  ASSERT_TRUE(Run([&](ZnSmbDone done) { return client.Open(1, &file, mode, done); }).Ok());
  ASSERT_TRUE(Run([&](ZnSmbDone done) { return client.SetSize(1, file, kSize, done); }).Ok());
  const ZnByteBuffer written(std::string(100000, 'x').data(), 100000);
  ASSERT_TRUE(Run([&](ZnSmbDone done) { return client.Write(1, file, kSize - 100000, written, done); }).Ok());
  EXPECT_EQ(std::filesystem::file_size(disk), kSize);
  ZnByteBuffer read;
  ASSERT_TRUE(Run([&](ZnSmbDone done) { return client.Read(1, file, kSize - 100000, 200000, &read, done); }).Ok());
  EXPECT_TRUE(read == written);
  ZnSMBCFileObject again(tree, "\\large");
  ASSERT_TRUE(Run([&](ZnSmbDone done) { return client.Close(1, file, ZnTimeVal(), done); }).Ok());
  ASSERT_TRUE(Run([&](ZnSmbDone done) { return client.Open(1, &again, ZnSmbOpenMode(), done); }).Ok());
  EXPECT_EQ(again.size, kSize);
}
