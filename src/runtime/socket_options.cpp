// The switches of a socket.

#include <netinet/in.h>
#include <netinet/tcp.h>

#include <cstdlib>
#include <iterator>

#include "runtime/socket.h"

namespace {

constexpr unsigned kUnknownBufferSize = 4096;

}  // namespace

bool ZnSocket::SetOption(int level, int option, const char* name, const void* value, socklen_t size) {
  return setsockopt(Fd(), level, option, value, size) == 0 || Record("setsockopt", FdText() + ", " + name);
}

bool ZnSocket::SetNumber(int level, int option, const char* name, int value) {
  return SetOption(level, option, name, &value, sizeof(value));
}

unsigned ZnSocket::GetBufferSize(int option, const char* name) {
  int value = 0;
  socklen_t size = sizeof(value);
  if (getsockopt(Fd(), SOL_SOCKET, option, &value, &size) == 0) return static_cast<unsigned>(value);
  Record("getsockopt", FdText() + ", " + name);
  return kUnknownBufferSize;
}

unsigned ZnSocket::GetReceiveBufferSize() { return GetBufferSize(SO_RCVBUF, "SO_RCVBUF"); }

unsigned ZnSocket::GetTransmitBufferSize() { return GetBufferSize(SO_SNDBUF, "SO_SNDBUF"); }

bool ZnSocket::SetReceiveBufferSize(unsigned bytes) {
  return SetNumber(SOL_SOCKET, SO_RCVBUF, "SO_RCVBUF", static_cast<int>(bytes));
}

bool ZnSocket::SetTransmitBufferSize(unsigned bytes) {
  return SetNumber(SOL_SOCKET, SO_SNDBUF, "SO_SNDBUF", static_cast<int>(bytes));
}

bool ZnSocket::SetDelay(bool on) { return SetNumber(IPPROTO_TCP, TCP_NODELAY, "TCP_NODELAY", on); }

bool ZnSocket::SetKeepAlive(bool on) { return SetNumber(SOL_SOCKET, SO_KEEPALIVE, "SO_KEEPALIVE", on); }

bool ZnSocket::SetOOBInLine(bool on) { return SetNumber(SOL_SOCKET, SO_OOBINLINE, "SO_OOBINLINE", on); }

bool ZnSocket::SetBroadcast(bool on) { return SetNumber(SOL_SOCKET, SO_BROADCAST, "SO_BROADCAST", on); }

bool ZnSocket::SetLinger(bool on, unsigned seconds) {
  const linger value = {on, static_cast<int>(seconds)};
  return SetOption(SOL_SOCKET, SO_LINGER, "SO_LINGER", &value, sizeof(value));
}

bool ZnSocket::SetTypeOfService(serviceType type) {
  static constexpr int kValues[] = {2, 16, 4, 8};  // by serviceType
  if (!getenv("HALDEN_SET_IP_TOS")) return true;
  auto index = static_cast<size_t>(type);
  return index >= std::size(kValues) || SetNumber(IPPROTO_IP, IP_TOS, "IP_TOS", kValues[index]);
}
