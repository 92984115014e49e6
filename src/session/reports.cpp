#include "session/reports.h"

#include <cerrno>

#include "model/log_catalogue.h"
#include "model/name_mapping.h"
#include "model/user_base.h"
#include "session/failure_words.h"
#include "session/share_paths.h"
#include "smb/client/smb_error_text.h"

using E = ZnSMBNFSEnum;
using Values = ZnSMBClientValues;

namespace {

// "name", or "name(other)" where the two differ.
ZnUniString WithOther(const ZnUniString& name, const ZnUniString& other) {
  return name == other ? name : name + "(" + other + ")";
}

// The share and the file that a command is about, as far as it is about one.
ZnUniString PlaceOf(const ZnSMBNFSCommand& command) {
  ZnOSStream place;
  const ZnSMBNFSNode* node = command.node.Get();
  const ZnSMBNFSTree* tree = ZnTreeOf(node);
  if (command.fileobject) {
    place << "\\" << command.fileobject->share << command.fileobject->path;
  } else if (tree) {
    place << "\\" << tree->share << InternalToWindowsPath(node->IsShare() ? node->path : node->Path(), tree->config);
  }
  if (command.fileobject2) place << "->" << command.fileobject2->path;
  return place.text();
}

}  // namespace

// Before the share is connected no file has been spoken of: that the server doesn't find what it needs doesn't mean
// that a file isn't there. And a disk that fills up shows in a short write.
ZnNFSEnum::Status ZnSessionReports::StatusOf(const ZnSmbOutcome& outcome, E::SessionStatus step) {
  if (ZnFailureWords::IsOwnRefusal(outcome.reason)) return ZnNFSEnum::NFSERR_ACCES;
  if (outcome.reason == Values::ErrServer) return ZnNFSEnum::NFSERR_NOSPC;
  if (outcome.Refusal() == 0) return ZnNFSEnum::NFSERR_IO;
  const ZnNFSEnum::Status status = ZnSMBErrorToStatus(outcome.Refusal());
  return ZnFailureWords::IsAboutMachine(step) && status != ZnNFSEnum::NFSERR_ACCES ? ZnNFSEnum::NFSERR_IO : status;
}

ZnUniString ZnSessionReports::TextOf(const ZnSmbOutcome& outcome) const {
  if (const unsigned refusal = outcome.Refusal(); refusal != 0) {
    ZnUniString sentence = ZnSMBErrorToDescription(refusal);
    if (!ZnFindSMBError(refusal)) return sentence;
    if (sentence.EndsWith(".")) sentence.Truncate(sentence.Length() - 1);
    return sentence + " (" + ZnSMBErrorNumbers(refusal) + ")";
  }
  ZnUniString sentence = ZnFailureWords::Sentence(outcome.reason);
  const int code = client_.Error().Code();
  const bool told = outcome.reason == Values::ErrConnect && code != 0 && code != EINPROGRESS;
  return told ? sentence + " (" + client_.Error().Reason() + ")" : sentence;
}

void ZnSessionReports::Tell(const ZnSMBNFSCommand& command, E::SessionStatus step, Values::Command lastcommand,
                            const ZnUniString& text) const {
  Write(PlaceOf(command), step, lastcommand, text);
}

void ZnSessionReports::Tell(const ZnSMBCFileObject& file, E::SessionStatus step, const ZnUniString& text) const {
  Write("\\" + file.share + file.path, step, Values::CmdNone, text);
}

void ZnSessionReports::Write(const ZnUniString& place, E::SessionStatus step, Values::Command lastcommand,
                             const ZnUniString& text) const {
  ZnOSStream line;
  line << WithOther(config_.winname, config_.user) << "\\\\" << WithOther(config_.nbtname, config_.machine) << place;
  line << ": " << ZnFailureWords::Doing(step, lastcommand);
  if (ZnFailureWords::IsAboutMachine(step)) line << " " << address_ << " port " << address_.GetPort();
  line << ": " << text;
  if (auto* user = machinenode_->parent ? machinenode_->parent->userinfo.get() : nullptr) user->WriteLog(line.text());
  Log200(line.text());
}
