#pragma once
// A session over a scripted server, between made-up nodes and a host that notes how requests end.

#include "config/server_config.h"
#include "model/upward.h"
#include "model/user_base.h"
#include "session/machine_session.h"
#include "smb_client/scripted_server.h"

using E = ZnSMBNFSEnum;

class NotedUser : public ZnSMBNFSUserBase {
 public:
  void WriteLog(const ZnUniString& text) override { lines.push_back(text.AsUtf8()); }
  std::vector<std::string> lines;
};

class MachineSessionTest : public ScriptedServerTest, public ZnSMBNFSSessionHost, public ZnSMBNFSCommandHandler {
 protected:
  MachineSessionTest() {
    root.parent = user.parent = &root;
    auto noted = std::make_unique<NotedUser>();
    told = noted.get();
    user.userinfo = std::move(noted);
    machine.parent = &user;
    machine.machinenode = &machine;
    share.parent = &machine;
    share.machinenode = &machine;
    share.sharenode = &share;
    share.path = "\\";
    machine.children.Insert("S", {&share, share.id});

    config.user = "fred";
    config.winname = "fred";
    config.machine = config.nbtname = "pc";
    config.ipaddress = "127.0.0.1";
    config.port = peer.Machine().Address().GetPort();
    config.smbtimeout = 10;
    config.sessiontimeout = 300;
    config.encoding = ZnCodeset::Utf8;
    MakeSession();
  }
  ~MachineSessionTest() override {
    while (!calls.empty()) delete calls.back().command;  // which nobody waited for
    machine.session.reset();
  }

  void MakeSession() {
    auto made = std::make_unique<ZnMachineSession>(&machine, this, config);
    session = made.get();
    machine.session = std::move(made);
    auto tree = std::make_unique<ZnSMBNFSTree>();
    tree->machine.Name("pc", ZnMachine::Server);
    tree->share = "S";
    tree->node = &share;
    tree->config.openfilettl = 15;
    share.tree = tree.get();
    session->trees.push_back(std::move(tree));
  }

  // A file (or directory) at the top of the share; the session owns it, as it does the nodes of the tree.
  ZnSMBNFSNode* Node(const char* name) {
    auto node = std::make_unique<ZnSMBNFSNode>();
    ZnSMBNFSNode* made = node.get();
    made->name = name;
    made->parent = &share;
    made->path = "\\";
    made->machinenode = &machine;
    made->sharenode = &share;
    lasthandle.IncBottom();
    made->handle = lasthandle;
    made->attribs.type = ZnNFSEnum::NFREG;
    session->handles.Insert(made->handle, std::move(node));
    return made;
  }
  void Prune(ZnSMBNFSNode* node) { session->handles.Remove(ZnSMBNFSHandle(node->handle)); }

  struct Call {
    ZnSMBNFSCommand* command;
    std::vector<E::SessionCommand> then;  // requests that follow the first
  };
  // A command with its requests, one after the other, that ends with the last or the first that fails.
  ZnSMBNFSCommand* Ask(ZnSMBNFSNode* node, std::vector<E::SessionCommand> what,
                       const std::function<void(ZnSMBNFSCommand&)>& prepare = {}) {
    auto* command = new ZnSMBNFSCommand(ZnInetAddr(), 1, this);
    command->node = node;
    command->count = 8192;
    command->name = "new";
    command->ownsattr = Unset();
    command->sattr = &command->ownsattr;
    if (prepare) prepare(*command);
    E::SessionCommand first = what.front();
    what.erase(what.begin());
    calls.push_back({command, std::move(what)});
    session->Request(command, first);
    return command;
  }
  void AskRead(ZnSMBNFSNode* node) { Ask(node, {E::SCRequestRead}); }
  void Read(ZnSMBNFSNode* node) {
    AskRead(node);
    Wait();
  }
  void AskWrite(ZnSMBNFSNode* node, const std::string& bytes = "bytes") {
    Ask(node, {E::SCRequestWrite}, [&](auto& command) { command.data = ZnByteBuffer(bytes.data(), bytes.size()); });
  }
  // One request, and how it ends.
  int Try(ZnSMBNFSNode* node, E::SessionCommand what) {
    Ask(node, {what});
    Wait();
    return ended.back();
  }
  // Runs until every call has ended.
  void Wait() {
    if (!calls.empty()) loop.EnterEventLoop();
    ASSERT_TRUE(calls.empty());
  }
  static ZnNFSSattr Unset() {
    ZnNFSSattr sattr;
    sattr.mode = sattr.uid = sattr.gid = sattr.size = ZnNFSEnum::kUnchanged;
    sattr.atime.seconds = sattr.atime.useconds = sattr.mtime.seconds = sattr.mtime.useconds = ZnNFSEnum::kUnchanged;
    return sattr;
  }

  void CompleteRequest(ZnSMBNFSCommand* command) override {
    bool failed = command->sessionstatus == E::SSTError;
    if (whenComplete && whenComplete(command)) return;
    auto call = std::find_if(calls.begin(), calls.end(), [command](auto& each) { return each.command == command; });
    ASSERT_NE(call, calls.end());
    if (!failed && !call->then.empty()) {
      E::SessionCommand next = call->then.front();
      call->then.erase(call->then.begin());
      return session->Request(command, next);
    }
    ended.push_back(failed ? static_cast<int>(command->session->ConvertError(*command)) : 0);
    data.assign(reinterpret_cast<const char*>(command->data.Data()), command->data.Length());
    delete command;
  }
  void ListingBegins(ZnSMBNFSCommand*) override {}
  bool TakeListed(ZnSMBNFSCommand*) override { return true; }
  ZnEventLoopBase* eventloop() override { return &loop; }
  const ZnSMBNFSServerConfig& serverconfig() const override { return serversettings; }
  void AddSession(ZnSMBNFSSessionBase*) override {}
  void RemoveSession(ZnSMBNFSSessionBase*) override {}
  void HandleCommand(ZnSMBNFSCommand*) override {}
  void CommandEnds(const ZnSMBNFSCommand& command) override {
    std::erase_if(calls, [&](auto& call) { return call.command == &command; });
    if (calls.empty()) loop.ExitEventLoop(0);
  }

  ZnSMBNFSServerConfig serversettings;
  ZnSMBNFSMachineConfig config;
  ZnSMBNFSNode root, user, machine, share;
  NotedUser* told = nullptr;
  ZnMachineSession* session = nullptr;
  ZnSMBNFSHandle lasthandle;
  std::vector<Call> calls;
  std::vector<int> ended;                              // how calls ended, in order: 0 or a status of NFS
  std::string data;                                    // of the call that ended last
  std::function<bool(ZnSMBNFSCommand*)> whenComplete;  // true: the command was taken care of
};
