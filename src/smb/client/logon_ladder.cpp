#include "smb/client/logon_ladder.h"

#include <algorithm>
#include <iterator>

namespace {

using Values = ZnSMBClientValues;
using Form = ZnSmbLogonForm;

struct Rung {
  Form form;
  ZnMinAuth strength;
  bool (*fits)(const ZnSMBServerInfo& server);
};

bool HasTokens(const ZnSMBServerInfo& server) { return server.extendedsecurity; }
// Only the newest dialect has room for these two.
bool HasNtField(const ZnSMBServerInfo& server) { return !HasTokens(server) && server.dialect == Values::DialectNT; }
// A share's password has to fit into the 24 bytes of the older responses, and a server that knows the user by nothing
// else needn't be shown the new one.
bool KnowsUsers(const ZnSMBServerInfo& server) {
  return HasNtField(server) && server.securitylevel == Values::SecLevelUser;
}

// From the top.
constexpr Rung kRungs[] = {
    {Form::Tokens, ZnMinAuth::Ntlmv2, HasTokens},
    {Form::Ntlmv2, ZnMinAuth::Ntlmv2, KnowsUsers},
    {Form::Ntlm, ZnMinAuth::Ntlm, HasNtField},
    {Form::Lm, ZnMinAuth::Lm, [](const ZnSMBServerInfo& server) { return !HasTokens(server); }},
};

// What servers answer to a response that they can't make sense of, among wrong names and passwords: access denied, bad
// password, a response longer than expected, logon failure; and of the server class bad password.
constexpr unsigned Error(unsigned errorclass, unsigned code) { return code * 256 + errorclass; }
constexpr unsigned kMayTakeAnother[] = {Error(1, 5), Error(1, 86), Error(1, 87), Error(1, 1326), Error(2, 2)};

}  // namespace

ZnSmbLogonLadder::ZnSmbLogonLadder(const ZnSmbCredentials& who, const ZnSMBServerInfo& server,
                                   const ZnSMBLogonRules& rules)
    : server_(server), weakest_(who.password.IsEmpty() ? ZnMinAuth::Lm : rules.minauth) {  // an empty one tells nothing
  if (!HasTokens(server) && !server.encryptedpasswords) {
    form_ = Form::ClearText;
    if (!who.password.IsEmpty() && !rules.cleartext) refusal_ = Values::ErrClearPassword;
  } else if (HasTokens(server) || !who.Anonymous()) {
    if (!FindBelow(Form::Top)) refusal_ = Values::ErrWeakLogon;
  }
}

bool ZnSmbLogonLadder::StepDown(unsigned refusal) {
  return std::count(std::begin(kMayTakeAnother), std::end(kMayTakeAnother), refusal) > 0 && FindBelow(form_);
}

bool ZnSmbLogonLadder::FindBelow(ZnSmbLogonForm form) {
  const auto* found = std::find_if(std::begin(kRungs), std::end(kRungs), [&](const Rung& rung) {
    return rung.form < form && rung.strength >= weakest_ && rung.fits(server_);
  });
  if (found == std::end(kRungs)) return false;
  form_ = found->form;
  return true;
}
