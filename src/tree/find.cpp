// Looking up: by handle, and by name with the share's matching rules.

#include "config/smbnfs_config.h"
#include "model/directory_index.h"
#include "model/name_mapping.h"
#include "tree/file_system.h"
#include "tree/name_gen.h"

namespace {

using Index = ZnSMBNFSDirectoryIndex;

ZnUniString FormOf(ZnUniString form, const Index::Matching& matching) {
  form = FromLinkName(form, matching.linkstring);
  if (matching.fold_case) form.LowerCase();
  return form;
}

ZnUniString LongForm(const ZnUniString& name, const Index::Matching& matching) {
  return FormOf(ZnNameGen::ToLongName(name), matching);
}

ZnUniString ShortForm(const ZnUniString& name, const Index::Matching& matching) {
  return FormOf(ZnNameGen::ToShortName(name), matching);
}

// The forms of all children; of children with one form the first in the directory's order stays.
const Index& FormsOf(ZnSMBNFSNode* directory, const Index::Matching& matching) {
  if (!directory->index) directory->index = std::make_unique<Index>();
  Index& index = *directory->index;
  if (index.matching == matching) return index;
  index.matching = matching;
  index.long_forms.clear();
  index.short_forms.clear();
  size_t order = 0;
  for (auto& child : directory->children) {
    if (matching.long_names)
      index.long_forms.try_emplace(LongForm(child.key, matching), Index::Form{order, child.value});
    if (matching.short_names)
      index.short_forms.try_emplace(ShortForm(child.key, matching), Index::Form{order, child.value});
    order++;
  }
  return index;
}

const Index::Form* FindForm(const Index::Forms& forms, const ZnUniString& wanted) {
  auto found = forms.find(wanted);
  return found == forms.end() ? nullptr : &found->second;
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

ZnSMBNFSNode* ZnSMBNFSFileSystem::FindByName(ZnSMBNFSNode* directory, const ZnUniString& name) {
  if (name == ".") return directory;
  if (name == "..") return directory->parent;
  if (directory->children.IsEmpty()) return nullptr;
  if (auto* exact = directory->children.Find(name)) return *exact;

  ZnSMBNFSTree* tree = GetTree(directory);
  if (!tree || (!tree->config.matchlong && !tree->config.matchshort)) return nullptr;
  Index::Matching matching{tree->config.matchlong, tree->config.matchshort, tree->config.matchcase,
                           tree->config.linkstring};
  const Index& index = FormsOf(directory, matching);
  const Index::Form* by_long = matching.long_names ? FindForm(index.long_forms, LongForm(name, matching)) : nullptr;
  const Index::Form* by_short = matching.short_names ? FindForm(index.short_forms, ShortForm(name, matching)) : nullptr;
  if (!by_long || (by_short && by_short->order < by_long->order)) return by_short ? by_short->child : nullptr;
  return by_long->child;
}

namespace {

bool ContainsCaseless(const ZnDList<ZnUniString>& list, const ZnUniString& name) {
  return std::any_of(list.begin(), list.end(), [&](const ZnUniString& each) { return each.MatchCaseless(name); });
}

// Whether any machine that a client names is offered below this user, this one included.
bool OffersMachine(const ZnSMBNFSNode& node, const ZnUniString& name) {
  if (!node.IsUser()) return false;
  const ZnSMBNFSUserConfig& config = node.userinfo->config;
  return config.machinenames.Contains("*") && !ContainsCaseless(config.notmachines, name);
}

// The user's home holds a link of this name that leads into the tree: found again inside, it would go round in circles.
ZnUniString SymlinkName() {
  ZnUniString name;
  return ZnSMBNFSConfig::GetGlobalValue("nfsserver/user/symlinkname", name) ? name : ZnUniString("My Halden Drives");
}

}  // namespace

void ZnSMBNFSFileSystem::NBFindByName(ZnSMBNFSCommand* command) {
  ZnWeakRef<ZnSMBNFSNode> directory = command->node;
  if (!directory) return SendError(command, ZnNFSEnum::NFSERR_STALE);
  ZnSMBNFSNode* found = FindByName(directory.Get(), command->name);
  if (!found && OffersMachine(*directory.Get(), command->name)) {
    NBUpdateMachineList(command, command->name);
    if (directory) found = FindByName(directory.Get(), command->name);
  }
  if (found && directory && directory->IsUser()) found->lastused = ZnTimeVal::now();
  command->node = found;
  if (!found || command->name == SymlinkName()) return SendError(command, ZnNFSEnum::NFSERR_NOENT);
  Continue(command);
}
