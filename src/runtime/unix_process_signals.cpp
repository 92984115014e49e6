#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "runtime/unix_process.h"

ZnUnixProcess* the_current_process = nullptr;

namespace {

volatile sig_atomic_t fault_log = -1;

// A fault may be a stack that has run out, so its handler brings its own.
alignas(16) std::array<char, 65536> fault_stack;

void WriteLine(int fd, const char* line) {
  if (fd >= 0 && write(fd, line, strlen(line)) < 0) return;  // nowhere left to report it
}

// Async-signal-safe.
void TellFault(int number) {
  const char* const line = number == SIGSEGV ? "Halden(5.60.514) FATAL ERROR: address error (signal 11), exiting\n"
                                             : "Halden(5.60.514) FATAL ERROR: bus error (signal 7), exiting\n";
  WriteLine(STDERR_FILENO, line);
  if (fault_log != STDERR_FILENO) WriteLine(fault_log, line);
}

// A positive code says that the kernel found a fault; one that a process sent has a code of 0 or below.
bool IsOwnFault(int number, const siginfo_t* info) {
  return (number == SIGSEGV || number == SIGBUS) && info && info->si_code > 0;
}

void ReapChildren() {
  while (waitpid(-1, nullptr, WNOHANG) > 0) {
  }
}

}  // namespace

ZnUnixProcess::~ZnUnixProcess() {
  if (the_current_process == this) the_current_process = nullptr;
  for (const int end : {wake_read_, wake_write_}) {
    if (end >= 0) close(end);
  }
}

void ZnUnixProcess::SetFaultLog(int fd) { fault_log = fd; }

void ZnUnixProcess::had_a_signal(int number, siginfo_t* info, void* /*context*/) {
  if (IsOwnFault(number, info)) {
    TellFault(number);
    if (!core_dumps) _exit(number);
    signal(number, SIG_DFL);  // the return runs the faulting instruction again, and now the host sees it
    return;
  }
  const int saved_errno = errno;
  if (the_current_process) the_current_process->NoteSignal(number);
  errno = saved_errno;
}

void ZnUnixProcess::NoteSignal(int number) {
  if (number < 0 || number >= kSignals) return;
  caught_[static_cast<size_t>(number)] = 1;
  caught_count_ = caught_count_ + 1;
  Wake();
}

void ZnUnixProcess::Wake() {
  const char byte = 0;
  if (wake_write_ >= 0 && write(wake_write_, &byte, 1) < 0) return;  // full: it is readable, and that is all it is for
}

void ZnUnixProcess::Install(int number) {
  struct sigaction action {};
  action.sa_sigaction = had_a_signal;
  action.sa_flags = SA_SIGINFO | SA_RESTART;
  if (number == SIGSEGV || number == SIGBUS) action.sa_flags |= SA_ONSTACK;
  sigemptyset(&action.sa_mask);
  sigaction(number, &action, nullptr);
}

bool ZnUnixProcess::CatchSignal(int number, ZnEventCallback* callback) {
  if (number == SIGSEGV || number == SIGBUS) {
    const stack_t stack{fault_stack.data(), 0, fault_stack.size()};
    sigaltstack(&stack, nullptr);
  }
  signals_.push_back({callback, number});
  Install(number);
  return true;
}

int ZnUnixProcess::WakeDescriptor() {
  if (wake_read_ < 0) OpenWakePipe();
  return wake_read_;
}

void ZnUnixProcess::OpenWakePipe() {
  std::array<int, 2> ends{};
  if (pipe(ends.data()) < 0) return;  // signals still interrupt poll; only the small window before it stays open
  for (const int end : ends) {
    fcntl(end, F_SETFD, FD_CLOEXEC);
    fcntl(end, F_SETFL, O_NONBLOCK);
  }
  wake_read_ = ends[0];
  wake_write_ = ends[1];
  if (caught_count_ > 0) Wake();
}

int ZnUnixProcess::ProcessSignals() {
  if (caught_count_ == 0) return 0;
  // What comes from here on is for the next call. The pipe is emptied first: a byte too many costs one turn, a byte too
  // few would cost a wake-up.
  std::array<char, 64> bytes{};
  while (wake_read_ >= 0 && read(wake_read_, bytes.data(), bytes.size()) > 0) {
  }
  caught_count_ = 0;
  std::array<bool, kSignals> taken{};
  for (size_t number = 0; number < taken.size(); number++) {
    taken[number] = caught_[number] != 0;
    if (taken[number]) caught_[number] = 0;
  }
  Install(SIGCHLD);

  const std::vector<ZnEventSignal> records = signals_;  // a callback may register another
  for (int number = 0; number < kSignals; number++) {
    if (!taken[static_cast<size_t>(number)]) continue;
    if (number == SIGCHLD) {
      ReapChildren();
      continue;
    }
    for (const ZnEventSignal& record : records) {
      if (record.number == number) record.callback->Dispatch(ZnEvent::Fired);
    }
  }
  return 1;
}
