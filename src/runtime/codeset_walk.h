#pragma once
// The walk over text or bytes that is common to all encodings in which one character is one sequence of at most four
// bytes. A codec states only how one character is encoded and how one sequence is decoded; the escapes of recoverable
// conversions, dropping, counting and reporting happen here.

#include <concepts>
#include <cstring>
#include <utility>

#include "runtime/codeset_converter.h"
#include "runtime/codeset_tables.h"

// Collects output in a small array before it goes to the buffer: a short text costs one exact allocation.
template <class T>
class ZnOutput {
 public:
  static constexpr size_t kRoom = 512;

  ZnOutput() = default;
  ZnOutput(const ZnOutput&) = delete;
  ZnOutput& operator=(const ZnOutput&) = delete;

  void Put(T value) {
    *Room(1) = value;
    Used(1);
  }
  // Room for `count` values, at most kRoom; Used tells how many were written there.
  T* Room(size_t count) {
    if (kRoom - used_ < count) Flush();
    return chunk_ + used_;
  }
  void Used(size_t count) { used_ += count; }
  // All that was put; a null buffer when that is nothing.
  ZnByteBuffer Take() {
    Flush();
    return std::move(buffer_);
  }

 private:
  void Flush() {
    buffer_.Append(chunk_, used_ * sizeof(T));
    explicit_bzero(chunk_, used_ * sizeof(T));  // it may have been a password
    used_ = 0;
  }

  ZnByteBuffer buffer_;
  size_t used_ = 0;
  T chunk_[kRoom];
};

// The code of one character; count 0 when it has none.
struct ZnEncodedUnit {
  uint8_t count = 0;
  uint8_t bytes[4] = {};

  static ZnEncodedUnit Byte(unsigned value) { return {1, {static_cast<uint8_t>(value)}}; }
  static ZnEncodedUnit Pair(unsigned value) {
    return {2, {static_cast<uint8_t>(value >> 8), static_cast<uint8_t>(value)}};
  }
};

// What stands at the head of some bytes: a character, or why there is none. At least one byte is consumed.
struct ZnDecodedUnit {
  using ErrorKind = ZnCodesetConverter::ErrorKind;

  size_t consumed = 1;
  bool good = false;
  char16_t unit = 0;
  ErrorKind error = ErrorKind::NoMapping;

  static ZnDecodedUnit Good(unsigned unit, size_t consumed = 1) {
    return {consumed, true, static_cast<char16_t>(unit), ErrorKind::NoMapping};
  }
  // What a decoding table has for a code.
  static ZnDecodedUnit FromTable(char16_t unit, size_t consumed = 1) {
    return unit == kZnNoUnit ? Bad(ErrorKind::NoMapping, consumed) : Good(unit, consumed);
  }
  static ZnDecodedUnit Bad(ErrorKind error, size_t consumed = 1) { return {consumed, false, 0, error}; }
};

struct ZnUnitCodecBase {
  // A recoverable conversion keeps a byte without a meaning as the character of its value.
  static constexpr bool kRecoverableKeepsBadBytes = false;
  // ValidateTo ends at the first character that would be dropped.
  static constexpr bool kValidateToStopsAtError = false;
};

// `Encode` gives the code of a character; `Decode` reads the head of `remaining` bytes, at least one.
template <class C>
concept ZnUnitCodec = std::derived_from<C, ZnUnitCodecBase> &&
    requires(const C& codec, char16_t unit, const uint8_t* bytes, size_t n) {
  { codec.Encode(unit) } -> std::same_as<ZnEncodedUnit>;
  { codec.Decode(bytes, n) } -> std::same_as<ZnDecodedUnit>;
};

template <ZnUnitCodec Codec>
class ZnUnitConverter final : public ZnConverter {
 public:
  ZnUnitConverter() = default;
  explicit ZnUnitConverter(const Codec& codec) : codec_(codec) {}

  ZnByteBuffer To(const ZnUniString& text, unsigned options) const override {
    ZnOutput<uint8_t> out;
    for (char16_t unit : text.View()) out.Used(EncodeNext(unit, options, out.Room(kLongestCode)));
    return out.Take();
  }

  ZnUniString From(const uint8_t* bytes, size_t length, unsigned options) const override {
    ZnOutput<char16_t> out;
    for (size_t position = 0; position < length;) {
      ZnDecodedUnit next = DecodeNext(bytes + position, length - position, options);
      if (next.good) {
        out.Put(next.unit);
      } else if (Codec::kRecoverableKeepsBadBytes && (options & ZnCodeset::Recoverable)) {
        out.Put(bytes[position]);
      }
      position += next.consumed;
    }
    return ZnUniString::FromUnits(out.Take());
  }

  void ValidateTo(const ZnUniString& text, ValidationInfo& info, unsigned options) const override {
    uint8_t code[kLongestCode];
    for (size_t i = 0; i < text.Length(); i++) {
      size_t count = EncodeNext(text[i], options, code);
      info.characters++;
      info.bytes += count;
      if (count > 0) continue;
      info.errors.Append({i, text[i], ZnCodesetConverter::ErrorKind::NoMapping});
      if (Codec::kValidateToStopsAtError) return;
    }
  }

  void ValidateFrom(const uint8_t* bytes, size_t length, ValidationInfo& info, unsigned options) const override {
    for (size_t position = 0; position < length;) {
      ZnDecodedUnit next = DecodeNext(bytes + position, length - position, options);
      if (next.good) {
        info.characters++;
      } else {
        uint32_t value = 0;
        for (size_t i = 0; i < next.consumed; i++) value = value << 8 | bytes[position + i];
        info.errors.Append({position, value, next.error});
      }
      position += next.consumed;
    }
    info.bytes += length;
  }

 private:
  static constexpr size_t kLongestCode = 5;  // an escape

  size_t EncodeNext(char16_t unit, unsigned options, uint8_t* out) const {
    ZnEncodedUnit code = codec_.Encode(unit);
    for (size_t i = 0; i < code.count; i++) out[i] = code.bytes[i];
    if (!(options & ZnCodeset::Recoverable)) return code.count;
    if (code.count == 0) {
      size_t digits = 0;
      out[0] = ZnCodesetConverter::recoverchar;
      ZnCodesetConverter::MakeRecover(unit, out + 1, digits);
      return 1 + digits;
    }
    if (code.count > 1 || out[0] != ZnCodesetConverter::recoverchar) return code.count;
    out[1] = out[0];
    return 2;
  }

  ZnDecodedUnit DecodeNext(const uint8_t* bytes, size_t remaining, unsigned options) const {
    bool escape = (options & ZnCodeset::Recoverable) && bytes[0] == ZnCodesetConverter::recoverchar && remaining > 1;
    if (!escape) return codec_.Decode(bytes, remaining);
    if (bytes[1] == bytes[0]) {
      ZnDecodedUnit itself = codec_.Decode(bytes, 1);
      itself.consumed = 2;
      return itself;
    }
    size_t position = 1;
    char16_t unit = 0;
    if (ZnCodesetConverter::Recover(bytes, remaining, position, unit)) return ZnDecodedUnit::Good(unit, position);
    return codec_.Decode(bytes, 1);
  }

  Codec codec_;
};
