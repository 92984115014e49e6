#pragma once
// Many datagrams of one socket in one system call, and in memory that is used again and again.

#include <sys/socket.h>

#include <vector>

#include "runtime/inet_addr.h"
#include "runtime/packet.h"

class ZnDatagramReader {
 public:
  struct Datagram {
    const uint8_t* bytes;
    size_t length;
    ZnInetAddr from;
  };

  // Room for `most` datagrams of `longest` bytes each; longer ones are cut there.
  ZnDatagramReader(size_t most, size_t longest);
  ZnDatagramReader(const ZnDatagramReader&) = delete;
  ZnDatagramReader& operator=(const ZnDatagramReader&) = delete;

  // Takes what has come to a socket that doesn't block, in place of what was taken before. Gives how many; 0 also when
  // the system refuses.
  size_t Receive(int fd);
  // One of those.
  Datagram operator[](size_t i) const;

 private:
  std::vector<uint8_t> bytes_;
  std::vector<iovec> places_;
  std::vector<sockaddr_in> senders_;
  std::vector<mmsghdr> messages_;
};

class ZnDatagramWriter {
 public:
  explicit ZnDatagramWriter(size_t most) : waiting_(most), places_(most), messages_(most) {}
  ZnDatagramWriter(const ZnDatagramWriter&) = delete;
  ZnDatagramWriter& operator=(const ZnDatagramWriter&) = delete;

  // How many datagrams wait.
  size_t Count() const { return count_; }
  bool IsFull() const { return count_ == waiting_.size(); }
  // One more, empty, to be filled until the next Add or Send. The writer isn't full.
  ZnPacket& Add(const ZnInetAddr& to);
  // The last one that was added.
  const ZnPacket& Last() const { return waiting_[count_ - 1].packet; }
  // Sends all that wait. One that the system doesn't take is lost.
  void Send(int fd);

 private:
  struct Datagram {
    ZnPacket packet;
    sockaddr_in to = {};
  };

  std::vector<Datagram> waiting_;  // the first count_ of them
  size_t count_ = 0;
  std::vector<iovec> places_;
  std::vector<mmsghdr> messages_;
};
