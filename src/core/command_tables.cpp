#include "core/command_tables.h"

#include <algorithm>
#include <limits>
#include <optional>

#include "model/link_target.h"
#include "rpc/rpc_server.h"
#include "tree/file_system.h"
#include "tree/nfs_time.h"

namespace {

using E = ZnSMBNFSEnum;
using FS = ZnSMBNFSFileSystem;
using Command = ZnSMBNFSCommand;
using Outcome = ZnSMBNFSOutcome;

Outcome Refuse(Command& command, ZnNFSEnum::Status error) {
  command.error = error;
  return Outcome::Refused;
}

// --- Actions that one call of the file system is all of ---

template <void (FS::*Step)(Command*)>
Outcome Call(FS& filesystem, Command& command) {
  (filesystem.*Step)(&command);
  return Outcome::Called;
}

Outcome Done(FS&, Command&) { return Outcome::Reply; }

// --- Actions that begin with a decision ---

// Takes the step unless the check before it has found an error.
template <void (FS::*Check)(Command*), void (FS::*Step)(Command*)>
Outcome CheckThen(FS& filesystem, Command& command) {
  (filesystem.*Check)(&command);
  if (command.error != ZnNFSEnum::NFS_OK) return Outcome::Refused;
  return Call<Step>(filesystem, command);
}

bool NamesAreWellFormed(const ZnSMBNFSArguments& arguments) {
  return std::visit(
      [](const auto& args) {
        if constexpr (requires { args.WellFormed(); }) return args.WellFormed();
        return true;
      },
      arguments);
}

Outcome FindHandle(FS& filesystem, Command& command) {
  if (!NamesAreWellFormed(command.args)) return Refuse(command, ZnNFSEnum::NFSERR_ACCES);
  command.handle = ZnSMBNFSHandle(ZnFindProcedure(command.command)->handle(command));
  return Call<&FS::NBFindByHandle>(filesystem, command);
}

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

// Whatever became of the refresh before it, the call goes on.
void ForgetRefresh(Command& command) {
  command.tolerant = false;
  command.error = ZnNFSEnum::NFS_OK;
}

Outcome UpdateAttributes(FS& filesystem, Command& command) {
  ForgetRefresh(command);
  return Call<&FS::BUpdateNode>(filesystem, command);
}

template <ZnNameMatch match>
Outcome FindName(FS& filesystem, Command& command) {
  filesystem.NBFindByName(&command, match);
  return Outcome::Called;
}

Outcome LookUpName(FS& filesystem, Command& command) {
  command.name = command.As<ZnNFSDiropargs>().name;
  return FindName<ZnNameMatch::LookUp>(filesystem, command);
}

// The name of an entry that is to go. What "." and ".." lead to isn't an entry of the directory.
Outcome FindEntry(FS& filesystem, Command& command, const ZnUniString& name) {
  if (name == "." || name == "..") return Refuse(command, ZnNFSEnum::NFSERR_ACCES);
  command.name = name;
  return FindName<ZnNameMatch::Entry>(filesystem, command);
}

Outcome FindEntryToRemove(FS& filesystem, Command& command) {
  return FindEntry(filesystem, command, command.As<ZnNFSDiropargs>().name);
}

template <void (FS::*Check)(Command*)>
Outcome OpenToRead(FS& filesystem, Command& command) {
  command.openread = true;
  return CheckThen<Check, &FS::BOpenFile>(filesystem, command);
}

template <void (FS::*Check)(Command*)>
Outcome OpenToWrite(FS& filesystem, Command& command) {
  command.openwrite = true;
  return CheckThen<Check, &FS::BOpenFile>(filesystem, command);
}

// A truncation is a write of no bytes at the new size.
Outcome Truncate(FS& filesystem, Command& command) {
  if (!filesystem.SetAttrNeedTruncate(&command)) return Outcome::GoOn;
  command.offset = command.sattr->size;
  command.data.Clear();
  return Call<&FS::BWriteToFile>(filesystem, command);
}

// --- SETATTR ---

// A time of a million microseconds is a client's way to say "now".
void ResolveNow(ZnNFSTimeVal& time) {
  constexpr uint32_t kNow = 1000000;
  if (time.useconds == kNow) time = ZnNfsTime(ZnTimeVal::now());
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

Outcome SetattrOpen(FS& filesystem, Command& command) {
  if (!filesystem.SetAttrNeedOpen(&command)) return Outcome::GoOn;
  return OpenToWrite<&FS::CheckSetAttrOpen>(filesystem, command);
}

// --- READLINK, READ, WRITE ---

Outcome ReadLink(FS& filesystem, Command& command) {
  command.offset = 0;
  command.count = ZnNFSEnum::kMaxData;
  return Call<&FS::BReadFromFile>(filesystem, command);
}

// A reply must fit into a datagram, and a file ends where 32 bits do; a short read is the client's cue to go on.
Outcome Read(FS& filesystem, Command& command) {
  const auto& args = command.As<ZnNFSReadargs>();
  command.offset = args.offset;
  command.count = std::min({args.count, ZnNFSEnum::kMaxData, std::numeric_limits<uint32_t>::max() - args.offset});
  return Call<&FS::BReadFromFile>(filesystem, command);
}

Outcome Write(FS& filesystem, Command& command) {
  const auto& args = command.As<ZnNFSWriteargs>();
  if (args.data.Length() > std::numeric_limits<uint32_t>::max() - args.offset)
    return Refuse(command, ZnNFSEnum::NFSERR_FBIG);
  command.offset = args.offset;
  command.data = args.data;
  return Call<&FS::BWriteToFile>(filesystem, command);
}

// --- CREATE, MKDIR ---

void TakeCreateArguments(Command& command) {
  const auto& args = command.As<ZnNFSCreateargs>();
  command.name = args.where.name;
  TakeAttributes(command, args.attributes);
}

// An existing file counts as created.
Outcome Create(FS& filesystem, Command& command) {
  TakeCreateArguments(command);
  filesystem.CheckCreateFile(&command);
  if (command.error == ZnNFSEnum::NFSERR_EXIST) {
    command.error = ZnNFSEnum::NFS_OK;
    return Outcome::GoOn;
  }
  if (command.error != ZnNFSEnum::NFS_OK) return Outcome::Refused;
  return Call<&FS::BCreateFile>(filesystem, command);
}

Outcome CreateOpen(FS& filesystem, Command& command) {
  if (!filesystem.SetAttrNeedTruncate(&command)) return Outcome::GoOn;
  return OpenToWrite<&FS::CheckWriteToFile>(filesystem, command);
}

Outcome MakeDirectory(FS& filesystem, Command& command) {
  TakeCreateArguments(command);
  return CheckThen<&FS::CheckMakeDirectory, &FS::BMakeDirectory>(filesystem, command);
}

// --- RENAME, LINK ---

Outcome RenameSource(FS& filesystem, Command& command) {
  return FindEntry(filesystem, command, command.As<ZnNFSRenameargs>().from.name);
}

Outcome RenameTargetDirectory(FS& filesystem, Command& command) {
  command.savednode = command.node;
  command.handle = ZnSMBNFSHandle(command.As<ZnNFSRenameargs>().to.dir);
  return Call<&FS::NBFindByHandle>(filesystem, command);
}

// Whether the target exists is for its directory to tell, which nobody may have listed yet.
Outcome RenameUpdateTargetDirectory(FS& filesystem, Command& command) {
  command.node2 = command.node;
  command.node = command.savednode;
  filesystem.CheckRenamePlace(&command);
  if (command.error != ZnNFSEnum::NFS_OK) return Outcome::Refused;
  command.node = command.node2;
  return Call<&FS::BUpdateNodeContents>(filesystem, command);
}

// That a directory has entries isn't answered from memory: another machine may have removed them.
Outcome UpdateUnlessEmpty(FS& filesystem, Command& command) {
  if (command.node && !command.node->children.IsEmpty()) OutOfDate(command.node.Get(), true);
  return Call<&FS::BUpdateNodeContents>(filesystem, command);
}

// A directory may be replaced if it is empty.
Outcome RenameUpdateTarget(FS& filesystem, Command& command) {
  command.node = command.savednode;
  command.name = command.As<ZnNFSRenameargs>().to.name;
  ZnSMBNFSNode* target = filesystem.RenameTarget(command);
  if (!target || !target->IsDirectory()) return Outcome::GoOn;
  command.node = target;
  return UpdateUnlessEmpty(filesystem, command);
}

Outcome Rename(FS& filesystem, Command& command) {
  command.node = command.savednode;
  return CheckThen<&FS::CheckRename, &FS::BRename>(filesystem, command);
}

Outcome LinkTargetDirectory(FS& filesystem, Command& command) {
  command.savednode = command.node;
  command.handle = ZnSMBNFSHandle(command.As<ZnNFSLinkargs>().to.dir);
  return Call<&FS::NBFindByHandle>(filesystem, command);
}

Outcome Link(FS& filesystem, Command& command) {
  command.node2 = command.node;
  command.node = command.savednode;
  command.name = command.As<ZnNFSLinkargs>().to.name;
  return CheckThen<&FS::CheckCreateLink, &FS::NBCreateLink>(filesystem, command);
}

// --- SYMLINK: a link is a file whose name is marked and whose contents are the target ---

// A link and a file of one name don't meet on the share, so the server wouldn't refuse to make one beside the other.
Outcome ListForLink(FS& filesystem, Command& command) {
  if (command.node) OutOfDate(command.node.Get(), true);
  return Call<&FS::BUpdateNodeContents>(filesystem, command);
}

// A target that can't be kept isn't cut: nothing is made.
Outcome CreateLinkFile(FS& filesystem, Command& command) {
  if (!ZnLinkContents(command.As<ZnNFSSymlinkargs>().to)) return Refuse(command, ZnNFSEnum::NFSERR_ACCES);
  command.name = command.As<ZnNFSSymlinkargs>().from.name;
  return CheckThen<&FS::CheckCreateSymLink, &FS::BCreateFile>(filesystem, command);
}

// Its name without the mark: that is what the server may have changed the letter case of.
Outcome FindLinkFile(FS& filesystem, Command& command) {
  command.name = command.As<ZnNFSSymlinkargs>().from.name;
  return FindName<ZnNameMatch::Entry>(filesystem, command);
}

Outcome OpenLinkFile(FS& filesystem, Command& command) {
  command.openwrite = true;
  return Call<&FS::BOpenFile>(filesystem, command);
}

Outcome WriteLinkFile(FS& filesystem, Command& command) {
  command.offset = 0;
  command.data = ZnLinkContents(command.As<ZnNFSSymlinkargs>().to).value_or(ZnByteBuffer());
  return Call<&FS::BWriteToFile>(filesystem, command);
}

// --- RMDIR ---

// What the configuration makes goes by no call: its machine isn't even asked.
Outcome UpdateContentsToRemove(FS& filesystem, Command& command) {
  if (command.node && !command.node->IsInside()) return Refuse(command, ZnNFSEnum::NFSERR_ACCES);
  return UpdateUnlessEmpty(filesystem, command);
}

// --- Replies ---

template <class Result>
Result WithStatus(Command& command, bool needsnode = true) {
  Result result;
  if (needsnode && command.error == ZnNFSEnum::NFS_OK && !command.node) command.error = ZnNFSEnum::NFSERR_STALE;
  result.status = command.error;
  return result;
}

template <class Result>
void Send(ZnRPCServer& server, const Command& command, const Result& result) {
  server.SendSuccess(command.source, command.xid, result);
}

void StatReply(ZnRPCServer& server, FS&, Command& command) {
  Send(server, command, WithStatus<ZnNFSStat>(command, false));
}

void AttributesReply(ZnRPCServer& server, FS&, Command& command) {
  auto result = WithStatus<ZnNFSAttrstat>(command);
  if (result.status == ZnNFSEnum::NFS_OK) result.attributes = command.node->attribs;
  Send(server, command, result);
}

void NodeReply(ZnRPCServer& server, FS&, Command& command) {
  auto result = WithStatus<ZnNFSDiropres>(command);
  if (result.status == ZnNFSEnum::NFS_OK) {
    result.file = command.node->handle;
    result.attributes = command.node->attribs;
  }
  Send(server, command, result);
}

// What is no path, or none that the protocol can carry, is never shown shortened.
void LinkReply(ZnRPCServer& server, FS&, Command& command) {
  const std::optional<ZnUniString> target = ZnLinkTarget(command.data);
  const bool fits = target && ZnEncodeRpcName(*target).Length() <= ZnNFSEnum::kMaxPath;
  if (command.error == ZnNFSEnum::NFS_OK && !fits) command.error = ZnNFSEnum::NFSERR_IO;
  auto result = WithStatus<ZnNFSReadlinkres>(command, false);
  if (result.status == ZnNFSEnum::NFS_OK) result.data = *target;
  Send(server, command, result);
}

void ReadReply(ZnRPCServer& server, FS&, Command& command) {
  auto result = WithStatus<ZnNFSReadres>(command);
  if (result.status == ZnNFSEnum::NFS_OK) {
    result.attributes = command.node->attribs;
    result.data = command.data;
  }
  Send(server, command, result);
}

void DirectoryReply(ZnRPCServer& server, FS& filesystem, Command& command) {
  auto result = WithStatus<ZnNFSReaddirres>(command);
  if (result.status == ZnNFSEnum::NFS_OK) {
    const auto& args = command.As<ZnNFSReaddirargs>();
    uint32_t eof = 0;
    filesystem.FillContents(command.node.Get(), args.cookie, std::min(args.count, ZnNFSEnum::kMaxData), result.entries,
                            eof);
    result.eof = eof != 0;
  }
  Send(server, command, result);
}

void StatfsReply(ZnRPCServer& server, FS&, Command& command) {
  command.statfs.status = command.error;
  Send(server, command, command.statfs);
}

// --- The handle that a procedure begins with ---

const ZnNFSFileHandle& HandleItself(const Command& command) { return command.As<ZnNFSFileHandle>(); }
template <class Args>
const ZnNFSFileHandle& FileOf(const Command& command) {
  return command.As<Args>().file;
}
template <class Args>
const ZnNFSFileHandle& DirOf(const Command& command) {
  return command.As<Args>().dir;
}
template <class Args>
const ZnNFSFileHandle& WhereOf(const Command& command) {
  return command.As<Args>().where.dir;
}
template <class Args>
const ZnNFSFileHandle& FromDirOf(const Command& command) {
  return command.As<Args>().from.dir;
}
const ZnNFSFileHandle& LinkFrom(const Command& command) { return command.As<ZnNFSLinkargs>().from; }

// --- The tables: on this status, do this, and its end finds the command at that status ---

constexpr ZnSMBNFSStep kStart{E::STStart, "NBFindByHandle", FindHandle, E::STLookup};

constexpr ZnSMBNFSStep kGetattr[] = {
    kStart,
    {E::STLookup, "paranoidupdate: BUpdateNodeContents", UpdateTopContents, E::STUpdate},
    {E::STUpdate, "BUpdateNode", UpdateAttributes, E::STUpdate2},
    {E::STUpdate2, "reply", Done, E::STUpdate2},
};

constexpr ZnSMBNFSStep kSetattr[] = {
    kStart,
    {E::STLookup, "BSetAttributes", SetattrBegin, E::STSetAttribs},
    {E::STSetAttribs, "SetAttrNeedOpen: CheckSetAttrOpen, BOpenFile", SetattrOpen, E::STOpen},
    {E::STOpen, "SetAttrNeedTruncate: BWriteToFile", Truncate, E::STWrite},
    {E::STWrite, "BSetAllAttributes", Call<&FS::BSetAllAttributes>, E::STSetAllAttribs},
    {E::STSetAllAttribs, "BSetTimes", Call<&FS::BSetTimes>, E::STSetTimes},
    {E::STSetTimes, "BUpdateNode", Call<&FS::BUpdateNode>, E::STUpdate2},
    {E::STUpdate2, "reply", Done, E::STUpdate2},
};

constexpr ZnSMBNFSStep kLookup[] = {
    kStart,
    {E::STLookup, "BUpdateNodeContents", Call<&FS::BUpdateNodeContents>, E::STUpdate},
    {E::STUpdate, "NBFindByName", LookUpName, E::STLookup2},
    {E::STLookup2, "BUpdateNode", Call<&FS::BUpdateNode>, E::STUpdate2},
    {E::STUpdate2, "reply", Done, E::STUpdate2},
};

constexpr ZnSMBNFSStep kReadlink[] = {
    kStart,
    {E::STLookup, "CheckReadFromFile, BOpenFile", OpenToRead<&FS::CheckReadFromFile>, E::STOpen},
    {E::STOpen, "BReadFromFile", ReadLink, E::STRead},
    {E::STRead, "reply", Done, E::STRead},
};

constexpr ZnSMBNFSStep kRead[] = {
    kStart,
    {E::STLookup, "CheckReadFromFile, BOpenFile", OpenToRead<&FS::CheckReadFromFile>, E::STOpen},
    {E::STOpen, "BReadFromFile", Read, E::STRead},
    {E::STRead, "BUpdateNode", Call<&FS::BUpdateNode>, E::STUpdate2},
    {E::STUpdate2, "reply", Done, E::STUpdate2},
};

constexpr ZnSMBNFSStep kWrite[] = {
    kStart,
    {E::STLookup, "CheckWriteToFile, BOpenFile", OpenToWrite<&FS::CheckWriteToFile>, E::STOpen},
    {E::STOpen, "BWriteToFile", Write, E::STWrite},
    {E::STWrite, "BUpdateNode", Call<&FS::BUpdateNode>, E::STUpdate2},
    {E::STUpdate2, "reply", Done, E::STUpdate2},
};

constexpr ZnSMBNFSStep kCreate[] = {
    kStart,
    {E::STLookup, "BUpdateNodeContents", Call<&FS::BUpdateNodeContents>, E::STUpdate3},
    {E::STUpdate3, "CheckCreateFile, BCreateFile", Create, E::STCreate},
    {E::STCreate, "BUpdateNodeContents", Call<&FS::BUpdateNodeContents>, E::STUpdate},
    {E::STUpdate, "NBFindByName", FindName<ZnNameMatch::Entry>, E::STLookup2},
    {E::STLookup2, "BSetAttributes", Call<&FS::BSetAttributes>, E::STSetAttribs},
    {E::STSetAttribs, "SetAttrNeedTruncate: CheckWriteToFile, BOpenFile", CreateOpen, E::STOpen},
    {E::STOpen, "SetAttrNeedTruncate: BWriteToFile", Truncate, E::STWrite},
    {E::STWrite, "BUpdateNode", Call<&FS::BUpdateNode>, E::STUpdate2},
    {E::STUpdate2, "reply", Done, E::STUpdate2},
};

constexpr ZnSMBNFSStep kRemove[] = {
    kStart,
    {E::STLookup, "BUpdateNodeContents", Call<&FS::BUpdateNodeContents>, E::STUpdate},
    {E::STUpdate, "NBFindByName", FindEntryToRemove, E::STLookup2},
    {E::STLookup2, "CheckRemoveFile, BRemoveFile", CheckThen<&FS::CheckRemoveFile, &FS::BRemoveFile>, E::STRemove},
    {E::STRemove, "reply", Done, E::STRemove},
};

constexpr ZnSMBNFSStep kRename[] = {
    kStart,
    {E::STLookup, "BUpdateNodeContents", Call<&FS::BUpdateNodeContents>, E::STUpdate},
    {E::STUpdate, "NBFindByName of the source", RenameSource, E::STLookup2},
    {E::STLookup2, "NBFindByHandle of the target directory", RenameTargetDirectory, E::STLookup3},
    {E::STLookup3, "CheckRenamePlace, BUpdateNodeContents of that", RenameUpdateTargetDirectory, E::STUpdate2},
    {E::STUpdate2, "target is a directory: BUpdateNodeContents", RenameUpdateTarget, E::STUpdate3},
    {E::STUpdate3, "CheckRename, BRename", Rename, E::STRename},
    {E::STRename, "reply", Done, E::STRename},
};

constexpr ZnSMBNFSStep kLink[] = {
    kStart,
    {E::STLookup, "NBFindByHandle of the target directory", LinkTargetDirectory, E::STLookup2},
    {E::STLookup2, "CheckCreateLink, NBCreateLink", Link, E::STCreate},
    {E::STCreate, "reply", Done, E::STCreate},
};

constexpr ZnSMBNFSStep kSymlink[] = {
    kStart,
    {E::STLookup, "BUpdateNodeContents", ListForLink, E::STUpdate3},
    {E::STUpdate3, "CheckCreateSymLink, BCreateFile", CreateLinkFile, E::STCreate},
    {E::STCreate, "BUpdateNodeContents", Call<&FS::BUpdateNodeContents>, E::STUpdate},
    {E::STUpdate, "NBFindByName", FindLinkFile, E::STLookup2},
    {E::STLookup2, "BOpenFile", OpenLinkFile, E::STOpen},
    {E::STOpen, "BWriteToFile", WriteLinkFile, E::STWrite},
    {E::STWrite, "reply", Done, E::STWrite},
};

constexpr ZnSMBNFSStep kMkdir[] = {
    kStart,
    {E::STLookup, "BUpdateNodeContents", Call<&FS::BUpdateNodeContents>, E::STUpdate3},
    {E::STUpdate3, "CheckMakeDirectory, BMakeDirectory", MakeDirectory, E::STCreate},
    {E::STCreate, "BUpdateNodeContents", Call<&FS::BUpdateNodeContents>, E::STUpdate},
    {E::STUpdate, "NBFindByName", FindName<ZnNameMatch::Entry>, E::STLookup2},
    {E::STLookup2, "BUpdateNode", Call<&FS::BUpdateNode>, E::STUpdate2},
    {E::STUpdate2, "reply", Done, E::STUpdate2},
};

constexpr ZnSMBNFSStep kRmdir[] = {
    kStart,
    {E::STLookup, "BUpdateNodeContents", Call<&FS::BUpdateNodeContents>, E::STUpdate},
    {E::STUpdate, "NBFindByName", FindEntryToRemove, E::STLookup2},
    {E::STLookup2, "BUpdateNodeContents of the directory itself", UpdateContentsToRemove, E::STUpdate2},
    {E::STUpdate2, "CheckRemoveDirectory, BRemoveDirectory",
     CheckThen<&FS::CheckRemoveDirectory, &FS::BRemoveDirectory>, E::STRemove},
    {E::STRemove, "reply", Done, E::STRemove},
};

constexpr ZnSMBNFSStep kReaddir[] = {
    kStart,
    {E::STLookup, "BUpdateNodeContents", Call<&FS::BUpdateNodeContents>, E::STRead},
    {E::STRead, "FillContents, reply", Done, E::STRead},
};

constexpr ZnSMBNFSStep kStatfs[] = {
    kStart,
    {E::STLookup, "BStatFileSystem", Call<&FS::BStatFileSystem>, E::STStatfs},
    {E::STStatfs, "reply", Done, E::STStatfs},
};

using enum ZnOnRepeat;

constexpr ZnSMBNFSProcedure kProcedures[] = {
    {1, "GETATTR", HandleItself, ServeAnew, kGetattr, AttributesReply},
    {2, "SETATTR", FileOf<ZnNFSSattrargs>, SameReply, kSetattr, AttributesReply},
    {4, "LOOKUP", DirOf<ZnNFSDiropargs>, ServeAnew, kLookup, NodeReply},
    {5, "READLINK", HandleItself, ServeAnew, kReadlink, LinkReply},
    {6, "READ", FileOf<ZnNFSReadargs>, ServeAnew, kRead, ReadReply},
    {8, "WRITE", FileOf<ZnNFSWriteargs>, SameReply, kWrite, AttributesReply},
    {9, "CREATE", WhereOf<ZnNFSCreateargs>, SameReply, kCreate, NodeReply},
    {10, "REMOVE", DirOf<ZnNFSDiropargs>, SameReply, kRemove, StatReply},
    {11, "RENAME", FromDirOf<ZnNFSRenameargs>, SameReply, kRename, StatReply},
    {12, "LINK", LinkFrom, SameReply, kLink, StatReply},
    {13, "SYMLINK", FromDirOf<ZnNFSSymlinkargs>, SameReply, kSymlink, StatReply},
    {14, "MKDIR", WhereOf<ZnNFSCreateargs>, SameReply, kMkdir, NodeReply},
    {15, "RMDIR", DirOf<ZnNFSDiropargs>, SameReply, kRmdir, StatReply},
    {16, "READDIR", DirOf<ZnNFSReaddirargs>, ServeAnew, kReaddir, DirectoryReply},
    {17, "STATFS", HandleItself, ServeAnew, kStatfs, StatfsReply},
};

}  // namespace

const ZnSMBNFSProcedure* ZnFindProcedure(int number) {
  for (const ZnSMBNFSProcedure& procedure : kProcedures) {
    if (procedure.number == number) return &procedure;
  }
  return nullptr;
}

std::span<const ZnSMBNFSProcedure> ZnAllProcedures() { return kProcedures; }
