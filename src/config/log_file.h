#pragma once
// The file that a user's errors are written to.

#include "runtime/uni_string.h"

// The path as configured, with the user in place of "%%USERNAME%%" and a home directory in place of a leading "~".
ZnUniString ZnExpandLogFile(const ZnUniString& configured, const ZnUniString& user);
