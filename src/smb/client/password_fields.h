#pragma once
// In which form a password goes on the wire, by what the server wants.

#include "runtime/packet.h"
#include "runtime/uni_string.h"
#include "smb/client/server_info.h"

// The password fields of a session setup. Overwritten when they go.
struct ZnSMBPasswordFields {
  ZnPacket first;   // clear text, or the LAN manager response
  ZnPacket second;  // the NT response; the newest dialect alone sends it

  ZnSMBPasswordFields(const ZnUniString& user, const ZnUniString& password, const ZnSMBServerInfo& server);
  ZnSMBPasswordFields(const ZnSMBPasswordFields&) = delete;
  ZnSMBPasswordFields& operator=(const ZnSMBPasswordFields&) = delete;
  ~ZnSMBPasswordFields();
};

// The password field of a tree connect.
ZnPacket ZnSMBTreePassword(const ZnUniString& password, const ZnSMBServerInfo& server);
