#pragma once
// The 32 bytes by which an NFS client names a node. Only this process reads them: eight 32-bit words in host order, of
// which four are the top (a 64-bit number, one for each user, machine and share, and the epoch, 64 bits drawn at each
// start) and four the bottom (a counter of all nodes inside machines). A node of a share has its machine's top, so the
// top tells which session knows the handle; no path is kept in it. Handles of an earlier start bear another epoch, so
// none of them ever leads to a node of this one.

#include <array>
#include <bit>

#include "rpc/nfs_records.h"

class ZnSMBNFSHandle : public ZnNFSFileHandle {
 public:
  ZnSMBNFSHandle() = default;
  explicit ZnSMBNFSHandle(const ZnNFSFileHandle& handle) : ZnNFSFileHandle(handle) {}

  // Clears the bottom.
  void TopOnly();
  // True for the handles of levels 0 to 3: the bottom is all zero.
  bool InTop() const;
  // Adds one to the bottom counter: word 0 (the last four bytes) first, carrying as far as word 3.
  void IncBottom();
  // Takes over another handle's bottom.
  void TakeBottom(const ZnSMBNFSHandle& other);
  // Adds one to the top's number.
  void IncTop();
  // Replaces the epoch by a random one, which differs from the one before.
  void DrawEpoch();
};

template <>
struct std::hash<ZnSMBNFSHandle> {
  // Handles are counted up, and those of one directory mostly follow each other: so do their hashes, and what goes
  // through a directory finds them in one part of a table. Nobody else's handles are ever stored.
  size_t operator()(const ZnSMBNFSHandle& handle) const noexcept {
    uint64_t sum = 0;
    for (uint32_t word : std::bit_cast<std::array<uint32_t, 8>>(handle.bytes)) sum = sum * 0x9E3779B97F4A7C15 + word;
    return sum;
  }
};
