#pragma once
// Name and sentence of every error that a server may refuse a request with.

#include "runtime/uni_string.h"

// `key` is the error code times 256 plus the error class of a reply: 0x1201 gives "ERRDOS__ERRnofiles". "Unknown error"
// for others.
ZnUniString ZnSMBErrorToString(unsigned key);
// The same in a sentence for the user.
ZnUniString ZnSMBErrorToDescription(unsigned key);
