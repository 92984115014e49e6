#include "crypto/des.h"

#include <algorithm>

#include "crypto/des_tables.h"
#include "crypto/enc_basics.h"

namespace {

// Bit i of the result is bit table[i] of a value of `width` bits.
template <size_t N>
uint64_t Permute(uint64_t value, unsigned width, const std::array<uint8_t, N>& table) {
  uint64_t result = 0;
  for (uint8_t bit : table) result = result << 1 | (value >> (width - bit) & 1);
  return result;
}

uint64_t RotateLeft28(uint64_t half, unsigned count) { return (half << count | half >> (28 - count)) & 0xFFFFFFF; }

// The cipher function f of one round.
uint32_t Scramble(uint32_t half, uint64_t roundKey) {
  uint64_t mixed = Permute(half, 32, des_tables::kExpansion) ^ roundKey;
  uint64_t substituted = 0;
  for (unsigned box = 0; box < 8; box++) {
    uint64_t six = mixed >> (42 - 6 * box) & 0x3F;
    uint64_t row = (six >> 4 & 2) | (six & 1);
    uint64_t column = six >> 1 & 0xF;
    substituted = substituted << 4 | des_tables::kSubstitution[box][16 * row + column];
  }
  return static_cast<uint32_t>(Permute(substituted, 32, des_tables::kPermutation));
}

constexpr std::array<uint8_t, 256> OddParityTable() {
  std::array<uint8_t, 256> table{};
  for (unsigned i = 0; i < table.size(); i++) {
    unsigned ones = 0;
    for (unsigned bit = 1; bit < 8; bit++) ones += i >> bit & 1;
    table[i] = static_cast<uint8_t>((i & 0xFE) | (ones % 2 == 0 ? 1 : 0));
  }
  return table;
}

// `N` bytes from `position`; those that aren't there are zero.
template <size_t N>
ZnByteBuffer Piece(const ZnByteBuffer& buffer, size_t position) {
  ZnByteBuffer piece;
  if (position < buffer.Length()) {
    piece = ZnByteBuffer(buffer.Data() + position, std::min(N, buffer.Length() - position));
  }
  piece.SetLength(N);
  return piece;
}

}  // namespace

bool ZnDES::encryptdata = true;
const std::array<uint8_t, 256> ZnDES::odd_parity = OddParityTable();

void ZnDES::set_odd_parity(ZnByteBuffer& block) {
  uint8_t* bytes = block.Writable();
  for (size_t i = 0; i < block.Length(); i++) bytes[i] = odd_parity[bytes[i]];
}

ZnByteBuffer ZnDES::str_to_key(const ZnByteBuffer& key7) {
  uint64_t bits = 0;
  for (size_t i = 0; i < 7; i++) bits = bits << 8 | (i < key7.Length() ? key7[i] : 0);
  uint8_t spread[8];
  for (unsigned i = 0; i < 8; i++) spread[i] = static_cast<uint8_t>(bits >> (49 - 7 * i) << 1);
  ZnByteBuffer key8(spread, sizeof spread);
  set_odd_parity(key8);
  ZnWipe(bits);
  ZnWipe(spread);
  return key8;
}

void ZnDES::set_key(const ZnByteBuffer& key8, kf_struct& schedule) {
  ZnByteBuffer key = Piece<8>(key8, 0);
  uint64_t chosen = Permute(ZnEncBasics::ConvertBToU64_Big(key.Data()), 64, des_tables::kKeyChoice1);
  uint64_t left = chosen >> 28;
  uint64_t right = chosen & 0xFFFFFFF;
  for (size_t round = 0; round < schedule.rounds.size(); round++) {
    left = RotateLeft28(left, des_tables::kKeyShifts[round]);
    right = RotateLeft28(right, des_tables::kKeyShifts[round]);
    schedule.rounds[round] = Permute(left << 28 | right, 56, des_tables::kKeyChoice2);
  }
  key.Wipe();
}

void ZnDES::des_encrypt(uint64_t in, uint64_t& out, const kf_struct& schedule) {
  uint64_t block = Permute(in, 64, des_tables::kInitialPermutation);
  auto left = static_cast<uint32_t>(block >> 32);
  auto right = static_cast<uint32_t>(block);
  for (size_t round = 0; round < schedule.rounds.size(); round++) {
    uint64_t key = schedule.rounds[encryptdata ? round : schedule.rounds.size() - 1 - round];
    left ^= Scramble(right, key);
    std::swap(left, right);
  }
  out = Permute(uint64_t{right} << 32 | left, 64, des_tables::kFinalPermutation);
}

ZnByteBuffer ZnDES::ecb_encrypt(const ZnByteBuffer& block, const kf_struct& schedule) {
  ZnByteBuffer input = Piece<8>(block, 0);
  uint64_t result = 0;
  des_encrypt(ZnEncBasics::ConvertBToU64_Big(input.Data()), result, schedule);
  input.Wipe();
  uint8_t bytes[8];
  ZnEncBasics::ConvertU32ToB_Big(static_cast<uint32_t>(result >> 32), bytes);
  ZnEncBasics::ConvertU32ToB_Big(static_cast<uint32_t>(result), bytes + 4);
  ZnByteBuffer output(bytes, sizeof bytes);
  ZnWipe(bytes);
  output.MarkSecret();  // a key, a hash or a password: whatever it is put together to is one too
  return output;
}

ZnByteBuffer ZnDES::Crypto_Word(const ZnByteBuffer& block, const ZnByteBuffer& key) {
  ZnByteBuffer key8 = str_to_key(key);
  kf_struct schedule;
  set_key(key8, schedule);
  key8.Wipe();
  return ecb_encrypt(block, schedule);
}

ZnByteBuffer ZnDES::Encrypt_Word(const ZnByteBuffer& block, const ZnByteBuffer& key) {
  encryptdata = true;
  return Crypto_Word(block, key);
}

ZnByteBuffer ZnDES::Decrypt_Word(const ZnByteBuffer& block, const ZnByteBuffer& key) {
  encryptdata = false;
  return Crypto_Word(block, key);
}

ZnByteBuffer ZnDES::Triple_DES_Encrypt(const ZnByteBuffer& block, const ZnByteBuffer& k1, const ZnByteBuffer& k2,
                                       const ZnByteBuffer& k3) {
  return Encrypt_Word(Decrypt_Word(Encrypt_Word(block, k1), k2), k3);
}

ZnByteBuffer ZnDES::Triple_DES_Decrypt(const ZnByteBuffer& block, const ZnByteBuffer& k1, const ZnByteBuffer& k2,
                                       const ZnByteBuffer& k3) {
  return Decrypt_Word(Encrypt_Word(Decrypt_Word(block, k3), k2), k1);
}

ZnByteBuffer ZnDES::hashfn(const ZnByteBuffer& text14) {
  static const ZnByteBuffer kMagic("KGS!@#$%", 8);
  ZnByteBuffer hash;
  hash.Reserve(16);  // so that no half of it is left behind in memory
  for (size_t position : {0, 7}) {
    ZnByteBuffer key = Piece<7>(text14, position);
    hash.Append(Encrypt_Word(kMagic, key));
    key.Wipe();
  }
  return hash;
}

void ZnDES::enc_password(const ZnByteBuffer& hash21, const ZnByteBuffer& challenge, ZnByteBuffer& response) {
  ZnByteBuffer result;
  for (size_t position : {0, 7, 14}) {
    ZnByteBuffer key = Piece<7>(hash21, position);
    result.Append(Encrypt_Word(challenge, key));
    key.Wipe();
  }
  response = result;
}
