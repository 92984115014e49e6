// Looking up: by handle, and by name with the share's matching rules.

#include <algorithm>

#include "config/smbnfs_config.h"
#include "model/directory_index.h"
#include "model/name_mapping.h"
#include "tree/file_system.h"
#include "tree/name_gen.h"

namespace {

using Index = ZnSMBNFSDirectoryIndex;
using NameForm = ZnUniString (*)(const ZnUniString&);

ZnUniString FormOf(const ZnUniString& name, NameForm form, const Index::Matching& matching) {
  ZnUniString formed = FromLinkName(form(name), matching.linkstring);
  if (matching.fold_case) formed.LowerCase();
  return formed;
}

uint32_t HashOf(const ZnUniString& form) { return static_cast<uint32_t>(std::hash<ZnUniString>()(form)); }

// The place of the child whose name has this form.
size_t PlaceOf(const ZnUniString& wanted, NameForm form, const ZnPlaceIndex& forms, const Index& index) {
  return forms.Find(HashOf(wanted),
                    [&](size_t place) { return FormOf(*index.children[place].name, form, *index.matching) == wanted; });
}

// Where several children have one form, the first of them counts.
ZnPlaceIndex FormsOf(NameForm form, const Index& index) {
  ZnPlaceIndex forms(index.children.size());
  for (size_t place = 0; place < index.children.size(); place++) {
    ZnUniString entered = FormOf(*index.children[place].name, form, *index.matching);
    if (PlaceOf(entered, form, forms, index) == ZnPlaceIndex::kNone) forms.Add(HashOf(entered), place);
  }
  return forms;
}

// The index of a directory with the forms that are to be matched.
const Index& IndexWithForms(ZnSMBNFSNode* directory, const Index::Matching& matching) {
  Index& index = ZnIndexOf(directory);
  if (index.matching == matching) return index;
  index.matching = matching;
  index.long_forms.reset();
  index.short_forms.reset();
  if (matching.long_names) index.long_forms = FormsOf(ZnNameGen::ToLongName, index);
  if (matching.short_names) index.short_forms = FormsOf(ZnNameGen::ToShortName, index);
  return index;
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
  if (name.IsEmpty()) return nullptr;
  if (name == ".") return directory;
  if (name == "..") return directory->parent;
  if (directory->children.IsEmpty()) return nullptr;
  if (auto* exact = directory->children.Find(name)) return *exact;

  ZnSMBNFSTree* tree = GetTree(directory);
  if (!tree || (!tree->config.matchlong && !tree->config.matchshort)) return nullptr;
  Index::Matching matching{tree->config.matchlong, tree->config.matchshort, tree->config.matchcase,
                           tree->config.linkstring};
  const Index& index = IndexWithForms(directory, matching);
  auto place_by = [&](NameForm form, const std::optional<ZnPlaceIndex>& forms) {
    return forms ? PlaceOf(FormOf(name, form, matching), form, *forms, index) : ZnPlaceIndex::kNone;
  };
  // The first in the directory's order that matches either way.
  size_t place =
      std::min(place_by(ZnNameGen::ToLongName, index.long_forms), place_by(ZnNameGen::ToShortName, index.short_forms));
  return place == ZnPlaceIndex::kNone ? nullptr : index.children[place].node;
}

namespace {

bool ContainsCaseless(const ZnDList<ZnUniString>& list, const ZnUniString& name) {
  return std::any_of(list.begin(), list.end(), [&](const ZnUniString& each) { return each.MatchCaseless(name); });
}

// The user's home holds a link of this name that leads into the tree: found again inside, it would go round in circles.
ZnUniString SymlinkName() {
  ZnUniString name;
  return ZnSMBNFSConfig::GetGlobalValue("nfsserver/user/symlinkname", name) ? name : ZnUniString("My Halden Drives");
}

// Whether any machine that a client names is offered below this user, this one included.
bool OffersMachine(const ZnSMBNFSNode& node, const ZnUniString& name) {
  if (!node.IsUser() || name.IsEmpty() || name == SymlinkName()) return false;
  const ZnSMBNFSUserConfig& config = node.userinfo->config;
  return config.machinenames.Contains("*") && !ContainsCaseless(config.notmachines, name);
}

}  // namespace

void ZnSMBNFSFileSystem::NBFindByName(ZnSMBNFSCommand* command) {
  ZnWeakRef<ZnSMBNFSNode> directory = command->node;
  if (!directory) return SendError(command, ZnNFSEnum::NFSERR_STALE);
  ZnSMBNFSNode* found = FindByName(directory.Get(), command->name);
  if (!found && OffersMachine(*directory.Get(), command->name)) {
    AddLookedUpMachine(directory.Get(), command->name);
    if (directory) found = FindByName(directory.Get(), command->name);
  }
  if (found && directory && directory->IsUser()) found->lastused = ZnSteadyClock::now();
  command->node = found;
  if (!found || command->name == SymlinkName()) return SendError(command, ZnNFSEnum::NFSERR_NOENT);
  Continue(command);
}
