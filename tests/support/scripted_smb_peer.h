#pragma once
// An SMB server that does what a test says, byte by byte: wrong ids, cut messages, split or late replies, refusals,
// silence. It runs on the test's own event loop, and shares no code with the client.

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "netbios/machine.h"
#include "runtime/event_loop.h"
#include "runtime/socket.h"

namespace smb_script {

std::string U16(unsigned value);
std::string U32(uint32_t value);
std::string U64(uint64_t value);

// A request, taken apart.
struct Request {
  uint8_t command = 0;
  unsigned flags2 = 0, tid = 0, pid = 0, uid = 0, mid = 0;
  std::string words, data, message;  // the last is all of it

  unsigned Word(size_t index) const;  // 0 when there are fewer
};

// The reply to a request, as a message.
std::string Reply(const Request& request, const std::string& words = "", const std::string& data = "");
std::string Refusal(const Request& request, unsigned errorClass, unsigned code);
// A reply of a transaction, or a piece of one: counts of this piece are those of its parts.
std::string TransReply(const Request& request, const std::string& params, const std::string& data, unsigned totalParams,
                       unsigned totalData);
std::string TransReply(const Request& request, const std::string& params, const std::string& data);
// An entry of a directory listing, padded to `next` bytes, the distance it states to the next one.
std::string DirEntry(const std::string& name, uint32_t size, uint32_t next);

}  // namespace smb_script

class ScriptedSmbPeer {
 public:
  using Request = smb_script::Request;
  // The messages that answer a request; none is silence.
  using Script = std::function<std::vector<std::string>(const Request&)>;

  // Listens on a port of 127.0.0.1. The loop isn't owned.
  explicit ScriptedSmbPeer(ZnEventLoopBase* loop);
  ~ScriptedSmbPeer();

  // How a client finds this peer.
  ZnMachine Machine() const;
  // A session packet of this type and body.
  static std::string Packet(uint8_t type, const std::string& body);
  void Send(const std::string& message) { SendRaw(Packet(0, message)); }
  void SendRaw(const std::string& bytes);
  void HangUp();

  Script script;
  std::string sessionResponse = Packet(0x82, "");  // empty is silence
  std::vector<Request> requests;                   // all that came
  unsigned connections = 0;
  bool hangUpUnread = false;  // as soon as the next request begins to come

  // Room for bytes that have come and haven't been read, in connections to come.
  void ReceiveRoom(unsigned bytes) { listener_.SetReceiveBufferSize(bytes); }

 private:
  void Accept(ZnEventCallback*, ZnEvent::cbdispatch);
  void Receive(ZnEventCallback*, ZnEvent::cbdispatch);
  void Handle(uint8_t type, const std::string& body);

  ZnEventLoopBase* loop_;
  ZnSimpleCallback<ZnEvent::cbdispatch, ScriptedSmbPeer> accept_{this, &ScriptedSmbPeer::Accept};
  ZnSimpleCallback<ZnEvent::cbdispatch, ScriptedSmbPeer> receive_{this, &ScriptedSmbPeer::Receive};
  ZnSocket listener_;
  ZnSocket connection_;
  std::string received_;
};
