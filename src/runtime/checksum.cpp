#include "runtime/checksum.h"

#include <array>

namespace {

constexpr uint32_t kPolynomial = 0x04C11DB7;

constexpr std::array<uint32_t, 256> MakeTable() {
  std::array<uint32_t, 256> table{};
  for (uint32_t i = 0; i < table.size(); i++) {
    uint32_t crc = i << 24;
    for (int bit = 0; bit < 8; bit++) crc = crc << 1 ^ (crc & 0x80000000 ? kPolynomial : 0);
    table[i] = crc;
  }
  return table;
}

constexpr std::array<uint32_t, 256> kTable = MakeTable();

class Crc {
 public:
  void Add(uint8_t byte) { crc_ = crc_ << 8 ^ kTable[crc_ >> 24 ^ byte]; }
  // The length goes in behind the data, low byte first, without leading zeros.
  uint32_t Finish(size_t length) {
    for (; length != 0; length >>= 8) Add(static_cast<uint8_t>(length));
    return crc_;
  }

 private:
  uint32_t crc_ = 0;
};

// The values that stand for these names alone.
constexpr uint32_t kDot = 1;
constexpr uint32_t kDotDot = 2;
constexpr uint32_t kEmpty = 3;

template <class Fold>
uint32_t SumUnits(std::u16string_view text, Fold fold) {
  if (text == u".") return kDot;
  if (text == u"..") return kDotDot;
  if (text.empty()) return kEmpty;
  Crc crc;
  for (char16_t unit : text) {
    char16_t folded = fold(unit);
    crc.Add(static_cast<uint8_t>(folded));
    crc.Add(static_cast<uint8_t>(folded >> 8));
  }
  uint32_t sum = crc.Finish(text.size());
  return sum <= kDotDot ? sum + 3 : sum;
}

}  // namespace

uint32_t ZnCheckSum::Sum(const ZnByteBuffer& bytes) {
  Crc crc;
  for (size_t i = 0; i < bytes.Length(); i++) crc.Add(bytes[i]);
  return crc.Finish(bytes.Length());
}

uint32_t ZnCheckSum::Sum(const ZnUniString& text) {
  return SumUnits(text.View(), [](char16_t unit) { return unit; });
}

uint32_t ZnCheckSum::SumCaseless(const ZnUniString& text) { return SumUnits(text.View(), ZnUniString::Lower); }
