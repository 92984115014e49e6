#include <gtest/gtest.h>

#include <cstring>

#include "runtime/byte_buffer.h"
#include "runtime/uni_string.h"

namespace {

ZnByteBuffer Bytes(const char* text) { return {text, strlen(text)}; }

TEST(ByteBuffer, GrownBytesAreZeroAndWipingReachesSharedOnes) {
  ZnByteBuffer secret = Bytes("secret"), other(secret);
  secret.Wipe();
  EXPECT_TRUE(other == ZnByteBuffer("\0\0\0\0\0\0", 6));
  ZnByteBuffer grown = Bytes("abcdef");
  grown.SetLength(0);
  grown.SetLength(6);
  EXPECT_TRUE(grown == other);
}

// That their memory is overwritten is seen from outside, in a daemon that has logged on.
TEST(ByteBuffer, WhatIsMadeOfASecretIsOneToo) {
  ZnByteBuffer secret = Bytes("secret");
  secret.MarkSecret();
  ZnByteBuffer copy(secret), longer = Bytes("a "), other = Bytes("a ");
  copy.Writable()[0] = 'S';
  longer.Append(secret);
  longer.SetLength(1000);
  other.Append(secret.Data(), secret.Length());
  EXPECT_TRUE(copy.IsSecret() && longer.IsSecret() && !other.IsSecret());
  EXPECT_EQ(memcmp(longer.Data(), "a secret", 9), 0) << "through the move to a larger block";
  ZnUniString text = "secret";
  text.MarkSecret();
  EXPECT_TRUE(text.AsEncoding(ZnCodeset::Ascii).IsSecret());
}

}  // namespace
