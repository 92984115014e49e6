#pragma once
// A run of bytes: reference-counted, copied on write. Strings and wire records stand on it.

#include <cstddef>
#include <cstdint>
#include <cstring>

// The shared block. Capacity is always a multiple of 16; one byte of slack is kept, and growth overshoots by an eighth.
struct ZnByteBufferRep {
  uint32_t references = 1;
  size_t length = 0;
  size_t capacity = 0;
  bool secret = false;
  uint8_t* data = nullptr;  // malloc block, null while nothing was allocated

  // Makes room for `newLength` bytes; with `setLength` also an eighth more, and the length is stored.
  void _extend(size_t newLength, bool setLength);
  // One handle fewer; the last one frees the block.
  void RefCountSub();
  void Remove(size_t position, size_t count);
  void Insert(size_t position, size_t count, const void* source);
};

// Handle to a block; the null handle is empty too, but not equal to a handle of an empty block.
class ZnByteBuffer {
 public:
  ZnByteBuffer() = default;
  ZnByteBuffer(const void* bytes, size_t length);
  ZnByteBuffer(const ZnByteBuffer& other);
  ZnByteBuffer(ZnByteBuffer&& other) noexcept;
  ZnByteBuffer& operator=(const ZnByteBuffer& other);
  ZnByteBuffer& operator=(ZnByteBuffer&& other) noexcept;
  ~ZnByteBuffer();

  size_t Length() const { return rep_ ? rep_->length : 0; }
  size_t Capacity() const { return rep_ ? rep_->capacity : 0; }
  bool IsEmpty() const { return Length() == 0; }
  bool IsNull() const { return rep_ == nullptr; }
  // The bytes; null when nothing was ever allocated. Valid until the next change of this handle.
  const uint8_t* Data() const { return rep_ ? rep_->data : nullptr; }
  uint8_t operator[](size_t i) const { return rep_->data[i]; }

  // Gives this handle a block of its own; every writer goes through it.
  void _Unique();
  // Bytes that may be written, after making the block this handle's own. Null when the length is 0 and nothing is
  // allocated.
  uint8_t* Writable();
  // Sets the length. New bytes at the end are zero.
  void SetLength(size_t length);
  // Room for `length` bytes without changing the length.
  void Reserve(size_t length);
  void Append(const ZnByteBuffer& other);
  void Append(const void* bytes, size_t length) {
    // The common case, since records are written field by field: a block of our own that has room.
    if (!rep_ || rep_->references > 1 || length >= rep_->capacity - rep_->length) return AppendSlowly(bytes, length);
    if (length > 0) memcpy(rep_->data + rep_->length, bytes, length);
    rep_->length += length;
  }
  void Append(uint8_t byte) { Append(&byte, 1); }
  // `position` and `count` lie within the length.
  void Remove(size_t position, size_t count);
  // `source` doesn't point into this buffer.
  void Insert(size_t position, size_t count, const void* source);
  // Forgets the bytes, but keeps the block for others unless another handle has it too.
  void Empty();
  // Forgets the block: the handle becomes null.
  void Clear();
  // From now on the bytes are overwritten before their memory is given back, when the last handle goes as when the
  // block grows. What a secret buffer is copied or appended to becomes secret too.
  void MarkSecret();
  bool IsSecret() const { return rep_ && rep_->secret; }
  // Overwrites the bytes with zeros in place, then forgets them. For secrets. Other handles of the block see zeros too.
  void Wipe();

  bool operator==(const ZnByteBuffer& other) const;
  // Compares this buffer's Length() bytes with the other's, which must be at least as long.
  bool _equal(const ZnByteBuffer& other) const;

 private:
  void AppendSlowly(const void* bytes, size_t length);

  ZnByteBufferRep* rep_ = nullptr;
};
