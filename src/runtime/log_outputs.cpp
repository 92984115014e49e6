#include <fcntl.h>
#include <sys/stat.h>
#include <syslog.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "runtime/host_text.h"
#include "runtime/log_state.h"
#include "runtime/unix_process.h"

namespace {

constexpr mode_t kOwnerOnly = 0600;

std::optional<ZnByteBuffer> HostPath(const ZnUniString& path) {
  std::optional<ZnByteBuffer> host = ZnHostText(path, ZnSysEncoding::filesystem, ZnSysEncoding::filesystemopt);
  if (!host) errno = EILSEQ;
  return host;
}

void WriteText(FILE* stream, const ZnUniString& text, ZnEncoding encoding) {
  const ZnByteBuffer bytes = text.AsEncoding(encoding);
  fwrite(bytes.Data(), 1, bytes.Length(), stream);
}

}  // namespace

// --- A file ---

ZnUniString ZnLog::NamedFile::Path(pid_t pid) const {
  ZnUniString path = name_;
  path.Substitute(kPid, ZnUniString::CreateFromUnsigned(static_cast<uint64_t>(pid)));
  const ZnUniString& directory = state().directory;
  return directory.IsEmpty() || path.StartsWith("/") ? path : directory + "/" + path;
}

void ZnLog::NamedFile::FixFileState(FILE* stream) {
  fcntl(fileno(stream), F_SETFD, FD_CLOEXEC);
  fchmod(fileno(stream), kOwnerOnly);
}

ZnLog::Result ZnLog::NamedFile::Open() {
  const ZnUniString path = Path(getpid());
  const std::optional<ZnByteBuffer> host = HostPath(path);
  ZnCFile opened(host ? fopen(ZnCStringOf(*host), "a") : nullptr);
  if (!opened) return openerror(path);
  FixFileState(opened.get());
  stream_ = std::move(opened);
  return Success;
}

// --- A destination ---

void ZnLog::logfileinfo::Write(const ZnUniString& text, int priority) const {
  if (issyslog) {
    syslog(priority, "%s", ZnCStringOf(text.AsEncoding(encoding)));
  } else if (FILE* const stream = Stream()) {
    WriteText(stream, text, encoding);
  }
}

void ZnLog::logfileinfo::Flush() const {
  if (FILE* const stream = Stream()) fflush(stream);
}

// --- The destinations ---

namespace {

// A fault of the program can only be noted by its descriptor: in the newest file.
template <class Outputs>
void NoteFaultLog(const Outputs& outputs) {
  const auto newest =
      std::find_if(outputs.rbegin(), outputs.rend(), [](const auto& output) { return output->file.stream(); });
  ZnUnixProcess::SetFaultLog(newest == outputs.rend() ? -1 : fileno((*newest)->file.stream()));
}

}  // namespace

ZnLog::Result ZnLog::AddLogFile(const ZnUniString& name, bool withpid, bool untilfork, ZnEncoding encoding) {
  logfileinfo output{name == "<stderr>", name == "<syslog>", untilfork, encoding};
  if (!output.isstderr && !output.issyslog) {
    return AddFile(name + (withpid ? NamedFile::kPid : "") + ".log", untilfork, encoding);
  }
  if (output.isstderr) setbuf(stderr, nullptr);
  static bool syslog_is_open = false;
  if (output.issyslog && !syslog_is_open) {
    openlog("Halden", LOG_PID, LOG_DAEMON);
    syslog_is_open = true;
  }
  state().outputs.push_back(std::make_unique<logfileinfo>(std::move(output)));
  return Success;
}

ZnLog::Result ZnLog::AddFile(const ZnUniString& name, bool untilfork, ZnEncoding encoding) {
  auto output = std::make_unique<logfileinfo>(logfileinfo{false, false, untilfork, encoding, NamedFile(name)});
  if (output->file.Open() == Failure) return Failure;
  auto& outputs = state().outputs;
  if (!untilfork) std::erase_if(outputs, [](const auto& earlier) { return earlier->untilfork; });
  outputs.push_back(std::move(output));
  NoteFaultLog(outputs);
  return Success;
}

ZnLog::Result ZnLog::AddHaldenLogFile(const ZnUniString& directory, const ZnUniString& prefix,
                                      const ZnUniString& suffix, ZnEncoding encoding) {
  return AddFile(directory + prefix + NamedFile::kPid + suffix, false, encoding);
}

ZnLog::Result ZnLog::RemoveHaldenEmptyErrorLogFile(const ZnUniString& directory, const ZnUniString& prefix,
                                                   const ZnUniString& suffix, pid_t pid) {
  const std::optional<ZnByteBuffer> path = HostPath(NamedFile(directory + prefix + NamedFile::kPid + suffix).Path(pid));
  struct stat status {};
  if (!path || stat(ZnCStringOf(*path), &status) < 0) return Failure;
  if (S_ISREG(status.st_mode) && status.st_size == 0) unlink(ZnCStringOf(*path));
  return Success;
}

// Standard error hears of it once, whether or not it is a destination too.
ZnLog::Result ZnLog::openerror(const ZnUniString& name) {
  const int reason = errno;
  const ZnUniString text = "Halden" + ProcInfo() + " Failed to open file \"" + name + "\" for error/log output.\n";
  fputs(ZnCStringOf(text.AsEncoding(shell, shellopt)), stderr);
  WriteToAll(text, LOG_ERR, false);
  Flush();
  errno = reason;
  return Failure;
}

void ZnLog::Flush() {
  for (const auto& output : state().outputs) output->Flush();
}

ZnLog::Result ZnLog::ReOpen() {
  Result result = Success;
  for (const auto& output : state().outputs) {
    if (output->file.stream() && output->file.Open() == Failure) result = Failure;
  }
  for (const auto& output : state().jsfiles) {
    if (output->Open() == Failure) result = Failure;
  }
  NoteFaultLog(state().outputs);
  return result;
}

void ZnLog::AboutToFork() {}

void ZnLog::HaveForked() {
  if (getpid() == state().mypid) return;
  state().SetPid(getpid());
  for (const auto& output : state().outputs) {
    if (output->file.FollowsProcess()) output->file.Open();
  }
  for (const auto& output : state().jsfiles) {
    if (output->file().FollowsProcess()) output->Open();
  }
  NoteFaultLog(state().outputs);
}

void ZnLog::CleanUp() {
  the_logger = nullptr;
  state() = State();
  NoteFaultLog(state().outputs);
}
