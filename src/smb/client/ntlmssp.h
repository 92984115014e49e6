#pragma once
// A logon by NTLMv2 tokens (MS-NLMP), which travel in the session setups of a server with extended security: FirstToken
// in the first one, and in the second the answer to the challenge that its reply brings. Without SPNEGO around them:
// servers take them so. Without a code over the messages (MIC), which no server asks for unasked.

#include "crypto/ntlmv2.h"
#include "smb/client/credentials.h"
#include "smb/wire/ntlmssp_messages.h"

class ZnNtlmssp {
 public:
  // What goes into a logon besides the password.
  struct Drawn {
    ZnByteBuffer clientchallenge;  // 8 bytes
    ZnByteBuffer sessionkey;       // 16 bytes
    uint64_t time;                 // 100 ns since 1601, for servers that don't tell theirs
  };
  static Drawn Draw(uint64_t time);

  // Keeps a copy of the password until it is destroyed.
  ZnNtlmssp(const ZnSmbCredentials& who, const Drawn& drawn);

  static ZnPacket FirstToken();
  // Makes the token that answers `challenge`, and the session's key. False for bytes that are no challenge, or none
  // that can be answered in a way as strong as this. Both are secret.
  bool Answer(const ZnByteBuffer& challenge, ZnPacket& token);
  // 16 bytes that the server knows too; empty before Answer and for anonymous logons.
  const ZnByteBuffer& SessionKey() const { return sessionkey_; }

 private:
  // Fills in who logs on and what shows it, and notes the key that both sides know then.
  void Prove(const ZnNtlmv2Question& question, ZnNtlmsspParts& parts);

  ZnSmbCredentials who_;
  Drawn drawn_;
  ZnByteBuffer sessionkey_;
};
