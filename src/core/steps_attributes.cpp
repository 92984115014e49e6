// GETATTR and SETATTR.

#include "core/steps.h"
#include "tree/nfs_time.h"

namespace {

// Whatever became of the refresh before it, the call goes on.
void ForgetRefresh(ZnSMBNFSCommand& command) {
  command.tolerant = false;
  command.error = ZnNFSEnum::NFS_OK;
}

// A time of a million microseconds is a client's way to say "now".
void ResolveNow(ZnNFSTimeVal& time) {
  constexpr uint32_t kNow = 1000000;
  if (time.useconds == kNow) time = ZnNfsTime(ZnTimeVal::now());
}

}  // namespace

namespace ZnSteps {

// The attributes of what the configuration makes are good even where its contents can't be listed. A share's are listed
// by its machine, which may be slow or dead: nobody who asks for attributes waits for that.
Outcome UpdateTopContents(FS& filesystem, Command& command) {
  if (!command.node) return Refuse(command, ZnNFSEnum::NFSERR_STALE);
  if (!filesystem.serverconfig().paranoidupdate || command.node->IsInside()) return Outcome::GoOn;
  if (command.node->IsShare()) {
    filesystem.RefreshShareUnasked(command.node.Get());
    return Outcome::GoOn;
  }
  command.tolerant = true;
  return Call<&FS::BUpdateNodeContents>(filesystem, command);
}

Outcome UpdateAttributes(FS& filesystem, Command& command) {
  ForgetRefresh(command);
  return Call<&FS::BUpdateNode>(filesystem, command);
}

void TakeAttributes(Command& command, const ZnNFSSattr& attributes) {
  command.ownsattr = attributes;
  ResolveNow(command.ownsattr.atime);
  ResolveNow(command.ownsattr.mtime);
  command.sattr = &command.ownsattr;
}

Outcome SetattrBegin(FS& filesystem, Command& command) {
  TakeAttributes(command, command.As<ZnNFSSattrargs>().attributes);
  const bool directory = command.node && command.node->IsDirectory();
  if (directory && filesystem.SetAttrNeedTruncate(&command)) return Refuse(command, ZnNFSEnum::NFSERR_ISDIR);
  return Call<&FS::BSetAttributes>(filesystem, command);
}

// A truncation is a write of no bytes at the new size.
Outcome Truncate(FS& filesystem, Command& command) {
  if (!filesystem.SetAttrNeedTruncate(&command)) return Outcome::GoOn;
  command.offset = command.sattr->size;
  command.data.Clear();
  return CheckThen<&FS::CheckWriteToFile, &FS::BWriteToFile>(filesystem, command);
}

}  // namespace ZnSteps
