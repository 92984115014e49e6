#pragma once
// A hash of bytes for tables whose keys others choose: without its key nobody can find bytes that collide, so nobody
// can make a table slow (SipHash-2-4, Aumasson and Bernstein 2012).

#include <cstddef>
#include <cstdint>

struct ZnHashKey {
  uint64_t words[2];
};

uint64_t ZnKeyedHash(const ZnHashKey& key, const void* bytes, size_t length);

// The same with a key of this process, drawn when it is first needed.
uint64_t ZnKeyedHash(const void* bytes, size_t length);
