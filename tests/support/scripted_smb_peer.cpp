#include "support/scripted_smb_peer.h"

#include <gtest/gtest.h>

namespace smb_script {

namespace {

constexpr size_t kHeaderSize = 32;

unsigned At16(const std::string& bytes, size_t at) {
  return at + 2 > bytes.size() ? 0 : static_cast<uint8_t>(bytes[at]) | static_cast<uint8_t>(bytes[at + 1]) << 8;
}

std::string Number(uint64_t value, size_t size) {
  std::string bytes;
  for (size_t i = 0; i < size; i++) bytes += static_cast<char>(value >> 8 * i);
  return bytes;
}

std::string Message(const Request& request, unsigned errorClass, unsigned code, const std::string& words,
                    const std::string& data) {
  std::string message = "\xFFSMB";
  message += Number(request.command, 1) + Number(errorClass, 2) + U16(code) + '\x88' + U16(request.flags2) +
             std::string(12, '\0') + U16(request.tid) + U16(request.pid) + U16(request.uid) + U16(request.mid);
  return message + Number(words.size() / 2, 1) + words + U16(static_cast<unsigned>(data.size())) + data;
}

}  // namespace

std::string U16(unsigned value) { return Number(value, 2); }
std::string U32(uint32_t value) { return Number(value, 4); }
std::string U64(uint64_t value) { return Number(value, 8); }

unsigned Request::Word(size_t index) const { return At16(words, 2 * index); }

std::string Reply(const Request& request, const std::string& words, const std::string& data) {
  return Message(request, 0, 0, words, data);
}

std::string Refusal(const Request& request, unsigned errorClass, unsigned code) {
  return Message(request, errorClass, code, "", "");
}

std::string TransReply(const Request& request, const std::string& params, const std::string& data, unsigned totalParams,
                       unsigned totalData) {
  constexpr unsigned kParamsAt = kHeaderSize + 1 + 20 + 2 + 1;  // one pad byte
  auto paramCount = static_cast<unsigned>(params.size());
  auto dataCount = static_cast<unsigned>(data.size());
  std::string words = U16(totalParams) + U16(totalData) + U16(0) + U16(paramCount) + U16(kParamsAt) + U16(0) +
                      U16(dataCount) + U16(kParamsAt + paramCount) + U16(0) + U16(0);
  return Message(request, 0, 0, words, '\0' + params + data);
}

std::string TransReply(const Request& request, const std::string& params, const std::string& data) {
  return TransReply(request, params, data, static_cast<unsigned>(params.size()), static_cast<unsigned>(data.size()));
}

std::string DirEntry(const std::string& name, uint32_t size, uint32_t next) {
  std::string entry = U32(next) + U32(77) + std::string(32, '\0') + U64(size) + U64(size) + U32(0x20) +
                      U32(static_cast<uint32_t>(name.size())) + U32(0) + std::string(2 + 24, '\0') + name;
  if (entry.size() < next) entry.resize(next);
  return entry;
}

}  // namespace smb_script

using smb_script::At16;

ScriptedSmbPeer::ScriptedSmbPeer(ZnEventLoopBase* loop) : loop_(loop) {
  EXPECT_TRUE(listener_.Bind(ZnInetAddr::AddressLoopback(), ZnSocket::Stream, false, 0, false));
  EXPECT_TRUE(listener_.Listen(10) && listener_.SetBlocking(false));
  loop_->AddFileEvent(static_cast<unsigned>(listener_.Fd()), true, false, &accept_);
}

ScriptedSmbPeer::~ScriptedSmbPeer() {
  HangUp();
  loop_->RemoveFileEvent(static_cast<unsigned>(listener_.Fd()), true, false, &accept_);
}

ZnMachine ScriptedSmbPeer::Machine() const {
  ZnInetAddr address;
  const_cast<ZnSocket&>(listener_).LocalAddress(address);
  ZnMachine machine("PEER", ZnMachine::Server);
  machine.Name(address);
  return machine;
}

std::string ScriptedSmbPeer::Packet(uint8_t type, const std::string& body) {
  std::string packet(1, static_cast<char>(type));
  for (unsigned shift : {16U, 8U, 0U}) packet += static_cast<char>(body.size() >> shift);
  return packet + body;
}

// What a test sends fits into the socket's buffer.
void ScriptedSmbPeer::SendRaw(const std::string& bytes) {
  size_t moved = 0;
  if (connection_.IsOpen()) connection_.Write(bytes.data(), bytes.size(), moved);
}

void ScriptedSmbPeer::HangUp() {
  if (!connection_.IsOpen()) return;
  loop_->RemoveFileEvent(static_cast<unsigned>(connection_.Fd()), true, false, &receive_);
  connection_.Close();
}

void ScriptedSmbPeer::Accept(ZnEventCallback*, ZnEvent::cbdispatch) {
  HangUp();
  received_.clear();
  if (!connection_.AcceptFrom(listener_.Fd())) return;
  connections++;
  connection_.SetBlocking(false);
  connection_.SetDelay(true);
  loop_->AddFileEvent(static_cast<unsigned>(connection_.Fd()), true, false, &receive_);
}

void ScriptedSmbPeer::Receive(ZnEventCallback*, ZnEvent::cbdispatch) {
  if (std::exchange(hangUpUnread, false)) return HangUp();
  char buffer[65536];
  size_t moved = 0;
  if (connection_.Read(buffer, sizeof(buffer), moved) == ZnFile::IoStatus::Closed) return HangUp();
  received_.append(buffer, moved);
  while (received_.size() >= 4) {
    size_t length = static_cast<uint8_t>(received_[1]) << 16 | static_cast<uint8_t>(received_[2]) << 8 |
                    static_cast<uint8_t>(received_[3]);
    if (received_.size() < 4 + length) return;
    std::string body = received_.substr(4, length);
    auto type = static_cast<uint8_t>(received_[0]);
    received_.erase(0, 4 + length);
    Handle(type, body);
  }
}

void ScriptedSmbPeer::Handle(uint8_t type, const std::string& body) {
  if (type == 0x81) return SendRaw(sessionResponse);
  if (type != 0) return;
  ASSERT_GE(body.size(), 35U) << "the client has sent a cut message";
  const size_t words = size_t{2} * static_cast<uint8_t>(body[32]);
  const Request request{static_cast<uint8_t>(body[4]),
                        At16(body, 10),
                        At16(body, 24),
                        At16(body, 26),
                        At16(body, 28),
                        At16(body, 30),
                        body.substr(33, words),
                        body.substr(35 + words),
                        body};
  EXPECT_EQ(request.data.size(), At16(body, 33 + words)) << "byte count of a request";
  requests.push_back(request);
  if (!script) return;
  for (const std::string& message : script(request)) Send(message);
}
