#include "crypto/entropy.h"

#include <sys/random.h>

#include <cstdlib>

ZnByteBuffer ZnDrawSecret(size_t count) {
  ZnByteBuffer bytes;
  bytes.SetLength(count);
  bytes.MarkSecret();
  if (getentropy(bytes.Writable(), count) != 0) abort();  // more than 256 bytes, or a host without
  return bytes;
}
