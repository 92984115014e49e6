#pragma once
// Local ends of transfers.

#include <cstdint>
#include <string>

#include "error.h"
#include "runtime/byte_buffer.h"

// A regular file that is read.
class LocalSource {
 public:
  LocalSource() = default;
  LocalSource(const LocalSource&) = delete;
  LocalSource& operator=(const LocalSource&) = delete;
  ~LocalSource();

  Error Open(const std::string& path);
  uint64_t Size() const { return size_; }
  uint32_t Mode() const { return mode_; }
  Error Read(uint64_t offset, size_t count, ZnByteBuffer& data) const;

 private:
  std::string path_;
  int fd_ = -1;
  uint64_t size_ = 0;
  uint32_t mode_ = 0;
};

// A file that is written under a temporary name beside its own, which Finish gives it. Without that it disappears.
class LocalTarget {
 public:
  LocalTarget() = default;
  LocalTarget(const LocalTarget&) = delete;
  LocalTarget& operator=(const LocalTarget&) = delete;
  ~LocalTarget();

  Error Open(const std::string& path);
  Error Write(uint64_t offset, const ZnByteBuffer& data);
  Error Finish();

 private:
  std::string path_;
  std::string temporary_;
  int fd_ = -1;
};
