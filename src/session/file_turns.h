#pragma once
// The order at each file and directory of a session, among commands that run side by side.
//
// Whoever is about to do something with a node asks for a turn there and waits until it comes. Turns come in the order
// in which they were asked for, and those that don't disturb each other are had together:
//  - Beside (an open, a look at a path) and Bytes (a read or write) go with each other, as long as no write meets bytes
//    that another of them reads or writes;
//  - Alone (a change of size, time, attributes or name, a removal) waits for all before it and holds up all behind it;
//    at a directory also for and of everything below it, and what comes to be used below it meanwhile.
//
// Whoever takes several turns for one purpose takes them in one go: turns that were asked for while others were had
// could wait for each other for ever. Whoever makes a name, or moves one to a directory, takes a turn beside others
// at that directory, so that it keeps its path meanwhile.
//
// Costs nothing at nodes that nobody uses, and about the same for each turn however many wait; only a directory's Alone
// goes through all nodes in use.

#include <list>
#include <map>
#include <memory>
#include <unordered_map>

#include "model/node.h"
#include "session/wait_list.h"

class ZnFileTurn;
using ZnFileTurnPlace = std::unique_ptr<ZnFileTurn>;  // destroying it leaves, before as well as after the turn came

class ZnFileTurns {
 public:
  // From `begin` on, up to `end`.
  struct Range {
    uint64_t begin = 0;
    uint64_t end = 0;
    bool writes = false;
  };

  // `wakeups` outlives it, and it outlives all turns.
  explicit ZnFileTurns(ZnWakeups& wakeups);
  ZnFileTurns(const ZnFileTurns&) = delete;
  ZnFileTurns& operator=(const ZnFileTurns&) = delete;
  ~ZnFileTurns();

  // A turn that has come already (IsThere) tells nothing more. Another calls `done` once when it comes, as a success.
  // Nodes may die while there are turns at them.
  ZnFileTurnPlace Beside(ZnSMBNFSNode& node, ZnSmbDone done);
  ZnFileTurnPlace Bytes(ZnSMBNFSNode& node, const Range& range, ZnSmbDone done);
  ZnFileTurnPlace Alone(ZnSMBNFSNode& node, ZnSmbDone done);

  // Nodes at which somebody has or waits for a turn.
  size_t NodesInUse() const { return lines_.size(); }

 private:
  friend class ZnFileTurn;
  struct Line;
  struct Group;

  Line& LineOf(ZnSMBNFSNode& node);
  ZnFileTurnPlace Enter(ZnSMBNFSNode& node, bool alone, const Range& range, ZnSmbDone done);
  void EnterBelow(ZnSMBNFSNode& directory, ZnFileTurn& turn);

  ZnWakeups& wakeups_;
  std::unordered_map<ZnSMBNFSHandle, std::unique_ptr<Line>> lines_;  // by the node's handle, which never comes again
  std::list<ZnFileTurn*> trees_;                                     // Alone at directories
};

class ZnFileTurn {
 public:
  ZnFileTurn(ZnFileTurns& turns, ZnSmbDone done);  // for ZnFileTurns
  ZnFileTurn(const ZnFileTurn&) = delete;
  ZnFileTurn& operator=(const ZnFileTurn&) = delete;
  ~ZnFileTurn();

  bool IsThere() const { return missing_ == 0; }

 private:
  friend class ZnFileTurns;
  struct Place;

  void Enter(ZnFileTurns::Line& line, bool alone, const ZnFileTurns::Range& range);
  void Leave(Place& place);

  ZnFileTurns& turns_;
  ZnWaiter waiter_;
  std::list<Place> places_;                // one, but for an Alone at a directory
  size_t missing_ = 0;                     // places where others are before it
  ZnWeakRef<ZnSMBNFSNode> top_;            // of an Alone at a directory
  std::list<ZnFileTurn*>::iterator tree_;  // where it stands among those
  bool istree_ = false;
};
