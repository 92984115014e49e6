// The client's answers: one way of taking them for all steps, what a failure does to the connection, and when a command
// gets a second chance.

#include "session/failure_words.h"
#include "session/session.h"

using E = ZnSMBNFSEnum;
using Values = ZnSMBClientValues;

// What a call of the client has answered at once.
void ZnSMBNFSSession::Called(Result result) {
  if (result == ResultSuccess) return Advance();
  if (result == ResultFailure) CallFailed(true);
}

// How a call that was pending has ended.
void ZnSMBNFSSession::Callback(ZnCallback<Result>*, Result result) {
  Command* command = queue_.Head();
  if (!command || result == ResultPending) return;
  if (result == ResultFailure) return CallFailed(false);
  answered_ = true;
  if (command->sessionstatus == E::SSTConnect) ProcessConnect();
  if (command->sessionstatus == E::SSTConnectTree) ProcessTreeConnect(*command);
  Advance();
}

// The server has gone, or says what nobody asked for, while no call is under way.
void ZnSMBNFSSession::AsynchronousEvent(Result) { DropConnection(); }

void ZnSMBNFSSession::CallFailed(bool atonce) {
  Command& command = *queue_.Head();
  const ZnUniString text = FailureText();
  nameswithoutroom_ = false;
  const bool retry = MayRetry(command, atonce);
  NoteFailure(command);
  if (command.refusal != 0) answered_ = true;
  if (command.sessionstatus == E::SSTConnect && command.refusal == 0) {
    ForgetAddress();
    NotReached();
  } else if (reason() == Values::ErrTimedOut) {
    suspect_ = true;
  }
  if (command.sessionstatus == E::SSTConnect || ConversationIsOver()) DropConnection();
  if (retry) {
    command.retried = true;
    command.sessionstatus = E::SSTGetAddress;
    return Advance();
  }
  if (command.sessioncommand == E::SCCleanUp) return Advance();
  if (command.refusal != 0 && GoAnotherWay(command)) return;
  SendError(text + WhereItIs(command), command.failure);
}

// Only after a refusal, the server's or our own, or a short write does the next request find the two ends of one mind.
bool ZnSMBNFSSession::ConversationIsOver() const {
  const bool understood =
      reason() == Values::ErrSMB || reason() == Values::ErrServer || ZnFailureWords::IsOwnRefusal(reason());
  return OutOfStep() || !understood;
}

// Servers close connections that were idle for long, and we may learn of that only by our next request. The command
// then begins again on a new connection, once, before the user sees an error. The rule, so that nothing is done twice:
//  - if the request couldn't be written, or the server hung up before it had all of it, it wasn't acted on: any command
//    begins again;
//  - else, if the connection ended before anything was answered to the command, only a request that changes nothing on
//    the server is sent again: a tree connect, a listing, an open of an existing file, a read, a close or
//    flush (which isn't sent again: the file went with the connection).
// A time-out isn't an idle server's: it isn't tried again.
bool ZnSMBNFSSession::MayRetry(const Command& command, bool atonce) const {
  if (command.retried || answered_ || E::IsOwn(command.sessioncommand)) return false;
  if (command.sessionstatus == E::SSTConnect) return false;
  if (atonce) return reason() == Values::ErrWrite;
  if (reason() != Values::ErrDisconnect) return false;
  if (LeftUnacknowledged()) return true;
  switch (command.sessionstatus) {
    case E::SSTConnectTree:
    case E::SSTGetDirs:
    case E::SSTGetAttribs:
    case E::SSTGetSpace:
    case E::SSTOpenFile:
    case E::SSTRead:
    case E::SSTCloseFiles:
    case E::SSTFlush:
    case E::SSTCloseWritten:
      return true;
    default:
      return false;
  }
}

// Ids of trees and files mean nothing on another connection, so they go with this one.
void ZnSMBNFSSession::DropConnection() {
  Disconnect();
  for (auto& tree : trees) {
    tree->connected = false;
    tree->tid = ZnSMBCTreeObject::kNotConnected;
  }
  DropFiles();
}
