#pragma once
// A share of a session: the tree as the client knows it, and the share's settings.

#include "config/share_config.h"
#include "runtime/clock.h"
#include "smb/client/disk_space.h"
#include "smb/client/tree_object.h"

class ZnSMBNFSNode;

struct ZnSMBNFSTree : ZnSMBCTreeObject {
  ZnSMBNFSNode* node = nullptr;  // the share node; null once that was pruned
  ZnSMBNFSShareConfig config;    // a copy, brought up to date when the profile was read again
  ZnSMBDiskSpace space;          // when it was asked for last
  ZnMoment spacetime;
  bool connected = false;
  bool closing = false;  // the session disconnects it on its next clean-up
};
