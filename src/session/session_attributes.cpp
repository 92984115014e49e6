// Attributes and times that NFS sets.
//
// Which clock a time on the wire goes by depends on its form: 8-byte times are UTC, all others (the 4-byte times of
// open and close, the dates of SetTimes and of the old form of SetFileInfo) are the server's local time.

#include "model/mode_attributes.h"
#include "model/told_attributes.h"
#include "session/session.h"
#include "smb/wire/times.h"

namespace {

constexpr uint32_t kDay = 24 * 60 * 60;  // seconds

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

// A new file whose mode isn't told has the share's.
ZnSMBCFileAttributes ZnSMBNFSSession::AttribsToSet(const Command& command, const ZnSMBNFSTree& tree,
                                                   const ZnSMBCFileAttributes& present) {
  const auto mode = ZnToldMode(command.sattr).value_or(static_cast<uint32_t>(tree.config.unixperms));
  return ZnAttributesOfMode(mode, present, tree.config);
}

// ---- all in one request ---------------------------------------------------------------------------------------------

// The modification time of a file that is open for writing goes through its id: servers set the time that they hold
// for it again at its close, whatever came by path. Everything else goes by path. Set through the id of a file that was
// written, they take it for the moment to date the writing, and a file that is open for reading only can't be set
// through its id at all.
void ZnSMBNFSSession::GetSetAllAttribs(Command& command) {
  const ZnSMBNFSTree* tree = TreeOf(command);
  if (!tree) return Fail();
  ZnSMBCFileChange change;
  if (ZnToldMode(command.sattr)) change.attribs = AttribsToSet(command, *tree, command.node->fileobject.attribs);
  change.accessed = ZnToldAccess(command.sattr);
  change.modified = ZnToldModification(command.sattr);
  if (!SetsLongTimes()) {
    for (auto* time : {&change.accessed, &change.modified}) {
      if (*time) *time = ForDateByPath(ServerLocal(**time));
    }
  }
  command.fileobject = FileObject(*tree, command.node->Path());
  const ZnSMBNFSFile* file = command.node->file;
  if (file && file->writable && change.modified) {
    command.fileobject->fid = file->fid;
    command.fileobject->isopen = true;
  }
  Called(SetFileInfo(*command.fileobject, change, &callback_));
}

// Once the time of an open file was set, servers let no write change it any more, and set it again when the file is
// closed, over what another machine wrote meanwhile. So the file is closed at once, and opened anew for its next use.
// The time stands already: the close needn't carry it.
void ZnSMBNFSSession::SetAllDone(Command& command) {
  ZnSMBNFSFile* file = command.node->file;
  if (!file || !ZnToldModification(command.sattr)) return Complete(command);
  file->closetime = ZnTimeVal();
  file->unflushed = false;  // a flush would date it once more
  file->close = true;
  command.sessionstatus = ZnSMBNFSEnum::SSTCloseFiles;
  CloseNextFile(command);
}

// ---- attributes alone, by path --------------------------------------------------------------------------------------

void ZnSMBNFSSession::CloseBeforeSetAttribs(Command& command) {
  if (!command.node->file) return GetSetAttribs(command);
  command.node->file->close = true;
  command.sessionstatus = ZnSMBNFSEnum::SSTCloseFiles;
  CloseNextFile(command);
}

void ZnSMBNFSSession::GetSetAttribs(Command& command) {
  const ZnSMBNFSTree* tree = TreeOf(command);
  if (!tree) return Fail();
  command.fileobject = FileObject(*tree, command.node->Path());
  command.fileobject->attribs = AttribsToSet(command, *tree, command.node->fileobject.attribs);
  Called(SetAttributes(*command.fileobject, &callback_));
}

// ---- times alone, of an open file -----------------------------------------------------------------------------------

// Setting the access time alone through an id that was written through makes servers date the writing anew.
void ZnSMBNFSSession::CloseWritten(Command& command) {
  ZnSMBNFSFile* file = command.node->file;
  if (!file || file->fresh || !file->writable || ZnToldModification(command.sattr)) return Advance();
  const auto closed = TakeFile(file);
  command.fileobject = std::make_unique<ZnSMBCFileObject>(*closed);
  Called(CloseFile(command.fileobject.get(), closed->closetime, &callback_));
}

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
  object.created = ZnTimeVal();  // as it is, like the others that aren't told
  object.accessed = ServerLocal(ZnToldAccess(command.sattr).value_or(ZnTimeVal()));
  object.modified = ServerLocal(ZnToldModification(command.sattr).value_or(ZnTimeVal()));
  file.closetime = object.modified;
  BeginTransfer(file);
  Called(SetTimes(object, &callback_));
}

void ZnSMBNFSSession::ProcessSetTimes(Command& command) {
  EndTransfer();
  if (ZnSMBNFSFile* file = command.node->file) file->close = true;
  CloseNextFile(command);
}
