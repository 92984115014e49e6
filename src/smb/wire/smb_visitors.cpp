#include "smb/wire/smb_visitors.h"

#include <algorithm>

namespace {

// Length in bytes of the text that begins at `bytes`: up to its terminator, or all `length` bytes in whole characters.
size_t TextLength(const uint8_t* bytes, size_t length, size_t unit) {
  for (size_t i = 0; i + unit <= length; i += unit) {
    if (std::all_of(bytes + i, bytes + i + unit, [](uint8_t byte) { return byte == 0; })) return i;
  }
  return length - length % unit;
}

}  // namespace

bool ZnSmbReader::Scan(ZnUniString& text, ZnEncoding encoding, size_t offset, size_t limit) {
  if (!Ok()) return false;
  text = ZnUniString();
  size_t unit = encoding == ZnCodeset::Utf16Lsb ? 2 : 1;
  if (unit == 2 && offset % 2 == 0 && Remaining() > 0) Reserved(1);
  size_t bounded = std::min(limit, Remaining());
  size_t length = TextLength(Where(), bounded, unit);
  if (length > 0) text = ZnUniString::CreateFrom(Where(), length, encoding);
  const bool ascii = std::all_of(Where(), Where() + length, [](uint8_t byte) { return byte < 0x80; });
  if (unit == 1 && !ascii && text.AsEncoding(encoding) != ZnByteBuffer(Where(), length)) whole_ = false;
  bool terminated = length + unit <= bounded;
  return Reserved(terminated ? length + unit : length);
}
