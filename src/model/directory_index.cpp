#include "model/directory_index.h"

#include <algorithm>

#include "model/name_mapping.h"

namespace {

uint32_t HashOf(const ZnUniString& form) { return static_cast<uint32_t>(std::hash<ZnUniString>()(form)); }

}  // namespace

// The node is looked at last: few names are marked.
bool ZnIsLink(const ZnUniString& name, const ZnSMBNFSNode& node, const ZnUniString& linkstring) {
  return IsLinkName(name, linkstring) && !node.IsDirectory();
}

ZnUniString ZnShownName(const ZnUniString& name, const ZnSMBNFSNode& node, const ZnUniString& linkstring) {
  if (!ZnIsLink(name, node, linkstring)) return name;
  ZnUniString unmarked = FromLinkName(name, linkstring);
  return node.parent->children.Find(unmarked) ? name : unmarked;
}

ZnUniString ZnSMBNFSDirectoryIndex::FormOf(const ZnUniString& name, Form form) const {
  ZnUniString formed = form(name);
  if (matching_.fold_case) formed.LowerCase();
  return formed;
}

ZnUniString ZnSMBNFSDirectoryIndex::FormOf(const ZnSMBNFSNode& node, Form form) const {
  const bool link = ZnIsLink(node.name, node, matching_.linkstring);
  return FormOf(link ? FromLinkName(node.name, matching_.linkstring) : node.name, form);
}

ZnSMBNFSDirectoryIndex::Place ZnSMBNFSDirectoryIndex::PlaceOf(ZnSMBNFSNode* node, Form form) const {
  return {HashOf(FormOf(*node, form)), node->id, node};
}

ZnSMBNFSDirectoryIndex::Places& ZnSMBNFSDirectoryIndex::PlacesOf(const ZnSMBNFSChildren& children, Form form) {
  for (Places& places : forms_) {
    if (places.form == form) return places;
  }
  std::vector<Place> all;
  all.reserve(children.Count());
  for (const auto& child : children) all.push_back(PlaceOf(child.value, form));
  std::ranges::sort(all);
  return forms_.emplace_back(Places{form, {all.begin(), all.end()}});
}

ZnSMBNFSNode* ZnSMBNFSDirectoryIndex::Find(const ZnSMBNFSChildren& children, const ZnUniString& name, Form form) {
  const ZnUniString wanted = FormOf(name, form);
  const uint32_t hash = HashOf(wanted);
  const std::set<Place>& all = PlacesOf(children, form).all;
  for (auto place = all.lower_bound({hash, 0, nullptr}); place != all.end() && place->hash == hash; ++place) {
    if (FormOf(*place->node, form) == wanted) return place->node;
  }
  return nullptr;
}

void ZnSMBNFSDirectoryIndex::Add(ZnSMBNFSNode* node) {
  for (Places& places : forms_) places.all.insert(PlaceOf(node, places.form));
}

bool ZnSMBNFSDirectoryIndex::Remove(ZnSMBNFSNode* node) {
  return std::ranges::all_of(forms_, [&](Places& places) { return places.all.erase(PlaceOf(node, places.form)) == 1; });
}
