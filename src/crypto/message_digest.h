#pragma once
// MD4 (RFC 1320) and MD5 (RFC 1321) in one code path. The digest under construction is static: one at a time.

#include "runtime/byte_buffer.h"

class ZnMessageDigest {
 public:
  // Digest of a whole buffer, 16 bytes. Mode 4 is MD4, any other MD5.
  static ZnByteBuffer MDEncode(const ZnByteBuffer& buffer, unsigned mode);

  // The same in pieces: MDInit, any number of MDUpdates, and MDFinal, which gives the digest and forgets everything.
  static void MDInit(unsigned mode);
  static void MDUpdate(const ZnByteBuffer& buffer);
  static ZnByteBuffer MDFinal();

  // One block of 64 bytes: by the mode of MDInit, or by name.
  static void MDTransform(const uint8_t* bytes);
  static void MD4Transform(const uint8_t* block);
  static void MD5Transform(const uint8_t* block);

 private:
  static void Absorb(const uint8_t* bytes, size_t length);
};
