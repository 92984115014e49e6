#pragma once
// Contract. A thin object over a BSD socket: IPv4, and Unix paths where a bound address may be one. Calls give false
// (or a status) and remember the failed system call. Descriptors are closed on exec, and sends raise no SIGPIPE.

#include <sys/socket.h>
#include <sys/uio.h>
#include <sys/un.h>

#include <span>

#include "runtime/file.h"
#include "runtime/inet_addr.h"

// View of an address as the system takes it. The address must outlive the view.
class ZnSocketAddress {
 public:
  ZnSocketAddress(const ZnInetAddr& address)  // NOLINT(google-explicit-constructor): an address is one
      : address_(reinterpret_cast<const sockaddr*>(&address.SockAddr())) {}
  explicit ZnSocketAddress(const sockaddr_un& path) : address_(reinterpret_cast<const sockaddr*>(&path)) {}

  sa_family_t Family() const { return address_->sa_family; }
  const sockaddr* Address() const { return address_; }
  // 16, or for a Unix path the length of the path plus 3.
  socklen_t Length() const;
  // The path of a Unix address, otherwise null.
  const char* Path() const;
  ZnUniString AsString() const;

 private:
  const sockaddr* address_;
};

class ZnSocket : public ZnFile {
 public:
  enum connectionType { Datagram = 0, Stream = 1 };
  enum serviceType { LowCost = 0, LowDelay = 1, Reliability = 2, Throughput = 3 };

  ZnSocket() = default;

  // A new socket, bound; an old one is closed first. `reuse` sets SO_REUSEADDR. While the address is in use, waits two
  // seconds and tries again up to `retries` times, telling people on standard error if `verbose`. A Unix path is
  // unlinked first.
  bool Bind(const ZnSocketAddress& address, connectionType type, bool reuse, unsigned retries, bool verbose);
  // Starts a connection. On a non-blocking socket false with Error().Code() EINPROGRESS is the usual answer: the socket
  // becomes writable in the end, and ConnectionComplete tells how it went.
  virtual bool Connect(const ZnSocketAddress& address);
  // True if the connection that was started stands; otherwise its failure is recorded under "connect" with `text` as
  // arguments.
  bool ConnectionComplete(const ZnUniString& text);
  bool Listen(int backlog);
  // Becomes the next connection that waits on the listening socket `fd`.
  bool AcceptFrom(int fd);

  IoStatus Write(const void* buffer, size_t size, size_t& moved) override;
  // One write of all the parts, in order, and one read that fills them so. As Write and Read; at most 1024 parts.
  IoStatus WriteParts(std::span<const iovec> parts, size_t& moved);
  IoStatus ReadParts(std::span<const iovec> parts, size_t& moved);
  // One datagram. Complete: it filled all `size` bytes (and may have been longer), `length` is left alone. Partial:
  // `length` bytes came. Closed: an empty datagram. Failed: nothing came; recorded unless the call would have blocked.
  IoStatus ReadMessage(void* buffer, size_t size, size_t& length, ZnInetAddr& from);
  // Sends one datagram; the same results. A datagram that was sent is Complete.
  IoStatus WriteMessage(const void* buffer, size_t size, size_t& length, const ZnInetAddr& to);

  // Whether the other end of a connection is known to have closed or reset it, with nothing left to be read. Nothing is
  // taken off the socket.
  bool HasHungUp() const;
  // How many written bytes the other end of a connection hasn't acknowledged; good after the end of the connection too,
  // until Close. 0 when the system doesn't tell.
  size_t Unacknowledged() const;

  bool LocalAddress(ZnInetAddr& address);
  bool RemoteAddress(ZnInetAddr& address);

  // In bytes; 4096 if the system doesn't tell.
  unsigned GetReceiveBufferSize();
  unsigned GetTransmitBufferSize();
  bool SetReceiveBufferSize(unsigned bytes);
  bool SetTransmitBufferSize(unsigned bytes);
  bool SetDelay(bool on);  // on: small segments go out at once (TCP_NODELAY)
  bool SetKeepAlive(bool on);
  bool SetLinger(bool on, unsigned seconds);
  bool SetOOBInLine(bool on);
  bool SetBroadcast(bool on);
  // Asks the network for a kind of service, if the environment has HALDEN_SET_IP_TOS; otherwise true at once.
  bool SetTypeOfService(serviceType type);

 private:
  bool makesock(connectionType type, int family);
  bool BindWithRetries(const ZnSocketAddress& address, unsigned retries, bool verbose);
  IoStatus MessageStatus(const char* call, ssize_t result, size_t size, size_t& length);
  bool AskAddress(int (*ask)(int, sockaddr*, socklen_t*), const char* call, ZnInetAddr& address);
  bool SetOption(int level, int option, const char* name, const void* value, socklen_t size);
  bool SetNumber(int level, int option, const char* name, int value);
  unsigned GetBufferSize(int option, const char* name);
};
