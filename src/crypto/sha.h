#pragma once
// SHA-1 (FIPS 180-1). The digest under construction is static: one at a time.

#include "runtime/byte_buffer.h"
#include "runtime/uni_string.h"

class ZnSHA {
 public:
  // Digest of a whole buffer, 20 bytes.
  static ZnByteBuffer SHAEncrypt(const ZnByteBuffer& buffer);
  // Digest of a file, by its path; of `length` bytes of an open file from `offset`, by reading or by mapping them.
  // Empty when not all of the bytes could be had.
  static ZnByteBuffer SHAEncryptfile(const ZnUniString& file);
  static ZnByteBuffer SHAEncryptmread(int fd, uint64_t offset, size_t length);
  static ZnByteBuffer SHAEncryptmmap(int fd, uint64_t offset, size_t length);

  // The same in pieces: sha_reset, any number of sha_updates, sha_final, and digest_to_bytebuffer, which gives the
  // digest and forgets everything.
  static void sha_reset();
  static void sha_update(const uint8_t* bytes, size_t count);
  static void sha_final();
  static ZnByteBuffer digest_to_bytebuffer();
  // Takes the block that is full into the digest.
  static void sha_transform();
};
