// READDIR pages. An entry's cookie is the file id of the entry after it, 1 for the last, so that the removal of entries
// that were returned already doesn't disturb a client that goes on.

#include "model/directory_index.h"
#include "model/name_mapping.h"
#include "tree/file_system.h"

namespace {

constexpr uint32_t kEndCookie = 1;

// Fills a page up to a number of bytes.
class Page {
 public:
  Page(ZnNFSList<ZnNFSDirEntry>& list, uint32_t room) : list_(list), room_(room) {}

  // False when there is no room for the entry.
  bool Add(uint32_t id, const ZnUniString& name, uint32_t cookie) {
    ZnNFSDirEntry entry;
    entry.fileid = id;
    entry.name = name;
    entry.cookie = cookie;
    size_t bytes = entry.HowBig() + 4;
    if (bytes > room_) return false;
    room_ -= bytes;
    list_.Append(std::move(entry));
    return true;
  }

 private:
  ZnNFSList<ZnNFSDirEntry>& list_;
  size_t room_;
};

// The first child with this id, in the directory's order.
ZnSMBNFSNode* FindById(ZnSMBNFSNode* node, uint32_t id) {
  if (!node->index) node->index = std::make_unique<ZnSMBNFSDirectoryIndex>();
  auto& by_id = node->index->by_id;
  if (!by_id) {
    by_id.emplace();
    for (auto& child : node->children) by_id->try_emplace(child.value->id, child.value);
  }
  auto found = by_id->find(id);
  return found == by_id->end() ? nullptr : found->second;
}

}  // namespace

void ZnSMBNFSFileSystem::FillContents(ZnSMBNFSNode* node, uint32_t cookie, uint32_t count,
                                      ZnNFSList<ZnNFSDirEntry>& list, uint32_t& eof) {
  eof = 0;
  ZnSMBNFSTree* tree = GetTree(node);
  ZnUniString linkstring = tree ? tree->config.linkstring : ZnUniString();
  Page page(list, count);

  auto& children = node->children;
  auto next = children.begin();
  uint32_t firstchild = children.IsEmpty() ? kEndCookie : next->value->id;
  bool begun = cookie == 0 || cookie == node->id;
  if (begun && !page.Add(node->id, ".", node->parent->id)) return;
  begun = begun || cookie == node->parent->id;
  if (begun && !page.Add(node->parent->id, "..", firstchild)) return;
  if (!begun) {
    ZnSMBNFSNode* resumed = FindById(node, cookie);
    next = resumed ? children.At(resumed->name) : children.end();
  }
  while (next != children.end()) {
    ZnSMBNFSNode* child = next->value;
    ++next;
    uint32_t nextcookie = next != children.end() ? next->value->id : kEndCookie;
    if (!page.Add(child->id, FromLinkName(child->name, linkstring), nextcookie)) return;
  }
  eof = 1;
}
