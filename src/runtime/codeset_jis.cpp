// The Japanese sets. All three write JIS X 0208 in their own way, and the half-width katakana of JIS X 0201.
// ISO-2022-JP is the bare code here, without any escape sequence: its two-byte characters can't be told from ASCII, and
// reading takes them as ASCII.

#include "runtime/codeset_families.h"
#include "runtime/codeset_tables.h"
#include "runtime/codeset_walk.h"

namespace {

using ErrorKind = ZnDecodedUnit::ErrorKind;

constexpr char16_t kFirstKatakana = 0xFF61;  // code A1; the last, FF9F, is DF
constexpr uint8_t kKatakanaLead = 0x8E;      // in EUC-JP

bool IsKatakanaCode(unsigned byte) { return byte >= 0xA1 && byte <= 0xDF; }

unsigned KatakanaCode(char16_t unit) {
  unsigned code = unit - kFirstKatakana + 0xA1U;
  return unit >= kFirstKatakana && code <= 0xDF ? code : 0;
}

ZnDecodedUnit Katakana(uint8_t code, size_t consumed) {
  return ZnDecodedUnit::Good(static_cast<unsigned>(kFirstKatakana + (code - 0xA1)), consumed);
}

unsigned ConvertSJISToEUC(unsigned code) {
  unsigned high = code >> 8, low = code & 0xFF;
  bool odd = low < 0x9F;  // the first of the two rows that share a lead byte
  unsigned row = (high + (high < 0xA0 ? 0x90 : 0x50)) * 2 - (odd ? 1 : 0);
  unsigned column = odd ? low - (low < 0x80 ? 0x1F : 0x20) : low - 0x7E;
  return (row & 0xFF) << 8 | column | 0x8080;
}

unsigned ConvertEUCToSJIS(unsigned code) {
  unsigned row = code >> 8 & 0x7F, column = code & 0x7F;
  unsigned high = (row + 1) / 2 + (row < 0x5F ? 0x70 : 0xB0);
  unsigned low = row % 2 == 0 ? column + 0x7E : column + (column < 0x60 ? 0x1F : 0x20);
  return high << 8 | low;
}

// The seven-bit code of a character, or 0.
unsigned ToJIS(char16_t unit) {
  size_t index = ZnFindUnit(kZnJisPairs.units, unit);
  return index < kZnJisPairs.codes.size() ? kZnJisPairs.codes[index] : 0;
}

ZnDecodedUnit FromEUC(unsigned code) {
  constexpr unsigned kColumns = 94;
  unsigned row = (code >> 8) - 0xA1, column = (code & 0xFF) - 0xA1;
  if (row >= kColumns || column >= kColumns) return ZnDecodedUnit::Bad(ErrorKind::NoMapping, 2);
  return ZnDecodedUnit::FromTable(kZnJisPairs.grid[row * kColumns + column], 2);
}

struct SjisCodec : ZnUnitCodecBase {
  ZnEncodedUnit Encode(char16_t unit) const {
    if (unit < 128) return ZnEncodedUnit::Byte(unit);
    if (unsigned katakana = KatakanaCode(unit)) return ZnEncodedUnit::Byte(katakana);
    unsigned jis = ToJIS(unit);
    return jis ? ZnEncodedUnit::Pair(ConvertEUCToSJIS(jis)) : ZnEncodedUnit();
  }

  ZnDecodedUnit Decode(const uint8_t* bytes, size_t left) const {
    unsigned lead = bytes[0];
    if (lead < 128) return ZnDecodedUnit::Good(lead);
    if (IsKatakanaCode(lead)) return Katakana(bytes[0], 1);
    if (lead == 0x80 || lead == 0xA0 || lead > 0xFC) return ZnDecodedUnit::Bad(ErrorKind::InvalidLead);
    if (left < 2) return ZnDecodedUnit::Bad(ErrorKind::CutOff);
    unsigned trail = bytes[1];
    if (trail < 0x40 || trail == 0x7F || trail > 0xFC) return ZnDecodedUnit::Bad(ErrorKind::InvalidTrail);
    if (lead > 0xEF) return ZnDecodedUnit::Bad(ErrorKind::NoMapping, 2);  // rows beyond the 94 of the set
    return FromEUC(ConvertSJISToEUC(lead << 8 | trail));
  }
};

struct EucCodec : ZnUnitCodecBase {
  ZnEncodedUnit Encode(char16_t unit) const {
    if (unit < 128) return ZnEncodedUnit::Byte(unit);
    if (unsigned katakana = KatakanaCode(unit)) return ZnEncodedUnit::Pair(kKatakanaLead << 8 | katakana);
    unsigned jis = ToJIS(unit);
    return jis ? ZnEncodedUnit::Pair(jis | 0x8080) : ZnEncodedUnit();
  }

  ZnDecodedUnit Decode(const uint8_t* bytes, size_t left) const {
    unsigned lead = bytes[0];
    if (lead < 128) return ZnDecodedUnit::Good(lead);
    if (lead != kKatakanaLead && (lead < 0xA1 || lead > 0xFE)) return ZnDecodedUnit::Bad(ErrorKind::InvalidLead);
    if (left < 2) return ZnDecodedUnit::Bad(ErrorKind::CutOff);
    unsigned trail = bytes[1];
    if (lead == kKatakanaLead && IsKatakanaCode(trail)) return Katakana(bytes[1], 2);
    if (lead == kKatakanaLead || trail < 0xA1 || trail > 0xFE) return ZnDecodedUnit::Bad(ErrorKind::InvalidTrail);
    return FromEUC(lead << 8 | trail);
  }
};

struct JisCodec : ZnUnitCodecBase {
  ZnEncodedUnit Encode(char16_t unit) const {
    if (unit < 128) return ZnEncodedUnit::Byte(unit);
    if (unsigned katakana = KatakanaCode(unit)) return ZnEncodedUnit::Byte(katakana);
    unsigned jis = ToJIS(unit);
    return jis ? ZnEncodedUnit::Pair(jis) : ZnEncodedUnit();
  }

  ZnDecodedUnit Decode(const uint8_t* bytes, size_t) const {
    if (bytes[0] < 128) return ZnDecodedUnit::Good(bytes[0]);
    return IsKatakanaCode(bytes[0]) ? Katakana(bytes[0], 1) : ZnDecodedUnit::Bad(ErrorKind::InvalidLead);
  }
};

}  // namespace

const ZnConverter& ZnShiftJisConverter() {
  static const ZnUnitConverter<SjisCodec> converter;
  return converter;
}

const ZnConverter& ZnEucJpConverter() {
  static const ZnUnitConverter<EucCodec> converter;
  return converter;
}

const ZnConverter& ZnIso2022JpConverter() {
  static const ZnUnitConverter<JisCodec> converter;
  return converter;
}
