#pragma once
// What the profile allows in a logon. Who says that he is the server may be anybody, and keeps what he gets.

#include "config/min_auth.h"
#include "config/signing.h"

struct ZnSMBLogonRules {
  bool cleartext = false;  // a server that doesn't encrypt passwords gets them as they are
  ZnMinAuth minauth = ZnMinAuth::Ntlm;
  ZnSigning signing = ZnSigning::Auto;
};
