#include "session/user.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "model/log_catalogue.h"
#include "runtime/printable_text.h"
#include "runtime/sys_encoding.h"
#include "runtime/unix_process.h"

namespace {

// The user may put anything in the file's place, and this process may come along with more rights than the user's: no
// link is followed, nothing but a regular file is written to, and nothing (a FIFO, say) makes the daemon wait. -1, with
// errno, if there is no such file to be had.
int OpenRegularFile(const char* path) {
  const int flags = O_WRONLY | O_APPEND | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
  const int fd = open(path, flags, 0600);
  if (fd < 0) return -1;
  struct stat status;
  if (fstat(fd, &status) == 0 && S_ISREG(status.st_mode)) return fd;
  close(fd);
  errno = EINVAL;
  return -1;
}

}  // namespace

void ZnSMBNFSUser::WriteLog(const ZnUniString& text) {
  if (!IsOpen()) file_.reset();
  if (config.logfile.IsEmpty() || (!file_ && !Open())) return;
  ZnOFStream stream(file_.get(), ZnSysEncoding::shell, ZnSysEncoding::shellopt);
  stream << ZnTimeVal::now() << ZnLog::kFieldSeparator << ZnLog::ProcInfo() << ZnLog::kFieldSeparator << user_error
         << ZnPrintableLine(text) << "\n";
  stream.Flush();
  if (ferror(file_.get())) file_.reset();  // a full disk, perhaps: the next report tries anew
}

// The file that is open is the one to write to, and the user hasn't removed it.
bool ZnSMBNFSUser::IsOpen() const {
  struct stat status;
  return file_ && name_ == config.logfile && fstat(fileno(file_.get()), &status) == 0 && status.st_nlink > 0;
}

bool ZnSMBNFSUser::Open() {
  if (!config.unixuser || !the_current_process) return false;
  const ZnByteBuffer path = config.logfile.AsEncoding(ZnSysEncoding::filesystem, ZnSysEncoding::filesystemopt);
  if (!the_current_process->BecomeUser(*config.unixuser)) {
    const ZnUnixError error = the_current_process->UidError();
    the_current_process->BecomeRoot();
    Log202(config.username, error);
    return false;
  }
  const int fd = OpenRegularFile(reinterpret_cast<const char*>(path.Data()));
  const int code = errno;
  the_current_process->BecomeRoot();
  if (fd < 0) {
    Log202(config.username, ZnUnixError(code, "fopen"));
    return false;
  }
  file_.reset(fdopen(fd, "ab"));
  if (!file_) close(fd);
  name_ = config.logfile;
  return file_ != nullptr;
}
