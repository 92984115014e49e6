#include "runtime/sys_info.h"

#include <sys/utsname.h>

#include <cstring>

#include "runtime/sys_encoding.h"

namespace {

const utsname& HostFacts() {
  static const utsname facts = [] {
    utsname read{};
    uname(&read);
    return read;
  }();
  return facts;
}

ZnUniString Fact(const char* fact) {
  return ZnUniString::CreateFrom(fact, strlen(fact), ZnSysEncoding::sysinfo, ZnSysEncoding::sysinfoopt);
}

}  // namespace

ZnUniString ZnSysInfoHostName() { return Fact(HostFacts().nodename); }
ZnUniString ZnSysInfoHardware() { return Fact(HostFacts().machine); }
ZnUniString ZnSysInfoProcessor() { return Fact(HostFacts().sysname); }
ZnUniString ZnSysInfoOSRelease() { return Fact(HostFacts().release); }
ZnUniString ZnSysInfoOSVersion() { return Fact(HostFacts().version); }
