#include "runtime/network_interface.h"

#include <net/if.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <vector>

#include "runtime/file.h"
#include "runtime/sys_encoding.h"

namespace {

using InterfaceList = ZnDList<ZnNetworkInterface>;

ZnInetAddr AddressOf(const sockaddr& address) {
  sockaddr_in inet;
  memcpy(&inet, &address, sizeof(inet));
  return ZnInetAddr(inet);
}

// Reads the interfaces by requests on a socket. At the first request that fails, it is kept as the error.
class InterfaceReader {
 public:
  bool Open() { return socket_.IsOpen() || Failed("socket"); }

  bool ReadAll(InterfaceList& list) {
    std::vector<ifreq> entries;
    return ReadEntries(entries) &&
           std::all_of(entries.begin(), entries.end(), [&](const ifreq& entry) { return AddInterface(entry, list); });
  }

  const ZnUnixError& Error() const { return error_; }

 private:
  bool Failed(const char* request) {
    error_ = ZnUnixError(errno, request);
    return false;
  }

  // The system fills what fits and doesn't say whether there was more, so the room grows until some is left.
  bool ReadEntries(std::vector<ifreq>& entries) {
    for (size_t room = 16;; room *= 2) {
      entries.resize(room);
      ifconf request = {};
      request.ifc_len = static_cast<int>(room * sizeof(ifreq));
      request.ifc_req = entries.data();
      if (ioctl(socket_.Fd(), SIOCGIFCONF, &request) != 0) return Failed("SIOCGIFCONF");
      size_t count = static_cast<size_t>(request.ifc_len) / sizeof(ifreq);
      if (count == room) continue;
      entries.resize(count);
      return true;
    }
  }

  bool Ask(unsigned long request, const char* name, ifreq& entry) {
    return ioctl(socket_.Fd(), request, &entry) == 0 || Failed(name);
  }

  bool AddInterface(const ifreq& entry, InterfaceList& list) {
    ZnNetworkInterface found;
    found.name = ZnUniString::CreateFrom(entry.ifr_name, strnlen(entry.ifr_name, IFNAMSIZ),
                                         ZnSysEncoding::interfacename, ZnSysEncoding::interfacenameopt);
    found.address = AddressOf(entry.ifr_addr);

    ifreq answer = entry;
    if (!Ask(SIOCGIFFLAGS, "SIOCGIFFLAGS", answer)) return false;
    found.flags = static_cast<unsigned short>(answer.ifr_flags);
    if (found.IsBroadcastValid()) {
      answer = entry;
      if (!Ask(SIOCGIFBRDADDR, "SIOCGIFBRDADDR", answer)) return false;
      found.broadcast = AddressOf(answer.ifr_broadaddr);
    }
    answer = entry;
    if (!Ask(SIOCGIFNETMASK, "SIOCGIFNETMASK", answer)) return false;
    found.netmask = AddressOf(answer.ifr_netmask);

    bool known = std::any_of(list.begin(), list.end(), [&](const ZnNetworkInterface& one) {
      return one.name == found.name && one.address == found.address && one.netmask == found.netmask;
    });
    if (!known) list.Append(found);
    return true;
  }

  ZnFile socket_{socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)};
  ZnUnixError error_;
};

}  // namespace

unsigned ZnGetNetworkInterfaces(bool refresh, const ZnDList<ZnNetworkInterface>*& list, ZnUnixError* error) {
  static InterfaceList interfaces;
  list = &interfaces;
  if (!refresh && !interfaces.IsEmpty()) return static_cast<unsigned>(interfaces.Count());
  interfaces.Flush();
  InterfaceReader reader;
  if (!reader.Open() || !reader.ReadAll(interfaces)) {
    interfaces.Flush();
    if (error) *error = reader.Error();
  }
  return static_cast<unsigned>(interfaces.Count());
}
