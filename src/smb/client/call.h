#pragma once
// An operation under way, and how it ended.

#include <cstdint>
#include <functional>
#include <memory>

#include "smb/wire/client_values.h"

struct ZnSmbOutcome {
  ZnSMBClientValues::Reason reason = ZnSMBClientValues::ErrNone;
  uint8_t errorclass = 0;  // of ErrSMB: how the server refused
  uint16_t errorcode = 0;
  // The last request; CmdNone if the operation hasn't got as far as one.
  ZnSMBClientValues::Command lastcommand = ZnSMBClientValues::CmdNone;
  // The server can't have acted on anything of this operation, so all of it may be tried again.
  bool unserved = false;

  bool Ok() const { return reason == ZnSMBClientValues::ErrNone; }
  // Code times 256 plus class if the server refused, else 0: the key of smb_error_text.h.
  unsigned Refusal() const { return reason == ZnSMBClientValues::ErrSMB ? errorcode * 256U + errorclass : 0; }
};

// Whoever holds it waits for its end; destroying it withdraws it.
class ZnSmbOperation {
 public:
  ZnSmbOperation() = default;
  ZnSmbOperation(const ZnSmbOperation&) = delete;
  ZnSmbOperation& operator=(const ZnSmbOperation&) = delete;
  virtual ~ZnSmbOperation() = default;
};

using ZnSmbCall = std::unique_ptr<ZnSmbOperation>;
using ZnSmbDone = std::function<void(const ZnSmbOutcome&)>;
