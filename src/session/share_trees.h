#pragma once
// The shares of a session, each connected once while all who need it wait.

#include <list>
#include <map>
#include <memory>

#include "model/share_tree.h"
#include "session/wait_list.h"
#include "smb/client/client.h"

class ZnShareTrees {
 public:
  using Trees = std::list<std::unique_ptr<ZnSMBNFSTree>>;

  // All of these outlive it.
  ZnShareTrees(ZnSmbClient& client, ZnWakeups& wakeups, Trees& trees)
      : client_(client), wakeups_(wakeups), trees_(trees) {}

  // Connects the share, or waits with those for whom that is being done already.
  ZnWaitPlace Connect(ZnSMBNFSTree& tree, ZnSmbDone done);
  // Ids of trees mean nothing on another connection.
  void Forget();
  // A connected share costs the server little, and nothing is told to it: its id goes with the connection.
  void DropClosing();

 private:
  struct Connecting {
    explicit Connecting(ZnWakeups& wakeups) : waiting(wakeups) {}
    ZnWaitList waiting;
    ZnSmbCall call;
  };
  void Connected(ZnSMBNFSTree& tree, const ZnSmbOutcome& told);

  ZnSmbClient& client_;
  ZnWakeups& wakeups_;
  Trees& trees_;
  std::map<ZnSMBNFSTree*, Connecting> connecting_;
};
