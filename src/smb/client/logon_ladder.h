#pragma once
// In which form a user logs on, and in which one next if the server refuses: from the strongest down to the weakest
// that the profile allows. Each try counts as a wrong password there when the password is wrong, so none is made that
// can't end otherwise.

#include "smb/client/credentials.h"
#include "smb/client/logon_rules.h"
#include "smb/client/server_info.h"

enum class ZnSmbLogonForm {
  // From the bottom.
  None,       // anonymous to a server without extended security: no password at all
  ClearText,  // the server doesn't encrypt passwords
  Lm,         // the only answer that the oldest servers know
  Ntlm,
  Ntlmv2,
  Tokens,  // NTLMv2 by ZnNtlmssp: all that servers with extended security are given, as all of them know it
  Top,     // above them all; nobody logs on so
};

class ZnSmbLogonLadder {
 public:
  ZnSmbLogonLadder(const ZnSmbCredentials& who, const ZnSMBServerInfo& server, const ZnSMBLogonRules& rules);

  // ErrNone if there is a form to log on in; else ErrClearPassword or ErrWeakLogon, and nothing may be sent.
  ZnSMBClientValues::Reason Refusal() const { return refusal_; }
  // Of the next session setup.
  ZnSmbLogonForm Form() const { return form_; }
  // The server refused that one: whether there is another form to try, after an error that says no more than that the
  // logon failed. `refusal` is the error code times 256 plus the class.
  bool StepDown(unsigned refusal);

 private:
  bool FindBelow(ZnSmbLogonForm form);

  ZnSMBServerInfo server_;
  ZnMinAuth weakest_;
  ZnSmbLogonForm form_ = ZnSmbLogonForm::None;
  ZnSMBClientValues::Reason refusal_ = ZnSMBClientValues::ErrNone;
};
