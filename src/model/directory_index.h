#pragma once
// What is worked out about a directory's children as a whole when a look-up or a resumed listing first asks for it, and
// thrown away when a child comes or goes. Each map leads to the first child in the order of the directory that has the
// key.

#include <cstdint>
#include <optional>
#include <unordered_map>

#include "runtime/uni_string.h"

class ZnSMBNFSNode;

struct ZnSMBNFSDirectoryIndex {
  struct Form {
    size_t order;  // of the child in the directory
    ZnSMBNFSNode* child;
  };
  using Forms = std::unordered_map<ZnUniString, Form>;

  // The share's settings that the forms depend on.
  struct Matching {
    bool long_names = false;
    bool short_names = false;
    bool fold_case = false;
    ZnUniString linkstring;
    bool operator==(const Matching&) const = default;
  };

  std::optional<std::unordered_map<uint32_t, ZnSMBNFSNode*>> by_id;
  std::optional<Matching> matching;  // set when the forms are there
  Forms long_forms;
  Forms short_forms;
};
