#pragma once
// The commands of one session, in the order in which they came. Adding, removing any of them and finding the next cost
// the same however many wait.

#include <list>
#include <unordered_map>

class ZnSMBNFSCommand;

class ZnSMBNFSCommandQueue {
 public:
  void Append(ZnSMBNFSCommand* command) {
    entries_.push_back({command, false});
    index_.emplace(command, std::prev(entries_.end()));
  }
  // True if it was the head.
  bool Remove(ZnSMBNFSCommand* command) {
    auto found = index_.find(command);
    if (found == index_.end()) return false;
    bool head = found->second == entries_.begin();
    entries_.erase(found->second);
    index_.erase(found);
    return head;
  }

  bool IsEmpty() const { return entries_.empty(); }
  size_t Count() const { return entries_.size(); }
  ZnSMBNFSCommand* Head() const { return entries_.empty() ? nullptr : entries_.front().command; }

  // The command's request is done and the tree has it, until it comes back with another request or goes away.
  void HandOver(ZnSMBNFSCommand* command) { index_.at(command)->handedover = true; }
  void TakeBack(ZnSMBNFSCommand* command) { index_.at(command)->handedover = false; }
  bool HeadIsHandedOver() const { return !entries_.empty() && entries_.front().handedover; }
  // The first that the tree doesn't have. Only as many as have their completion on the stack stand in front of it.
  ZnSMBNFSCommand* FirstWaiting() const {
    for (const Entry& entry : entries_) {
      if (!entry.handedover) return entry.command;
    }
    return nullptr;
  }

  auto begin() const { return index_.begin(); }
  auto end() const { return index_.end(); }

 private:
  struct Entry {
    ZnSMBNFSCommand* command;
    bool handedover;
  };
  std::list<Entry> entries_;
  std::unordered_map<ZnSMBNFSCommand*, std::list<Entry>::iterator> index_;
};
