#pragma once
// Every error that a server may refuse a request with: its name, a sentence for the user, and its status for NFS.

#include <span>

#include "rpc/nfs_enum.h"
#include "runtime/uni_string.h"

struct ZnSMBError {
  uint8_t errorclass;  // 1 DOS, 2 server, 3 hardware
  uint16_t code;
  const char* name;
  const char* sentence;
  ZnNFSEnum::Status status;

  constexpr unsigned Key() const { return code * 256U + errorclass; }
};

// All of them, ascending by class and code.
std::span<const ZnSMBError> ZnSMBErrors();

// `key` is the error code times 256 plus the error class of a reply: 0x1201 is "ERRDOS__ERRnofiles". Null for an error
// that isn't known.
const ZnSMBError* ZnFindSMBError(unsigned key);
// "class 1, code 18".
ZnUniString ZnSMBErrorNumbers(unsigned key);
// For an error that isn't known: "Unknown error (class 1, code 18)", and NFSERR_IO.
ZnUniString ZnSMBErrorToString(unsigned key);
ZnUniString ZnSMBErrorToDescription(unsigned key);
ZnNFSEnum::Status ZnSMBErrorToStatus(unsigned key);
