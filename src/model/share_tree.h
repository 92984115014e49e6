#pragma once
// A share of a session: the tree as the client knows it, and the share's settings.

#include "config/share_config.h"
#include "smb/client/tree_object.h"

class ZnSMBNFSNode;

struct ZnSMBNFSTree : ZnSMBCTreeObject {
  ZnSMBNFSNode* node = nullptr;  // the share node; null once that was pruned
  ZnSMBNFSShareConfig config;    // a copy: edits of the profile reach it by reload
  bool connected = false;
  bool needsreload = false;
  bool closing = false;  // the session disconnects it on its next clean-up
};
