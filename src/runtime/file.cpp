#include "runtime/file.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace {

// Errors that mean that the other end of a connection is gone, or was never there.
constexpr int kConnectionGone[] = {EPIPE,     ECONNRESET, ECONNABORTED, ECONNREFUSED,
                                   ETIMEDOUT, ENOTCONN,   EHOSTUNREACH, ENETUNREACH};

bool IsConnectionGone(int code) {
  return std::find(std::begin(kConnectionGone), std::end(kConnectionGone), code) != std::end(kConnectionGone);
}

}  // namespace

void ZnFile::Close() {
  if (fd_ < 0) return;
  close(fd_);  // even an interrupted close gives the descriptor back
  fd_ = -1;
}

void ZnFile::Adopt(int fd) {
  Close();
  fd_ = fd;
}

bool ZnFile::Record(const char* call, ZnUniString arguments) {
  error_ = ZnUnixError(errno, call, std::move(arguments));
  return false;
}

ZnUniString ZnFile::FdText(int fd) {
  return fd < 0 ? ZnUniString("-1") : ZnUniString::CreateFromUnsigned(static_cast<unsigned>(fd));
}

ZnFile::IoStatus ZnFile::Transferred(const char* call, ssize_t result, size_t size, size_t& moved) {
  if (result >= 0) {
    moved = static_cast<size_t>(result);
    return moved == size ? IoStatus::Complete : IoStatus::Partial;
  }
  moved = 0;
  if (errno == EAGAIN || errno == EWOULDBLOCK) return IoStatus::Partial;
  IoStatus status = IsConnectionGone(errno) ? IoStatus::Closed : IoStatus::Failed;
  Record(call, FdText());
  return status;
}

ZnFile::IoStatus ZnFile::Read(void* buffer, size_t size, size_t& moved) {
  ssize_t result = 0;
  do {
    result = read(fd_, buffer, size);
  } while (result < 0 && errno == EINTR);
  IoStatus status = Transferred("read", result, size, moved);
  return result == 0 && size > 0 ? IoStatus::Closed : status;
}

ZnFile::IoStatus ZnFile::Write(const void* buffer, size_t size, size_t& moved) {
  ssize_t result = 0;
  do {
    result = write(fd_, buffer, size);
  } while (result < 0 && errno == EINTR);
  return Transferred("write", result, size, moved);
}

bool ZnFile::SetBlocking(bool blocking) {
  int flags = fcntl(fd_, F_GETFL);
  if (flags < 0) return Record("fcntl", FdText());
  flags = blocking ? flags & ~O_NONBLOCK : flags | O_NONBLOCK;
  return fcntl(fd_, F_SETFL, flags) == 0 || Record("fcntl", FdText());
}
