#pragma once
// A file that a session holds open on its server.

#include "runtime/clock.h"
#include "runtime/time_val.h"
#include "runtime/weak_ref.h"
#include "smb/client/file_object.h"

class ZnSMBNFSNode;

struct ZnSMBNFSFile : ZnSMBCFileObject, ZnReferable {
  // Null once the node was pruned: the file outlives it until it is closed.
  ZnWeakRef<ZnSMBNFSNode> node;
  bool readable = false;
  bool writable = false;
  bool written = false;    // something was written through this id
  bool close = false;      // to be closed when nobody uses it any more
  bool unflushed = false;  // written since it was flushed last
  ZnMoment lastused;
  ZnMoment lastwritten;
  ZnTimeVal closetime;  // modification time for the close; zero seconds means leave the server's
  // The end of what was written through this file: a listing that still shows an older size doesn't lower the node's
  // below it.
  uint32_t writtensize = 0;
};
