#pragma once
// Contract. A file or socket of the host, by its descriptor. Every failure is told by the result and remembered in the
// object.

#include <sys/types.h>

#include <cstddef>

#include "runtime/byte_buffer.h"
#include "runtime/uni_string.h"
#include "runtime/unix_error.h"

class ZnFile {
 public:
  enum class IoStatus {
    Failed = 0,    // nothing was moved; Error() says why
    Partial = 1,   // some bytes were moved, or none because the call would have blocked
    Complete = 2,  // all bytes that were asked for
    Closed = 3,    // end of file, or the other end of a connection is gone
  };

  ZnFile() = default;
  // Takes over an open descriptor.
  explicit ZnFile(int fd) : fd_(fd) {}
  ZnFile(const ZnFile&) = delete;
  ZnFile& operator=(const ZnFile&) = delete;
  // Closes the descriptor.
  virtual ~ZnFile() { Close(); }

  bool IsOpen() const { return fd_ >= 0; }
  // The descriptor, still owned by this object; -1 when closed.
  int Fd() const { return fd_; }
  // Closing a closed file does nothing.
  void Close();

  // One read of up to `size` bytes into `buffer`; `moved` is what came. An interrupted call is repeated. A `size` of 0
  // is Complete.
  virtual IoStatus Read(void* buffer, size_t size, size_t& moved);
  // One write of up to `size` bytes; `moved` is what was taken. A broken connection is Closed, with the error recorded,
  // and raises no signal on sockets.
  virtual IoStatus Write(const void* buffer, size_t size, size_t& moved);

  // Whether calls on the descriptor wait. False when the system refuses.
  bool SetBlocking(bool blocking);

  // The last call that failed.
  const ZnUnixError& Error() const { return error_; }

  // The whole file in one read. True only if every byte came; otherwise `buffer` is unspecified and errno says why, as
  // far as a system call failed.
  static bool ReadFile(const ZnUniString& path, ZnByteBuffer& buffer);
  // Replaces a leading "~", or "~name" up to the first "/", by the home directory of the present or the named user. An
  // unknown user leaves the path as it is.
  static void PathnameExpand(ZnUniString& path);

 protected:
  // Remembers a failed call with the current errno; gives false.
  bool Record(const char* call, ZnUniString arguments = ZnUniString());
  // The status of a transfer call that gave `result` for `size` bytes, recording what failed.
  IoStatus Transferred(const char* call, ssize_t result, size_t size, size_t& moved);
  // Takes over an open descriptor in place of the present one, which is closed.
  void Adopt(int fd);
  // A descriptor as text, for recorded arguments.
  static ZnUniString FdText(int fd);
  ZnUniString FdText() const { return FdText(fd_); }

 private:
  int fd_ = -1;
  ZnUnixError error_;
};
