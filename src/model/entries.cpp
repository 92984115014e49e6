#include "model/entries.h"

#include "model/name_mapping.h"

ZnSMBNFSNode* ZnEntryShownAs(const ZnSMBNFSNode& directory, const ZnUniString& stored, const ZnUniString& linkstring) {
  if (const auto* child = directory.children.Find(stored)) return *child;
  if (linkstring.IsEmpty()) return nullptr;
  const bool link = IsLinkName(stored, linkstring);
  const auto* other = directory.children.Find(link ? FromLinkName(stored, linkstring) : ToLinkName(stored, linkstring));
  return other ? other->node : nullptr;
}

ZnSMBNFSNode* ZnEntryOfAnyCase(const ZnSMBNFSNode& directory, const ZnUniString& stored) {
  if (const auto* child = directory.children.Find(stored)) return *child;
  for (const auto& child : directory.children) {
    if (child.key.MatchCaseless(stored)) return child.value;
  }
  return nullptr;
}

bool ZnIsAtOrBelow(const ZnSMBNFSNode* node, const ZnSMBNFSNode* top) {
  for (; node; node = node->parent) {
    if (node == top) return true;
    if (node->IsShare() || node->IsRoot()) return false;
  }
  return false;
}
