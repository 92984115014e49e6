#include "tree/safe_name.h"

#include <algorithm>
#include <string_view>

#include "rpc/name_encoding.h"

namespace {

constexpr size_t kLongest = 255;

bool IsAscii(const ZnUniString& name) {
  return std::ranges::all_of(name.View(), [](char16_t unit) { return unit < 0x80; });
}

// Whether the bytes that a client gets can stand for an entry.
bool IsSafeForm(const ZnByteBuffer& form) {
  const std::string_view bytes(reinterpret_cast<const char*>(form.Data()), form.Length());
  if (bytes.empty() || bytes == "." || bytes == ".." || bytes.size() > kLongest) return false;
  return bytes.find_first_of(std::string_view("/\0", 2)) == bytes.npos;
}

}  // namespace

bool ZnLeavesDirectory(const ZnUniString& name) {
  if (name.IsEmpty() || name == "." || name == "..") return true;
  return std::ranges::any_of(name.View(), [](char16_t unit) { return unit == u'/' || unit == u'\\' || unit == 0; });
}

bool ZnIsTooLong(const ZnUniString& name) { return ZnEncodeRpcName(name).Length() > kLongest; }

bool ZnIsSafeName(const ZnUniString& name) {
  if (ZnLeavesDirectory(name)) return false;
  const ZnByteBuffer form = ZnEncodeRpcName(name);
  if (!IsSafeForm(form)) return false;
  ZnUniString again;
  return IsAscii(name) || (ZnDecodeRpcName(form.Data(), form.Length(), again) && again == name);
}
