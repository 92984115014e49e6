// What a change on the server does to the tree: an entry goes, or gets another name. All else that is known of the
// directories stays good, and keeps its age.

#include "model/command.h"
#include "model/entries.h"
#include "tree/file_system.h"

// A listing that is under way may still hold the name.
void ZnSMBNFSFileSystem::NameGoes(ZnSMBNFSNode* node) {
  if (node->parent->listing) node->parent->listing->gone.insert(node->name);
}

void ZnSMBNFSFileSystem::TakeOut(ZnSMBNFSNode* node) {
  ZnSMBNFSNode* directory = node->parent;
  const auto attribtime = directory->attribtime;
  NameGoes(node);
  Prune(node);
  directory->attribtime = attribtime;
  ShowChange(directory);
}

// Handle and id stay: whoever has the file or directory open goes on with it.
void ZnSMBNFSFileSystem::Move(ZnSMBNFSNode* node, ZnSMBNFSNode* directory, ZnUniString name) {
  ZnSMBNFSTree* tree = GetTree(directory);
  if (!tree || ZnIsAtOrBelow(directory, node)) return;
  if (tree->config.lowercase) name.LowerCase();
  ZnSMBNFSNode* replaced = ZnEntryShownAs(*directory, name, tree->config.linkstring);
  const ZnUniString stored = replaced && replaced != node ? replaced->stored : ZnUniString();
  if (replaced && replaced != node) TakeOut(replaced);
  ShowChange(node->parent);
  NameGoes(node);
  RemoveFromParent(node);
  node->name = name;
  node->stored = stored;
  node->parent = directory;
  ShowSet(node, nullptr);  // it may be a link by its new name
  AddChild(directory, node);
  ShowChange(directory);
  SetPaths(directory, node, tree->config);
}

// Brings the paths of a node and of everything below it up to date.
void ZnSMBNFSFileSystem::SetPaths(ZnSMBNFSNode* directory, ZnSMBNFSNode* node, const ZnSMBNFSShareConfig& config) {
  node->path = EntriesPath(*directory, config);
  std::vector<ZnSMBNFSNode*> open{node};
  while (!open.empty()) {
    const ZnSMBNFSNode* above = open.back();
    open.pop_back();
    if (above->children.IsEmpty()) continue;
    const ZnUniString path = EntriesPath(*above, config);
    for (const auto& child : above->children) {
      child.value->path = path;
      open.push_back(child.value);
    }
  }
}
