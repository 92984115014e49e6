#pragma once
// One user's SMB conversation with one machine. Its commands run side by side, each in a task of its own; what they
// share (the conversation, the shares, the open files) is fetched once while all who need it wait.

#include <list>
#include <unordered_map>

#include "model/session_base.h"
#include "model/upward.h"
#include "session/task.h"
#include "smb/client/client.h"

class ZnConversation;
class ZnFileTurns;
class ZnOpenFiles;
class ZnSessionReports;
class ZnShareTrees;

// What a session has learned of its server by being refused.
struct ZnServerQuirks {
  bool nomove = false;     // doesn't know the move command
  bool noreplace = false;  // doesn't replace a file in one request
};

class ZnMachineSession : public ZnSMBNFSSessionBase, private ZnSmbClient::Owner {
 public:
  // With this many commands in the session a further call is dropped like a lost datagram.
  static constexpr size_t kMostCommands = 4096;

  // `machinenode` and `host` outlive the session, which enters the host's list.
  ZnMachineSession(ZnSMBNFSNode* machinenode, ZnSMBNFSSessionHost* host, const ZnSMBNFSMachineConfig& config);
  // Commands that are still in the session are let go, without an answer: SendErrors comes first.
  ~ZnMachineSession() override;

  void Request(ZnSMBNFSCommand* command, ZnSMBNFSEnum::SessionCommand what) override;
  void RemoveCommand(ZnSMBNFSCommand* command) override;
  void SendErrors() override;
  ZnNFSEnum::Status ConvertError(const ZnSMBNFSCommand& command) const override;
  void NodeGoes(ZnSMBNFSNode& node) override;
  bool CleanUp() override;
  bool IsConnected() const override { return client_.IsConnected(); }
  unsigned serverclass() const override;

  // Commands in the session, with the tree or with a task.
  size_t Count() const { return commands_.size(); }
  // All tables of the session's tasks, a line a transition: request, state, action, event, next state.
  static ZnUniString TableAsString();

  // ---- for the tasks and the parts of the session

  ZnSmbClient& client() { return client_; }
  ZnSMBNFSSessionHost& host() { return *host_; }
  ZnWakeups& wakeups() { return wakeups_; }
  ZnConversation& conversation() { return *conversation_; }
  ZnShareTrees& shares() { return *shares_; }
  ZnOpenFiles& openfiles() { return *openfiles_; }
  ZnFileTurns& turns() { return *turns_; }
  ZnSessionReports& reports() { return *reports_; }
  ZnServerQuirks& quirks() { return quirks_; }
  // Seconds to take off a time so that it is one of the server's own clock.
  int32_t timeoffset() const;
  // The time as the server's own clock shows it. Times that it can't show stay as they are.
  ZnTimeVal ServerLocal(const ZnTimeVal& time) const;

  // The task has ended (sessionstatus tells how): destroys it and completes its command, which may take the session
  // along.
  void Over(ZnSessionTask& task);
  // Ends the connection, and with it goes all that it gave.
  void DropConnection();

 private:
  struct Entry {
    ZnSMBNFSCommand* command;
    std::unique_ptr<ZnSessionTask> task;  // null while the tree has the command
  };

  void ConnectionLost(ZnSMBClientValues::Reason reason) override;
  void ConversationIsOver();
  bool Take(ZnSMBNFSCommand& command);
  void GetShares(ZnSMBNFSCommand& command);

  ZnSMBNFSSessionHost* host_;
  ZnWakeups wakeups_;
  ZnSmbClient client_;
  ZnServerQuirks quirks_;
  std::unique_ptr<ZnSessionReports> reports_;
  std::unique_ptr<ZnConversation> conversation_;
  std::unique_ptr<ZnShareTrees> shares_;
  std::unique_ptr<ZnFileTurns> turns_;
  std::unique_ptr<ZnOpenFiles> openfiles_;
  std::list<Entry> commands_;  // in the order in which they came
  std::unordered_map<ZnSMBNFSCommand*, std::list<Entry>::iterator> index_;
  bool flushing_ = false;  // every request fails
  ZnReferable alive_;
};
