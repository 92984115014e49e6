#include "runtime/keyed_hash.h"

#include <sys/random.h>

#include <bit>
#include <cstdlib>
#include <cstring>

namespace {

struct State {
  explicit State(const ZnHashKey& key)
      : a(key.words[0] ^ 0x736f6d6570736575),
        b(key.words[1] ^ 0x646f72616e646f6d),
        c(key.words[0] ^ 0x6c7967656e657261),
        d(key.words[1] ^ 0x7465646279746573) {}

  void Rounds(int count) {
    for (; count > 0; count--) {
      a += b;
      b = std::rotl(b, 13) ^ a;
      a = std::rotl(a, 32);
      c += d;
      d = std::rotl(d, 16) ^ c;
      a += d;
      d = std::rotl(d, 21) ^ a;
      c += b;
      b = std::rotl(b, 17) ^ c;
      c = std::rotl(c, 32);
    }
  }
  void Take(uint64_t word) {
    d ^= word;
    Rounds(2);
    a ^= word;
  }

  uint64_t a, b, c, d;
};

// The lowest byte first.
uint64_t WordAt(const uint8_t* bytes) {
  uint64_t word = 0;
  memcpy(&word, bytes, sizeof word);
  return std::endian::native == std::endian::little ? word : __builtin_bswap64(word);
}

uint64_t LastWordAt(const uint8_t* bytes, size_t count) {
  uint64_t word = 0;
  for (size_t i = 0; i < count; i++) word |= uint64_t{bytes[i]} << 8 * i;
  return word;
}

ZnHashKey DrawKey() {
  ZnHashKey key;
  if (getentropy(key.words, sizeof key.words) != 0) abort();
  return key;
}

}  // namespace

uint64_t ZnKeyedHash(const ZnHashKey& key, const void* bytes, size_t length) {
  const auto* next = static_cast<const uint8_t*>(bytes);
  State state(key);
  for (size_t words = length / 8; words > 0; words--, next += 8) state.Take(WordAt(next));
  state.Take(uint64_t{length} << 56 | LastWordAt(next, length % 8));
  state.c ^= 0xFF;
  state.Rounds(4);
  return state.a ^ state.b ^ state.c ^ state.d;
}

uint64_t ZnKeyedHash(const void* bytes, size_t length) {
  static const ZnHashKey key = DrawKey();
  return ZnKeyedHash(key, bytes, length);
}
