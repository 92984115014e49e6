// Levels 4 and deeper: the merge of a server's listing into the tree.

#include <algorithm>

#include "config/smbnfs_config.h"
#include "model/age.h"
#include "model/log_catalogue.h"
#include "model/name_mapping.h"
#include "tree/file_system.h"
#include "tree/safe_name.h"

void ZnSMBNFSFileSystem::BUpdateDirList(ZnSMBNFSCommand* command) {
  ZnWeakRef<ZnSMBNFSNode> node = command->node;
  if (!node->IsDirectory()) return SendError(command, ZnNFSEnum::NFSERR_NOTDIR);
  ZnSMBNFSTree* tree = GetTree(node.Get());
  if (!tree) return SendError(command, ZnNFSEnum::NFSERR_ACCES);
  if (ZnIsFresh(node->contentstime, tree->config.contentsttl)) return Continue(command);
  GetSession(node.Get())->Request(command, ZnSMBNFSEnum::SCRequestDirs);
}

// The refresh is a command that nobody called: it ends where the next step of a call would be.
void ZnSMBNFSFileSystem::RefreshShareUnasked(ZnSMBNFSNode* share) {
  ZnSMBNFSTree* tree = GetTree(share);
  if (!tree || share->refreshing) return;
  if (ZnIsFresh(share->contentstime, tree->config.contentsttl)) return;
  share->refreshing = true;
  auto* command = new ZnSMBNFSCommand(ZnInetAddr(), ZnRPCAuthBlock(), 0, &unasked_);  // its own owner from here on
  command->node = share;
  BUpdateDirList(command);
}

void ZnSMBNFSFileSystem::UnaskedRefreshes::CommandEnds(const ZnSMBNFSCommand& command) {
  if (command.node) command.node->refreshing = false;
}

// What can't be listed isn't empty: the call fails, and what was known stays, handles and open files with it. Where the
// server says that the directory itself is gone, whoever looks at the one above learns it.
void ZnSMBNFSFileSystem::RefreshFailed(ZnSMBNFSCommand* command) {
  ZnNFSEnum::Status status = command->session ? command->session->ConvertError(*command) : ZnNFSEnum::NFSERR_ACCES;
  if (status == ZnNFSEnum::NFSERR_NOENT) OutOfDate(command->node->parent, true);
  SendError(command, status);
}

namespace {

// Where the top of a drive that holds nothing is listed, Windows says that it finds no file.
bool IsEmptyTop(const ZnSMBNFSCommand& command) {
  constexpr unsigned kFileNotFound = 2 * 256 + 1;
  return command.node->IsShare() && command.refusal == kFileNotFound;
}

// An entry of a listing on its way into the tree.
struct Shown {
  ZnSMBCFileObject* entry;
  ZnUniString stored;             // as of the node
  ZnSMBNFSNode* child = nullptr;  // null when it isn't in the tree yet
  bool doubled = false;           // it stood in the listing before

  bool Is(const ZnSMBNFSNode& node) const { return node.stored == stored; }
};

// Turns the server's name of an entry into the tree's. False for an entry that isn't shown.
bool TakeName(Shown& shown, const ZnSMBNFSShareConfig& config) {
  ZnSMBCFileObject& entry = *shown.entry;
  if ((!config.showhidden && entry.attribs.hidden) || ZnLeavesDirectory(entry.path)) return false;
  const ZnUniString listed = entry.path;
  entry.path = WindowsToInternalName(listed, config);
  if (config.lowercase) entry.path.LowerCase();
  const ZnUniString ours = InternalToWindowsName(entry.path, config);
  if (config.lowercase ? !ours.MatchCaseless(listed) : ours != listed) shown.stored = listed;
  return ZnIsSafeName(FromLinkName(entry.path, config.linkstring));
}

// Where another entry has the name already, this one gets two escape characters more, and keeps them when the other
// goes. Gives the entry's node, if it is there.
ZnSMBNFSChild* TakePlace(Shown& shown, ZnSMBNFSNode& directory, const ZnSMBNFSShareConfig& config) {
  const ZnUniString listed = shown.stored.IsEmpty() ? InternalToWindowsName(shown.entry->path, config) : shown.stored;
  const ZnUniString more(std::u16string(2, static_cast<char16_t>(config.hashchar)));
  while (true) {
    ZnSMBNFSChild* child = directory.children.Find(shown.entry->path);
    if (child && shown.Is(*child->node)) return child;
    if (!child && shown.stored.IsEmpty()) return nullptr;
    ZnSMBNFSChild* aside = child ? nullptr : directory.children.Find(shown.entry->path + more);
    if (!child && !(aside && shown.Is(*aside->node))) return nullptr;
    shown.stored = listed;
    shown.entry->path += more;
  }
}

}  // namespace

void ZnSMBNFSFileSystem::CBUpdateDirList(ZnSMBNFSCommand* command) {
  ZnWeakRef<ZnSMBNFSNode> node = command->node;
  if (!node) return SendError(command, ZnNFSEnum::NFSERR_STALE);
  ZnSMBNFSTree* tree = GetTree(node.Get());
  const bool failed = command->sessionstatus == ZnSMBNFSEnum::SSTError && !IsEmptyTop(*command);
  if (failed || !tree) return RefreshFailed(command);
  if (command->alreadylisted) return Continue(command);
  std::vector<Shown> shown;
  shown.reserve(command->files.Count());
  for (ZnSMBCFileObject& entry : command->files) {
    Shown each{&entry, {}};
    if (TakeName(each, tree->config)) shown.push_back(std::move(each));
  }
  // Names that others made come last: where ours stands beside them, they make way.
  std::ranges::stable_partition(shown, &ZnUniString::IsEmpty, &Shown::stored);
  const uint32_t listing = ++listings_;
  size_t known = 0;
  for (Shown& each : shown) {
    ZnSMBNFSChild* child = TakePlace(each, *node.Get(), tree->config);
    if (!child) continue;
    each.child = child->node;
    each.doubled = std::exchange(child->listing, listing) == listing;
    if (!each.doubled) known++;
  }
  if (known < node->children.Count()) PruneUnlisted(node.Get(), listing);

  ZnUniString path = EntriesPath(*node.Get(), tree->config);
  for (Shown& each : shown) {
    if (each.doubled) continue;
    if (each.child) {
      UpdateNode(each.child, *each.entry, false);
    } else if (!TakePlace(each, *node.Get(), tree->config) && ZnIsSafeName(each.entry->path)) {
      AddNode(node.Get(), *each.entry, path)->stored = each.stored;
    }
  }
  command->files.Flush();
  node->contentstime = ZnSteadyClock::now();
  Continue(command);
}
