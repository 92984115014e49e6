// Failures: in words for the user and the log, and as a status for NFS.

#include <cerrno>

#include "model/log_catalogue.h"
#include "model/name_mapping.h"
#include "model/user_base.h"
#include "session/failure_words.h"
#include "session/session.h"
#include "smb/client/smb_error_text.h"

using E = ZnSMBNFSEnum;
using Values = ZnSMBClientValues;

namespace {

// "name", or "name(other)" where the two differ.
ZnUniString WithOther(const ZnUniString& name, const ZnUniString& other) {
  return name == other ? name : name + "(" + other + ")";
}

// The status of a refusal. Before the share is connected no file has been spoken of: that the server doesn't find what
// it needs doesn't mean that a file isn't there.
ZnNFSEnum::Status StatusOfRefusal(unsigned refusal, E::SessionStatus step) {
  const ZnNFSEnum::Status status = ZnSMBErrorToStatus(refusal);
  return ZnFailureWords::IsAboutMachine(step) && status != ZnNFSEnum::NFSERR_ACCES ? ZnNFSEnum::NFSERR_IO : status;
}

}  // namespace

ZnUniString ZnSMBNFSSession::EnglishReason(Values::Reason reason) { return ZnFailureWords::Sentence(reason); }

ZnNFSEnum::Status ZnSMBNFSSession::ConvertError(const Command& command) const {
  return command.failure == ZnNFSEnum::NFS_OK ? ZnNFSEnum::NFSERR_IO : command.failure;
}

// Keeps why the last call of the client failed in the command it was for.
void ZnSMBNFSSession::NoteFailure(Command& command) const {
  command.refusal = reason() == Values::ErrSMB ? errorkey() : 0;
  command.failure = ZnNFSEnum::NFSERR_IO;
  if (command.refusal != 0) command.failure = StatusOfRefusal(command.refusal, command.sessionstatus);
  if (ZnFailureWords::IsOwnRefusal(reason())) command.failure = ZnNFSEnum::NFSERR_ACCES;
  if (reason() == Values::ErrServer) command.failure = ZnNFSEnum::NFSERR_NOSPC;  // a disk that fills up shows so
}

// The server's words, or ours, about the call that has failed.
ZnUniString ZnSMBNFSSession::FailureText() const {
  if (reason() == Values::ErrSMB) {
    ZnUniString sentence = ZnSMBErrorToDescription(errorkey());
    if (!ZnFindSMBError(errorkey())) return sentence;
    if (sentence.EndsWith(".")) sentence.Truncate(sentence.Length() - 1);
    return sentence + " (" + ZnSMBErrorNumbers(errorkey()) + ")";
  }
  if (nameswithoutroom_) return "There are more names than treelimit of the machine in the profile allows to keep";
  ZnUniString sentence = EnglishReason(reason());
  const int code = Error().Code();
  const bool told = reason() == Values::ErrConnect && code != 0 && code != EINPROGRESS;
  return told ? sentence + " (" + Error().Reason() + ")" : sentence;
}

// The share and the file that a command is about, as far as it is about one.
void ZnSMBNFSSession::Place(const Command& command, ZnOSStream& line) {
  const ZnSMBNFSNode* node = command.node.Get();
  const ZnSMBNFSTree* tree = TreeOf(node);
  if (command.fileobject) {
    line << "\\" << command.fileobject->share << command.fileobject->path;
  } else if (tree) {
    line << "\\" << tree->share << InternalToWindowsPath(node->IsShare() ? node->path : node->Path(), tree->config);
  }
  if (command.fileobject2) line << "->" << command.fileobject2->path;
}

// Who, where, what and why, in one line, about the command that is first in the queue.
void ZnSMBNFSSession::Report(const ZnUniString& text) {
  const Command& command = *queue_.FirstWaiting();
  const E::SessionStatus step = command.sessionstatus;
  ZnOSStream line;
  line << WithOther(config.winname, config.user) << "\\\\" << WithOther(config.nbtname, config.machine);
  Place(command, line);
  line << ": " << ZnFailureWords::Doing(step, lastcommand());
  if (ZnFailureWords::IsAboutMachine(step)) line << " " << address_ << " port " << address_.GetPort();
  line << ": " << text;
  if (auto* user = machinenode->parent ? machinenode->parent->userinfo.get() : nullptr) user->WriteLog(line.text());
  Log200(line.text());
}

void ZnSMBNFSSession::SendError(const ZnUniString& text, ZnNFSEnum::Status status) {
  Command& command = *queue_.FirstWaiting();
  if (E::IsOwn(command.sessioncommand)) return Fail();  // nobody waits for it
  command.failure = status;
  const ZnUniString advice = ZnFailureWords::Advice(command.sessionstatus, reason(), command.refusal, status);
  Report(advice.IsEmpty() ? text : text + "; " + advice);
  Fail();
}

// The head fails; the tree hears of it.
void ZnSMBNFSSession::Fail() {
  queue_.Head()->sessionstatus = E::SSTError;
  Advance();
}
