#pragma once
// A directory's children by forms of their names, in which names that differ are one: without letter cases, or as
// Windows would have them. A form is worked out for all of them when a look-up first asks for it, and from then on for
// each child that comes or goes: no call pays for the size of its directory.

#include <set>
#include <utility>
#include <vector>

#include "model/node.h"

// Whether an entry stands for a symbolic link: a file whose name is marked.
bool ZnIsLink(const ZnUniString& name, const ZnSMBNFSNode& node, const ZnUniString& linkstring);
// An entry's name as clients see it: a link's has no mark, unless another entry has that name.
ZnUniString ZnShownName(const ZnUniString& name, const ZnSMBNFSNode& node, const ZnUniString& linkstring);

class ZnSMBNFSDirectoryIndex {
 public:
  using Form = ZnUniString (*)(const ZnUniString&);

  // The share's settings that the forms of names depend on.
  struct Matching {
    bool fold_case = false;
    ZnUniString linkstring;
    bool operator==(const Matching&) const = default;
  };

  explicit ZnSMBNFSDirectoryIndex(Matching matching) : matching_(std::move(matching)) {}

  const Matching& matching() const { return matching_; }
  // The oldest of `children` whose shown name has one form with `name`; null when there is none.
  ZnSMBNFSNode* Find(const ZnSMBNFSChildren& children, const ZnUniString& name, Form form);
  // A child comes or goes. False when it isn't where it was entered: the index is of no use any more.
  void Add(ZnSMBNFSNode* node);
  bool Remove(ZnSMBNFSNode* node);

 private:
  struct Place {
    uint32_t hash;  // of the form
    uint32_t id;    // of the node
    ZnSMBNFSNode* node;
    auto operator<=>(const Place&) const = default;
  };
  struct Places {
    Form form;
    std::set<Place> all;
  };

  Places& PlacesOf(const ZnSMBNFSChildren& children, Form form);
  ZnUniString FormOf(const ZnUniString& name, Form form) const;
  ZnUniString FormOf(const ZnSMBNFSNode& node, Form form) const;
  Place PlaceOf(ZnSMBNFSNode* node, Form form) const;

  Matching matching_;
  std::vector<Places> forms_;
};
