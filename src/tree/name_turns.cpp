#include "tree/name_turns.h"

#include <algorithm>

class ZnNameTurns::Turn : public ZnSMBNFSWork {
 public:
  Turn(ZnNameTurns& turns, ZnSMBNFSCommand& command) : turns_(turns), command_(command) {}
  ~Turn() override {
    turns_.ready_.remove(this);
    for (const Place& place : places_) Leave(place);
  }

  void Enter(const Name& name) {
    auto& line = *turns_.lines_.try_emplace(name).first;
    if (!line.second.empty()) missing_++;
    places_.push_back({&line, line.second.insert(line.second.end(), this)});
  }
  bool IsThere() const { return missing_ == 0; }
  ZnSMBNFSCommand& command() { return command_; }

 private:
  struct Place {
    std::pair<const Name, Line>* line;
    Line::iterator at;
  };

  void Leave(const Place& place) {
    Line& line = place.line->second;
    const bool first = place.at == line.begin();
    line.erase(place.at);
    if (line.empty()) {
      turns_.lines_.erase(Name(place.line->first));
    } else if (first && --line.front()->missing_ == 0) {
      turns_.Ready(*line.front());
    }
  }

  ZnNameTurns& turns_;
  ZnSMBNFSCommand& command_;
  std::vector<Place> places_;
  size_t missing_ = 0;  // names that others have or wait for before it
};

ZnNameTurns::Result ZnNameTurns::Take(ZnSMBNFSCommand& command, std::vector<Name> names) {
  std::ranges::sort(names, [](const Name& a, const Name& b) {
    return std::pair(a.first, a.second.View()) < std::pair(b.first, b.second.View());
  });
  names.erase(std::unique(names.begin(), names.end()), names.end());
  for (const Name& name : names) {
    const auto line = lines_.find(name);
    if (line != lines_.end() && line->second.size() > kMostWaiting) return Result::TooMany;
  }
  auto turn = std::make_unique<Turn>(*this, command);
  for (const Name& name : names) turn->Enter(name);
  const bool there = turn->IsThere();
  command.names = std::move(turn);
  return there ? Result::There : Result::Waits;
}

// Commands that end at once tell the next ones: not from within each other, for there may be many.
void ZnNameTurns::Ready(Turn& turn) {
  ready_.push_back(&turn);
  if (telling_) return;
  telling_ = true;
  while (!ready_.empty()) {
    Turn* next = ready_.front();
    ready_.pop_front();
    go_(&next->command());
  }
  telling_ = false;
}
