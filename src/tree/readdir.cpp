// READDIR pages. An entry's cookie is the file id of the entry after it, 1 for the last, so that the removal of entries
// that were returned already doesn't disturb a client that goes on.

#include <algorithm>
#include <span>

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

using Index = ZnSMBNFSDirectoryIndex;

// Names that are asked for at a time.
constexpr size_t kTogether = 16;

// Where the first child with this id stands; behind the last when there is none.
size_t PlaceOf(uint32_t id, Index& index) {
  const size_t count = index.children.size();
  if (!index.ids) {
    index.ids.emplace(count);
    for (size_t place = count; place-- > 0;) index.ids->Add(index.children[place].id, place);  // the first child last
  }
  return std::min(count, index.ids->Find(id, [&](size_t place) { return index.children[place].id == id; }));
}

}  // namespace

void ZnSMBNFSFileSystem::FillContents(ZnSMBNFSNode* node, uint32_t cookie, uint32_t count,
                                      ZnNFSList<ZnNFSDirEntry>& list, uint32_t& eof) {
  eof = 0;
  ZnSMBNFSTree* tree = GetTree(node);
  ZnUniString linkstring = tree ? tree->config.linkstring : ZnUniString();
  Page page(list, count);

  Index& index = ZnIndexOf(node);
  std::span<const Index::Child> children = index.children;
  bool begun = cookie == 0 || cookie == node->id;
  if (begun && !page.Add(node->id, ".", node->parent->id)) return;
  begun = begun || cookie == node->parent->id;
  if (begun && !page.Add(node->parent->id, "..", children.empty() ? kEndCookie : children.front().id)) return;
  if (!begun) children = children.subspan(PlaceOf(cookie, index));

  for (size_t i = 0; i < children.size(); i++) {
    // The names of a large directory lie all over memory: asked for together, they are waited for once.
    for (const Index::Child& next :
         children.subspan(i, i % kTogether == 0 ? std::min(kTogether, children.size() - i) : 0))
      __builtin_prefetch(next.name->View().data());
    uint32_t nextcookie = i + 1 < children.size() ? children[i + 1].id : kEndCookie;
    if (!page.Add(children[i].id, ZnShownName(children[i], linkstring), nextcookie)) return;
  }
  eof = 1;
}
