#include "runtime/charmap_table.h"

#include <iterator>

namespace {

constexpr uint8_t kDigits = 10;  // values of the second and fourth byte, from 30
constexpr uint8_t kLeads = 126;  // values of the first and third byte, from 81
constexpr uint8_t kFirstTrail = 0x40;
constexpr uint8_t kLastLowTrail = 0x7E;
constexpr uint8_t kLastTrail = 0xFE;

void PutSequence(uint32_t number, uint8_t* bytes) {
  bytes[3] = static_cast<uint8_t>(0x30 + number % kDigits);
  number /= kDigits;
  bytes[2] = static_cast<uint8_t>(0x81 + number % kLeads);
  number /= kLeads;
  bytes[1] = static_cast<uint8_t>(0x30 + number % kDigits);
  bytes[0] = static_cast<uint8_t>(0x81 + number / kDigits);
}

// The sequence's number, or false for bytes out of their bounds.
bool SequenceNumber(uint32_t bytes, uint32_t& number) {
  uint32_t a = (bytes >> 24) - 0x81, b = (bytes >> 16 & 0xFF) - 0x30, c = (bytes >> 8 & 0xFF) - 0x81,
           d = (bytes & 0xFF) - 0x30;
  if (a >= kLeads || b >= kDigits || c >= kLeads || d >= kDigits) return false;
  number = ((a * kDigits + b) * kLeads + c) * kDigits + d;
  return true;
}

}  // namespace

size_t CharmapTable::Lookup(char16_t character, uint8_t* bytes) const {
  if (character < 128) {
    bytes[0] = static_cast<uint8_t>(character);
    return 1;
  }
  if (size_t index = ZnFindUnit(pairs.units, character); index < pairs.units.size()) {
    bytes[0] = static_cast<uint8_t>(pairs.codes[index] >> 8);
    bytes[1] = static_cast<uint8_t>(pairs.codes[index]);
    return 2;
  }
  auto range = std::ranges::lower_bound(ranges, character, {}, &ZnCharmapRange::last);
  if (range == ranges.end() || character < range->first) return 0;
  PutSequence(range->firstSequence + (character - range->first), bytes);
  return 4;
}

bool CharmapTable::Lookup2(unsigned bytes, char16_t& character) const {
  unsigned lead = bytes >> 8, trail = bytes & 0xFF;
  if (lead < firstLead || lead > lastLead) return false;
  bool low = trail >= kFirstTrail && trail <= kLastLowTrail;
  if (!low && (trail < firstHighTrail || trail > kLastTrail)) return false;
  unsigned lowTrails = kLastLowTrail - kFirstTrail + 1U, trails = lowTrails + kLastTrail - firstHighTrail + 1U;
  character =
      pairs.grid[(lead - firstLead) * trails + (low ? trail - kFirstTrail : trail - firstHighTrail + lowTrails)];
  return character != kZnNoUnit;
}

bool CharmapTable::Lookup4(uint32_t bytes, char16_t& character) const {
  uint32_t number = 0;
  if (!SequenceNumber(bytes, number)) return false;
  auto behind = std::ranges::upper_bound(ranges, number, {}, &ZnCharmapRange::firstSequence);
  if (behind == ranges.begin()) return false;
  const ZnCharmapRange& range = *std::prev(behind);
  uint32_t distance = number - range.firstSequence;
  if (distance > static_cast<uint32_t>(range.last - range.first)) return false;
  character = static_cast<char16_t>(range.first + distance);
  return true;
}
