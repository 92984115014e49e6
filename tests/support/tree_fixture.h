#pragma once
// A file system over a profile in a scratch folder, with sessions that answer what a test tells them to. Include it
// from test binaries that link the tree.

#include <gtest/gtest.h>
#include <unistd.h>

#include <deque>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>

#include "config/smbnfs_config.h"
#include "runtime/event_loop.h"
#include "tree/file_system.h"

// The configuration with a profile of the test's own, for the account that runs the test.
class TestProfile {
 public:
  explicit TestProfile(const std::string& text) : folder_("/tmp/halden-tree-" + std::to_string(getpid())) {
    std::filesystem::create_directories(folder_);
    Write(text);
    EXPECT_EQ(ZnSMBNFSConfig::Initialise(Path().c_str(), "", "", false).AsUtf8(), "");
  }
  ~TestProfile() {
    ZnSMBNFSConfig::CleanUp();
    std::filesystem::remove_all(folder_);
  }
  std::string Path() const { return folder_ + "/profile"; }
  // Puts it in place whole, as another file: a clock that ticks slowly doesn't hide the change.
  void Write(const std::string& text) const {
    std::ofstream(Path() + ".new") << text;
    std::filesystem::rename(Path() + ".new", Path());
  }

  // A user's machine with these shares; all accounts are root's.
  static std::string Machine(const std::string& user, const std::string& machine,
                             const std::vector<std::string>& shares, const std::string& more = "") {
    const std::string ofuser = "[nfsserver/shares/smb/" + user + "/", ofmachine = ofuser + machine + "/";
    const std::string root = "unixname={(root)}]\n";
    std::string text = ofuser + root + ofmachine + root;
    for (const std::string& share : shares)
      text += ofmachine + share + "/password={()}]\n" + ofmachine + share + "/" + root;
    return text + more;
  }

 private:
  std::string folder_;
};

// A session that keeps its commands until the test answers, or answers at once when `answer` is set.
class StandInSession : public ZnSMBNFSSessionBase {
 public:
  using Answer = std::function<bool(ZnSMBNFSCommand&)>;  // fills in results; false fails the request

  explicit StandInSession(ZnSMBNFSSessionHost* host) : host_(host) { host_->AddSession(this); }
  ~StandInSession() override {
    for (ZnSMBNFSCommand* command : queue) command->session = nullptr;
    host_->RemoveSession(this);
  }

  void Request(ZnSMBNFSCommand* command, ZnSMBNFSEnum::SessionCommand what) override {
    command->sessioncommand = what;
    command->sessionstatus = ZnSMBNFSEnum::SSTStart;
    requests.push_back(what);
    if (!command->session) queue.push_back(command);
    command->session = this;
    if (what == ZnSMBNFSEnum::SCRequestShares) {
      ZnDList<ZnUniString> names;
      ZnSMBNFSConfig::GetShareList(machinenode->user, machinenode->machine, names);
      for (const ZnUniString& name : names) {
        ZnSMBCShareObject share;
        share.share = name;
        share.service = ZnSMBClientValues::ServiceDisk;
        command->shares.Append(share);
      }
      host_->CompleteRequest(command);
    } else if (answer) {
      const bool lists = what == ZnSMBNFSEnum::SCRequestDirs;
      if (lists) host_->ListingBegins(command);
      if (!answer(*command)) command->sessionstatus = ZnSMBNFSEnum::SSTError;
      if (lists && !host_->TakeListed(command)) command->sessionstatus = ZnSMBNFSEnum::SSTError;
      host_->CompleteRequest(command);
    }
  }
  void RemoveCommand(ZnSMBNFSCommand* command) override { std::erase(queue, command); }
  void SendErrors() override {
    while (!queue.empty()) {
      ZnSMBNFSCommand* command = queue.front();
      command->sessionstatus = ZnSMBNFSEnum::SSTError;
      host_->CompleteRequest(command);
      if (queue.empty() || queue.front() != command) continue;
      command->session = nullptr;  // a test keeps its commands
      queue.pop_front();
    }
  }
  ZnNFSEnum::Status ConvertError(const ZnSMBNFSCommand& command) const override {
    return command.failure == ZnNFSEnum::NFS_OK ? ZnNFSEnum::NFSERR_IO : command.failure;
  }
  void NodeGoes(ZnSMBNFSNode& node) override { node.file->close = true; }
  bool CleanUp() override { return true; }
  bool IsConnected() const override { return false; }
  unsigned serverclass() const override { return 3; }

  std::deque<ZnSMBNFSCommand*> queue;
  std::vector<ZnSMBNFSEnum::SessionCommand> requests;
  Answer answer;

 private:
  ZnSMBNFSSessionHost* host_;
};

class StandInUser : public ZnSMBNFSUserBase {
 public:
  void WriteLog(const ZnUniString&) override {}
};

// Keeps what is to go on in later turns until the test runs them.
class Turns : public ZnEventLoopBase {
 public:
  int EnterEventLoop() override { return 0; }
  bool AddTimeoutEvent(ZnMoment, ZnEventCallback* callback) override {
    due.push_back(callback);
    return true;
  }
  bool RemoveTimeoutEvent(ZnMoment, ZnEventCallback* callback) override { return std::erase(due, callback) > 0; }
  bool AddFileEvent(unsigned, bool, bool, ZnEventCallback*) override { return false; }
  bool RemoveFileEvent(unsigned, bool, bool, ZnEventCallback*) override { return false; }
  void AtTurnEnd(ZnEventCallback* callback) override { due.push_back(callback); }
  void CancelTurnEnd(ZnEventCallback* callback) override { std::erase(due, callback); }
  bool ShouldContinue() override { return false; }

  // False when nothing is left.
  bool Next() {
    if (due.empty()) return false;
    ZnEventCallback* callback = due.front();
    due.pop_front();
    callback->Dispatch(ZnEvent::Fired);
    return true;
  }
  std::deque<ZnEventCallback*> due;
};

class TestFileSystem : public ZnSMBNFSFileSystem {
 public:
  using ZnSMBNFSFileSystem::ZnSMBNFSFileSystem;
  StandInSession::Answer answer;  // of sessions that are made from now on

 protected:
  std::unique_ptr<ZnSMBNFSSessionBase> MakeSession(ZnSMBNFSNode*, const ZnSMBNFSMachineConfig&) override {
    auto session = std::make_unique<StandInSession>(this);
    session->answer = answer;
    return session;
  }
  std::unique_ptr<ZnSMBNFSUserBase> MakeUser() override { return std::make_unique<StandInUser>(); }
};

// Counts how often a step handed its command back; the test owns its commands.
class StepCounter : public ZnSMBNFSCommandHandler {
 public:
  void HandleCommand(ZnSMBNFSCommand*) override { steps++; }
  void CommandEnds(const ZnSMBNFSCommand&) override {}
  int steps = 0;
};

inline ZnSMBCFileObject Entry(const ZnUniString& name, bool directory = false, uint32_t size = 0) {
  ZnSMBCFileObject entry;
  entry.path = name;
  entry.attribs.directory = directory;
  entry.size = size;
  entry.modified = {1000, 0};
  return entry;
}

// A tree of one user "u" with one machine "m" with the share "S" (and "T"), walked to on demand.
class TreeTest : public ::testing::Test {
 protected:
  explicit TreeTest(const std::string& more = "") : profile_(TestProfile::Machine("u", "m", {"S", "T"}, more)) {
    ZnNFSFileHandle root;
    root.bytes[0] = 0xAB;
    filesystem._init(root);
  }

  std::unique_ptr<ZnSMBNFSCommand> CommandAt(ZnSMBNFSNode* node, const ZnUniString& name = "") {
    auto command = std::make_unique<ZnSMBNFSCommand>(ZnInetAddr(), 1, &handler);
    command->node = node;
    command->name = name;
    return command;
  }
  // Brings a node's contents up to date as a call would.
  void Update(ZnSMBNFSNode* node) { filesystem.BUpdateNodeContents(CommandAt(node).get()); }
  ZnSMBNFSNode* Child(ZnSMBNFSNode* node, const ZnUniString& name) {
    auto* child = node->children.Find(name);
    return child ? child->node : nullptr;
  }
  ZnSMBNFSNode* Walk(const std::vector<ZnUniString>& names) {
    ZnSMBNFSNode* node = filesystem.root();
    for (const ZnUniString& name : names) {
      Update(node);
      auto command = CommandAt(node, name);
      filesystem.NBFindByName(command.get(), ZnNameMatch::LookUp);
      node = command->node.Get();
      if (!node) return nullptr;
    }
    return node;
  }
  ZnSMBNFSNode* Share(const ZnUniString& name = "S") { return Walk({"u", "m", name}); }
  StandInSession* Session() { return static_cast<StandInSession*>(filesystem.GetSession(Walk({"u", "m"}))); }

  // Delivers a listing to a node, an entry at a time, as a request would.
  void List(ZnSMBNFSNode* node, const std::vector<ZnSMBCFileObject>& entries) {
    auto command = BeginList(node, entries);
    while (turns.Next()) continue;
  }
  // The same as far as it goes in one turn.
  std::unique_ptr<ZnSMBNFSCommand> BeginList(ZnSMBNFSNode* node, const std::vector<ZnSMBCFileObject>& entries) {
    auto command = CommandAt(node);
    command->sessioncommand = ZnSMBNFSEnum::SCRequestDirs;
    command->sessionstatus = ZnSMBNFSEnum::SSTGetDirs;
    command->listing = std::make_unique<ZnDirectoryListing>(*node, nullptr);
    filesystem.ListingBegins(command.get());
    for (const ZnSMBCFileObject& entry : entries) {
      command->files.Append(entry);
      filesystem.TakeListed(command.get());
    }
    filesystem.CompleteRequest(command.get());
    return command;
  }
  static std::vector<std::string> Names(ZnSMBNFSNode* node) {
    std::vector<std::string> names;
    for (auto& child : node->children) names.push_back(child.key.AsUtf8());
    return names;
  }

  TestProfile profile_;
  StepCounter handler;
  Turns turns;
  TestFileSystem filesystem{&handler, &turns, ZnSMBNFSServerConfig()};
};
