#pragma once
// The bare loop on the SMB side: one connection to a share, as anybody, one request at a time, blocking calls, a
// buffer, and no look at what comes but its length and whether it is a success. All in the newest dialect ([MS-CIFS]).

#include <cstdint>
#include <string>
#include <string_view>

class BareSmb {
 public:
  // To the share in the environment.
  BareSmb();
  ~BareSmb();
  BareSmb(const BareSmb&) = delete;
  BareSmb& operator=(const BareSmb&) = delete;

  // Opens a file of the share, beginning with a backslash, for reading and writing; the one that is read and written.
  void Open(const std::string& path);
  void Read(uint32_t offset, uint16_t size);  // dies of a short read
  void Write(uint32_t offset, uint16_t size);
  // Lists a directory with as much in a reply as the server gives; the number of entries.
  size_t List(const std::string& path);

 private:
  // A whole message: NetBIOS header, SMB header, word count, words, byte count, bytes.
  std::string Message(uint8_t command, const std::string& words, const std::string& bytes) const;
  std::string Transaction(uint16_t function, const std::string& parameters) const;
  // The reply, from its SMB header on. Dies unless it is a success.
  std::string_view Exchange(const std::string& message);
  void Send(const std::string& message) const;
  std::string_view Receive();

  int fd_;
  uint16_t uid_ = 0, tid_ = 0, fid_ = 0;
  std::string buffer_;
  size_t have_ = 0, used_ = 0;  // bytes in the buffer, and those of them that belong to the reply that was given last
  std::string reading_, writing_;  // packed requests, of the size that was asked for last
};
