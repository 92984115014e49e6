#include "core/procedures.h"

#include <algorithm>

#include "core/replies.h"
#include "core/steps.h"
#include "rpc/mount_records.h"

namespace {

using namespace ZnSteps;
using namespace ZnReplies;

// --- Arguments ---

template <class Args>
bool Decode(ZnXdrReader& in, ZnSMBNFSArguments& arguments) {
  return arguments.emplace<Args>().Read(in);
}

// `Path` leads from the arguments to the handle, member by member.
template <class Args, auto... Path>
const ZnNFSFileHandle& HandleIn(const ZnSMBNFSArguments& arguments) {
  return (std::get<Args>(arguments).*....*Path);
}

template <class Args, auto... Path>
constexpr ZnArguments kTakes{Decode<Args>, HandleIn<Args, Path...>};

bool ReadNothing(ZnXdrReader&, ZnSMBNFSArguments&) { return true; }

bool ReadUnused(ZnXdrReader& in, ZnSMBNFSArguments&) { return ZnNFSMountargs().Read(in); }

constexpr ZnArguments kNothing{ReadNothing, nullptr};
constexpr ZnArguments kUnused{ReadUnused, nullptr};
constexpr ZnArguments kHandle = kTakes<ZnNFSFileHandle>;
constexpr ZnArguments kEntry = kTakes<ZnNFSDiropargs, &ZnNFSDiropargs::dir>;
constexpr ZnArguments kNewEntry = kTakes<ZnNFSCreateargs, &ZnNFSCreateargs::where, &ZnNFSDiropargs::dir>;
constexpr ZnArguments kNewName = kTakes<ZnNFSRenameargs, &ZnNFSRenameargs::from, &ZnNFSDiropargs::dir>;
constexpr ZnArguments kNewSymlink = kTakes<ZnNFSSymlinkargs, &ZnNFSSymlinkargs::from, &ZnNFSDiropargs::dir>;

// --- Steps: one begins when the one before has ended well, and behind the last comes the reply ---

constexpr ZnStep kStart{"NBFindByHandle", FindHandle};

constexpr ZnStep kGetattr[] = {
    kStart,
    {"paranoidupdate: BUpdateNodeContents", UpdateTopContents},
    {"BUpdateNode", UpdateAttributes},
};

constexpr ZnStep kSetattr[] = {
    kStart,
    {"BSetAttributes", SetattrBegin},
    {"SetAttrNeedTruncate: CheckWriteToFile, BWriteToFile", Truncate},
    {"BSetAllAttributes", Call<&FS::BSetAllAttributes>},
    {"BSetTimes", Call<&FS::BSetTimes>},
    {"BUpdateNode", Call<&FS::BUpdateNode>},
};

constexpr ZnStep kLookup[] = {
    kStart,
    {"BUpdateNodeContents", Call<&FS::BUpdateNodeContents>},
    {"NBFindByName", LookUpName},
    {"BUpdateNode", Call<&FS::BUpdateNode>},
};

constexpr ZnStep kReadlink[] = {
    kStart,
    {"CheckReadFromFile, BReadFromFile", ReadLink},
};

constexpr ZnStep kRead[] = {
    kStart,
    {"CheckReadFromFile, BReadFromFile", Read},
    {"BUpdateNode", Call<&FS::BUpdateNode>},
};

constexpr ZnStep kWrite[] = {
    kStart,
    {"CheckWriteToFile, BWriteToFile", Write},
    {"BUpdateNode", Call<&FS::BUpdateNode>},
};

constexpr ZnStep kCreate[] = {
    kStart,
    {"BUpdateNodeContents", Call<&FS::BUpdateNodeContents>},
    {"BTakeNames", TakeNewName},
    {"CheckCreateFile, BCreateFile", Create},
    {"not known: BFindEntry", FindMade},
    {"still not known: BUpdateNodeContents", ListForMade},
    {"NBFindByName", FindName<ZnNameMatch::Entry>},
    {"BSetAttributes", Call<&FS::BSetAttributes>},
    {"SetAttrNeedTruncate: CheckWriteToFile, BWriteToFile", Truncate},
    {"BUpdateNode", Call<&FS::BUpdateNode>},
};

constexpr ZnStep kRemove[] = {
    kStart,
    {"BUpdateNodeContents", Call<&FS::BUpdateNodeContents>},
    {"BTakeNames", TakeEntryName},
    {"NBFindByName", FindEntryToRemove},
    {"CheckRemoveFile, BRemoveFile", CheckThen<&FS::CheckRemoveFile, &FS::BRemoveFile>},
};

constexpr ZnStep kRename[] = {
    kStart,
    {"BUpdateNodeContents", Call<&FS::BUpdateNodeContents>},
    {"NBFindByName of the source", RenameSource},
    {"NBFindByHandle of the target directory", RenameTargetDirectory},
    {"CheckRenamePlace, BUpdateNodeContents of that", RenameUpdateTargetDirectory},
    {"BTakeNames", TakeRenameNames},
    {"NBFindByName of the source", RenameSourceAgain},
    {"target is a directory: BUpdateNodeContents", RenameUpdateTarget},
    {"CheckRename, BRename", Rename},
};

constexpr ZnStep kLink[] = {
    kStart,
    {"NBFindByHandle of the target directory", LinkTargetDirectory},
    {"CheckCreateLink, NBCreateLink", Link},
};

constexpr ZnStep kSymlink[] = {
    kStart,
    {"BUpdateNodeContents", Call<&FS::BUpdateNodeContents>},
    {"BTakeNames", TakeNewLinkName},
    {"not known: BFindEntry of a file of that name", FindFileInTheWay},
    {"CheckCreateSymLink, BCreateFile", CreateLinkFile},
    {"BFindEntry", Call<&FS::BFindEntry>},
    {"not known: BUpdateNodeContents", ListForLinkFile},
    {"NBFindByName", FindName<ZnNameMatch::Entry>},
    {"BWriteToFile", WriteLinkFile},
};

constexpr ZnStep kMkdir[] = {
    kStart,
    {"BUpdateNodeContents", Call<&FS::BUpdateNodeContents>},
    {"BTakeNames", TakeNewName},
    {"CheckMakeDirectory, BMakeDirectory", MakeDirectory},
    {"not known: BFindEntry", FindMade},
    {"still not known: BUpdateNodeContents", ListForMade},
    {"NBFindByName", FindName<ZnNameMatch::Entry>},
    {"BUpdateNode", Call<&FS::BUpdateNode>},
};

constexpr ZnStep kRmdir[] = {
    kStart,
    {"BUpdateNodeContents", Call<&FS::BUpdateNodeContents>},
    {"BTakeNames", TakeEntryName},
    {"NBFindByName", FindEntryToRemove},
    {"BUpdateNodeContents of the directory itself", UpdateContentsToRemove},
    {"CheckRemoveDirectory, BRemoveDirectory", CheckThen<&FS::CheckRemoveDirectory, &FS::BRemoveDirectory>},
};

constexpr ZnStep kReaddir[] = {
    kStart,
    {"BUpdateNodeContents", Call<&FS::BUpdateNodeContents>},
};

constexpr ZnStep kStatfs[] = {
    kStart,
    {"BStatFileSystem", Call<&FS::BStatFileSystem>},
};

// --- The procedures ---

using enum ZnRoot;
using enum ZnOnRepeat;

constexpr ZnProcedure kNfs[] = {
    {0, "NULL", kNothing, NotNeeded, ServeAnew, {}, NoResult},
    {1, "GETATTR", kHandle, Brought, ServeAnew, kGetattr, AttributesReply},
    {2, "SETATTR", kTakes<ZnNFSSattrargs, &ZnNFSSattrargs::file>, Needed, SameReply, kSetattr, AttributesReply},
    {3, "ROOT", kNothing, NotNeeded, ServeAnew, {}, NoResult},
    {4, "LOOKUP", kEntry, Needed, ServeAnew, kLookup, NodeReply},
    {5, "READLINK", kHandle, Needed, ServeAnew, kReadlink, LinkReply},
    {6, "READ", kTakes<ZnNFSReadargs, &ZnNFSReadargs::file>, Needed, ServeAnew, kRead, ReadReply},
    {7, "WRITECACHE", kNothing, NotNeeded, ServeAnew, {}, NoResult},
    {8, "WRITE", kTakes<ZnNFSWriteargs, &ZnNFSWriteargs::file>, Needed, SameReply, kWrite, AttributesReply},
    {9, "CREATE", kNewEntry, Needed, SameReply, kCreate, NodeReply},
    {10, "REMOVE", kEntry, Needed, SameReply, kRemove, StatReply},
    {11, "RENAME", kNewName, Needed, SameReply, kRename, StatReply},
    {12, "LINK", kTakes<ZnNFSLinkargs, &ZnNFSLinkargs::from>, Needed, SameReply, kLink, StatReply},
    {13, "SYMLINK", kNewSymlink, Needed, SameReply, kSymlink, StatReply},
    {14, "MKDIR", kNewEntry, Needed, SameReply, kMkdir, NodeReply},
    {15, "RMDIR", kEntry, Needed, SameReply, kRmdir, StatReply},
    {16, "READDIR", kTakes<ZnNFSReaddirargs, &ZnNFSReaddirargs::dir>, Needed, ServeAnew, kReaddir, DirectoryReply},
    {17, "STATFS", kHandle, Brought, ServeAnew, kStatfs, StatfsReply},
};

constexpr ZnProcedure kMount[] = {
    {0, "NULL", kNothing, NotNeeded, ServeAnew, {}, NoResult},
    {1, "MNT", kUnused, NotNeeded, ServeAnew, {}, nullptr},
    {2, "DUMP", kNothing, NotNeeded, ServeAnew, {}, nullptr},
    {3, "UMNT", kUnused, NotNeeded, ServeAnew, {}, nullptr},
    {4, "UMNTALL", kNothing, NotNeeded, ServeAnew, {}, nullptr},
    {5, "EXPORT", kNothing, NotNeeded, ServeAnew, {}, nullptr},
};

constexpr bool StandAtTheirNumbers(std::span<const ZnProcedure> procedures) {
  for (size_t i = 0; i < procedures.size(); i++) {
    if (procedures[i].number != i) return false;
  }
  return true;
}
static_assert(StandAtTheirNumbers(kNfs) && StandAtTheirNumbers(kMount));

constexpr ZnProgram kPrograms[] = {
    {ZnNFSEnum::kProgram, ZnNFSEnum::kVersion, kNfs, ZnRPCEnum::PROC_UNAVAIL},
    {ZnNFSEnum::kMountProgram, ZnNFSEnum::kMountVersion, kMount, ZnRPCEnum::PROG_UNAVAIL},
};

}  // namespace

const ZnProgram* ZnFindProgram(uint32_t number) {
  const auto* const found = std::find_if(std::begin(kPrograms), std::end(kPrograms),
                                         [number](const ZnProgram& program) { return program.number == number; });
  return found != std::end(kPrograms) ? found : nullptr;
}
