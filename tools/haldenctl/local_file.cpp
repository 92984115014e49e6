#include "local_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace {

Error SystemError(const std::string& path) { return {.text = path + ": " + strerror(errno)}; }

// The mode that a newly created file gets from this process.
mode_t ModeOfNewFile() {
  const mode_t mask = umask(0);
  umask(mask);
  return 0666 & ~mask;
}

}  // namespace

LocalSource::~LocalSource() {
  if (fd_ >= 0) close(fd_);
}

Error LocalSource::Open(const std::string& path) {
  path_ = path;
  fd_ = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  struct stat status;
  if (fd_ < 0 || fstat(fd_, &status) != 0) return SystemError(path);
  if (!S_ISREG(status.st_mode)) return {.text = path + ": isn't a regular file, whose size would be known"};
  size_ = static_cast<uint64_t>(status.st_size);
  mode_ = status.st_mode & 0777U;
  return {};
}

Error LocalSource::Read(uint64_t offset, size_t count, ZnByteBuffer& data) const {
  data.SetLength(count);
  const ssize_t got = pread(fd_, data.Writable(), count, static_cast<off_t>(offset));
  if (got < 0) return SystemError(path_);
  if (static_cast<size_t>(got) < count) return {.text = path_ + ": the file became shorter while it was read"};
  return {};
}

LocalTarget::~LocalTarget() {
  if (fd_ >= 0) close(fd_);
  if (!temporary_.empty()) unlink(temporary_.c_str());
}

Error LocalTarget::Open(const std::string& path) {
  path_ = path;
  std::string name = path + ".XXXXXX";
  fd_ = mkostemp(name.data(), O_CLOEXEC);
  if (fd_ < 0) return SystemError(path);
  temporary_ = name;
  return {};
}

Error LocalTarget::Write(uint64_t offset, const ZnByteBuffer& data) {
  const ssize_t put = pwrite(fd_, data.Data(), data.Length(), static_cast<off_t>(offset));
  if (put < 0) return SystemError(path_);
  return static_cast<size_t>(put) == data.Length() ? Error{} : Error{.text = path_ + ": no space is left"};
}

Error LocalTarget::Finish() {
  struct stat present;
  const mode_t mode = stat(path_.c_str(), &present) == 0 ? present.st_mode & 07777U : ModeOfNewFile();
  if (fchmod(fd_, mode) != 0 || fsync(fd_) != 0) return SystemError(temporary_);
  if (rename(temporary_.c_str(), path_.c_str()) != 0) return SystemError(path_);
  temporary_.clear();
  return {};
}
