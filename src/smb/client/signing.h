#pragma once
// The signatures of a conversation (MS-SMB 3.1.4.1, 3.1.5.1): in each message a code that only the two sides can make,
// over its bytes and its number. The session setup that succeeds is number 0, and goes out unsigned since the key comes
// of it; its reply is number 1 and signed already. Each request that follows takes the next even number, and its reply
// the odd one behind it, in whatever order replies come. The rounds of a logon before its last aren't counted.

#include <span>

#include "runtime/byte_buffer.h"
#include "smb/client/logon_rules.h"
#include "smb/client/server_info.h"

// ErrNone, ErrMustSign or ErrCantSign: whether the rules and this server go together, before anything secret is sent.
ZnSMBClientValues::Reason ZnSmbRefusalToSign(const ZnSMBServerInfo& server, const ZnSMBLogonRules& rules);
// Whether the conversation shall be signed. It can't if the logon turns out to be a guest's or anonymous: servers don't
// sign then. Without ZnSigning::Always that is taken as it comes.
bool ZnSmbWantsToSign(const ZnSMBServerInfo& server, const ZnSMBLogonRules& rules);

class ZnSmbSigning {
 public:
  // From now on Sign and Verify may be called. `key`: the session's key, and without extended security the NT response
  // behind it.
  void Start(const ZnByteBuffer& key);
  bool IsOn() const { return !key_.IsEmpty(); }

  // Puts the signature of number `sequence` into `message`, whose header has its flag `signs` set. `rest` is the end of
  // the message, if that stands elsewhere.
  void Sign(ZnByteBuffer& message, uint32_t sequence, std::span<const uint8_t> rest = {}) const;
  // Whether a message of `length` bytes has the signature of that number. False for one too short to have any.
  bool Verify(const uint8_t* message, size_t length, uint32_t sequence) const;

 private:
  ZnByteBuffer key_;
};
