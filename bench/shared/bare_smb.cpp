#include "shared/bare_smb.h"

#include <arpa/inet.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstring>

#include "shared/measure.h"

namespace {

constexpr size_t kNetbiosHeader = 4, kHeader = 32, kWords = kHeader + 1;
constexpr size_t kReadOffset = kNetbiosHeader + kWords + 6;   // where the offset stands in a ReadAndX request
constexpr size_t kWriteOffset = kNetbiosHeader + kWords + 6;  // and in a WriteAndX request
constexpr uint16_t kLargestReply = 65535;

enum Command : uint8_t {
  kOpenAndX = 0x2D,
  kReadAndX = 0x2E,
  kWriteAndX = 0x2F,
  kTransaction2 = 0x32,
  kNegotiate = 0x72,
  kSessionSetupAndX = 0x73,
  kTreeConnectAndX = 0x75,
};
constexpr uint16_t kFindFirst = 1, kFindNext = 2;
constexpr uint16_t kLevelBothNames = 0x104, kClose = 2, kResumeWhereItEnded = 8;

std::string U16(unsigned value) { return {static_cast<char>(value), static_cast<char>(value >> 8)}; }
std::string U32(uint32_t value) { return U16(value & 0xFFFF) + U16(value >> 16); }
std::string Text(const std::string& text) { return text + '\0'; }
const std::string kNoAndX = U16(0xFF) + U16(0);

unsigned U16At(std::string_view bytes, size_t at) {
  if (bytes.size() < at + 2) Die("an SMB reply that is cut off");
  return static_cast<unsigned char>(bytes[at]) | static_cast<unsigned>(static_cast<unsigned char>(bytes[at + 1])) << 8;
}

}  // namespace

BareSmb::BareSmb() : fd_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)), buffer_(1 << 18, '\0') {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<uint16_t>(std::stoi(Setting("HALDEN_SMB_PORT"))));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  if (connect(fd_, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) Die("no SMB server");
  const int yes = 1;
  setsockopt(fd_, IPPROTO_TCP, TCP_NODELAY, &yes, sizeof yes);
  Exchange(Message(kNegotiate, "", '\x02' + Text("NT LM 0.12")));
  const uint32_t capabilities = 0x8 | 0x4000 | 0x8000;  // large files, reads and writes
  const std::string nobody = Text("") + Text("");
  const std::string words = kNoAndX + U16(kLargestReply) + U16(50) + U16(0) + U32(0) + U16(0) + U16(0) + U32(0);
  const std::string_view loggedon =
      Exchange(Message(kSessionSetupAndX, words + U32(capabilities), nobody + Text("Unix") + Text("bench")));
  uid_ = static_cast<uint16_t>(U16At(loggedon, 28));
  const std::string path = "\\\\" + Setting("HALDEN_SMB_NAME") + "\\" + Setting("HALDEN_SMB_SHARE");
  const std::string_view connected =
      Exchange(Message(kTreeConnectAndX, kNoAndX + U16(0) + U16(1), Text("") + Text(path) + Text("?????")));
  tid_ = static_cast<uint16_t>(U16At(connected, 24));
}

BareSmb::~BareSmb() { close(fd_); }

std::string BareSmb::Message(uint8_t command, const std::string& words, const std::string& bytes) const {
  std::string header = "\xFFSMB";
  header += static_cast<char>(command);
  header += U32(0) + '\x18' + U16(1) + std::string(12, '\0') + U16(tid_) + U16(1) + U16(uid_) + U16(1);
  const std::string body =
      header + static_cast<char>(words.size() / 2) + words + U16(static_cast<unsigned>(bytes.size())) + bytes;
  const uint32_t length = htonl(static_cast<uint32_t>(body.size()));
  return std::string(reinterpret_cast<const char*>(&length), sizeof length) + body;
}

void BareSmb::Send(const std::string& message) const {
  if (send(fd_, message.data(), message.size(), 0) != static_cast<ssize_t>(message.size())) Die("SMB: send failed");
}

std::string_view BareSmb::Receive() {
  have_ -= used_;  // pieces of one reply may come together
  memmove(buffer_.data(), buffer_.data() + used_, have_);
  for (;;) {
    if (have_ >= kNetbiosHeader) {
      uint32_t length = 0;
      memcpy(&length, buffer_.data(), sizeof length);
      used_ = kNetbiosHeader + (ntohl(length) & 0x1FFFF);
      if (have_ >= used_) return std::string_view(buffer_).substr(kNetbiosHeader, used_ - kNetbiosHeader);
    }
    const ssize_t got = recv(fd_, buffer_.data() + have_, buffer_.size() - have_, 0);
    if (got <= 0) Die("SMB: the server hung up");
    have_ += static_cast<size_t>(got);
  }
}

std::string_view BareSmb::Exchange(const std::string& message) {
  Send(message);
  const std::string_view reply = Receive();
  if (U16At(reply, 5) != 0 || U16At(reply, 7) != 0) {
    Die("SMB command " + std::to_string(static_cast<unsigned char>(reply[4])) + ": error " +
        std::to_string(U16At(reply, 5)) + "/" + std::to_string(U16At(reply, 7)));
  }
  return reply;
}

void BareSmb::Open(const std::string& path) {
  constexpr unsigned readWrite = 0x42, anyAttributes = 0x16, openOrCreate = 0x11;
  const std::string words = kNoAndX + U16(0) + U16(readWrite) + U16(anyAttributes) + U16(0) + U32(0) +
                            U16(openOrCreate) + U32(0) + U32(0) + U32(0);
  fid_ = static_cast<uint16_t>(U16At(Exchange(Message(kOpenAndX, words, Text(path))), kWords + 4));
}

void BareSmb::Read(uint32_t offset, uint16_t size) {
  if (reading_.empty() || U16At(reading_, kReadOffset + 4) != size) {
    reading_ = Message(kReadAndX, kNoAndX + U16(fid_) + U32(0) + U16(size) + U16(size) + U32(0) + U16(0), "");
  }
  reading_.replace(kReadOffset, 4, U32(offset));
  if (U16At(Exchange(reading_), kWords + 10) != size) Die("SMB: a short read");
}

void BareSmb::Write(uint32_t offset, uint16_t size) {
  if (writing_.empty() || U16At(writing_, kWriteOffset + 14) != size) {
    const std::string words = kNoAndX + U16(fid_) + U32(0) + U32(0) + U16(0) + U16(0) + U16(0) + U16(size);
    writing_ = Message(kWriteAndX, words + U16(kWords + 24 + 2), std::string(size, 's'));
  }
  writing_.replace(kWriteOffset, 4, U32(offset));
  if (U16At(Exchange(writing_), kWords + 4) != size) Die("SMB: a short write");
}

std::string BareSmb::Transaction(uint16_t function, const std::string& parameters) const {
  const auto length = static_cast<unsigned>(parameters.size());
  const unsigned at = kWords + 30 + 2 + 3;  // behind words, byte count and padding
  const std::string words = U16(length) + U16(0) + U16(10) + U16(kLargestReply) + U16(0) + U16(0) + U32(0) + U16(0) +
                            U16(length) + U16(at) + U16(0) + U16(at + length) + U16(1) + U16(function);
  return Message(kTransaction2, words, std::string(3, '\0') + parameters);
}

size_t BareSmb::List(const std::string& path) {
  constexpr unsigned anyAttributes = 0x16, asManyAsFit = 0xFFFF;
  std::string request = Transaction(kFindFirst, U16(anyAttributes) + U16(asManyAsFit) + U16(kClose) +
                                                    U16(kLevelBothNames) + U32(0) + Text(path + "\\*"));
  std::string id;
  size_t count = 0;
  for (;;) {
    // A reply in pieces says in each how much there is in all, and how much stands in this one from where on.
    std::string_view reply = Exchange(request);
    size_t have = U16At(reply, kWords + 12);
    const size_t all = U16At(reply, kWords + 2);
    std::string parameters(reply.substr(U16At(reply, kWords + 8), U16At(reply, kWords + 6)));
    while (have < all) have += U16At(Receive(), kWords + 12);
    if (id.empty()) {
      id = parameters.substr(0, 2);
      parameters.erase(0, 2);
    }
    count += U16At(parameters, 0);
    if (U16At(parameters, 2) != 0) return count;
    if (U16At(parameters, 0) == 0) Die("SMB: a listing without end");
    request = Transaction(kFindNext, id + U16(asManyAsFit) + U16(kLevelBothNames) + U32(0) +
                                         U16(kClose | kResumeWhereItEnded) + Text(""));
  }
}
