#include "model/handle.h"

#include <sys/random.h>

#include <cstdlib>
#include <cstring>

namespace {

constexpr size_t kEpoch = 8;      // where it begins
constexpr size_t kTopBytes = 16;  // the number, and behind it the epoch
constexpr size_t kWords = 8;

// Adds one to the number in the words `last` down to `first` of the handle; true when it wrapped.
bool Increment(uint8_t* bytes, size_t first, size_t last) {
  for (size_t word = last + 1; word-- > first;) {
    uint32_t value = 0;
    memcpy(&value, bytes + 4 * word, 4);
    value++;
    memcpy(bytes + 4 * word, &value, 4);
    if (value != 0) return false;
  }
  return true;
}

}  // namespace

void ZnSMBNFSHandle::TopOnly() { memset(bytes.data() + kTopBytes, 0, bytes.size() - kTopBytes); }

bool ZnSMBNFSHandle::InTop() const {
  for (size_t i = kTopBytes; i < bytes.size(); i++) {
    if (bytes[i] != 0) return false;
  }
  return true;
}

void ZnSMBNFSHandle::IncBottom() { Increment(bytes.data(), kTopBytes / 4, kWords - 1); }

void ZnSMBNFSHandle::TakeBottom(const ZnSMBNFSHandle& other) {
  memcpy(bytes.data() + kTopBytes, other.bytes.data() + kTopBytes, bytes.size() - kTopBytes);
}

void ZnSMBNFSHandle::IncTop() { Increment(bytes.data(), 0, kEpoch / 4 - 1); }

void ZnSMBNFSHandle::DrawEpoch() {
  uint8_t drawn[kTopBytes - kEpoch];
  do {
    if (getentropy(drawn, sizeof drawn) != 0) abort();
  } while (memcmp(drawn, bytes.data() + kEpoch, sizeof drawn) == 0);
  memcpy(bytes.data() + kEpoch, drawn, sizeof drawn);
}
