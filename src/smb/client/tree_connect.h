#pragma once
// The request that connects a share, as all dialects but the oldest have it.

#include <optional>

#include "smb/client/conversation.h"
#include "smb/wire/session_sections.h"

struct ZnSmbTreeConnect {
  ZnSMBCTreeConnectX_ReqWords words;
  ZnSMBCTreeConnectX_ReqData data;

  // Where `reason` isn't ErrNone it mustn't be sent.
  ZnSmbTreeConnect(const ZnSmbConversation& conversation, const ZnSMBCTreeObject& tree, const ZnUniString& password);
  ZnSMBClientValues::Reason reason = ZnSMBClientValues::ErrNone;
};

// "\\MACHINE\SHARE"; empty without one of the two.
ZnUniString ZnSmbPathOf(const ZnSMBCTreeObject& tree);
// Reads the reply: the tid and the service that the server reports. False when it can't be read.
bool ZnSmbReadTreeConnect(const ZnSmbConversation& conversation, const ZnSMBCDecode& reply, ZnSMBCTreeObject& tree);
