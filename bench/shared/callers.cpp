#include "shared/callers.h"

#include <arpa/inet.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstring>

namespace {

using namespace std::chrono_literals;

constexpr size_t kLongestDatagram = 65536;
constexpr size_t kSlotBits = 8;  // of an xid: where the callers' number stands, to find the one that a reply is for
constexpr std::chrono::milliseconds kResendAfter = 700ms, kGiveUpAfter = 60s, kLookForOverdue = 100ms;

int UdpSocket() {
  const int fd = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  if (fd < 0) Die("no socket");
  return fd;
}

sockaddr_in Loopback(uint16_t port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(port);
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  return address;
}

[[noreturn]] void AnswerForEver(int fd, size_t replySize) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  static char buffer[kLongestDatagram];
  for (;;) {
    pollfd ready{fd, POLLIN, 0};
    sockaddr_in from{};
    socklen_t length = sizeof from;
    poll(&ready, 1, -1);
    recvfrom(fd, buffer, sizeof buffer, 0, reinterpret_cast<sockaddr*>(&from), &length);
    sendto(fd, buffer, replySize, 0, reinterpret_cast<const sockaddr*>(&from), length);
  }
}

}  // namespace

void PutWord(std::string& bytes, size_t at, uint32_t value) {
  const uint32_t word = htonl(value);
  bytes.replace(at, sizeof word, reinterpret_cast<const char*>(&word), sizeof word);
}

uint32_t WordAt(std::string_view bytes, size_t at) {
  if (bytes.size() < at + 4) Die("a reply that is cut off");
  uint32_t word = 0;
  memcpy(&word, bytes.data() + at, sizeof word);
  return ntohl(word);
}

struct CallSocket::Slot {
  Caller caller;
  std::string call;
  uint32_t xid = 0;
  SteadyClock::time_point begun, sent;
  bool done = false;
};

CallSocket::CallSocket(uint16_t port) : fd_(UdpSocket()), buffer_(kLongestDatagram, '\0') {
  const sockaddr_in to = Loopback(port);
  if (connect(fd_, reinterpret_cast<const sockaddr*>(&to), sizeof to) != 0) Die("can't connect");
  const int room = 4 << 20;  // for all replies in flight
  setsockopt(fd_, SOL_SOCKET, SO_RCVBUF, &room, sizeof room);
  const timeval patience{0, std::chrono::microseconds(kLookForOverdue).count()};
  setsockopt(fd_, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
}

CallSocket::~CallSocket() { close(fd_); }

bool CallSocket::Receive() {
  const ssize_t got = recv(fd_, buffer_.data(), buffer_.size(), 0);
  if (got < 0 && errno != EAGAIN && errno != EINTR) Die(std::string("no answer: ") + strerror(errno));
  reply_ = {buffer_.data(), static_cast<size_t>(std::max<ssize_t>(got, 0))};
  return reply_.size() >= 4;
}

void CallSocket::Send(Slot& slot) {
  slot.sent = SteadyClock::now();
  if (send(fd_, slot.call.data(), slot.call.size(), 0) < 0) Die(std::string("send failed: ") + strerror(errno));
}

void CallSocket::SendOverdueAgain(std::vector<Slot>& slots) {
  const auto now = SteadyClock::now();
  for (Slot& slot : slots) {
    if (slot.done || now < slot.sent + kResendAfter) continue;
    if (now > slot.begun + kGiveUpAfter) Die("a call wasn't answered for a minute");
    resent_++;
    Send(slot);
  }
}

void CallSocket::Run(std::vector<Caller> callers) {
  std::vector<Slot> slots(callers.size());
  size_t running = 0;
  const auto next = [&](Slot& slot, std::string_view reply) {
    slot.done = !slot.caller(reply, slot.call);
    if (slot.done) return;
    running++;
    slot.xid = ++sequence_ << kSlotBits | static_cast<uint32_t>(&slot - slots.data());
    PutWord(slot.call, 0, slot.xid);
    Send(slot);
    slot.begun = slot.sent;
  };
  if (callers.size() > 1 << kSlotBits) Die("more callers than an xid has room for");
  for (size_t i = 0; i < slots.size(); i++) {
    slots[i].caller = std::move(callers[i]);
    next(slots[i], {});
  }
  auto looked = SteadyClock::now();
  while (running > 0) {
    if (Receive()) {
      const uint32_t xid = WordAt(reply_, 0);
      Slot* slot = &slots[std::min<size_t>(xid & ((1 << kSlotBits) - 1), slots.size() - 1)];
      if (slot->xid == xid && !slot->done) {  // else it answers a call for the second time
        running--;
        next(*slot, reply_);
      }
    }
    if (const auto now = SteadyClock::now(); now > looked + kLookForOverdue) {
      looked = now;
      SendOverdueAgain(slots);
    }
  }
}

Echo::Echo(size_t replySize) {
  const int fd = UdpSocket();
  const int room = 4 << 20;
  setsockopt(fd, SOL_SOCKET, SO_RCVBUF, &room, sizeof room);
  sockaddr_in address = Loopback(0);
  socklen_t length = sizeof address;
  if (bind(fd, reinterpret_cast<const sockaddr*>(&address), length) != 0) Die("can't bind");
  if (getsockname(fd, reinterpret_cast<sockaddr*>(&address), &length) != 0) Die("no port");
  port_ = ntohs(address.sin_port);
  child_ = fork();
  if (child_ < 0) Die("can't fork");
  if (child_ == 0) AnswerForEver(fd, replySize);
  close(fd);
}

Echo::~Echo() {
  kill(child_, SIGKILL);
  waitpid(child_, nullptr, 0);
}
