// Attributes: when they are fetched, and what a server's entry becomes for NFS.

#include <cstdlib>
#include <limits>

#include "model/age.h"
#include "model/directory_index.h"
#include "model/mode_attributes.h"
#include "model/name_mapping.h"
#include "model/told_attributes.h"
#include "runtime/random.h"
#include "tree/file_system.h"
#include "tree/nfs_time.h"

namespace {

constexpr uint32_t kDirectoryBit = 0040000;
constexpr uint32_t kRegularBit = 0100000;
constexpr uint32_t kLinkBits = 0120000;
constexpr uint32_t kBlockSize = 512;
constexpr uint32_t kMicroseconds = 1000000;

// NFS counts in 32 bits: larger is shown as the largest that it can say, never as the remainder.
uint32_t Shown(uint64_t size) {
  return static_cast<uint32_t>(std::min<uint64_t>(size, std::numeric_limits<uint32_t>::max()));
}

uint32_t BlocksOf(uint32_t size) { return size / kBlockSize + (size % kBlockSize != 0 ? 1 : 0); }

void SetMode(ZnNFSFattr& attribs, const ZnUniString& name, const ZnSMBCFileAttributes& entry,
             const ZnSMBNFSShareConfig& config) {
  attribs.mode = ZnModeOfAttributes(entry, config);
  if (entry.directory) {
    attribs.type = ZnNFSEnum::NFDIR;
    attribs.mode |= kDirectoryBit;
  } else if (IsLinkName(name, config.linkstring)) {
    attribs.type = ZnNFSEnum::NFLNK;
    attribs.mode |= kLinkBits;
  } else {
    attribs.type = ZnNFSEnum::NFREG;
    attribs.mode |= kRegularBit;
  }
}

// Whether a directory that was changed at `modified` may change once more in the same step of a server that counts in
// two seconds, clocks being a little apart.
bool MayChangeUnseen(const ZnTimeVal& modified) {
  constexpr int64_t kSeconds = 5;
  return std::abs(int64_t{ZnTimeVal::now().seconds} - modified.seconds) <= kSeconds;
}

bool IsLater(const ZnNFSTimeVal& one, const ZnNFSTimeVal& other) {
  return std::pair(one.seconds, one.useconds) > std::pair(other.seconds, other.useconds);
}

// Another fraction of a second than the last one, never 0: servers that keep whole seconds would hide a change within
// one.
uint32_t OtherMicroseconds(uint32_t last) {
  uint32_t drawn = 0;
  while (drawn == 0 || drawn == last) drawn = ZnRandom::RndNum() % kMicroseconds;
  return drawn;
}

}  // namespace

void ZnSMBNFSFileSystem::BUpdateNode(ZnSMBNFSCommand* command) {
  ZnSMBNFSNode* node = command->node.Get();
  if (!node) return SendError(command, ZnNFSEnum::NFSERR_STALE);
  if (!node->IsInside()) {
    if (node->attribtime == ZnMoment{}) node->attribs.mtime = ZnNfsTime(ZnTimeVal::now());
    return Continue(command);
  }
  ZnSMBNFSTree* tree = GetTree(node);
  if (!tree) return SendError(command, ZnNFSEnum::NFSERR_ACCES);
  bool parentfresh = node->parent->contentstime != ZnMoment{};
  if (parentfresh && ZnIsFresh(node->attribtime, tree->config.attribttl)) return Continue(command);
  command->look = ++looks_;
  GetSession(node)->Request(command, ZnSMBNFSEnum::SCRequestAttribs);
}

void ZnSMBNFSFileSystem::CBUpdateNode(ZnSMBNFSCommand* command) {
  ZnSMBNFSNode* node = command->node.Get();
  if (!node) return SendError(command, ZnNFSEnum::NFSERR_STALE);
  bool failed = command->sessionstatus == ZnSMBNFSEnum::SSTError;
  if (!failed && command->files.Count() == 1) UpdateKnown(node, command->files[0], command->look);
  command->files.Flush();
  Continue(command);
}

// A directory in which something changed meanwhile keeps the later time.
void ZnSMBNFSFileSystem::UpdateKnown(ZnSMBNFSNode* node, const ZnSMBCFileObject& entry, uint64_t look) {
  if (ZnEntryChange::Overlapped(*node, look)) return;
  const ZnNFSTimeVal shown = node->attribs.mtime;
  UpdateNode(node, entry, false);
  const bool held = node->IsDirectory() && ZnEntryChange::IsSince(node->written, look);
  if (held && IsLater(shown, node->attribs.mtime)) node->attribs.mtime = shown;
}

void ZnSMBNFSFileSystem::UpdateNode(ZnSMBNFSNode* node, const ZnSMBCFileObject& entry, bool isnew) {
  ZnSMBNFSTree* tree = GetTree(node);
  if (!tree) return;
  uint32_t lastmicroseconds = isnew ? 0 : node->attribs.mtime.useconds;
  const bool wasdirectory = node->IsDirectory();
  node->fileobject = entry;
  ZnNFSFattr& attribs = node->attribs;
  attribs = baseattribs_;
  attribs.uid = static_cast<uint32_t>(tree->config.uid);
  attribs.gid = static_cast<uint32_t>(tree->config.gid);
  attribs.fileid = node->id;
  SetMode(attribs, node->name, entry.attribs, tree->config);
  if (!isnew && node->IsDirectory() != wasdirectory) node->parent->index.reset();  // a link's name shows otherwise
  // Servers show an open file's old size until it is closed; what was written here counts.
  uint32_t size = Shown(entry.size);
  if (node->file) size = std::max(size, node->file->writtensize);
  if (!entry.attribs.directory || size > 0) {
    attribs.size = size;
    attribs.blocks = BlocksOf(size);
  }
  attribs.atime = ZnNfsTime(entry.accessed);
  attribs.mtime = ZnNfsTime(entry.modified);
  attribs.ctime = ZnNfsTime(entry.created);
  // A time that somebody set may well be a whole second, and stays one; older servers can't set a directory's.
  if (entry.attribs.directory && attribs.mtime.useconds == 0 && (SetsOldWay(node) || MayChangeUnseen(entry.modified)))
    attribs.mtime.useconds = OtherMicroseconds(lastmicroseconds);
  node->attribtime = ZnSteadyClock::now();
}

// What was set shows at once.
void ZnSMBNFSFileSystem::ShowSet(ZnSMBNFSNode* node, const ZnNFSSattr* set) {
  const ZnSMBNFSTree* tree = GetTree(node);
  if (!tree) return;
  ZnSMBCFileObject& entry = node->fileobject;
  if (const auto mode = ZnToldMode(set)) entry.attribs = ZnAttributesOfMode(*mode, entry.attribs, tree->config);
  entry.accessed = ZnToldAccess(set).value_or(entry.accessed);
  entry.modified = ZnToldModification(set).value_or(entry.modified);
  if (ZnToldAccess(set)) node->attribs.atime = ZnNfsTime(entry.accessed);
  if (ZnToldModification(set)) node->attribs.mtime = ZnNfsTime(entry.modified);
  SetMode(node->attribs, node->name, entry.attribs, tree->config);
}

// What was done to a directory's entries: clients look at its time to learn whether what they have of it is still good,
// so each change makes it a later one. The server's own comes with the next query by age.
void ZnSMBNFSFileSystem::ShowChange(ZnSMBNFSNode* directory) {
  directory->written = looks_;
  ZnNFSTimeVal& shown = directory->attribs.mtime;
  const ZnNFSTimeVal now = ZnNfsTime(ZnTimeVal::now());
  if (IsLater(now, shown)) {
    shown = now;
  } else if (++shown.useconds >= kMicroseconds) {
    shown.useconds = 0;
    shown.seconds++;
  }
}

// What a successful write did to the file's attributes. They aren't fetched again while the file is open, and a client
// that appends once more must see the new end, or it overwrites its own data.
void ZnSMBNFSFileSystem::ShowWrite(ZnSMBNFSNode* node, uint32_t end, bool truncates) {
  node->written = looks_;
  ZnTimeVal now = ZnTimeVal::now();
  uint32_t size = truncates ? end : std::max(node->attribs.size, end);
  node->attribs.size = size;
  node->attribs.blocks = BlocksOf(size);
  node->attribs.mtime = ZnNfsTime(now);
  node->fileobject.size = size;
  node->fileobject.modified = now;
  if (node->file) node->file->writtensize = truncates ? end : std::max(node->file->writtensize, end);
}
