#include "runtime/socket.h"

#include <linux/sockios.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstddef>
#include <cstdio>
#include <cstring>

namespace {

constexpr unsigned kBindRetrySeconds = 2;

// Tells people on standard error that a start-up waits for its port.
class RetryReport {
 public:
  RetryReport(bool verbose, unsigned retries) : verbose_(verbose), retries_(retries) {}
  void Failed() {
    if (!verbose_) return;
    if (announced_) {
      fputc('.', stderr);
    } else {
      fprintf(stderr, "A socket is still in use, attempting %d retries...", static_cast<int>(retries_));
    }
    fflush(stderr);
    announced_ = true;
  }
  void Succeeded() const {
    if (announced_) fputc('\n', stderr);
  }
  void GaveUp() const {
    if (announced_ && retries_ != UINT_MAX) fputc('\n', stderr);
  }

 private:
  bool verbose_;
  unsigned retries_;
  bool announced_ = false;
};

// A connect that a signal interrupted goes on by itself: waits for its end and gives its result in errno's terms.
int FinishInterruptedConnect(int fd) {
  pollfd wait = {fd, POLLOUT, 0};
  while (poll(&wait, 1, -1) < 0 && errno == EINTR) {
  }
  int code = 0;
  socklen_t size = sizeof(code);
  return getsockopt(fd, SOL_SOCKET, SO_ERROR, &code, &size) == 0 ? code : errno;
}

msghdr PartsOfMessage(std::span<const iovec> parts) {
  msghdr message = {};
  message.msg_iov = const_cast<iovec*>(parts.data());
  message.msg_iovlen = parts.size();
  return message;
}

size_t SizeOf(std::span<const iovec> parts) {
  size_t size = 0;
  for (const iovec& part : parts) size += part.iov_len;
  return size;
}

}  // namespace

const char* ZnSocketAddress::Path() const {
  return Family() == AF_UNIX ? reinterpret_cast<const sockaddr_un*>(address_)->sun_path : nullptr;
}

socklen_t ZnSocketAddress::Length() const {
  if (Family() != AF_UNIX) return sizeof(sockaddr_in);
  size_t path = strnlen(Path(), sizeof(sockaddr_un::sun_path));
  return static_cast<socklen_t>(std::min(path + 3, sizeof(sockaddr_un)));
}

ZnUniString ZnSocketAddress::AsString() const {
  if (Family() != AF_UNIX) return ZnInetAddr(*reinterpret_cast<const sockaddr_in*>(address_)).AsString(true);
  return std::string(Path(), strnlen(Path(), sizeof(sockaddr_un::sun_path)));
}

bool ZnSocket::makesock(connectionType type, int family) {
  Close();
  int protocol = 0;
  if (family == AF_INET) protocol = type == Datagram ? IPPROTO_UDP : IPPROTO_TCP;
  int fd = socket(family, (type == Datagram ? SOCK_DGRAM : SOCK_STREAM) | SOCK_CLOEXEC, protocol);
  if (fd < 0) return Record("socket");
  Adopt(fd);
  return true;
}

bool ZnSocket::Bind(const ZnSocketAddress& address, connectionType type, bool reuse, unsigned retries, bool verbose) {
  if (!makesock(type, address.Family())) return false;
  if (address.Path() && unlink(address.Path()) != 0 && errno != ENOENT) return Record("unlink", address.AsString());
  if (reuse && !SetNumber(SOL_SOCKET, SO_REUSEADDR, "SO_REUSEADDR", 1)) return false;
  return BindWithRetries(address, retries, verbose);
}

bool ZnSocket::BindWithRetries(const ZnSocketAddress& address, unsigned retries, bool verbose) {
  RetryReport report(verbose, retries);
  for (bool first = true; bind(Fd(), address.Address(), address.Length()) != 0; first = false) {
    if (retries == 0 || (first && errno != EADDRINUSE)) {
      Record("bind", FdText() + ", " + address.AsString());
      report.GaveUp();
      return false;
    }
    report.Failed();
    retries--;
    sleep(kBindRetrySeconds);
  }
  report.Succeeded();
  return true;
}

bool ZnSocket::Connect(const ZnSocketAddress& address) {
  if (connect(Fd(), address.Address(), address.Length()) == 0 || errno == EAGAIN) return true;
  if (errno == EINTR) errno = FinishInterruptedConnect(Fd());
  return errno == 0 || Record("connect", FdText() + ", " + address.AsString());
}

bool ZnSocket::ConnectionComplete(const ZnUniString& text) {
  int code = 0;
  socklen_t size = sizeof(code);
  if (getsockopt(Fd(), SOL_SOCKET, SO_ERROR, &code, &size) != 0) return Record("getsockopt", FdText() + ", SO_ERROR");
  errno = code;
  return code == 0 || Record("connect", text);
}

bool ZnSocket::Listen(int backlog) { return listen(Fd(), backlog) == 0 || Record("listen", FdText()); }

bool ZnSocket::AcceptFrom(int fd) {
  int accepted = -1;
  do {
    accepted = accept4(fd, nullptr, nullptr, SOCK_CLOEXEC);
  } while (accepted < 0 && errno == EINTR);
  if (accepted < 0) return Record("accept", FdText(fd));
  Adopt(accepted);
  return true;
}

ZnFile::IoStatus ZnSocket::Write(const void* buffer, size_t size, size_t& moved) {
  ssize_t result = 0;
  do {
    result = send(Fd(), buffer, size, MSG_NOSIGNAL);
  } while (result < 0 && errno == EINTR);
  return Transferred("send", result, size, moved);
}

ZnFile::IoStatus ZnSocket::WriteParts(std::span<const iovec> parts, size_t& moved) {
  const msghdr message = PartsOfMessage(parts);
  ssize_t result = 0;
  do {
    result = sendmsg(Fd(), &message, MSG_NOSIGNAL);
  } while (result < 0 && errno == EINTR);
  return Transferred("sendmsg", result, SizeOf(parts), moved);
}

ZnFile::IoStatus ZnSocket::ReadParts(std::span<const iovec> parts, size_t& moved) {
  msghdr message = PartsOfMessage(parts);
  ssize_t result = 0;
  do {
    result = recvmsg(Fd(), &message, 0);
  } while (result < 0 && errno == EINTR);
  const size_t size = SizeOf(parts);
  const IoStatus status = Transferred("recvmsg", result, size, moved);
  return result == 0 && size > 0 ? IoStatus::Closed : status;
}

ZnFile::IoStatus ZnSocket::MessageStatus(const char* call, ssize_t result, size_t size, size_t& length) {
  if (result == 0) return IoStatus::Closed;
  if (result > 0 && static_cast<size_t>(result) == size) return IoStatus::Complete;
  if (result > 0) {
    length = static_cast<size_t>(result);
    return IoStatus::Partial;
  }
  if (errno != EAGAIN && errno != EWOULDBLOCK) Record(call, FdText());
  return IoStatus::Failed;
}

ZnFile::IoStatus ZnSocket::ReadMessage(void* buffer, size_t size, size_t& length, ZnInetAddr& from) {
  sockaddr_in address = {};
  ssize_t result = 0;
  do {
    socklen_t addressSize = sizeof(address);
    result = recvfrom(Fd(), buffer, size, 0, reinterpret_cast<sockaddr*>(&address), &addressSize);
  } while (result < 0 && errno == EINTR);
  if (result >= 0) from = ZnInetAddr(address);
  return MessageStatus("recvfrom", result, size, length);
}

ZnFile::IoStatus ZnSocket::WriteMessage(const void* buffer, size_t size, size_t& length, const ZnInetAddr& to) {
  const ZnSocketAddress address(to);
  ssize_t result = 0;
  do {
    result = sendto(Fd(), buffer, size, MSG_NOSIGNAL, address.Address(), address.Length());
  } while (result < 0 && errno == EINTR);
  return MessageStatus("sendto", result, size, length);
}

bool ZnSocket::HasHungUp() const {
  uint8_t byte = 0;
  const ssize_t result = recv(Fd(), &byte, sizeof(byte), MSG_PEEK | MSG_DONTWAIT);
  return result == 0 || (result < 0 && errno != EAGAIN && errno != EWOULDBLOCK && errno != EINTR);
}

size_t ZnSocket::Unacknowledged() const {
  int bytes = 0;
  return ioctl(Fd(), SIOCOUTQ, &bytes) == 0 && bytes > 0 ? static_cast<size_t>(bytes) : 0;
}

bool ZnSocket::LocalAddress(ZnInetAddr& address) { return AskAddress(getsockname, "getsockname", address); }

bool ZnSocket::RemoteAddress(ZnInetAddr& address) { return AskAddress(getpeername, "getpeername", address); }

bool ZnSocket::AskAddress(int (*ask)(int, sockaddr*, socklen_t*), const char* call, ZnInetAddr& address) {
  sockaddr_in answer = {};
  socklen_t size = sizeof(answer);
  if (ask(Fd(), reinterpret_cast<sockaddr*>(&answer), &size) != 0) return Record(call, FdText());
  address = ZnInetAddr(answer);
  return true;
}
