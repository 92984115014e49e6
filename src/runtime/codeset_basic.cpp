// US-ASCII and ISO-8859-1.

#include "runtime/codeset_families.h"
#include "runtime/codeset_walk.h"

namespace {

struct AsciiCodec : ZnUnitCodecBase {
  static constexpr bool kRecoverableKeepsBadBytes = true;

  ZnEncodedUnit Encode(char16_t unit) const {
    return unit >= 1 && unit <= 127 ? ZnEncodedUnit::Byte(unit) : ZnEncodedUnit();
  }
  ZnDecodedUnit Decode(const uint8_t* bytes, size_t) const {
    return bytes[0] < 128 ? ZnDecodedUnit::Good(bytes[0]) : ZnDecodedUnit::Bad(ZnDecodedUnit::ErrorKind::NoMapping);
  }
};

struct Latin1Codec : ZnUnitCodecBase {
  static constexpr bool kValidateToStopsAtError = true;

  ZnEncodedUnit Encode(char16_t unit) const { return unit < 256 ? ZnEncodedUnit::Byte(unit) : ZnEncodedUnit(); }
  ZnDecodedUnit Decode(const uint8_t* bytes, size_t) const { return ZnDecodedUnit::Good(bytes[0]); }
};

}  // namespace

const ZnConverter& ZnAsciiConverter() {
  static const ZnUnitConverter<AsciiCodec> converter;
  return converter;
}

const ZnConverter& ZnLatin1Converter() {
  static const ZnUnitConverter<Latin1Codec> converter;
  return converter;
}
