// GB 18030, which serves GB 2312 too, and Big5. What GB 18030 has above U+FFFF doesn't fit one character here, so it
// has no mapping.

#include "runtime/charmap_table.h"
#include "runtime/codeset_families.h"
#include "runtime/codeset_walk.h"

namespace {

using ErrorKind = ZnDecodedUnit::ErrorKind;

const CharmapTable Big5 = {kZnBig5Pairs, 0xA1, 0xF9, 0xA1, {}};
const CharmapTable gb18030 = {kZnGb18030Pairs, 0x81, 0xFE, 0x80, kZnGb18030Ranges};

bool Between(uint8_t byte, uint8_t first, uint8_t last) { return byte >= first && byte <= last; }

ZnEncodedUnit EncodeBy(const CharmapTable& table, char16_t unit) {
  ZnEncodedUnit code;
  code.count = static_cast<uint8_t>(table.Lookup(unit, code.bytes));
  return code;
}

ZnDecodedUnit DecodePair(const CharmapTable& table, const uint8_t* bytes) {
  char16_t unit = 0;
  bool found = table.Lookup2(static_cast<unsigned>(bytes[0] << 8 | bytes[1]), unit);
  return found ? ZnDecodedUnit::Good(unit, 2) : ZnDecodedUnit::Bad(ErrorKind::NoMapping, 2);
}

// Bytes up to 0x80 are single, though 0x80 itself means nothing.
ZnDecodedUnit DecodeSingle(uint8_t byte) {
  return byte < 0x80 ? ZnDecodedUnit::Good(byte) : ZnDecodedUnit::Bad(ErrorKind::NoMapping);
}

struct Big5Codec : ZnUnitCodecBase {
  ZnEncodedUnit Encode(char16_t unit) const { return EncodeBy(Big5, unit); }

  ZnDecodedUnit Decode(const uint8_t* bytes, size_t left) const {
    if (bytes[0] <= 0x80) return DecodeSingle(bytes[0]);
    if (!Between(bytes[0], 0xA1, 0xFE)) return ZnDecodedUnit::Bad(ErrorKind::InvalidLead);
    if (left < 2) return ZnDecodedUnit::Bad(ErrorKind::CutOff);
    if (!Between(bytes[1], 0x40, 0x7E) && !Between(bytes[1], 0x81, 0xFE)) {
      return ZnDecodedUnit::Bad(ErrorKind::InvalidTrail);
    }
    return DecodePair(Big5, bytes);
  }
};

struct Gb18030Codec : ZnUnitCodecBase {
  ZnEncodedUnit Encode(char16_t unit) const { return EncodeBy(gb18030, unit); }

  ZnDecodedUnit Decode(const uint8_t* bytes, size_t left) const {
    if (bytes[0] <= 0x80) return DecodeSingle(bytes[0]);
    if (bytes[0] > 0xFE) return ZnDecodedUnit::Bad(ErrorKind::InvalidLead);
    if (left < 2) return ZnDecodedUnit::Bad(ErrorKind::CutOff);
    if (Between(bytes[1], 0x30, 0x39)) return DecodeFour(bytes, left);
    if (!Between(bytes[1], 0x40, 0x7E) && !Between(bytes[1], 0x80, 0xFE)) {
      return ZnDecodedUnit::Bad(ErrorKind::InvalidTrail);
    }
    return DecodePair(gb18030, bytes);
  }

 private:
  static ZnDecodedUnit DecodeFour(const uint8_t* bytes, size_t left) {
    if (left > 2 && !Between(bytes[2], 0x81, 0xFE)) return ZnDecodedUnit::Bad(ErrorKind::InvalidTrail);
    if (left < 4) return ZnDecodedUnit::Bad(ErrorKind::CutOff, left);
    if (!Between(bytes[3], 0x30, 0x39)) return ZnDecodedUnit::Bad(ErrorKind::InvalidTrail);
    uint32_t sequence = 0;
    for (size_t i = 0; i < 4; i++) sequence = sequence << 8 | bytes[i];
    char16_t unit = 0;
    return gb18030.Lookup4(sequence, unit) ? ZnDecodedUnit::Good(unit, 4) : ZnDecodedUnit::Bad(ErrorKind::NoMapping, 4);
  }
};

}  // namespace

const ZnConverter& ZnBig5Converter() {
  static const ZnUnitConverter<Big5Codec> converter;
  return converter;
}

const ZnConverter& ZnGb18030Converter() {
  static const ZnUnitConverter<Gb18030Codec> converter;
  return converter;
}
