#include "crypto/sha.h"

#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cerrno>
#include <cstring>

#include "crypto/enc_basics.h"
#include "crypto/wipe.h"
#include "runtime/file.h"

namespace {

constexpr size_t kBlockSize = 64;
constexpr std::array<uint8_t, kBlockSize> kPadding = {0x80};

// The digest under construction.
struct Digest {
  std::array<uint32_t, 5> digest = {0x67452301, 0xefcdab89, 0x98badcfe, 0x10325476, 0xc3d2e1f0};
  uint64_t count = 0;  // bytes so far
  std::array<uint8_t, kBlockSize> data{};
};
Digest sha;

struct Mix {
  uint32_t value;
  uint32_t constant;
};

Mix MixOf(unsigned step, uint32_t b, uint32_t c, uint32_t d) {
  if (step < 20) return {(b & c) | (~b & d), 0x5a827999};
  if (step < 40) return {b ^ c ^ d, 0x6ed9eba1};
  if (step < 60) return {(b & c) | (b & d) | (c & d), 0x8f1bbcdc};
  return {b ^ c ^ d, 0xca62c1d6};
}

}  // namespace

void ZnSHA::sha_reset() { sha = Digest(); }

void ZnSHA::sha_transform() {
  std::array<uint32_t, 80> words{};
  for (size_t i = 0; i < 16; i++) words[i] = ZnEncBasics::ConvertBToU32_Big(sha.data.data() + 4 * i);
  for (size_t i = 16; i < 80; i++) {
    words[i] = std::rotl(words[i - 3] ^ words[i - 8] ^ words[i - 14] ^ words[i - 16], 1);
  }

  auto [a, b, c, d, e] = sha.digest;
  for (unsigned step = 0; step < 80; step++) {
    Mix mix = MixOf(step, b, c, d);
    uint32_t next = std::rotl(a, 5) + mix.value + e + words[step] + mix.constant;
    e = d;
    d = c;
    c = std::rotl(b, 30);
    b = a;
    a = next;
  }
  sha.digest[0] += a;
  sha.digest[1] += b;
  sha.digest[2] += c;
  sha.digest[3] += d;
  sha.digest[4] += e;
  ZnWipe(words);
}

void ZnSHA::sha_update(const uint8_t* bytes, size_t count) {
  while (count > 0) {
    size_t filled = sha.count % kBlockSize;
    size_t taken = std::min(count, kBlockSize - filled);
    memcpy(sha.data.data() + filled, bytes, taken);
    sha.count += taken;
    bytes += taken;
    count -= taken;
    if (filled + taken == kBlockSize) sha_transform();
  }
}

void ZnSHA::sha_final() {
  uint64_t bits = sha.count * 8;
  uint8_t length[8];
  ZnEncBasics::ConvertU32ToB_Big(static_cast<uint32_t>(bits >> 32), length);
  ZnEncBasics::ConvertU32ToB_Big(static_cast<uint32_t>(bits), length + 4);
  // At least one byte of padding, up to 8 bytes before the end of a block.
  sha_update(kPadding.data(), kBlockSize - (sha.count + sizeof length) % kBlockSize);
  sha_update(length, sizeof length);
}

ZnByteBuffer ZnSHA::digest_to_bytebuffer() {
  uint8_t bytes[20];
  for (size_t i = 0; i < 5; i++) ZnEncBasics::ConvertU32ToB_Big(sha.digest[i], bytes + 4 * i);
  ZnByteBuffer result(bytes, sizeof bytes);
  ZnWipe(bytes);
  ZnWipe(sha);
  return result;
}

ZnByteBuffer ZnSHA::SHAEncrypt(const ZnByteBuffer& buffer) {
  sha_reset();
  sha_update(buffer.Data(), buffer.Length());
  sha_final();
  return digest_to_bytebuffer();
}

ZnByteBuffer ZnSHA::SHAEncryptfile(const ZnUniString& file) {
  ZnByteBuffer contents;
  if (!ZnFile::ReadFile(file, contents)) return {};
  return SHAEncrypt(contents);
}

ZnByteBuffer ZnSHA::SHAEncryptmread(int fd, uint64_t offset, size_t length) {
  uint8_t piece[4096];
  sha_reset();
  while (length > 0) {
    ssize_t got = pread(fd, piece, std::min(length, sizeof piece), static_cast<off_t>(offset));
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) return {};
    sha_update(piece, static_cast<size_t>(got));
    offset += static_cast<size_t>(got);
    length -= static_cast<size_t>(got);
  }
  sha_final();
  return digest_to_bytebuffer();
}

ZnByteBuffer ZnSHA::SHAEncryptmmap(int fd, uint64_t offset, size_t length) {
  // Bytes behind the end of a file can be mapped, but not touched.
  struct stat status {};
  if (fstat(fd, &status) != 0) return {};
  auto size = static_cast<uint64_t>(status.st_size);
  if (offset > size || length > size - offset) return {};
  if (length == 0) return SHAEncrypt(ZnByteBuffer());

  size_t lead = offset % static_cast<size_t>(sysconf(_SC_PAGESIZE));
  void* pages = mmap(nullptr, lead + length, PROT_READ, MAP_PRIVATE, fd, static_cast<off_t>(offset - lead));
  if (pages == MAP_FAILED) return {};
  sha_reset();
  sha_update(static_cast<const uint8_t*>(pages) + lead, length);
  sha_final();
  munmap(pages, lead + length);
  return digest_to_bytebuffer();
}
