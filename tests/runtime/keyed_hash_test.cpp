#include "runtime/keyed_hash.h"

#include <gtest/gtest.h>

#include <numeric>
#include <vector>

namespace {

// The authors' vectors: key and bytes count up from 0; the last is the one of the paper's appendix.
TEST(KeyedHash, PublishedVectors) {
  const ZnHashKey key{{0x0706050403020100, 0x0F0E0D0C0B0A0908}};
  std::vector<uint8_t> bytes(64);
  std::iota(bytes.begin(), bytes.end(), 0);
  const struct {
    size_t length;
    uint64_t hash;
  } vectors[] = {{0, 0x726FDB47DD0E0E31}, {1, 0x74F839C593DC67FD}, {8, 0x93F5F5799A932462}, {15, 0xA129CA6149BE45E5}};
  for (const auto& [length, hash] : vectors) EXPECT_EQ(ZnKeyedHash(key, bytes.data(), length), hash) << length;
}

}  // namespace
