#pragma once
// What a server tells of itself over the LANMAN remote API: the servers it knows of, a user, its clock. Plain values.

#include "runtime/uni_string.h"
#include "smb/wire/client_values.h"

// A row of ListServers.
struct ZnSMBCServerObject {
  ZnUniString name;
  uint8_t major = 0;  // version
  uint8_t minor = 0;
  uint32_t type = 0;  // bits of the browser protocol's server types
  ZnUniString comment;
};

// `name` goes in, the rest comes out of GetUserInfo.
struct ZnSMBCUserObject {
  ZnUniString name;
  ZnUniString comment;
  ZnUniString usercomment;
  ZnUniString fullname;
  ZnUniString homedir;
  ZnUniString logonserver;
  ZnUniString workstations;
  ZnSMBClientValues::Privilege privilege = ZnSMBClientValues::PrivGuest;
  uint32_t authflags = 0;    // operator rights
  uint32_t passwordage = 0;  // seconds
  uint32_t lastlogon = 0;    // seconds since 1970
  uint32_t lastlogoff = 0;
  uint16_t badpasswords = 0;  // count
  uint16_t logons = 0;        // count
  uint16_t countrycode = 0;
  uint16_t codepage = 0;
  uint32_t maxstorage = 0;
};

// The server's clock, as GetServerTime found it.
struct ZnSMBCTimeObject {
  uint32_t time = 0;    // seconds since 1970
  uint32_t uptime = 0;  // milliseconds
  uint8_t hours = 0;
  uint8_t minutes = 0;
  uint8_t seconds = 0;
  uint8_t hundredths = 0;
  int16_t timezone = 0;   // minutes west of UTC
  uint16_t interval = 0;  // of the clock, in units of 0.1 ms
  uint8_t day = 0;
  uint8_t month = 0;
  uint16_t year = 0;
  uint8_t weekday = 0;  // 0 is Sunday
};
