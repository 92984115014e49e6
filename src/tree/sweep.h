#pragma once
// The end of a listing: takes in the entries that had to wait for it and prunes the children that it didn't hold, or,
// after a listing that failed, prunes those that it brought. A slice of that in each turn of the loop, for there may be
// a million, and other machines' calls don't wait for them.

#include "model/command.h"
#include "runtime/timer.h"
#include "tree/file_system.h"

class ZnSweep : public ZnSMBNFSWork {
 public:
  enum class What { NotListed, Brought };

  // Goes on for the command, whose listing ends by ListingEnds when all is done; that may be before this returns. A
  // null loop has no turns: all is done at once.
  static void Begin(ZnSMBNFSFileSystem& filesystem, ZnEventLoopBase* loop, ZnSMBNFSCommand* command, What what);

  ZnSweep(ZnSMBNFSFileSystem& filesystem, ZnEventLoopBase* loop, ZnSMBNFSCommand* command, What what);

 private:
  void Slice();
  bool SomeMore();
  void SomeWaiting();
  bool PruneSome(ZnSMBNFSNode* node, size_t& most);
  bool Goes(const ZnSMBNFSChildren::Entry& entry) const;
  void TimerCB(ZnCallback<ZnEvent::cbdispatch>* callback, ZnEvent::cbdispatch value);

  ZnSMBNFSFileSystem& filesystem_;
  ZnEventLoopBase* loop_;
  ZnSMBNFSCommand* command_;
  What what_;
  uint32_t highest_ = UINT32_MAX;  // file ids above it have been looked at
  ZnSimpleCallback<ZnEvent::cbdispatch, ZnSweep> callback_{this, &ZnSweep::TimerCB};
  ZnTimer timer_;
};
