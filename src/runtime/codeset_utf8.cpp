// UTF-8 (RFC 3629): a pair of surrogates is one sequence of four bytes, a surrogate alone has no code. Reading is
// tolerant, because fields that should hold UTF-8 often hold Latin-1: a byte that begins no sequence is the Latin-1
// character of its value. Validation isn't.

#include <algorithm>

#include "runtime/codeset_families.h"
#include "runtime/codeset_walk.h"

namespace {

constexpr size_t kRun = 16;         // units tested and copied at once while they are ASCII
constexpr size_t kLongestCode = 5;  // of a unit: an escape
constexpr uint32_t kBeyondUnits = 0x10000;
constexpr uint32_t kLargest = 0x10FFFF;

bool IsHighSurrogate(uint32_t unit) { return unit >= 0xD800 && unit < 0xDC00; }
bool IsLowSurrogate(uint32_t unit) { return unit >= 0xDC00 && unit < 0xE000; }
bool IsSurrogate(uint32_t unit) { return IsHighSurrogate(unit) || IsLowSurrogate(unit); }

size_t CodeLength(uint32_t character) {
  return character < 0x80 ? 1 : character < 0x800 ? 2 : character < kBeyondUnits ? 3 : 4;
}

// The character at the head of `units`; a surrogate alone is one of its own value. Gives the units it takes.
size_t NextCharacter(std::u16string_view units, uint32_t& character) {
  character = units[0];
  if (!IsHighSurrogate(character) || units.size() < 2 || !IsLowSurrogate(units[1])) return 1;
  character = kBeyondUnits + ((character - 0xD800) << 10) + (units[1] - 0xDC00U);
  return 2;
}

// The code of a character, or its escape; gives the bytes written, at most kLongestCode, 0 for what has none.
size_t Encode(uint32_t character, unsigned options, uint8_t* out) {
  const bool recoverable = options & ZnCodeset::Recoverable;
  if (IsSurrogate(character)) {
    if (!recoverable) return 0;
    size_t digits = 0;
    out[0] = ZnCodesetConverter::recoverchar;
    ZnCodesetConverter::MakeRecover(static_cast<char16_t>(character), out + 1, digits);
    return 1 + digits;
  }
  const size_t count = CodeLength(character);
  if (count == 1) {
    out[0] = out[1] = static_cast<uint8_t>(character);
    return recoverable && out[0] == ZnCodesetConverter::recoverchar ? 2 : 1;
  }
  constexpr uint8_t kLeads[] = {0xC0, 0xE0, 0xF0};
  for (size_t i = count - 1; i > 0; i--, character >>= 6) out[i] = static_cast<uint8_t>(0x80 | (character & 0x3F));
  out[0] = static_cast<uint8_t>(kLeads[count - 2] | character);
  return count;
}

// The tolerant reading of the head of `left` bytes, at least one. Gives the bytes consumed, 0 for the rest of a cut
// sequence.
size_t Decode(const uint8_t* bytes, size_t left, uint32_t& character) {
  const unsigned lead = bytes[0];
  auto trail = [&](size_t i) { return bytes[i] & 0x3FU; };
  character = lead;
  if (lead < 0x80) return 1;
  if (left == 1) return lead < 0xE0 ? 0 : 1;
  if (lead >= 0xC0 && lead < 0xE0 && bytes[1] >= 0x80) {
    character = (lead & 0x1F) << 6 | trail(1);
    return 2;
  }
  if (lead >= 0xE0 && lead < 0xF0 && left >= 3 && bytes[1] >= 0x80 && bytes[2] >= 0x80) {
    character = (lead & 0xF) << 12 | trail(1) << 6 | trail(2);
    return 3;
  }
  if (lead < 0xF0 || left < 4) return 1;
  const uint32_t beyond = (lead & 0x7) << 18 | trail(1) << 12 | trail(2) << 6 | trail(3);
  const bool trails = std::all_of(bytes + 1, bytes + 4, [](uint8_t byte) { return byte >= 0x80 && byte < 0xC0; });
  if (!trails || lead > 0xF4 || beyond < kBeyondUnits || beyond > kLargest) return 1;
  character = beyond;
  return 4;
}

// The same, where escapes count.
size_t DecodeNext(const uint8_t* bytes, size_t left, unsigned options, uint32_t& character) {
  const bool escape = (options & ZnCodeset::Recoverable) && bytes[0] == ZnCodesetConverter::recoverchar && left > 1;
  if (!escape) return Decode(bytes, left, character);
  character = bytes[0];
  if (bytes[1] == bytes[0]) return 2;
  size_t position = 1;
  char16_t unit = 0;
  if (ZnCodesetConverter::Recover(bytes, left, position, unit)) character = unit;
  return position;
}

// Length of the well-formed sequence at the head of `left` bytes, 0 if there is none.
size_t WellFormed(const uint8_t* bytes, size_t left, unsigned options) {
  uint32_t character = 0;
  const size_t length = DecodeNext(bytes, left, options, character);
  if (bytes[0] < 0x80) return length;
  if (length < 2 || CodeLength(character) != length || IsSurrogate(character)) return 0;
  return std::all_of(bytes + 1, bytes + length, [](uint8_t byte) { return byte < 0xC0; }) ? length : 0;
}

// Appends a character to units; gives their number.
size_t PutUnits(uint32_t character, char16_t* units) {
  if (character < kBeyondUnits) {
    units[0] = static_cast<char16_t>(character);
    return 1;
  }
  units[0] = static_cast<char16_t>(0xD800 + ((character - kBeyondUnits) >> 10));
  units[1] = static_cast<char16_t>(0xDC00 + (character & 0x3FF));
  return 2;
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
  ZnByteBuffer To(const ZnUniString& text, unsigned options) const override {
    std::u16string_view units = text.View();
    const bool plain = !(options & ZnCodeset::Recoverable);
    ZnOutput<uint8_t> out;
    while (!units.empty()) {
      uint8_t* room = out.Room(kLongestCode * kRun);
      if (plain && units.size() >= kRun && CopyAsciiRun(units.data(), room)) {
        out.Used(kRun);
        units.remove_prefix(kRun);
        continue;
      }
      size_t used = 0;
      for (size_t i = 0; i < kRun && !units.empty(); i++) {
        uint32_t character = 0;
        units.remove_prefix(NextCharacter(units, character));
        used += Encode(character, options, room + used);
      }
      out.Used(used);
    }
    return out.Take();
  }

  ZnUniString From(const uint8_t* bytes, size_t length, unsigned options) const override {
    const bool plain = !(options & ZnCodeset::Recoverable);
    ZnOutput<char16_t> out;
    for (size_t i = 0; i < length;) {
      char16_t* room = out.Room(kRun);
      if (plain && length - i >= kRun && CopyAsciiRun(bytes + i, room)) {
        out.Used(kRun);
        i += kRun;
        continue;
      }
      size_t used = 0;
      bool cut = false;
      while (used + 1 < kRun && i < length && !cut) {
        uint32_t character = 0;
        const size_t consumed = DecodeNext(bytes + i, length - i, options, character);
        cut = consumed == 0;
        if (cut) break;
        i += consumed;
        used += PutUnits(character, room + used);
      }
      out.Used(used);
      if (cut) break;
    }
    return ZnUniString::FromUnits(out.Take());
  }

  void ValidateTo(const ZnUniString& text, ValidationInfo& info, unsigned options) const override {
    uint8_t code[kLongestCode];
    for (std::u16string_view units = text.View(); !units.empty();) {
      uint32_t character = 0;
      const size_t position = text.Length() - units.size();
      const size_t taken = NextCharacter(units, character);
      const size_t count = Encode(character, options, code);
      if (count == 0) info.errors.Append({position, character, ZnCodesetConverter::ErrorKind::NoMapping});
      info.characters += taken;
      info.bytes += count;
      units.remove_prefix(taken);
    }
  }

  void ValidateFrom(const uint8_t* bytes, size_t length, ValidationInfo& info, unsigned options) const override {
    for (size_t i = 0; i < length;) {
      const size_t count = WellFormed(bytes + i, length - i, options);
      if (count > 0) {
        info.characters += bytes[i] >= 0xF0 ? 2 : 1;
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
