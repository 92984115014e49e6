// READDIR pages. An entry's cookie is the file id of the entry after it, 1 for the last. Entries stand in the order of
// falling ids, so that a client whose next entry has gone goes on at the one behind it.

#include "model/directory_index.h"
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

}  // namespace

void ZnSMBNFSFileSystem::FillContents(ZnSMBNFSNode* node, uint32_t cookie, uint32_t count,
                                      ZnNFSList<ZnNFSDirEntry>& list, uint32_t& eof) {
  eof = 0;
  ZnSMBNFSTree* tree = GetTree(node);
  ZnUniString linkstring = tree ? tree->config.linkstring : ZnUniString();
  Page page(list, count);

  // The root is its own parent: the cookie of its "." leads to "..", or it would lead back.
  bool begun = cookie == 0 || (cookie == node->id && !node->IsRoot());
  if (begun && !page.Add(node->id, ".", node->parent->id)) return;
  begun = begun || cookie == node->parent->id;
  ZnSMBNFSChildren::Falling children(node->children, begun ? UINT32_MAX : cookie);
  const ZnSMBNFSChildren::Entry* next = children.Next();
  auto cookie_of_next = [&] { return next ? next->value.id : kEndCookie; };
  if (begun && !page.Add(node->parent->id, "..", cookie_of_next())) return;
  while (const ZnSMBNFSChildren::Entry* entry = next) {
    next = children.Next();
    const ZnUniString name = ZnShownName(entry->key, *entry->value.node, linkstring);
    if (!page.Add(entry->value.id, name, cookie_of_next())) return;
  }
  eof = 1;
}
