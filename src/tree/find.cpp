// Looking up: by handle, and by name with the share's matching rules.

#include <algorithm>

#include "config/smbnfs_config.h"
#include "model/directory_index.h"
#include "model/name_mapping.h"
#include "tree/file_system.h"
#include "tree/name_gen.h"

namespace {

using Index = ZnSMBNFSDirectoryIndex;

ZnUniString AsItIs(const ZnUniString& name) { return name; }

// The index of a directory, with no forms in it that were made by other settings.
Index& IndexFor(ZnSMBNFSNode* directory, Index::Matching matching) {
  std::unique_ptr<Index>& index = directory->index;
  if (!index || index->matching() != matching) index = std::make_unique<Index>(std::move(matching));
  return *index;
}

// The entry whose very name this is, a link's mark apart.
ZnSMBNFSNode* FindExactly(const ZnSMBNFSNode* directory, const ZnUniString& name, const ZnUniString& linkstring) {
  if (const ZnSMBNFSChild* child = directory->children.Find(name)) return *child;
  if (linkstring.IsEmpty()) return nullptr;
  const ZnSMBNFSChild* link = directory->children.Find(ToLinkName(name, linkstring));
  return link && !link->node->IsDirectory() ? link->node : nullptr;
}

}  // namespace

void ZnSMBNFSFileSystem::NBFindByHandle(ZnSMBNFSCommand* command) {
  ZnSMBNFSNode* node = nullptr;
  if (root_ && command->handle == root_->handle) {
    node = root_.get();
  } else if (command->handle.InTop()) {
    if (auto* found = handles_.Find(command->handle)) node = found->get();
  } else {
    ZnSMBNFSHandle top = command->handle;
    top.TopOnly();
    auto* machine = handles_.Find(top);
    ZnSMBNFSSessionBase* session = machine && (*machine)->IsMachine() ? GetSession(machine->get()) : nullptr;
    auto* found = session ? session->handles.Find(command->handle) : nullptr;
    if (found) node = found->get();
  }
  command->node = node;
  if (node) {
    Continue(command);
  } else {
    SendError(command, ZnNFSEnum::NFSERR_STALE);
  }
}

ZnSMBNFSNode* ZnSMBNFSFileSystem::FindByName(ZnSMBNFSNode* directory, const ZnUniString& name, ZnNameMatch match) {
  if (name.IsEmpty()) return nullptr;
  if (name == ".") return directory;
  if (name == "..") return directory->parent;
  if (directory->children.IsEmpty()) return nullptr;
  ZnSMBNFSTree* tree = GetTree(directory);
  if (ZnSMBNFSNode* exact = FindExactly(directory, name, tree ? tree->config.linkstring : ZnUniString())) return exact;
  if (!tree) return nullptr;

  const ZnSMBNFSShareConfig& config = tree->config;
  Index& index = IndexFor(directory, {config.matchcase, config.linkstring});
  const auto find = [&](Index::Form form) { return index.Find(directory->children, name, form); };
  ZnSMBNFSNode* found = config.matchcase ? find(AsItIs) : nullptr;
  if (found || match == ZnNameMatch::Entry) return found;
  // Of those that match either way, the oldest.
  found = config.matchlong ? find(ZnNameGen::ToLongName) : nullptr;
  ZnSMBNFSNode* byshort = config.matchshort ? find(ZnNameGen::ToShortName) : nullptr;
  return !found || (byshort && byshort->id < found->id) ? byshort : found;
}

namespace {

bool ContainsCaseless(const ZnDList<ZnUniString>& list, const ZnUniString& name) {
  return std::any_of(list.begin(), list.end(), [&](const ZnUniString& each) { return each.MatchCaseless(name); });
}

// Whether any machine that a client names is offered below this user, this one included.
bool OffersMachine(const ZnSMBNFSNode& node, const ZnUniString& name) {
  if (!node.IsUser() || name.IsEmpty()) return false;
  const ZnSMBNFSUserConfig& config = node.userinfo->config;
  return config.machinenames.Contains("*") && !ContainsCaseless(config.notmachines, name);
}

}  // namespace

void ZnSMBNFSFileSystem::NBFindByName(ZnSMBNFSCommand* command, ZnNameMatch match) {
  ZnWeakRef<ZnSMBNFSNode> directory = command->node;
  if (!directory) return SendError(command, ZnNFSEnum::NFSERR_STALE);
  // The user's home holds a link of this name that leads into the tree: found again inside, it would go round in
  // circles.
  const bool hidden = command->name == config_.symlinkname;
  ZnSMBNFSNode* found = FindByName(directory.Get(), command->name, match);
  if (!found && !hidden && OffersMachine(*directory.Get(), command->name)) {
    AddLookedUpMachine(directory.Get(), command->name);
    if (directory) found = FindByName(directory.Get(), command->name, match);
  }
  if (found && directory && directory->IsUser()) found->lastused = ZnSteadyClock::now();
  command->node = found;
  command->directory = directory;
  command->entry = found ? found->name : ZnUniString();
  if (!found || hidden) return SendError(command, ZnNFSEnum::NFSERR_NOENT);
  Continue(command);
}
