#include "model/directory_index.h"

ZnSMBNFSDirectoryIndex::ZnSMBNFSDirectoryIndex(const ZnSMBNFSChildren& entries) {
  children.reserve(entries.Count());
  for (const auto& child : entries) children.push_back({child.value.id, &child.key, child.value});
}

ZnSMBNFSDirectoryIndex& ZnIndexOf(ZnSMBNFSNode* directory) {
  if (!directory->index) directory->index = std::make_unique<ZnSMBNFSDirectoryIndex>(directory->children);
  return *directory->index;
}
