#pragma once
// The order among changes of one name. Whoever is to make, remove or rename an entry takes a turn at its name first (at
// both names for a rename), and looks for the entry only when the turn has come: so what it finds is what the changes
// before it have left. Names count by their directory, without letter cases and without a link's mark: what could be
// one entry for a server or for clients.
//
// All names of a command are asked for in one go, so that none waits for another in a circle.

#include <functional>
#include <list>
#include <unordered_map>
#include <utility>
#include <vector>

#include "model/command.h"

class ZnNameTurns {
 public:
  // More commands than this don't wait for a name: they are dropped like lost datagrams.
  static constexpr size_t kMostWaiting = 4096;
  using Go = std::function<void(ZnSMBNFSCommand*)>;
  // A directory's file id, and a name in it.
  using Name = std::pair<uint32_t, ZnUniString>;
  enum class Result { There, Waits, TooMany };

  explicit ZnNameTurns(Go go) : go_(std::move(go)) {}

  // The turn is over when the command ends. `go` is called when it comes, unless it is there at once.
  Result Take(ZnSMBNFSCommand& command, std::vector<Name> names);
  size_t NamesInUse() const { return lines_.size(); }

 private:
  class Turn;
  struct Hash {
    size_t operator()(const Name& name) const { return std::hash<ZnUniString>()(name.second) + name.first; }
  };
  using Line = std::list<Turn*>;  // the first has the name

  void Ready(Turn& turn);

  Go go_;
  std::unordered_map<Name, Line, Hash> lines_;
  std::list<Turn*> ready_;
  bool telling_ = false;
};
