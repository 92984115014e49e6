#pragma once
// A client of many operations and a scripted server. Tests run one operation to its end, or begin several and look.

#include "smb/client/client.h"
#include "smb_client/scripted_server.h"

class OperationsTest : public ScriptedServerTest, public ZnSmbClient::Owner {
 protected:
  using Values = ZnSMBClientValues;
  using Reason = Values::Reason;
  using Begin = std::function<ZnSmbCall(ZnSmbDone)>;

  // Bits of the server's capabilities.
  enum { kUnicode = 4, kLargeFiles = 8, kNtCommands = 0x10, kLargeReads = 0x4000, kLargeWrites = 0x8000 };
  static constexpr uint32_t kAll = kUnicode | kLargeFiles | kNtCommands | kLargeReads | kLargeWrites;
  static constexpr ZnSmbCaller kCaller = 7;

  OperationsTest() {
    settings.rules = {true, ZnMinAuth::Lm};  // servers are spoken to in the ways of old
    client->Settings(settings);
  }

  // Runs an operation to its end.
  ZnSmbOutcome Run(const Begin& begin) {
    ZnSmbOutcome outcome;
    bool over = false;
    const ZnSmbCall call = begin([&](const ZnSmbOutcome& how) {
      outcome = how;
      over = true;
      loop.ExitEventLoop(0);
    });
    EXPECT_FALSE(over) << "told from within";
    EXPECT_EQ(loop.EnterEventLoop(), 0) << "it would never end";
    return outcome;
  }
  Reason ReasonOf(const Begin& begin) { return Run(begin).reason; }

  Begin Connecting(const char* user = "user", const char* password = "Password") {
    return [=, this](ZnSmbDone done) { return client->Connect(peer.Machine(), "ME", user, password, std::move(done)); };
  }
  Begin ConnectingTree(const char* password = "secret") {
    tree = ZnSMBCTreeObject(peer.Machine(), "share", Values::ServiceDisk);
    return [=, this](ZnSmbDone done) { return client->TreeConnect(&tree, password, std::move(done)); };
  }
  void Connect() {
    ASSERT_EQ(ReasonOf(Connecting()), Values::ErrNone);
    ASSERT_EQ(ReasonOf(ConnectingTree()), Values::ErrNone);
  }
  // The next connection, to a server that behaves.
  void Again() {
    client->Disconnect();
    server.replaced.clear();
    Connect();
  }

  ZnSMBCFileObject File(const char* path = "\\file") const { return {tree, path}; }
  ZnSMBCFileObject OpenFile() const {
    ZnSMBCFileObject file = File();
    file.fid = 0x4001;
    file.isopen = true;
    return file;
  }
  Begin Opening(ZnSMBCFileObject* opened, ZnSmbOpenMode mode = {}) {
    return [=, this](ZnSmbDone done) { return client->Open(kCaller, opened, mode, std::move(done)); };
  }
  Begin Reading(uint64_t offset, size_t length) {
    return [=, this](ZnSmbDone done) {
      return client->Read(kCaller, OpenFile(), offset, length, &buffer, std::move(done));
    };
  }
  Begin Writing(uint64_t offset, const std::string& bytes) {
    return [=, this](ZnSmbDone done) {
      return client->Write(kCaller, OpenFile(), offset, ZnByteBuffer(bytes.data(), bytes.size()), std::move(done));
    };
  }
  Begin Resizing(uint64_t size) {
    return [=, this](ZnSmbDone done) { return client->SetSize(kCaller, OpenFile(), size, std::move(done)); };
  }
  Begin Closing() {
    return [=, this](ZnSmbDone done) { return client->Close(kCaller, OpenFile(), {}, std::move(done)); };
  }
  Begin Deleting() {
    return [=, this](ZnSmbDone done) { return client->Delete(kCaller, File(), std::move(done)); };
  }
  Begin Listing(const std::function<bool()>& took = [] { return true; }) {
    return [=, this](ZnSmbDone done) {
      return client->List(kCaller, ZnSMBCDirectoryObject(tree, "\\"), "*", &listed, took, std::move(done));
    };
  }
  std::string Read() const { return {reinterpret_cast<const char*>(buffer.Data()), buffer.Length()}; }

  void ConnectionLost(Reason reason) override { lost.push_back(reason); }

  ZnSmbSettings settings;
  std::unique_ptr<ZnSmbClient> client = std::make_unique<ZnSmbClient>(&loop, this);
  ZnSMBCTreeObject tree;
  ZnByteBuffer buffer;
  ZnDList<ZnSMBCFileObject> listed;
  std::vector<Reason> lost;  // what the owner was told
};
