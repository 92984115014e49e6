#include "runtime/host_text.h"

std::optional<ZnByteBuffer> ZnHostText(const ZnUniString& text, ZnEncoding encoding, unsigned options) {
  if (text.Search(0) != ZnUniString::kNotFound) return std::nullopt;
  ZnByteBuffer bytes = text.AsEncoding(encoding, options);
  if (ZnUniString::CreateFrom(bytes, encoding, options) != text) return std::nullopt;
  return bytes;
}
