#pragma once
// The opaque handle of a file (RFC 1094, section 2.3.3): exactly 32 bytes, which mean something to their maker only.

#include <array>

#include "rpc/xdr.h"

struct ZnNFSFileHandle : ZnXdrRecord<ZnNFSFileHandle> {
  static constexpr size_t kSize = 32;

  std::array<uint8_t, kSize> bytes{};

  template <class Io>
  bool Fields(Io& io) {
    return io.Raw(bytes.data(), kSize);
  }
  bool operator==(const ZnNFSFileHandle&) const = default;
};
