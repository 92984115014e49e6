#include "runtime/byte_buffer.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <utility>

namespace {

constexpr size_t kGrain = 16;

size_t RoundDown(size_t n) { return n / kGrain * kGrain; }

// Writing zeros that the compiler can't drop.
void WipeBytes(uint8_t* bytes, size_t length) {
  volatile uint8_t* p = bytes;
  for (size_t i = 0; i < length; i++) p[i] = 0;
}

// realloc may leave the bytes behind where they stood.
void* MoveSecret(uint8_t* bytes, size_t size, size_t newSize) {
  void* moved = malloc(newSize);
  if (moved) memcpy(moved, bytes, std::min(size, newSize));
  WipeBytes(bytes, size);
  free(bytes);
  return moved;
}

}  // namespace

void ZnByteBufferRep::_extend(size_t newLength, bool setLength) {
  const size_t former = capacity;
  capacity = RoundDown(kGrain + newLength + (setLength ? newLength / 8 : 0));
  data = static_cast<uint8_t*>(secret && data ? MoveSecret(data, former, capacity) : realloc(data, capacity));
  if (!data) abort();
  if (setLength) length = newLength;
}

void ZnByteBufferRep::RefCountSub() {
  if (--references > 0) return;
  if (secret) WipeBytes(data, capacity);
  free(data);
  delete this;
}

void ZnByteBufferRep::Remove(size_t position, size_t count) {
  if (count == 0) return;
  memmove(data + position, data + position + count, length - position - count);
  length -= count;
}

void ZnByteBufferRep::Insert(size_t position, size_t count, const void* source) {
  if (count == 0) return;
  size_t oldLength = length;
  if (oldLength + count >= capacity) {
    _extend(oldLength + count, true);
  } else {
    length = oldLength + count;
  }
  memmove(data + position + count, data + position, oldLength - position);
  memcpy(data + position, source, count);
}

ZnByteBuffer::ZnByteBuffer(const void* bytes, size_t length) { Append(bytes, length); }

ZnByteBuffer::ZnByteBuffer(const ZnByteBuffer& other) : rep_(other.rep_) {
  if (rep_) rep_->references++;
}

ZnByteBuffer::ZnByteBuffer(ZnByteBuffer&& other) noexcept : rep_(std::exchange(other.rep_, nullptr)) {}

ZnByteBuffer& ZnByteBuffer::operator=(const ZnByteBuffer& other) {
  if (other.rep_) other.rep_->references++;
  if (rep_) rep_->RefCountSub();
  rep_ = other.rep_;
  return *this;
}

ZnByteBuffer& ZnByteBuffer::operator=(ZnByteBuffer&& other) noexcept {
  std::swap(rep_, other.rep_);
  return *this;
}

ZnByteBuffer::~ZnByteBuffer() {
  if (rep_) rep_->RefCountSub();
}

void ZnByteBuffer::_Unique() {
  if (!rep_) {
    rep_ = new ZnByteBufferRep;
    return;
  }
  if (rep_->references == 1) return;
  auto* own = new ZnByteBufferRep;
  own->secret = rep_->secret;
  if (rep_->length > 0) {
    own->_extend(rep_->length, true);
    memcpy(own->data, rep_->data, rep_->length);
  }
  rep_->references--;
  rep_ = own;
}

uint8_t* ZnByteBuffer::Writable() {
  _Unique();
  return rep_->data;
}

void ZnByteBuffer::SetLength(size_t length) {
  _Unique();
  size_t oldLength = rep_->length;
  if (length >= rep_->capacity) {
    rep_->_extend(length, true);
  } else {
    rep_->length = length;
  }
  if (length > oldLength) memset(rep_->data + oldLength, 0, length - oldLength);
}

void ZnByteBuffer::Reserve(size_t length) {
  _Unique();
  if (length >= rep_->capacity) rep_->_extend(length, false);
}

void ZnByteBuffer::Append(const ZnByteBuffer& other) {
  if (other.IsEmpty()) return;
  if (other.IsSecret()) MarkSecret();
  // A buffer may be appended to itself.
  const ZnByteBuffer held(other);  // NOLINT(performance-unnecessary-copy-initialization)
  Append(held.Data(), held.Length());
}

void ZnByteBuffer::AppendSlowly(const void* bytes, size_t length) {
  if (length == 0) return;
  _Unique();
  rep_->Insert(rep_->length, length, bytes);
}

void ZnByteBuffer::Remove(size_t position, size_t count) {
  if (count == 0) return;
  _Unique();
  rep_->Remove(position, count);
}

void ZnByteBuffer::Insert(size_t position, size_t count, const void* source) {
  if (count == 0) return;
  _Unique();
  rep_->Insert(position, count, source);
}

void ZnByteBuffer::Empty() {
  if (!rep_ || rep_->references > 1 || rep_->secret) return Clear();
  rep_->length = 0;
}

void ZnByteBuffer::Clear() {
  if (rep_) rep_->RefCountSub();
  rep_ = nullptr;
}

void ZnByteBuffer::MarkSecret() {
  if (IsSecret()) return;
  if (!rep_) rep_ = new ZnByteBufferRep;
  rep_->secret = true;
}

void ZnByteBuffer::Wipe() {
  if (rep_ && rep_->data) WipeBytes(rep_->data, rep_->capacity);
  Clear();
}

bool ZnByteBuffer::operator==(const ZnByteBuffer& other) const {
  if (!rep_ || !other.rep_) return rep_ == other.rep_;
  return rep_->length == other.rep_->length && _equal(other);
}

bool ZnByteBuffer::_equal(const ZnByteBuffer& other) const {
  return Length() == 0 || memcmp(Data(), other.Data(), Length()) == 0;
}
