// The sets of one byte a character: code pages, KOI8-R, TIS-620, and the EBCDIC ones, which aren't ASCII in their lower
// half.

#include <vector>

#include "runtime/codeset_families.h"
#include "runtime/codeset_tables.h"
#include "runtime/codeset_walk.h"

namespace {

struct SingleByteCodec : ZnUnitCodecBase {
  const ZnSingleByteTable* table = nullptr;

  ZnEncodedUnit Encode(char16_t unit) const {
    if (unit < 128 && table->asciiCompatible) return ZnEncodedUnit::Byte(unit);
    size_t index = ZnFindUnit(table->units, unit);
    return index < table->codes.size() ? ZnEncodedUnit::Byte(table->codes[index]) : ZnEncodedUnit();
  }

  ZnDecodedUnit Decode(const uint8_t* bytes, size_t) const {
    size_t index = bytes[0];
    if (table->asciiCompatible) {
      if (index < 128) return ZnDecodedUnit::Good(bytes[0]);
      index -= 128;
    }
    return ZnDecodedUnit::FromTable(table->decode[index]);
  }
};

std::vector<ZnUnitConverter<SingleByteCodec>> MakeConverters() {
  std::vector<ZnUnitConverter<SingleByteCodec>> converters;
  for (const ZnSingleByteTable& table : kZnSingleByteTables) {
    SingleByteCodec codec;
    codec.table = &table;
    converters.emplace_back(codec);
  }
  return converters;
}

}  // namespace

const ZnConverter* ZnSingleByteConverter(ZnEncoding encoding) {
  static const std::vector<ZnUnitConverter<SingleByteCodec>> converters = MakeConverters();
  for (size_t i = 0; i < converters.size(); i++) {
    if (kZnSingleByteTables[i].encoding == encoding) return &converters[i];
  }
  return nullptr;
}
