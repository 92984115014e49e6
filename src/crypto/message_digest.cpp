#include "crypto/message_digest.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

#include "crypto/enc_basics.h"
#include "crypto/wipe.h"

namespace {

constexpr size_t kBlockSize = 64;
constexpr std::array<uint8_t, kBlockSize> Padding = {0x80};
constexpr std::array<uint32_t, 4> kInitialState = {0x67452301, 0xefcdab89, 0x98badcfe, 0x10325476};

// The digest under construction.
struct Digest {
  unsigned mode = 5;
  std::array<uint32_t, 4> state = kInitialState;
  uint64_t count = 0;  // bytes so far
  std::array<uint8_t, kBlockSize> block{};
};
Digest digest;

using Mixer = uint32_t (*)(uint32_t x, uint32_t y, uint32_t z);

uint32_t Choose(uint32_t x, uint32_t y, uint32_t z) { return (x & y) | (~x & z); }
uint32_t ChooseByLast(uint32_t x, uint32_t y, uint32_t z) { return (x & z) | (y & ~z); }
uint32_t Majority(uint32_t x, uint32_t y, uint32_t z) { return (x & y) | (x & z) | (y & z); }
uint32_t Parity(uint32_t x, uint32_t y, uint32_t z) { return x ^ y ^ z; }
uint32_t OrNot(uint32_t x, uint32_t y, uint32_t z) { return y ^ (x | ~z); }

// One round of 16 steps.
struct Round {
  Mixer mix;
  std::array<uint8_t, 4> shifts;  // S11 to S14 and so on
  std::array<uint8_t, 16> words;  // which word of the block each step takes
};

constexpr std::array<uint8_t, 16> InOrder = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};

constexpr std::array<uint32_t, 3> kMd4Constants = {0, 0x5a827999, 0x6ed9eba1};
constexpr std::array<Round, 3> kMd4Rounds = {{
    {Choose, {3, 7, 11, 19}, InOrder},
    {Majority, {3, 5, 9, 13}, {0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15}},
    {Parity, {3, 9, 11, 15}, {0, 8, 4, 12, 2, 10, 6, 14, 1, 9, 5, 13, 3, 11, 7, 15}},
}};

constexpr std::array<Round, 4> kMd5Rounds = {{
    {Choose, {7, 12, 17, 22}, InOrder},
    {ChooseByLast, {5, 9, 14, 20}, {1, 6, 11, 0, 5, 10, 15, 4, 9, 14, 3, 8, 13, 2, 7, 12}},
    {Parity, {4, 11, 16, 23}, {5, 8, 11, 14, 1, 4, 7, 10, 13, 0, 3, 6, 9, 12, 15, 2}},
    {OrNot, {6, 10, 15, 21}, {0, 7, 14, 5, 12, 3, 10, 1, 8, 15, 6, 13, 4, 11, 2, 9}},
}};

// The sines of 1 to 64 radians, times 2 to the power of 32.
constexpr std::array<uint32_t, 64> kSines = {
    0xd76aa478, 0xe8c7b756, 0x242070db, 0xc1bdceee, 0xf57c0faf, 0x4787c62a, 0xa8304613, 0xfd469501,
    0x698098d8, 0x8b44f7af, 0xffff5bb1, 0x895cd7be, 0x6b901122, 0xfd987193, 0xa679438e, 0x49b40821,
    0xf61e2562, 0xc040b340, 0x265e5a51, 0xe9b6c7aa, 0xd62f105d, 0x02441453, 0xd8a1e681, 0xe7d3fbc8,
    0x21e1cde6, 0xc33707d6, 0xf4d50d87, 0x455a14ed, 0xa9e3e905, 0xfcefa3f8, 0x676f02d9, 0x8d2a4c8a,
    0xfffa3942, 0x8771f681, 0x6d9d6122, 0xfde5380c, 0xa4beea44, 0x4bdecfa9, 0xf6bb4b60, 0xbebfbc70,
    0x289b7ec6, 0xeaa127fa, 0xd4ef3085, 0x04881d05, 0xd9d4d039, 0xe6db99e5, 0x1fa27cf8, 0xc4ac5665,
    0xf4292244, 0x432aff97, 0xab9423a7, 0xfc93a039, 0x655b59c3, 0x8f0ccc92, 0xffeff47d, 0x85845dd1,
    0x6fa87e4f, 0xfe2ce6e0, 0xa3014314, 0x4e0811a1, 0xf7537e82, 0xbd3af235, 0x2ad7d2bb, 0xeb86d391,
};

// Runs all rounds over one block. `constant(round, step)` is what a step adds; MD5 adds the neighbour after the
// rotation too.
template <size_t N, class Constant>
void Transform(const uint8_t* bytes, const std::array<Round, N>& rounds, Constant constant, bool addNeighbour) {
  std::array<uint32_t, 16> words{};
  for (size_t i = 0; i < words.size(); i++) words[i] = ZnEncBasics::ConvertBToU32_Little(bytes + 4 * i);

  auto [a, b, c, d] = digest.state;
  for (size_t round = 0; round < N; round++) {
    const Round& r = rounds[round];
    for (size_t step = 0; step < 16; step++) {
      uint32_t sum = a + r.mix(b, c, d) + words[r.words[step]] + constant(round, step);
      uint32_t turned = std::rotl(sum, r.shifts[step % 4]) + (addNeighbour ? b : 0);
      a = d;
      d = c;
      c = b;
      b = turned;
    }
  }
  digest.state[0] += a;
  digest.state[1] += b;
  digest.state[2] += c;
  digest.state[3] += d;
  ZnWipe(words);
}

}  // namespace

ZnByteBuffer ZnMessageDigest::MDEncode(const ZnByteBuffer& buffer, unsigned mode) {
  MDInit(mode);
  MDUpdate(buffer);
  return MDFinal();
}

void ZnMessageDigest::MDInit(unsigned mode) {
  digest = Digest();
  digest.mode = mode;
}

void ZnMessageDigest::MDUpdate(const ZnByteBuffer& buffer) { Absorb(buffer.Data(), buffer.Length()); }

void ZnMessageDigest::Absorb(const uint8_t* bytes, size_t length) {
  while (length > 0) {
    size_t filled = digest.count % kBlockSize;
    size_t taken = std::min(length, kBlockSize - filled);
    memcpy(digest.block.data() + filled, bytes, taken);
    digest.count += taken;
    bytes += taken;
    length -= taken;
    if (filled + taken == kBlockSize) MDTransform(digest.block.data());
  }
}

ZnByteBuffer ZnMessageDigest::MDFinal() {
  uint64_t bits = digest.count * 8;
  uint8_t length[8];
  ZnEncBasics::ConvertU32ToB_Little(static_cast<uint32_t>(bits), length);
  ZnEncBasics::ConvertU32ToB_Little(static_cast<uint32_t>(bits >> 32), length + 4);
  // At least one byte of padding, up to 8 bytes before the end of a block.
  Absorb(Padding.data(), kBlockSize - (digest.count + sizeof length) % kBlockSize);
  Absorb(length, sizeof length);

  uint8_t bytes[16];
  for (size_t i = 0; i < 4; i++) ZnEncBasics::ConvertU32ToB_Little(digest.state[i], bytes + 4 * i);
  ZnByteBuffer result(bytes, sizeof bytes);
  ZnWipe(bytes);
  ZnWipe(digest);
  return result;
}

void ZnMessageDigest::MDTransform(const uint8_t* bytes) {
  if (digest.mode == 4) return MD4Transform(bytes);
  MD5Transform(bytes);
}

void ZnMessageDigest::MD4Transform(const uint8_t* block) {
  Transform(
      block, kMd4Rounds, [](size_t round, size_t) { return kMd4Constants[round]; }, false);
}

void ZnMessageDigest::MD5Transform(const uint8_t* block) {
  Transform(
      block, kMd5Rounds, [](size_t round, size_t step) { return kSines[16 * round + step]; }, true);
}
