#include "shared/relay.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <deque>
#include <list>
#include <string>
#include <vector>

#include "shared/measure.h"

namespace {

using namespace std::chrono_literals;

constexpr size_t kPiece = 128 << 10;        // read at once
constexpr size_t kMostOnTheWay = 64 << 20;  // bytes in one direction; more wait in the sender's socket
constexpr unsigned kPiecesAtATime = 8;      // before the other connections have their turn

// An end of the relay. Closed with its object.
class Socket {
 public:
  explicit Socket(int fd) : fd_(fd) {
    if (fd_ < 0) Die("relay: no socket");
    const int yes = 1;
    setsockopt(fd_, IPPROTO_TCP, TCP_NODELAY, &yes, sizeof yes);
    fcntl(fd_, F_SETFL, O_NONBLOCK);
  }
  ~Socket() { close(fd_); }
  Socket(const Socket&) = delete;
  Socket& operator=(const Socket&) = delete;
  int Fd() const { return fd_; }

 private:
  int fd_;
};

// One direction of a connection.
class Direction {
 public:
  Direction(int from, int to, SteadyClock::duration delay) : from_(from), to_(to), delay_(delay) {}

  bool Ended() const { return broken_ || (closed_ && onitsway_.empty()); }
  short WantsToRead() const { return !closed_ && bytes_ < kMostOnTheWay ? POLLIN : 0; }
  // What is due waits for room in the receiver's socket.
  short WantsToWrite(SteadyClock::time_point now) const { return full_ && Due() <= now ? POLLOUT : 0; }
  SteadyClock::time_point Due() const {
    return onitsway_.empty() ? SteadyClock::time_point::max() : onitsway_.front().due;
  }
  bool Full() const { return full_; }

  void Read() {
    static std::string buffer(kPiece, '\0');
    for (unsigned i = 0; i < kPiecesAtATime && WantsToRead(); i++) {
      const ssize_t got = recv(from_, buffer.data(), buffer.size(), 0);
      if (got < 0 && (errno == EAGAIN || errno == EINTR)) return;
      if (got <= 0) {
        closed_ = true;
        return;
      }
      bytes_ += static_cast<size_t>(got);
      onitsway_.push_back({SteadyClock::now() + delay_, buffer.substr(0, static_cast<size_t>(got))});
    }
  }

  // What is due, as far as the receiver's socket takes it.
  void Write(SteadyClock::time_point now) {
    full_ = false;
    while (Due() <= now) {
      Piece& piece = onitsway_.front();
      const ssize_t sent = send(to_, piece.bytes.data() + piece.sent, piece.bytes.size() - piece.sent, MSG_NOSIGNAL);
      if (sent < 0 && (errno == EAGAIN || errno == EINTR)) {
        full_ = true;
        return;
      }
      if (sent < 0) {
        broken_ = true;
        return;
      }
      piece.sent += static_cast<size_t>(sent);
      bytes_ -= static_cast<size_t>(sent);
      if (piece.sent == piece.bytes.size()) onitsway_.pop_front();
    }
  }

 private:
  struct Piece {
    SteadyClock::time_point due;
    std::string bytes;
    size_t sent = 0;
  };

  int from_, to_;
  SteadyClock::duration delay_;
  std::deque<Piece> onitsway_;
  size_t bytes_ = 0;
  bool full_ = false, closed_ = false, broken_ = false;
};

sockaddr_in Loopback(uint16_t port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(port);
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  return address;
}

// A connection ends as a whole, once the first of its directions has.
class Connection {
 public:
  Connection(int accepted, const RelayOptions& options)
      : near_(accepted), far_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    const sockaddr_in to = Loopback(options.targetport);
    if (connect(far_.Fd(), reinterpret_cast<const sockaddr*>(&to), sizeof to) != 0 && errno != EINPROGRESS)
      Die("relay: no target");
    const SteadyClock::duration delay = std::chrono::nanoseconds(options.roundtrip) / 2;
    directions_.emplace_back(near_.Fd(), far_.Fd(), delay);
    directions_.emplace_back(far_.Fd(), near_.Fd(), delay);
  }

  bool Ended() const { return directions_[0].Ended() || directions_[1].Ended(); }

  void Want(std::vector<pollfd>& fds, SteadyClock::time_point now, SteadyClock::time_point& wake) const {
    const auto wants = [&](const Direction& reads, const Direction& writes) {
      return static_cast<short>(reads.WantsToRead() | writes.WantsToWrite(now));
    };
    fds.push_back({near_.Fd(), wants(directions_[0], directions_[1]), 0});
    fds.push_back({far_.Fd(), wants(directions_[1], directions_[0]), 0});
    for (const Direction& direction : directions_) {
      if (!direction.Full()) wake = std::min(wake, direction.Due());
    }
  }

  void Serve(const pollfd& near, const pollfd& far) {
    constexpr short readable = POLLIN | POLLHUP | POLLERR;
    if (near.revents & readable) directions_[0].Read();
    if (far.revents & readable) directions_[1].Read();
    const auto now = SteadyClock::now();
    directions_[0].Write(now);
    directions_[1].Write(now);
  }

 private:
  Socket near_, far_;
  std::vector<Direction> directions_;  // to the target, and back
};

int Listen(uint16_t port) {
  const int fd = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  const int yes = 1;
  setsockopt(fd, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
  const sockaddr_in address = Loopback(port);
  if (bind(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 || listen(fd, 64) != 0) {
    Die("relay: can't listen");
  }
  return fd;
}

// Sleeps until something comes or is due. A sleep ends late, by more than an exchange takes without a relay: it means
// to end as much earlier as the ones before were late, and what is left is waited for awake.
class Sleeper {
 public:
  void Wait(std::vector<pollfd>& fds, SteadyClock::time_point due) {
    if (due == SteadyClock::time_point::max()) {
      ppoll(fds.data(), fds.size(), nullptr, nullptr);
      return;
    }
    const auto aim = due - late_;
    const bool slept = SteadyClock::now() < aim;
    if (Poll(fds, aim) > 0) return;
    const auto woken = SteadyClock::now();
    if (slept) late_ += (std::clamp<SteadyClock::duration>(woken - aim, 0ns, kLatest) - late_) / 8;
    while (SteadyClock::now() < due && Poll(fds, SteadyClock::now()) == 0) continue;
  }

 private:
  static constexpr SteadyClock::duration kLatest = 300us;

  static int Poll(std::vector<pollfd>& fds, SteadyClock::time_point until) {
    const auto left = std::max<int64_t>(0, std::chrono::nanoseconds(until - SteadyClock::now()).count());
    const timespec timeout = {left / 1000000000, left % 1000000000};
    return ppoll(fds.data(), fds.size(), &timeout, nullptr);
  }

  SteadyClock::duration late_{};  // of a sleep, on average
};

}  // namespace

void RunRelay(const RelayOptions& options) {
  prctl(PR_SET_TIMERSLACK, 1);  // nanoseconds: it sleeps exactly as long as it means to
  const int listener = Listen(options.listenport);
  std::list<Connection> connections;
  std::vector<pollfd> fds;
  Sleeper sleeper;
  for (;;) {
    fds.assign(1, {listener, POLLIN, 0});
    auto wake = SteadyClock::time_point::max();
    const auto now = SteadyClock::now();
    for (const Connection& connection : connections) connection.Want(fds, now, wake);
    sleeper.Wait(fds, wake);
    size_t at = 1;
    for (Connection& connection : connections) {
      connection.Serve(fds[at], fds[at + 1]);
      at += 2;
    }
    connections.remove_if([](const Connection& connection) { return connection.Ended(); });
    if (const int accepted = accept4(listener, nullptr, nullptr, SOCK_CLOEXEC); accepted >= 0) {
      connections.emplace_back(accepted, options);
    }
  }
}
