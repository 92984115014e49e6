#include "smb/client/lanman_text.h"

#include "smb/wire/smb_visitors.h"

// Passed as an odd offset: these texts have no pad byte.
constexpr size_t kUnpadded = 1;

bool ZnDecodeLanmanString(ZnUniString& text, const ZnByteBuffer& data, uint32_t pointer, uint16_t converter,
                          ZnEncoding encoding) {
  auto low = static_cast<uint16_t>(pointer);
  if (low == 0) {
    text = ZnUniString();
    return true;
  }
  if (low < converter) return false;
  size_t position = low - converter;
  if (position > data.Length()) return false;
  ZnSmbReader in(data.Data() + position, data.Length() - position);
  return in.StringAt(text, encoding, kUnpadded);
}

ZnUniString ZnDecodeLanmanName(const ZnByteBuffer& field, ZnEncoding encoding) {
  ZnUniString text;
  ZnSmbReader in(field);
  in.StringAt(text, encoding, kUnpadded);
  return text;
}
