#pragma once
// A directory's listing on its way into the tree, from the request to the end of its merge. One is under way at a time:
// who wants the same directory meanwhile follows it. What the directory goes through in that time is told to it, for
// what the server listed before a change says nothing of what the change has made of that name.

#include <cstdint>
#include <functional>
#include <list>
#include <unordered_set>

#include "model/work.h"
#include "rpc/nfs_enum.h"
#include "runtime/uni_string.h"
#include "runtime/weak_ref.h"
#include "smb/client/file_object.h"

class ZnSMBNFSCommand;
class ZnSMBNFSNode;

class ZnDirectoryListing {
 public:
  // More commands than this don't follow a listing: they are dropped like lost datagrams.
  static constexpr size_t kMostFollowers = 4096;
  // A follower goes on: it looks anew whether the directory is up to date, or fails as the listing did.
  using GoOn = std::function<void(ZnSMBNFSCommand*, ZnNFSEnum::Status failure)>;
  struct Entry {
    ZnSMBCFileObject file;
    ZnUniString stored;  // as of the node
  };

  // Is under way from now on.
  ZnDirectoryListing(ZnSMBNFSNode& directory, GoOn goon);
  ZnDirectoryListing(const ZnDirectoryListing&) = delete;
  ZnDirectoryListing& operator=(const ZnDirectoryListing&) = delete;
  // However it ends, its followers go on then.
  ~ZnDirectoryListing();

  // The command waits for the end, unless it dies before. False when too many do.
  bool Follow(ZnSMBNFSCommand& command);
  // The server is asked, perhaps not for the first time: what was merged before counts no more. Numbers as of the tree.
  void Begin(uint32_t newnumber, uint64_t newlook, uint32_t lastid);
  // Nobody follows it any more.
  void Over();

  uint32_t number = 0;                   // as of the children that it has held
  uint64_t look = 0;                     // its number among the tree's looks at servers
  size_t held = 0;                       // so many children
  uint32_t idbefore = 0;                 // the last file id before it began
  std::list<Entry> waiting;              // what is new under names that others made: comes when all of ours are known
  size_t waitingbytes = 0;               // that these will take as nodes
  std::unordered_set<ZnUniString> gone;  // names that changes have taken away meanwhile
  bool outdated = false;                 // something happened that only another listing can tell
  ZnNFSEnum::Status failure = ZnNFSEnum::NFS_OK;  // for the followers

 private:
  ZnWeakRef<ZnSMBNFSNode> directory_;
  GoOn goon_;
  std::list<ZnSMBNFSCommand*> followers_;
};
