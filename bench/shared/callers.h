#pragma once
// Callers by datagrams: many at once on one socket, as a kernel's mount has it, and a bare echo to compare with.

#include <sys/types.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "shared/measure.h"

// One after the other of a caller's calls. Given the reply to the call before (empty at first), puts the next one into
// `call`, which holds the one before, and returns true; or returns false: it is done. The first four bytes of a call
// are written over with its xid.
using Caller = std::function<bool(std::string_view reply, std::string& call)>;

void PutWord(std::string& bytes, size_t at, uint32_t value);
uint32_t WordAt(std::string_view bytes, size_t at);

// A socket that callers share. Datagrams get lost: a call without reply is sent again, with the same xid.
class CallSocket {
 public:
  explicit CallSocket(uint16_t port);
  ~CallSocket();
  CallSocket(const CallSocket&) = delete;
  CallSocket& operator=(const CallSocket&) = delete;

  // Runs the callers side by side, each with one call on its way, until all are done.
  void Run(std::vector<Caller> callers);
  void Run(Caller caller) { Run(std::vector<Caller>{std::move(caller)}); }
  // So many of the callers' calls had to be sent again.
  unsigned Resent() const { return resent_; }

 private:
  struct Slot;

  bool Receive();  // a datagram into reply_, or false when none came in time
  void Send(Slot& slot);
  void SendOverdueAgain(std::vector<Slot>& slots);

  int fd_;
  uint32_t sequence_ = 0;
  unsigned resent_ = 0;
  std::string buffer_;
  std::string_view reply_;
};

// The bare loop, in a process of its own: answers every datagram with one of a given size that begins like it.
class Echo {
 public:
  explicit Echo(size_t replySize);
  ~Echo();
  Echo(const Echo&) = delete;
  Echo& operator=(const Echo&) = delete;
  uint16_t Port() const { return port_; }
  pid_t Pid() const { return child_; }

 private:
  uint16_t port_ = 0;
  pid_t child_ = 0;
};
