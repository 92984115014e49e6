// Reading a file in one go.

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "runtime/file.h"
#include "runtime/host_text.h"
#include "runtime/sys_encoding.h"

namespace {

// Whoever needs more than this has named the wrong file.
constexpr off_t kLargestFile = 16 << 20;

// A plain file of a size that can be read; otherwise false with the reason in errno.
bool CanBeRead(int fd, off_t& size) {
  struct stat facts {};
  if (fstat(fd, &facts) != 0) return false;
  if (!S_ISREG(facts.st_mode)) {
    errno = S_ISDIR(facts.st_mode) ? EISDIR : EINVAL;
    return false;
  }
  if (facts.st_size > kLargestFile) {
    errno = EFBIG;
    return false;
  }
  size = facts.st_size;
  return true;
}

}  // namespace

bool ZnFile::ReadFile(const ZnUniString& path, ZnByteBuffer& buffer) {
  ZnByteBuffer hostpath = path.AsEncoding(ZnSysEncoding::filesystem, ZnSysEncoding::filesystemopt);
  // Non-blocking, because opening a FIFO would wait for its writer.
  ZnFile file(open(ZnCStringOf(hostpath), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  if (!file.IsOpen()) return false;
  off_t size = 0;
  if (!CanBeRead(file.Fd(), size)) return false;
  ZnByteBuffer contents;
  contents.SetLength(static_cast<size_t>(size));
  size_t moved = 0;
  if (file.Read(contents.Writable(), contents.Length(), moved) != IoStatus::Complete) return false;
  buffer = std::move(contents);
  return true;
}
