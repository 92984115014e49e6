#pragma once
// The password functions of SMB authentication, and the ciphers of logons and stored passwords. Passwords come as
// bytes, in the form that the wanted hash needs. Sizes are in bytes; short buffers count as filled up with zeros.

#include "runtime/byte_buffer.h"

class ZnEncrypt {
 public:
  // LAN manager hash of a password, which the caller has put in upper case: 16 bytes from its first 14. Secret.
  static ZnByteBuffer MSHash(const ZnByteBuffer& text);
  // NT hash of a password in UTF-16, low byte first: 16 bytes. Secret.
  static ZnByteBuffer UNIHash(const ZnByteBuffer& text);
  // The 24-byte response to an 8-byte challenge. Secret.
  static ZnByteBuffer Encrypt_hash(const ZnByteBuffer& hash, const ZnByteBuffer& challenge);

  // One block of 8 bytes with a 7-byte key (FIPS 46, ECB). Secret.
  static ZnByteBuffer DES_Encrypt(const ZnByteBuffer& block, const ZnByteBuffer& key);
  static ZnByteBuffer DES_Decrypt(const ZnByteBuffer& block, const ZnByteBuffer& key);

  // The stream cipher RC4, by which two sides that have a key agree on another one. Encrypts as it decrypts. Secret.
  static ZnByteBuffer Arcfour(const ZnByteBuffer& bytes, const ZnByteBuffer& key);
};
