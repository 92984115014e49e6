#pragma once
// How large a server's disk is, as a share shows it.

#include <cstdint>

struct ZnSMBDiskSpace {
  uint64_t total = 0;  // bytes; 0 while nothing is known
  uint64_t free = 0;   // bytes
};
