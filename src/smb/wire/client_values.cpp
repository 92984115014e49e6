#include "smb/wire/client_values.h"

#include "runtime/enum_names.h"

namespace {

using Values = ZnSMBClientValues;

// A row of a table: the enumerator under its own name.
#define ROW(enumerator) \
  { Values::enumerator, #enumerator }

constexpr ZnEnumName kReason[] = {
    ROW(ErrNone),     ROW(ErrSMB),          ROW(ErrBusy),          ROW(ErrRead),         ROW(ErrWrite),
    ROW(ErrBlocked),  ROW(ErrConnected),    ROW(ErrConnecting),    ROW(ErrNotConnected), ROW(ErrDisconnect),
    ROW(ErrTimedOut), ROW(ErrNotSupported), ROW(ErrInternal),      ROW(ErrBadValue),     ROW(ErrServer),
    ROW(ErrBadTID),   ROW(ErrBadFID),       ROW(ErrIPC),           ROW(ErrBadPrinter),   ROW(ErrBind),
    ROW(ErrConnect),  ROW(ErrNegprot),      ROW(ErrClearPassword), ROW(ErrWeakLogon),    ROW(ErrBadSignature),
    ROW(ErrMustSign), ROW(ErrCantSign),
};

#undef ROW

}  // namespace

std::string ZnSMBClientValues::ReasonString(unsigned value) { return ZnNameOf(kReason, "Reason", value); }
