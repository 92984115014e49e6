#pragma once
// A change of an entry, under way at its server. What the server was asked about the entry before the end of the change
// may be older than the change, whenever the answer comes: it isn't taken. A look at a server (a listing, or a query of
// one entry) has a number, counted on for each; an entry notes the last one that was begun before its change ended.

#include "model/node.h"

class ZnEntryChange {
 public:
  ZnEntryChange() = default;
  ZnEntryChange(const ZnEntryChange&) = delete;
  ZnEntryChange& operator=(const ZnEntryChange&) = delete;
  ~ZnEntryChange() { End(); }

  // `looks`, the number of the last look, is read at the end, if the entry is still there then.
  void Begin(ZnSMBNFSNode& entry, const uint64_t& looks) {
    End();
    entry_ = &entry;
    looks_ = &looks;
    entry.changing++;
  }
  void End() {
    if (ZnSMBNFSNode* entry = entry_.Get()) {
      entry->changing--;
      entry->changed = *looks_;
    }
    entry_ = nullptr;
  }
  // Whether what the look of this number tells of the entry may be older than a change. Of a file that is being written
  // all the time it would never be taken: while it is open, what was written is known apart from that.
  static bool Overlapped(const ZnSMBNFSNode& entry, uint64_t look) {
    if (entry.changing > 0 || IsSince(entry.changed, look)) return true;
    return !entry.file && !entry.IsDirectory() && IsSince(entry.written, look);
  }
  static bool IsSince(uint64_t noted, uint64_t look) { return noted > 0 && noted >= look; }

 private:
  ZnWeakRef<ZnSMBNFSNode> entry_;
  const uint64_t* looks_ = nullptr;
};
