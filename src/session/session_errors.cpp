// Failures: in words for the user and the log, and as a status for NFS.

#include "model/log_catalogue.h"
#include "model/user_base.h"
#include "session/session.h"
#include "smb/client/smb_error_text.h"

using E = ZnSMBNFSEnum;
using Values = ZnSMBClientValues;

namespace {

// SMB errors as code times 256 plus class.
constexpr unsigned kFileNotFound = 2 * 256 + 1;
constexpr unsigned kFileExists = 80 * 256 + 1;

constexpr const char* kReasons[] = {
    "There was no error",
    "An SMB level error was received",
    "The local server is processing a request",
    "A received packet was not understood by the server",
    "The remote end rejected a packet we sent it",
    "ErrBlocked",
    "The server is already connected",
    "The local server is currently in the process of connecting",
    "The server is not connected",
    "ErrDisconnect",
    "The remote server took too long to respond to a request",
    "The local server tried to send the wrong command",
    "There was an internal error",
    "The local server did not understand a reply from the remote server",
    "ErrServer",
    "The local server tried to use a bad Tree ID",
    "The local server tried to use a bad file ID",
    "There was an error translating an IPC packet",
    "ErrBadPrinter",
    "",
    "The local server failed to bind to a local port",
    "The local server failed to connect to the remote server",
    "The remote server speaks none of our dialects",
};

// "name", or "name(other)" where the two differ.
ZnUniString WithOther(const ZnUniString& name, const ZnUniString& other) {
  return name == other ? name : name + "(" + other + ")";
}

// A name as it may stand in a line of a log: whoever makes a file doesn't get to write lines.
ZnUniString OnOneLine(ZnUniString name) {
  for (size_t i = 0; i < name.Length(); i++) {
    if (name[i] < u' ') name.Set(i, u'?');
  }
  return name;
}

}  // namespace

ZnUniString ZnSMBNFSSession::EnglishReason(Values::Reason reason) {
  return reason < std::size(kReasons) ? kReasons[reason] : "";
}

ZnNFSEnum::Status ZnSMBNFSSession::ConvertError(const Command& command) const {
  if (errorkey_ == kFileNotFound && command.sessioncommand == E::SCRequestOpenFile) return ZnNFSEnum::NFSERR_NOENT;
  return errorkey_ == kFileExists ? ZnNFSEnum::NFSERR_EXIST : ZnNFSEnum::NFSERR_ACCES;
}

ZnUniString ZnSMBNFSSession::FailureText() const {
  if (reason() == Values::ErrSMB) return ZnSMBErrorToString(errorkey()) + " : " + ZnSMBErrorToDescription(errorkey());
  return ZnUniString(Values::ReasonString(reason())) + " : " + EnglishReason(reason());
}

// Who, where, what and why, in one line, about the command that is first in the queue.
void ZnSMBNFSSession::Report(const ZnUniString& text) {
  const Command& command = *queue_.FirstWaiting();
  ZnOSStream line;
  line << WithOther(config.winname, config.user) << "\\\\" << WithOther(config.nbtname, config.machine);
  if (command.fileobject) line << "\\" << command.fileobject->share << OnOneLine(command.fileobject->path);
  if (command.fileobject2) line << "->" << OnOneLine(command.fileobject2->path);
  line << ": " << E::SessionCommandString(command.sessioncommand) << "/"
       << E::SessionStatusString(command.sessionstatus) << ": " << text;
  if (auto* user = machinenode->parent ? machinenode->parent->userinfo.get() : nullptr) user->WriteLog(line.text());
  Log200(line.text());
}

void ZnSMBNFSSession::SendError(const ZnUniString& text) {
  Report(text);
  Fail();
}

// The head fails; the tree hears of it.
void ZnSMBNFSSession::Fail() {
  queue_.Head()->sessionstatus = E::SSTError;
  Advance();
}
