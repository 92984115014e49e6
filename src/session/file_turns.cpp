#include "session/file_turns.h"

#include <algorithm>

#include "model/entries.h"

namespace {

// Where the bytes of turns begin, and where they end.
using Ranges = std::multimap<uint64_t, uint64_t>;

}  // namespace

// Those of a line that have their turn together.
struct ZnFileTurns::Group {
  bool Collides(const Range& range) const {
    if (range.begin == range.end) return false;
    return Meets(written, range) || (range.writes && Meets(read, range));
  }
  bool Meets(const Ranges& ranges, const Range& range) const {
    auto each = ranges.lower_bound(range.begin - std::min(range.begin, longest));
    for (; each != ranges.end() && each->first < range.end; ++each) {
      if (each->second > range.begin) return true;
    }
    return false;
  }

  bool alone = false;
  std::list<ZnFileTurn::Place*> members;
  Ranges read, written;
  uint64_t longest = 0;  // bytes, of all ranges so far
};

// The turns at one node. The first group has its turn.
struct ZnFileTurns::Line {
  ZnSMBNFSHandle handle;
  ZnWeakRef<ZnSMBNFSNode> node;
  std::list<Group> groups;
};

struct ZnFileTurn::Place {
  ZnFileTurn* turn = nullptr;
  ZnFileTurns::Line* line = nullptr;
  std::list<ZnFileTurns::Group>::iterator group;
  std::list<Place*>::iterator member;
  Ranges* ranges = nullptr;  // that the turn's bytes stand in; null without any
  Ranges::iterator range;
};

// ---- one turn -------------------------------------------------------------------------------------------------------

ZnFileTurn::ZnFileTurn(ZnFileTurns& turns, ZnSmbDone done) : turns_(turns), waiter_(std::move(done)) {}

ZnFileTurn::~ZnFileTurn() {
  if (istree_) turns_.trees_.erase(tree_);
  for (Place& place : places_) Leave(place);
}

void ZnFileTurn::Enter(ZnFileTurns::Line& line, bool alone, const ZnFileTurns::Range& range) {
  auto& groups = line.groups;
  if (groups.empty() || alone || groups.back().alone || groups.back().Collides(range)) groups.emplace_back();
  ZnFileTurns::Group& group = groups.back();
  group.alone = alone;

  Place& place = places_.emplace_back();
  place.turn = this;
  place.line = &line;
  place.group = std::prev(groups.end());
  place.member = group.members.insert(group.members.end(), &place);
  if (range.begin < range.end) {
    place.ranges = range.writes ? &group.written : &group.read;
    place.range = place.ranges->emplace(range.begin, range.end);
    group.longest = std::max(group.longest, range.end - range.begin);
  }
  if (&group != &groups.front()) missing_++;
}

void ZnFileTurn::Leave(Place& place) {
  ZnFileTurns::Line& line = *place.line;
  if (place.ranges) place.ranges->erase(place.range);
  place.group->members.erase(place.member);
  if (!place.group->members.empty()) return;
  const bool wasfirst = place.group == line.groups.begin();
  line.groups.erase(place.group);
  if (line.groups.empty()) {
    turns_.lines_.erase(ZnSMBNFSHandle(line.handle));
  } else if (wasfirst) {
    for (Place* next : line.groups.front().members) {
      if (--next->turn->missing_ == 0) turns_.wakeups_.Wake(next->turn->waiter_);
    }
  }
}

// ---- all of them ----------------------------------------------------------------------------------------------------

ZnFileTurns::ZnFileTurns(ZnWakeups& wakeups) : wakeups_(wakeups) {}

ZnFileTurns::~ZnFileTurns() = default;

ZnFileTurnPlace ZnFileTurns::Beside(ZnSMBNFSNode& node, ZnSmbDone done) {
  return Enter(node, false, {}, std::move(done));
}

ZnFileTurnPlace ZnFileTurns::Bytes(ZnSMBNFSNode& node, const Range& range, ZnSmbDone done) {
  return Enter(node, false, range, std::move(done));
}

ZnFileTurnPlace ZnFileTurns::Alone(ZnSMBNFSNode& node, ZnSmbDone done) {
  auto turn = Enter(node, true, {}, std::move(done));
  if (node.IsDirectory()) EnterBelow(node, *turn);
  return turn;
}

ZnFileTurnPlace ZnFileTurns::Enter(ZnSMBNFSNode& node, bool alone, const Range& range, ZnSmbDone done) {
  auto turn = std::make_unique<ZnFileTurn>(*this, std::move(done));
  turn->Enter(LineOf(node), alone, range);
  return turn;
}

// Those who are alone at a directory above come first at whatever is used below it only now.
ZnFileTurns::Line& ZnFileTurns::LineOf(ZnSMBNFSNode& node) {
  auto& line = lines_[node.handle];
  if (line) return *line;
  line = std::make_unique<Line>();
  line->handle = node.handle;
  line->node = &node;
  for (ZnFileTurn* tree : trees_) {
    if (tree->top_ && ZnIsAtOrBelow(&node, tree->top_.Get())) tree->Enter(*line, true, {});
  }
  return *line;
}

void ZnFileTurns::EnterBelow(ZnSMBNFSNode& directory, ZnFileTurn& turn) {
  for (auto& [handle, line] : lines_) {
    const ZnSMBNFSNode* node = line->node.Get();
    if (node != &directory && ZnIsAtOrBelow(node, &directory)) turn.Enter(*line, true, {});
  }
  turn.top_ = &directory;
  turn.tree_ = trees_.insert(trees_.end(), &turn);
  turn.istree_ = true;
}
