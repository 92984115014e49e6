#include "core/fork_gate.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

ZnForkGate::ZnForkGate() {
  if (pipe(pipe_.data()) < 0) return;  // the parent then doesn't wait
  for (const int end : pipe_) fcntl(end, F_SETFD, FD_CLOEXEC);
}

bool ZnForkGate::AwaitChild() {
  if (pipe_[0] < 0) return true;
  close(pipe_[1]);  // else our own end would keep the pipe from ending with the child
  char byte = 0;
  ssize_t got = 0;
  do {
    got = read(pipe_[0], &byte, 1);
  } while (got < 0 && errno == EINTR);
  return got == 1;
}

void ZnForkGate::Open() {
  if (pipe_[0] < 0) return;
  const char byte = 0;
  if (write(pipe_[1], &byte, 1) < 0) errno = 0;  // nobody waits any more
  for (const int end : pipe_) close(end);
  pipe_ = {-1, -1};
}
