#include "model/directory_listing.h"

#include "model/command.h"
#include "model/node.h"

namespace {

// A follower's place, which it leaves when it dies.
class Place : public ZnSMBNFSWork {
 public:
  Place(std::list<ZnSMBNFSCommand*>& followers, ZnSMBNFSCommand& command)
      : followers_(followers), at_(followers.insert(followers.end(), &command)) {}
  ~Place() override { followers_.erase(at_); }

 private:
  std::list<ZnSMBNFSCommand*>& followers_;
  std::list<ZnSMBNFSCommand*>::iterator at_;
};

}  // namespace

ZnDirectoryListing::ZnDirectoryListing(ZnSMBNFSNode& directory, GoOn goon)
    : directory_(&directory), goon_(std::move(goon)) {
  directory.listing = this;
}

ZnDirectoryListing::~ZnDirectoryListing() {
  Over();
  while (!followers_.empty()) {
    ZnSMBNFSCommand* follower = followers_.front();
    follower->work.reset();
    goon_(follower, failure);
  }
}

bool ZnDirectoryListing::Follow(ZnSMBNFSCommand& command) {
  if (followers_.size() >= kMostFollowers) return false;
  command.work = std::make_unique<Place>(followers_, command);
  return true;
}

void ZnDirectoryListing::Begin(uint32_t newnumber, uint64_t newlook, uint32_t lastid) {
  number = newnumber;
  look = newlook;
  idbefore = lastid;
  held = waitingbytes = 0;
  waiting.clear();
  gone.clear();
  outdated = false;
}

void ZnDirectoryListing::Over() {
  ZnSMBNFSNode* directory = directory_.Get();
  if (directory && directory->listing == this) directory->listing = nullptr;
}
