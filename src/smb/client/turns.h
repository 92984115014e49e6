#pragma once
// Who goes next: of one caller the first that came, of several callers one each in turn. A look costs the same however
// many wait.

#include <deque>
#include <unordered_map>

#include "smb/client/exchange.h"

class ZnSmbTurns {
 public:
  void Push(ZnSmbCaller caller, ZnSmbExchangeId id) {
    auto& line = lines_[caller];
    if (line.empty()) callers_.push_back(caller);
    line.push_back(id);
  }
  // 0 when nobody waits.
  ZnSmbExchangeId Pop() {
    if (callers_.empty()) return 0;
    const auto line = lines_.find(callers_.front());
    callers_.pop_front();
    const ZnSmbExchangeId next = line->second.front();
    line->second.pop_front();
    if (!line->second.empty()) {
      callers_.push_back(line->first);
    } else if (lines_.size() > kMostIdleLines) {
      lines_.erase(line);
    }
    return next;
  }

 private:
  // Empty lines are kept up to so many, since their callers will be back.
  static constexpr size_t kMostIdleLines = 64;

  std::unordered_map<ZnSmbCaller, std::deque<ZnSmbExchangeId>> lines_;
  std::deque<ZnSmbCaller> callers_;  // those whose lines aren't empty
};
