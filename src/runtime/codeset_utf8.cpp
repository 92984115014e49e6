// UTF-8 over single 16-bit units: a surrogate is encoded as if it were a character. Reading is tolerant, because fields
// that should hold UTF-8 often hold Latin-1: a byte that begins no sequence is the Latin-1 character of its value.

#include <algorithm>

#include "runtime/codeset_families.h"
#include "runtime/codeset_walk.h"

namespace {

constexpr size_t kRun = 16;  // units tested and copied at once while they are ASCII

size_t CodeLength(char16_t unit) { return unit < 0x80 ? 1 : unit < 0x800 ? 2 : 3; }

size_t Encode(char16_t unit, uint8_t* out) {
  size_t count = CodeLength(unit);
  if (count == 1) {
    out[0] = static_cast<uint8_t>(unit);
  } else if (count == 2) {
    out[0] = static_cast<uint8_t>(0xC0 | unit >> 6);
    out[1] = static_cast<uint8_t>(0x80 | (unit & 0x3F));
  } else {
    out[0] = static_cast<uint8_t>(0xE0 | unit >> 12);
    out[1] = static_cast<uint8_t>(0x80 | (unit >> 6 & 0x3F));
    out[2] = static_cast<uint8_t>(0x80 | (unit & 0x3F));
  }
  return count;
}

// The tolerant reading of the head of `left` bytes, at least one. Gives the bytes consumed, 0 for the rest of a cut
// sequence.
size_t Decode(const uint8_t* bytes, size_t left, char16_t& unit) {
  unsigned lead = bytes[0];
  unit = static_cast<char16_t>(lead);
  if (lead < 0x80) return 1;
  if (left == 1) return lead < 0xE0 ? 0 : 1;
  if (lead >= 0xC0 && lead < 0xE0 && bytes[1] >= 0x80) {
    unit = static_cast<char16_t>((lead & 0x1F) << 6 | (bytes[1] & 0x3F));
    return 2;
  }
  if (lead >= 0xE0 && lead < 0xF0 && left >= 3 && bytes[1] >= 0x80 && bytes[2] >= 0x80) {
    unit = static_cast<char16_t>((lead & 0xF) << 12 | (bytes[1] & 0x3FU) << 6 | (bytes[2] & 0x3FU));
    return 3;
  }
  return 1;
}

// Length of the well-formed sequence at the head of `left` bytes, 0 if there is none. Encoded surrogates are
// well-formed here.
size_t WellFormed(const uint8_t* bytes, size_t left) {
  if (bytes[0] < 0x80) return 1;
  char16_t unit = 0;
  size_t length = Decode(bytes, left, unit);
  if (length < 2 || CodeLength(unit) != length) return 0;
  for (size_t i = 1; i < length; i++) {
    if (bytes[i] >= 0xC0) return 0;
  }
  return length;
}

template <class T, class U>
bool CopyAsciiRun(const T* from, U* to) {
  unsigned all = 0;
  for (size_t i = 0; i < kRun; i++) all |= from[i];
  if (all >= 0x80) return false;
  for (size_t i = 0; i < kRun; i++) to[i] = static_cast<U>(from[i]);
  return true;
}

class Utf8Converter final : public ZnConverter {
 public:
  ZnByteBuffer To(const ZnUniString& text, unsigned) const override {
    std::u16string_view units = text.View();
    ZnOutput<uint8_t> out;
    for (size_t i = 0; i < units.size();) {
      uint8_t* room = out.Room(3 * kRun);
      if (units.size() - i >= kRun && CopyAsciiRun(units.data() + i, room)) {
        out.Used(kRun);
        i += kRun;
        continue;
      }
      size_t used = 0;
      for (size_t end = std::min(units.size(), i + kRun); i < end; i++) used += Encode(units[i], room + used);
      out.Used(used);
    }
    return out.Take();
  }

  ZnUniString From(const uint8_t* bytes, size_t length, unsigned) const override {
    ZnOutput<char16_t> out;
    for (size_t i = 0; i < length;) {
      char16_t* room = out.Room(kRun);
      if (length - i >= kRun && CopyAsciiRun(bytes + i, room)) {
        out.Used(kRun);
        i += kRun;
        continue;
      }
      size_t used = 0;
      while (used < kRun && i < length) {
        size_t consumed = Decode(bytes + i, length - i, room[used]);
        if (consumed == 0) break;
        i += consumed;
        used++;
      }
      out.Used(used);
      if (used < kRun) break;  // the end, or a cut sequence at it
    }
    return ZnUniString::FromUnits(out.Take());
  }

  void ValidateTo(const ZnUniString& text, ValidationInfo& info, unsigned) const override {
    for (char16_t unit : text.View()) info.bytes += CodeLength(unit);
    info.characters += text.Length();
  }

  void ValidateFrom(const uint8_t* bytes, size_t length, ValidationInfo& info, unsigned) const override {
    for (size_t i = 0; i < length;) {
      size_t count = WellFormed(bytes + i, length - i);
      if (count > 0) {
        info.characters++;
        i += count;
        continue;
      }
      info.errors.Append({i, bytes[i], ZnCodesetConverter::ErrorKind::InvalidTrail});
      i++;
    }
    info.bytes += length;
  }
};

}  // namespace

const ZnConverter& ZnUtf8Converter() {
  static const Utf8Converter converter;
  return converter;
}
