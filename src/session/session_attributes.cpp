// Attributes and times that NFS sets.
//
// Which clock a time on the wire goes by depends on its form: the 8-byte times of SetFileInfo on an open file are UTC,
// all others (the 4-byte times of open and close, the dates of SetTimes and of SetFileInfo by path) are the server's
// local time.

#include "rpc/nfs_enum.h"
#include "session/session.h"
#include "smb/wire/times.h"

using E = ZnSMBNFSEnum;

namespace {

constexpr uint32_t kUnset = ZnNFSEnum::kUnchanged;
constexpr uint32_t kWriteBits = 0222;
constexpr uint32_t kDay = 24 * 60 * 60;  // seconds

ZnTimeVal Told(const ZnNFSTimeVal& time) { return time.seconds == kUnset ? ZnTimeVal() : ZnTimeVal{time.seconds, 0}; }

// Whether a mode stands for an attribute that the share ties to some of its bits.
bool Stands(int32_t mask, uint32_t mode) { return (static_cast<uint32_t>(mask) & mode) != 0; }

// The client works a date out as if its time were UTC, and the time of day by taking off the midnight of that date in
// the zone of this host. This is the time that comes out as `local` on the wire, whatever that zone is.
ZnTimeVal ForDateByPath(const ZnTimeVal& local) {
  if (local.IsZero()) return local;
  ZnSMBCDate date;
  date.FromTimeVal(local);
  const uint32_t midnight = local.seconds / kDay * kDay;
  const int64_t west = int64_t{date.AsTimeVal().seconds} - midnight;
  const int64_t timeofday = (local.seconds - midnight + west + kDay) % kDay;
  return {midnight + static_cast<uint32_t>(timeofday), 0};
}

}  // namespace

// The time as the server's own clock shows it. Times that it can't show stay as they are.
ZnTimeVal ZnSMBNFSSession::ServerLocal(const ZnTimeVal& time) const {
  if (time.IsZero()) return time;
  const int64_t seconds = int64_t{time.seconds} - timeoffset_;
  if (seconds <= 0 || seconds > UINT32_MAX) return time;
  return {static_cast<uint32_t>(seconds), time.microseconds};
}

// Attributes and times, in UTC, of a file that NFS sets or creates. What isn't told stays zero, which servers leave
// alone; `usesattrmode` false takes the mode from the node.
void ZnSMBNFSSession::CopyAttribs(const Command& command, bool usesattrmode, bool creating,
                                  ZnSMBCFileObject& file) const {
  const ZnSMBNFSTree* tree = TreeOf(command);
  if (!tree) return;
  const ZnSMBNFSShareConfig& share = tree->config;
  const bool told = command.sattr && command.sattr->mode != kUnset;
  uint32_t mode = command.node->attribs.mode;
  if (usesattrmode || creating) mode = told ? command.sattr->mode : static_cast<uint32_t>(share.unixperms);

  file.attribs = ZnSMBCFileAttributes();
  file.attribs.read_only = !share.nosetreadonly && (mode & kWriteBits) == 0;
  file.attribs.hidden = Stands(share.hidden, mode);
  file.attribs.system = Stands(share.system, mode);
  file.attribs.archive = Stands(share.archive, mode);
  file.attribs.directory = creating ? command.sessioncommand == E::SCRequestMkdir : command.node->IsDirectory();

  file.created = ZnTimeVal();
  file.accessed = command.sattr ? Told(command.sattr->atime) : ZnTimeVal();
  file.modified = command.sattr ? Told(command.sattr->mtime) : ZnTimeVal();
}

// ---- all in one request ---------------------------------------------------------------------------------------------

// A file that is open for reading only can't be set through its id.
void ZnSMBNFSSession::GetSetAllAttribs(Command& command) {
  const ZnSMBNFSTree* tree = TreeOf(command);
  if (!tree) return Fail();
  const ZnSMBNFSFile* file = command.node->file;
  const bool told = command.sattr && command.sattr->mode != kUnset;
  command.fileobject = FileObject(*tree, command.node->path + command.node->name);
  ZnSMBCFileObject& object = *command.fileobject;
  CopyAttribs(command, told, false, object);
  if (file && file->writable) {
    object.fid = file->fid;
    object.isopen = true;
  } else {
    object.accessed = ForDateByPath(ServerLocal(object.accessed));
    object.modified = ForDateByPath(ServerLocal(object.modified));
  }
  Called(SetFileInfo(object, &callback_));
}

// Once the time of an open file was set, servers let no write change it any more, and set it again when the file is
// closed, over what another machine wrote meanwhile. So the file is closed at once, and opened anew for its next use.
// The time stands already: the close needn't carry it.
void ZnSMBNFSSession::SetAllDone(Command& command) {
  ZnSMBNFSFile* file = command.node->file;
  if (!file || !command.fileobject->isopen || command.fileobject->modified.IsZero()) return Complete(command);
  file->closetime = ZnTimeVal();
  file->close = true;
  command.sessionstatus = E::SSTCloseFiles;
  CloseNextFile(command);
}

// ---- attributes alone, by path --------------------------------------------------------------------------------------

void ZnSMBNFSSession::CloseBeforeSetAttribs(Command& command) {
  if (!command.node->file) return GetSetAttribs(command);
  command.node->file->close = true;
  command.sessionstatus = E::SSTCloseFiles;
  CloseNextFile(command);
}

void ZnSMBNFSSession::GetSetAttribs(Command& command) {
  const ZnSMBNFSTree* tree = TreeOf(command);
  if (!tree) return Fail();
  command.fileobject = FileObject(*tree, command.node->path + command.node->name);
  CopyAttribs(command, true, false, *command.fileobject);
  Called(SetAttributes(*command.fileobject, &callback_));
}

// ---- times alone, of an open file -----------------------------------------------------------------------------------

void ZnSMBNFSSession::StartSetTimes(Command& command) {
  command.node->file ? GetSetTimes(command) : OpenAgain(command, false, true);
}

void ZnSMBNFSSession::SetTimesOpened(Command& command) {
  ProcessOpenFile(command);
  command.node ? StartSetTimes(command) : Fail();
}

// The close that follows carries the modification time too: some servers set it to their own "now" else.
void ZnSMBNFSSession::GetSetTimes(Command& command) {
  ZnSMBNFSFile& file = *command.node->file;
  command.fileobject = std::make_unique<ZnSMBCFileObject>(file);
  ZnSMBCFileObject& object = *command.fileobject;
  CopyAttribs(command, false, false, object);
  object.accessed = ServerLocal(object.accessed);
  object.modified = ServerLocal(object.modified);
  file.closetime = object.modified;
  BeginTransfer(file);
  Called(SetTimes(object, &callback_));
}

void ZnSMBNFSSession::ProcessSetTimes(Command& command) {
  EndTransfer();
  if (ZnSMBNFSFile* file = command.node->file) file->close = true;
  CloseNextFile(command);
}
