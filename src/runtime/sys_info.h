#pragma once
// The host as it describes itself. Read once.

#include "runtime/uni_string.h"

ZnUniString ZnSysInfoHostName();
ZnUniString ZnSysInfoHardware();   // "x86_64"
ZnUniString ZnSysInfoProcessor();  // "Linux": the name of the system, as it stands first in what peers are told
ZnUniString ZnSysInfoOSRelease();
ZnUniString ZnSysInfoOSVersion();
