#pragma once
// What a call tells of the attributes that it sets: each is there, or to be left as it is.

#include <algorithm>
#include <optional>

#include "rpc/nfs_enum.h"
#include "rpc/nfs_records.h"
#include "runtime/time_val.h"

// Null is a call that sets nothing.
inline std::optional<uint32_t> ZnToldMode(const ZnNFSSattr* sattr) {
  if (!sattr || sattr->mode == ZnNFSEnum::kUnchanged) return std::nullopt;
  return sattr->mode;
}

// More microseconds than a second has count as its end.
inline std::optional<ZnTimeVal> ZnToldTime(const ZnNFSTimeVal& time) {
  if (time.seconds == ZnNFSEnum::kUnchanged) return std::nullopt;
  return ZnTimeVal{time.seconds, std::min(time.useconds, 999999U)};
}
inline std::optional<ZnTimeVal> ZnToldAccess(const ZnNFSSattr* sattr) {
  return sattr ? ZnToldTime(sattr->atime) : std::nullopt;
}
inline std::optional<ZnTimeVal> ZnToldModification(const ZnNFSSattr* sattr) {
  return sattr ? ZnToldTime(sattr->mtime) : std::nullopt;
}
