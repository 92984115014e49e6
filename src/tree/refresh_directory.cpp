// Levels 4 and deeper: the merge of a server's listing into the tree.

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

// Turns the server's name of an entry into the tree's. False for an entry that isn't shown.
bool TakeName(ZnSMBCFileObject& entry, const ZnSMBNFSShareConfig& config) {
  if (!config.showhidden && entry.attribs.hidden) return false;
  if (ZnLeavesDirectory(entry.path)) return false;
  entry.path = WindowsToInternalName(entry.path, config);
  if (config.lowercase) entry.path.LowerCase();
  return ZnIsSafeName(FromLinkName(entry.path, config.linkstring));
}

}  // namespace

void ZnSMBNFSFileSystem::CBUpdateDirList(ZnSMBNFSCommand* command) {
  ZnWeakRef<ZnSMBNFSNode> node = command->node;
  if (!node) return SendError(command, ZnNFSEnum::NFSERR_STALE);
  ZnSMBNFSTree* tree = GetTree(node.Get());
  const bool failed = command->sessionstatus == ZnSMBNFSEnum::SSTError && !IsEmptyTop(*command);
  if (failed || !tree) return RefreshFailed(command);
  if (command->alreadylisted) return Continue(command);
  struct Shown {
    ZnSMBCFileObject* entry;
    ZnSMBNFSNode* child;  // null when it isn't in the tree yet
  };
  std::vector<Shown> shown;
  shown.reserve(command->files.Count());
  const uint32_t listing = ++listings_;
  size_t known = 0;
  for (ZnSMBCFileObject& entry : command->files) {
    if (!TakeName(entry, tree->config)) continue;
    ZnSMBNFSChild* child = node->children.Find(entry.path);
    if (child && std::exchange(child->listing, listing) == listing) continue;  // twice in the listing
    shown.push_back({&entry, child ? child->node : nullptr});
    if (child) known++;
  }
  if (known < node->children.Count()) PruneUnlisted(node.Get(), listing);

  ZnUniString path = EntriesPath(*node.Get(), tree->config);
  for (const Shown& each : shown) {
    if (each.child) {
      UpdateNode(each.child, *each.entry, false);
    } else if (!node->children.Find(each.entry->path)) {
      AddNode(node.Get(), *each.entry, path);
    }
  }
  command->files.Flush();
  node->contentstime = ZnSteadyClock::now();
  Continue(command);
}
