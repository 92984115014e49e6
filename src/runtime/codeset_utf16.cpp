// UTF-16 in both byte orders and in the host's. A mark of the other order at the head turns the reading round and is
// taken off; a mark of the own order stays in the text as U+FEFF.

#include <bit>

#include "runtime/codeset_families.h"
#include "runtime/codeset_walk.h"

namespace {

constexpr char16_t kMark = 0xFEFF;
constexpr char16_t kSwappedMark = 0xFFFE;

char16_t Swapped(char16_t unit) { return static_cast<char16_t>(unit << 8 | unit >> 8); }

class Utf16Converter final : public ZnConverter {
 public:
  explicit Utf16Converter(std::endian order) : swap_(order != std::endian::native) {}

  ZnByteBuffer To(const ZnUniString& text, unsigned options) const override {
    bool mark = options & ZnCodeset::AddByteOrderMarker;
    if (!mark && text.IsEmpty()) return {};
    if (!mark && !swap_) return text.Bytes();
    ZnByteBuffer result;
    result.Reserve(2 * (text.Length() + 1));
    if (mark) result.Append(&kMark, 2);
    result.Append(text.Bytes());
    if (swap_) SwapUnits(result);
    return result;
  }

  ZnUniString From(const uint8_t* bytes, size_t length, unsigned) const override {
    length -= length % 2;
    if (length == 0) return {};
    bool swap = swap_;
    char16_t first = static_cast<char16_t>(bytes[0] | bytes[1] << 8);
    if constexpr (std::endian::native == std::endian::big) first = Swapped(first);
    if ((swap ? Swapped(first) : first) == kSwappedMark) {
      swap = !swap;
      bytes += 2;
      length -= 2;
    }
    ZnByteBuffer units(bytes, length);
    if (swap) SwapUnits(units);
    return ZnUniString::FromUnits(std::move(units));
  }

  void ValidateTo(const ZnUniString& text, ValidationInfo& info, unsigned) const override {
    info.characters += text.Length();
    info.bytes += 2 * text.Length();
  }

  void ValidateFrom(const uint8_t* bytes, size_t length, ValidationInfo& info, unsigned) const override {
    info.characters += length / 2;
    info.bytes += length;
    if (length % 2 == 0) return;
    info.errors.Append({length - 1, bytes[length - 1], ZnCodesetConverter::ErrorKind::CutOff});
  }

 private:
  static void SwapUnits(ZnByteBuffer& units) {
    if (units.IsEmpty()) return;
    uint8_t* bytes = units.Writable();
    for (size_t i = 0; i + 1 < units.Length(); i += 2) std::swap(bytes[i], bytes[i + 1]);
  }

  bool swap_;
};

}  // namespace

const ZnConverter& ZnUtf16MsbConverter() {
  static const Utf16Converter converter(std::endian::big);
  return converter;
}

const ZnConverter& ZnUtf16LsbConverter() {
  static const Utf16Converter converter(std::endian::little);
  return converter;
}

const ZnConverter& ZnUtf16LocalConverter() {
  static const Utf16Converter converter(std::endian::native);
  return converter;
}
