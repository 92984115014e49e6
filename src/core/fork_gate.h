#pragma once
// Keeps a parent waiting until its child has got through its own start, so that the parent's exit code can tell whether
// there is a daemon. Made before the fork, used on both sides of it.

#include <array>

class ZnForkGate {
 public:
  ZnForkGate();

  // In the parent: true once the child has called Open, false if it ended without.
  bool AwaitChild();
  // In the child, or in a process that couldn't fork.
  void Open();

 private:
  std::array<int, 2> pipe_{-1, -1};
};
