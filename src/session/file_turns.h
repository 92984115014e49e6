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

#include <functional>
#include <list>
#include <map>
#include <memory>
#include <unordered_map>

#include "model/node.h"
#include "runtime/event_loop.h"

class ZnFileTurn;
using ZnFileTurnPlace = std::unique_ptr<ZnFileTurn>;  // destroying it leaves, before as well as after the turn came

class ZnFileTurns {
 public:
  using Go = std::function<void()>;
  // From `begin` on, up to `end`.
  struct Range {
    uint64_t begin = 0;
    uint64_t end = 0;
    bool writes = false;
  };

  // `loop` isn't owned. All turns are over before the object is destroyed.
  explicit ZnFileTurns(ZnEventLoopBase* loop);
  ZnFileTurns(const ZnFileTurns&) = delete;
  ZnFileTurns& operator=(const ZnFileTurns&) = delete;
  ~ZnFileTurns();

  // A turn that has come already (IsThere) tells nothing more. Another calls `go` once when it comes, at the end of a
  // turn of the loop. `go` may end any turn, and the object. Nodes may die while there are turns at them.
  ZnFileTurnPlace Beside(ZnSMBNFSNode& node, Go go);
  ZnFileTurnPlace Bytes(ZnSMBNFSNode& node, const Range& range, Go go);
  ZnFileTurnPlace Alone(ZnSMBNFSNode& node, Go go);

  // Nodes at which somebody has or waits for a turn.
  size_t NodesInUse() const { return lines_.size(); }

 private:
  friend class ZnFileTurn;
  struct Line;
  struct Group;

  Line& LineOf(ZnSMBNFSNode& node);
  ZnFileTurnPlace Enter(ZnSMBNFSNode& node, bool alone, const Range& range, Go go);
  void EnterBelow(ZnSMBNFSNode& directory, ZnFileTurn& turn);
  void Ready(ZnFileTurn& turn);
  void TellReady(ZnEventCallback*, ZnEvent::cbdispatch);

  ZnEventLoopBase* loop_;
  ZnSimpleCallback<ZnEvent::cbdispatch, ZnFileTurns> callback_{this, &ZnFileTurns::TellReady};
  std::unordered_map<ZnSMBNFSHandle, std::unique_ptr<Line>> lines_;  // by the node's handle, which never comes again
  std::list<ZnFileTurn*> trees_;                                     // Alone at directories
  std::list<ZnFileTurn*> ready_;                                     // not told yet
  ZnReferable alive_;
};

class ZnFileTurn {
 public:
  ZnFileTurn(ZnFileTurns& turns, ZnFileTurns::Go go);  // for ZnFileTurns
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
  ZnFileTurns::Go go_;
  std::list<Place> places_;                        // one, but for an Alone at a directory
  size_t missing_ = 0;                             // places where others are before it
  ZnWeakRef<ZnSMBNFSNode> top_;                    // of an Alone at a directory
  std::list<ZnFileTurn*>::iterator tree_, ready_;  // where it stands in these lists
  bool istree_ = false, isready_ = false;
};
