#pragma once
// What is worked out about a directory's children as a whole when a look-up first asks for it, and thrown away when a
// child comes or goes.

#include <optional>
#include <vector>

#include "model/node.h"
#include "runtime/place_index.h"

struct ZnSMBNFSDirectoryIndex {
  struct Child {
    uint32_t id;
    const ZnUniString* name;  // the directory's
    ZnSMBNFSNode* node;
  };

  // The share's settings that the forms of names depend on.
  struct Matching {
    bool fold_case = false;
    ZnUniString linkstring;
    bool operator==(const Matching&) const = default;
  };

  explicit ZnSMBNFSDirectoryIndex(const ZnSMBNFSChildren& entries);

  std::vector<Child> children;  // in the order of the directory
  // Places among the children; of children with one form, the first's. Each is made when it is first asked for.
  std::optional<Matching> matching;  // of the forms
  std::optional<ZnPlaceIndex> shown_forms;
  std::optional<ZnPlaceIndex> long_forms;
  std::optional<ZnPlaceIndex> short_forms;
};

// Whether an entry stands for a symbolic link: a file whose name is marked.
bool ZnIsLink(const ZnSMBNFSDirectoryIndex::Child& child, const ZnUniString& linkstring);
// An entry's name as clients see it: a link's has no mark, unless another entry has that name.
ZnUniString ZnShownName(const ZnSMBNFSDirectoryIndex::Child& child, const ZnUniString& linkstring);

// The index of a directory, made where there is none.
ZnSMBNFSDirectoryIndex& ZnIndexOf(ZnSMBNFSNode* directory);
