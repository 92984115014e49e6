#include "tree/safe_name.h"

#include <algorithm>

#include "rpc/xdr.h"

bool ZnLeavesDirectory(const ZnUniString& name) {
  if (name.IsEmpty() || name == "." || name == "..") return true;
  return std::ranges::any_of(name.View(), [](char16_t unit) { return unit == u'/' || unit == u'\\' || unit == 0; });
}

bool ZnIsTooLong(const ZnUniString& name) {
  constexpr size_t kLongest = 255;
  return name.AsEncoding(ZnRPCString::rpcenc, ZnRPCString::rpcopt).Length() > kLongest;
}
