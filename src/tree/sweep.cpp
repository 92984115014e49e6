#include "tree/sweep.h"

namespace {

constexpr std::chrono::milliseconds kSlice{4};
constexpr size_t kAtATime = 64;  // children between two looks at the clock

}  // namespace

ZnSweep::ZnSweep(ZnSMBNFSFileSystem& filesystem, ZnEventLoopBase* loop, ZnSMBNFSCommand* command, What what)
    : filesystem_(filesystem), loop_(loop), command_(command), what_(what), timer_(loop, &callback_) {}

void ZnSweep::Begin(ZnSMBNFSFileSystem& filesystem, ZnEventLoopBase* loop, ZnSMBNFSCommand* command, What what) {
  auto sweep = std::make_unique<ZnSweep>(filesystem, loop, command, what);
  ZnSweep* begun = sweep.get();
  command->work = std::move(sweep);
  begun->Slice();
}

// The end may delete the command, and this with it.
void ZnSweep::Slice() {
  const ZnMoment end = ZnSteadyClock::Read() + kSlice;
  while (SomeMore()) {
    if (!loop_ || ZnSteadyClock::Read() < end) continue;
    timer_.Set({});
    return;
  }
  filesystem_.ListingEnds(command_);
}

// False when nothing is left to be done.
bool ZnSweep::SomeMore() {
  ZnSMBNFSNode* directory = command_->node.Get();
  if (!directory) return false;
  if (!command_->listing->waiting.empty()) {
    SomeWaiting();
    return true;
  }
  ZnSMBNFSNode* going[kAtATime];
  size_t count = 0;
  size_t looked = 0;
  ZnSMBNFSChildren::Falling children(directory->children, highest_);
  const ZnSMBNFSChildren::Entry* entry = nullptr;
  while (looked < kAtATime && (entry = children.Next())) {
    looked++;
    highest_ = entry->value.id - 1;
    if (Goes(*entry)) {
      going[count++] = entry->value;
    } else if (what_ == What::Brought && entry->value.id <= command_->listing->idbefore) {
      looked = 0;  // the others are older
      break;
    }
  }
  size_t most = kAtATime;
  for (size_t i = 0; i < count; i++) {
    const uint32_t id = going[i]->id;
    if (PruneSome(going[i], most)) continue;
    highest_ = id;  // it is next again
    return true;
  }
  return looked == kAtATime;
}

void ZnSweep::SomeWaiting() {
  std::list<ZnDirectoryListing::Entry>& waiting = command_->listing->waiting;
  if (what_ == What::NotListed) return filesystem_.TakeWaiting(command_, kAtATime);
  for (size_t i = 0; i < kAtATime && !waiting.empty(); i++) waiting.pop_front();
}

// Prunes what lies below the node, the lowest first, and then the node, but not more nodes than `most`, which is
// brought down. True when the node itself has gone.
bool ZnSweep::PruneSome(ZnSMBNFSNode* node, size_t& most) {
  ZnSMBNFSNode* lowest = node;
  bool gone = false;
  for (; most > 0 && !gone; most--) {
    while (!lowest->children.IsEmpty()) lowest = lowest->children.begin()->value;
    gone = lowest == node;
    ZnSMBNFSNode* above = lowest->parent;
    filesystem_.Prune(lowest);
    lowest = above;
  }
  return gone;
}

bool ZnSweep::Goes(const ZnSMBNFSChildren::Entry& entry) const {
  const ZnDirectoryListing& listing = *command_->listing;
  const bool wanted =
      what_ == What::Brought ? entry.value.id <= listing.idbefore : entry.value.listing == listing.number;
  return !wanted && !ZnEntryChange::Overlapped(*entry.value.node, listing.look);
}

void ZnSweep::TimerCB(ZnCallback<ZnEvent::cbdispatch>*, ZnEvent::cbdispatch value) {
  if (value == ZnEvent::Fired) Slice();
}
