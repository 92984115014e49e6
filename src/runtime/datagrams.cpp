#include "runtime/datagrams.h"

#include <cerrno>

ZnDatagramReader::ZnDatagramReader(size_t most, size_t longest)
    : bytes_(most * longest), places_(most), senders_(most), messages_(most) {
  for (size_t i = 0; i < most; i++) {
    places_[i] = {bytes_.data() + i * longest, longest};
    messages_[i].msg_hdr.msg_name = &senders_[i];
    messages_[i].msg_hdr.msg_iov = &places_[i];
    messages_[i].msg_hdr.msg_iovlen = 1;
  }
}

size_t ZnDatagramReader::Receive(int fd) {
  for (mmsghdr& message : messages_) message.msg_hdr.msg_namelen = sizeof(sockaddr_in);
  int count = 0;
  do {
    count = recvmmsg(fd, messages_.data(), static_cast<unsigned>(messages_.size()), 0, nullptr);
  } while (count < 0 && errno == EINTR);
  return count > 0 ? static_cast<size_t>(count) : 0;
}

ZnDatagramReader::Datagram ZnDatagramReader::operator[](size_t i) const {
  return {static_cast<const uint8_t*>(places_[i].iov_base), messages_[i].msg_len, ZnInetAddr(senders_[i])};
}

ZnPacket& ZnDatagramWriter::Add(const ZnInetAddr& to) {
  Datagram& datagram = waiting_[count_++];
  datagram.packet.Empty();
  datagram.to = to.SockAddr();
  return datagram.packet;
}

void ZnDatagramWriter::Send(int fd) {
  for (size_t i = 0; i < count_; i++) {
    Datagram& datagram = waiting_[i];
    places_[i] = {const_cast<uint8_t*>(datagram.packet.Data()), datagram.packet.Length()};
    messages_[i].msg_hdr = {&datagram.to, sizeof datagram.to, &places_[i], 1, nullptr, 0, 0};
  }
  for (size_t sent = 0; sent < count_;) {
    const int count = sendmmsg(fd, &messages_[sent], static_cast<unsigned>(count_ - sent), MSG_NOSIGNAL);
    if (count > 0) {
      sent += static_cast<size_t>(count);
    } else if (errno != EINTR) {
      sent++;
    }
  }
  count_ = 0;
}
