#pragma once
// What shows the user's password in a session setup without tokens.

#include "runtime/packet.h"
#include "smb/client/logon_ladder.h"

// All of it is secret.
struct ZnSmbLogonFields {
  ZnPacket first;   // the password itself, or the LAN manager's response
  ZnPacket second;  // the NT response, for the newest dialect
  // What the messages are signed with, if they are: the session's key and the response that it came from. Empty for a
  // form that gives none.
  ZnByteBuffer signingkey;

  // `form` isn't Tokens. who.domain stands in the session setup as it is. `now` in 100 ns since 1601, for servers that
  // don't tell their time.
  ZnSmbLogonFields(ZnSmbLogonForm form, const ZnSmbCredentials& who, const ZnSMBServerInfo& server, uint64_t now);
};
