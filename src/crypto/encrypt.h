#pragma once
// The password functions of SMB authentication and stored passwords, and the entry points to the ciphers and digests.
// Passwords come as bytes, in the form that the wanted hash needs. Sizes are in bytes; short buffers count as filled up
// with zeros.

#include "runtime/byte_buffer.h"

class ZnEncrypt {
 public:
  // A challenge of 8 random bytes.
  static ZnByteBuffer Set_C8key();

  // LAN manager hash of a password, which the caller has put in upper case: 16 bytes from its first 14.
  static ZnByteBuffer MSHash(const ZnByteBuffer& text, bool upper);
  // NT hash of a password in UTF-16, low byte first: 16 bytes.
  static ZnByteBuffer UNIHash(const ZnByteBuffer& text);
  // Both hashes of one text, of which the caller uses the one that the text was prepared for.
  static void Password_Hash(const ZnByteBuffer& text, ZnByteBuffer& lmhash, ZnByteBuffer& nthash);
  // The 24-byte response to an 8-byte challenge.
  static void Encrypt_hash(const ZnByteBuffer& hash, const ZnByteBuffer& challenge, ZnByteBuffer& response);

  // Whether a response was made from this hash for this challenge.
  static bool CheckNTLMPassword(const ZnByteBuffer& hash, const ZnByteBuffer& response, const ZnByteBuffer& challenge);
  // The same for either of two hashes.
  static bool compare_pwd(const ZnByteBuffer& lmhash, const ZnByteBuffer& nthash, const ZnByteBuffer& response,
                          const ZnByteBuffer& challenge);
  // Whether `password`, as a hash or as plain text in upper case, is the one whose LAN manager hash is stored.
  static bool compare_pwd_low(const ZnByteBuffer& stored, const ZnByteBuffer& unused, const ZnByteBuffer& password);

  // One block of 8 bytes with a 7-byte key, or three of them.
  static ZnByteBuffer DES_Encrypt(const ZnByteBuffer& block, const ZnByteBuffer& key);
  static ZnByteBuffer DES_Decrypt(const ZnByteBuffer& block, const ZnByteBuffer& key);
  static ZnByteBuffer Triple_DES_Encrypt(const ZnByteBuffer& block, const ZnByteBuffer& k1, const ZnByteBuffer& k2,
                                         const ZnByteBuffer& k3);
  static ZnByteBuffer Triple_DES_Decrypt(const ZnByteBuffer& block, const ZnByteBuffer& k1, const ZnByteBuffer& k2,
                                         const ZnByteBuffer& k3);

  // Digest of a whole buffer, 16 bytes.
  static ZnByteBuffer MD4_Encode(const ZnByteBuffer& buffer);
  static ZnByteBuffer MD5_Encode(const ZnByteBuffer& buffer);
};
