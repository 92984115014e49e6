#pragma once
// What a directory of the tree holds: its children by name, and in the order in which READDIR shows them, by falling
// file ids. Ids are counted up, so what comes while somebody reads comes before the place he has reached: he ends, and
// meets everything that stays exactly once, whatever comes and goes meanwhile.

#include <algorithm>
#include <deque>

#include "runtime/dictionary.h"
#include "runtime/uni_string.h"

class ZnSMBNFSNode;

// A directory's reference to a child, with what goes through all children needs: looking into each node would take much
// longer.
struct ZnSMBNFSChild {
  ZnSMBNFSChild(ZnSMBNFSNode* child, uint32_t childid) : node(child), id(childid) {}
  operator ZnSMBNFSNode*() const { return node; }  // NOLINT(google-explicit-constructor): stands for the node
  ZnSMBNFSNode* operator->() const { return node; }

  ZnSMBNFSNode* node;
  uint32_t id;           // the node's file id
  uint32_t listing = 0;  // number of the last listing that held the entry
};

// No operation takes long however many there are. Without any that ever was, it is one null pointer.
class ZnSMBNFSChildren {
 public:
  using Dictionary = ZnDictionary<ZnUniString, ZnSMBNFSChild>;
  using Entry = Dictionary::Entry;

  // False, storing nothing, when there is one of this name.
  bool Insert(const ZnUniString& name, const ZnSMBNFSChild& child);
  bool Remove(const ZnUniString& name);
  ZnSMBNFSChild* Find(const ZnUniString& name) { return table_ ? table_->byname.Find(name) : nullptr; }
  const ZnSMBNFSChild* Find(const ZnUniString& name) const { return table_ ? table_->byname.Find(name) : nullptr; }
  size_t Count() const { return table_ ? table_->byname.Count() : 0; }
  bool IsEmpty() const { return Count() == 0; }
  // Once made, the oldest first.
  Dictionary::Iterator begin() const { return table_ ? table_->byname.begin() : Dictionary::Iterator(nullptr); }
  Dictionary::Iterator end() const { return Dictionary::Iterator(nullptr); }

  // Goes through the entries by falling file ids, from `highest` on, while no child comes or goes.
  class Falling {
   public:
    Falling(const ZnSMBNFSChildren& children, uint32_t highest);
    const Entry* Next();  // null at the end

   private:
    const ZnSMBNFSChildren& children_;
    size_t left_;  // places below the one reached
  };

 private:
  struct Place {
    uint32_t id;
    const Entry* entry;  // null when it has gone
  };
  struct Table {
    Dictionary byname;
    std::deque<Place> byid;  // rising
    size_t gone = 0;         // places without an entry
  };

  std::deque<Place>::iterator PlaceOf(uint32_t id) {
    return std::ranges::lower_bound(table_->byid, id, {}, &Place::id);
  }

  std::unique_ptr<Table> table_;
};
