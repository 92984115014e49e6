#pragma once
// One request of one command on its way through a session. A task walks a table: in each state an action begins what is
// to be done, tells what it came to, at once or later, and the table says which state that leads to. Tasks of one
// session run side by side, and each has whatever it needs to itself.
//
// In front of a task's own rows stand those that all share: the conversation with the machine, and the share. Where
// both stand, the first of these rows leads to the task's own.
//
// A task ends in SSTDone or SSTError. It is destroyed then, and its command completed. It is also destroyed when its
// command dies, at any time; so it has to hold whatever goes on for it (calls, places, turns) in such a way that this
// ends with it.

#include <array>
#include <optional>
#include <span>

#include "model/command.h"
#include "session/wait_list.h"
#include "smb/client/client.h"

class ZnMachineSession;
class ZnSessionTask;
struct ZnSMBNFSTree;

// What an action came to. Tasks name the ways that they know.
enum class ZnTaskEvent : uint8_t {
  None,           // of a branch that isn't used
  Done,           // as wished
  NotNeeded,      // nothing had to be done
  Again,          // there is more of the same to do
  Gone,           // what it was about isn't there any more
  NotOpen,        // the file isn't open (any more)
  Opened,         // the file is open already
  ReadOnly,       // refused, because the file is read-only
  NameTaken,      // refused, because the name is taken
  Replaces,       // the server can replace what has the name
  MoveUnknown,    // refused, because the server doesn't know the move command
  CannotReplace,  // refused, because the server can't replace a file in one request
  IsDirectory,    // what stands in the way is a directory
  StaysReadOnly,  // refused, though it was made writable
  Refused,        // refused, and the table has a way for that
  Lost,           // the connection was; in any state, where docs/sessions.md lets the task begin again
  Failed,         // in any state, with nothing else to do
};

struct ZnTaskBranch {
  ZnTaskEvent on = ZnTaskEvent::None;
  ZnSMBNFSEnum::SessionStatus next = ZnSMBNFSEnum::SSTError;
};

struct ZnTaskRow {
  enum Trait : uint8_t {
    kPlain = 0,
    kChangesNothing = 1,  // the action's request changes nothing on the server: it may be sent once more
    kWithoutNode = 2,     // goes on when the command's node has gone; else the task fails there
  };

  ZnSMBNFSEnum::SessionStatus state;
  const char* name;  // of the action
  void (ZnSessionTask::*action)();
  std::array<ZnTaskBranch, 5> next;
  uint8_t traits = kPlain;  // of Trait
};

// The name and the pointer of an action, for a row: {E::SSTRead, ZN_ACTION(ZnReadTask, BeginRead), {{...}}}.
#define ZN_ACTION(task, action) #action, static_cast < void (ZnSessionTask::*)()>(&task::action)

class ZnSessionTask : public ZnReferable {
 public:
  // `rows` are the task's own; it begins with the first of them. Session and command outlive the task.
  ZnSessionTask(ZnMachineSession& session, ZnSMBNFSCommand& command, std::span<const ZnTaskRow> rows);
  ZnSessionTask(const ZnSessionTask&) = delete;
  ZnSessionTask& operator=(const ZnSessionTask&) = delete;
  virtual ~ZnSessionTask();

  // Begins. The task may be gone afterwards, and its command and session too.
  void Run();
  ZnSMBNFSCommand& command() const { return command_; }
  ZnSMBNFSEnum::SessionStatus state() const { return command_.sessionstatus; }

  // The rows in front of every task's own.
  static std::span<const ZnTaskRow> CommonRows();
  // A line for each branch of a table: `what`, state, action, event, next state.
  static ZnUniString RowsAsString(const ZnUniString& what, std::span<const ZnTaskRow> rows);

 protected:
  using E = ZnSMBNFSEnum;

  // ---- how an action ends: in exactly one of these. Nothing of the task is to be touched behind the first three.

  // The state is over, and came to this.
  void Ended(ZnTaskEvent event = ZnTaskEvent::Done);
  // The command fails. The user reads `text`, with advice where there is some.
  void Fail(const ZnUniString& text, ZnNFSEnum::Status status);
  // It fails without a word; NFS_OK stands for whatever NFS is told of failures without a status.
  void FailQuietly(ZnNFSEnum::Status status = ZnNFSEnum::NFS_OK);
  // It goes on when the call of the client has ended, which was given WhenAnswered().
  void Await(ZnSmbCall call) {
    place_.reset();
    call_ = std::move(call);
  }
  // It goes on when it is woken; the place was taken with WhenAnswered().
  void Wait(ZnWaitPlace place) {
    call_.reset();
    place_ = std::move(place);
  }

  // Goes on with how a call or a wait has ended: by EventOf, or begins again by the rule of docs/sessions.md, or fails.
  ZnSmbDone WhenAnswered() {
    return [this](const ZnSmbOutcome& outcome) { Answered(outcome); };
  }

  // ---- for tasks to define

  // Takes what the answer in this state brought, and names what it came to. Null: the task fails with it, and the user
  // reads of it. Without a definition: Done, if it is a success.
  virtual std::optional<ZnTaskEvent> EventOf(const ZnSmbOutcome& outcome);
  // A failed answer in the user's words.
  virtual ZnUniString TextOf(const ZnSmbOutcome& outcome) const;
  // The connection was lost and all begins again, from the first row: lets go of what the task holds (its turn, say).
  virtual void BeginsAgain() {}
  // What the user has to know besides, when the task fails in this state: where something of the user's was left.
  virtual ZnUniString Remains() const { return {}; }

  // ---- what tasks need all the time

  ZnMachineSession& session() const { return session_; }
  ZnSmbClient& client() const;
  // The share that the command is about; null when it has gone.
  ZnSMBNFSTree* tree() const;
  // On whose behalf the client is asked.
  ZnSmbCaller caller() const { return caller_; }
  // The user reads of a failure that doesn't end the task, another way being gone, and of `besides`.
  void Tell(const ZnSmbOutcome& outcome, const ZnUniString& besides = {});

 private:
  static const ZnTaskRow kCommonRows[];
  void Begin();
  void EnterConversation();
  void LetThrough();
  void NotLetThrough();
  void ConnectShare();

  const ZnTaskRow* Row() const;
  void Go(ZnSMBNFSEnum::SessionStatus next);
  void Step();
  void Answered(const ZnSmbOutcome& told);
  bool MayBeginAgain(const ZnSmbOutcome& outcome) const;
  void Fails(ZnSMBNFSEnum::SessionStatus step, const ZnUniString& text, const ZnSmbOutcome& outcome,
             ZnNFSEnum::Status status);
  void NodeHasGone();
  ZnUniString NamesNotHeld(const ZnSMBNFSTree& share) const;

  ZnMachineSession& session_;
  ZnSMBNFSCommand& command_;
  std::span<const ZnTaskRow> rows_;
  ZnSmbCaller caller_;
  ZnSmbCall call_;
  ZnWaitPlace place_;
  bool stepping_ = false;  // an action is on the stack
  bool moved_ = false;     // and has come to its end already
};
