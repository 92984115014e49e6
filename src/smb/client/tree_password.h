#pragma once
// In which form a share's password goes on the wire: by what the server wants, as far as the rules of the logon allow
// it.

#include "runtime/packet.h"
#include "runtime/uni_string.h"
#include "smb/client/logon_rules.h"
#include "smb/client/server_info.h"

// ErrNone if `password` may go to this server in a form that it takes; else ErrClearPassword or ErrWeakLogon. An empty
// password may always go: it tells nothing.
ZnSMBClientValues::Reason ZnSMBRefusalToSend(const ZnUniString& password, const ZnSMBServerInfo& server,
                                             const ZnSMBLogonRules& rules);

// Secret.
ZnPacket ZnSMBTreePassword(const ZnUniString& password, const ZnSMBServerInfo& server, const ZnSMBLogonRules& rules);
