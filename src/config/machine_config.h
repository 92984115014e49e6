#pragma once
// What the configuration says of one machine of one user.

#include <tuple>

#include "config/min_auth.h"
#include "config/signing.h"
#include "runtime/codeset.h"
#include "runtime/list.h"
#include "runtime/uni_string.h"

struct ZnSMBNFSMachineConfig {
  ZnUniString user;
  ZnUniString machine;
  ZnUniString nbtname;          // never "*" or empty; in the case given
  ZnUniString ipaddress = "*";  // name or address; "*" finds it by the machine's name
  int32_t port = 139;           // TCP
  ZnUniString winname = "*";    // user name on the machine; resolved, never "*" in a loaded record
  ZnUniString domain;
  ZnUniString password;                 // in clear
  bool cleartext = false;               // may go to a server in clear
  ZnMinAuth minauth = ZnMinAuth::Ntlm;  // else the weakest that may go in its place
  ZnSigning signing = ZnSigning::Auto;
  ZnEncoding encoding = ZnCodeset::Cp850;  // of 8-bit names
  bool hidedollar = false;
  int32_t dnslookup = 0;            // 0 never, 1 by the look of the name, 2 first
  ZnDList<ZnUniString> sharenames;  // "*" stands for the shares of the configuration
  int32_t smbtimeout = 10;          // seconds, like those below
  int32_t sessiontimeout = 300;
  int32_t sharesttl = 0;
  int32_t maxopenfiles = 100;
  int32_t treelimit = 256;  // MiB of names and attributes
  int32_t timeoffset = -1;  // seconds; -1 takes the machine's own
  bool oldsetattr = false;
  int32_t uid = -1;  // owner and group shown
  int32_t gid = -1;
  int32_t unixperms = 0;  // permission bits shown
  bool rootaccess = false;

  // Whether a conversation under the other record would be one with the same machine, as the same account and with the
  // same names.
  bool SameConversation(const ZnSMBNFSMachineConfig& other) const {
    const auto facts = [](const ZnSMBNFSMachineConfig& of) {
      return std::tie(of.nbtname, of.ipaddress, of.port, of.dnslookup, of.winname, of.domain, of.password, of.cleartext,
                      of.minauth, of.signing, of.encoding);
    };
    return facts(*this) == facts(other);
  }
};
