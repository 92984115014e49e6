#pragma once
// A client and a scripted server. Most tests use synchronous calls, which read like the conversation.

#include "smb/client/smb_client.h"
#include "smb_client/scripted_server.h"

using Values = ZnSMBClientValues;

class ClientTest : public ScriptedServerTest, private ZnCallback<ZnSMBClient::Result> {
 protected:
  using Result = ZnSMBClient::Result;
  static constexpr auto kSuccess = ZnSMBClient::ResultSuccess;
  static constexpr auto kPending = ZnSMBClient::ResultPending;
  static constexpr auto kFailure = ZnSMBClient::ResultFailure;

  Result Open(const char* user = "user", const char* password = "Password") {
    return client.OpenSession(peer.Machine(), "ME", user, password, nullptr);
  }
  Result ConnectTree(const char* password) {
    tree = ZnSMBCTreeObject(peer.Machine(), "share", Values::ServiceDisk);
    return client.TreeConnect(&tree, password, nullptr);
  }
  // A session with the tree connected, in the dialect that the server picks; the oldest has no IPC tree.
  void Connect() {
    ASSERT_EQ(Open(), server.dialect == 0 ? kFailure : kSuccess) << Why();
    ASSERT_EQ(ConnectTree("secret"), kSuccess) << Why();
  }
  // The next connection, to a server that behaves.
  void Again() {
    client.Disconnect();
    server.replaced.clear();
    Connect();
  }
  std::string Why() const { return client.ReasonAsString().AsUtf8(); }
  // Why the operation that ended so has failed, if it has.
  Values::Reason Reason(Result result) const {
    EXPECT_EQ(result, client.reason() == Values::ErrNone ? kSuccess : kFailure) << Why();
    return client.reason();
  }
  ZnSMBCFileObject File(const char* path = "\\file") const { return {tree, path}; }
  ZnSMBCFileObject OpenFile() {
    ZnSMBCFileObject file = File();
    EXPECT_EQ(client.OpenFile(&file, Values::DenyNone, false, Values::OFOpen, nullptr), kSuccess) << Why();
    return file;
  }
  Result Delete() { return client.DeleteFile(File(), nullptr); }
  Result List() { return client.ListDirectory(ZnSMBCDirectoryObject(tree, "\\"), &listed, "*", nullptr); }

  // The callback for calls that aren't synchronous.
  ZnSMBClient::Completion* Done() { return this; }

  // For servers that are to be spoken to in the ways of old.
  static constexpr ZnSMBLogonRules kAnyLogon{true, ZnMinAuth::Lm};

  ZnSMBClient client{&loop};
  ZnSMBCTreeObject tree;
  ZnDList<ZnSMBCFileObject> listed;
  unsigned fired = 0;

 private:
  void Dispatch(Result) override { fired++; }
};
