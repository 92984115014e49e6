#include "model/directory_index.h"

#include "model/name_mapping.h"

ZnSMBNFSDirectoryIndex::ZnSMBNFSDirectoryIndex(const ZnSMBNFSChildren& entries) {
  children.reserve(entries.Count());
  for (const auto& child : entries) children.push_back({child.value.id, &child.key, child.value});
}

// The node is looked at last: few names are marked.
bool ZnIsLink(const ZnSMBNFSDirectoryIndex::Child& child, const ZnUniString& linkstring) {
  return IsLinkName(*child.name, linkstring) && !child.node->IsDirectory();
}

ZnUniString ZnShownName(const ZnSMBNFSDirectoryIndex::Child& child, const ZnUniString& linkstring) {
  if (!ZnIsLink(child, linkstring)) return *child.name;
  ZnUniString unmarked = FromLinkName(*child.name, linkstring);
  return child.node->parent->children.Find(unmarked) ? *child.name : unmarked;
}

ZnSMBNFSDirectoryIndex& ZnIndexOf(ZnSMBNFSNode* directory) {
  if (!directory->index) directory->index = std::make_unique<ZnSMBNFSDirectoryIndex>(directory->children);
  return *directory->index;
}
