#include "model/node.h"

#include <vector>

#include "model/directory_index.h"
#include "model/directory_listing.h"
#include "model/name_mapping.h"
#include "model/session_base.h"
#include "model/user_base.h"

namespace {

constexpr uint32_t kDirectoryType = 2;

// Visits a node and everything below it without recursion: the depth of a share's directories is the server's choice.
template <class Visit>
void ForEachBelow(ZnSMBNFSNode* top, Visit visit) {
  std::vector<ZnSMBNFSNode*> open{top};
  while (!open.empty()) {
    ZnSMBNFSNode* node = open.back();
    open.pop_back();
    visit(node);
    for (auto& child : node->children) open.push_back(child.value);
  }
}

}  // namespace

ZnSMBNFSNode::ZnSMBNFSNode() = default;
ZnSMBNFSNode::~ZnSMBNFSNode() = default;

bool ZnSMBNFSNode::IsDirectory() const { return attribs.type == kDirectoryType; }

ZnUniString ZnSMBNFSNode::PathInside() const { return IsInside() ? Path() + "\\" : ZnUniString("\\"); }

ZnUniString ZnSMBNFSNode::NameInPath() const { return stored.IsEmpty() ? name : AsItStands(stored); }

void OutOfDate(ZnSMBNFSNode* node, bool contents) {
  node->attribtime = {};
  if (!contents) return;
  node->contentstime = {};
  if (node->listing) node->listing->outdated = true;
}

void NeedsUpdate(ZnSMBNFSNode* node) {
  ForEachBelow(node, [](ZnSMBNFSNode* each) { OutOfDate(each, true); });
}
