// The record of the server, read from keys that are of no user.

#include <cstdint>

#include "config/encoding_name.h"
#include "config/smbnfs_config.h"
#include "runtime/dns.h"

namespace {

void ReadNumber(const char* key, int32_t minimum, int32_t maximum, int32_t& number) {
  ZnSMBNFSConfig::GetValue(key, {}, {}, {}, {}, number, minimum, maximum);
}

bool ReadFlag(const char* key) {
  int32_t number = 0;
  ReadNumber(key, 0, 1, number);
  return number == 1;
}

ZnDList<ZnUniString> ReadList(const char* key) {
  ZnDList<ZnUniString> list;
  ZnSMBNFSConfig::GetValue(key, {}, {}, {}, {}, list, 0, 999);
  return list;
}

ZnUniString ReadRpcEncoding(ZnEncoding& encoding) {
  ZnUniString name = "ISO88591";
  ZnSMBNFSConfig::GetGlobalValue("nfsserver/server/encoding/rpc", name);
  encoding = ZnEncodingOfName(name);
  if (encoding != ZnCodeset::Invalid) return {};
  return "Invalid character encoding for RPC.\n"
         "Change the nfsserver/server/encoding/rpc key to a valid encoding.\n";
}

ZnUniString ResolveWinsServers(ZnDList<ZnInetAddr>& servers) {
  servers.Flush();
  for (const ZnUniString& name : ReadList("nfsserver/server/winsservers")) {
    ZnDList<ZnInetAddr> addresses;
    ZnDNS::GetAddressList(name, addresses);
    if (addresses.IsEmpty()) return "Failed to calculate IP address of WINS server: " + name;
    servers.Append(addresses[0]);
  }
  return {};
}

}  // namespace

ZnUniString ZnSMBNFSConfig::LoadServer(ZnSMBNFSServerConfig& config) {
  config = ZnSMBNFSServerConfig();
  ZnUniString error = ReadRpcEncoding(config.rpcencoding);
  if (!error.IsEmpty()) return error;
  ReadNumber("nfsserver/mount/port", 1, 65536, config.port);
  ReadNumber("nfsserver/server/usercache/mode", 0, 2, config.usercachemode);
  ReadNumber("nfsserver/server/cleanupdelay", 1, INT32_MAX, config.cleanupdelay);
  GetGlobalValue("nfsserver/server/timezone", config.timezone);
  config.paranoidupdate = ReadFlag("nfsserver/server/paranoidupdate");
  config.maximiselimits = ReadFlag("nfsserver/server/maximiselimits");
  config.addresses = ReadList("nfsserver/network/addresses");
  if (config.addresses.IsEmpty()) {
    return "No addresses to accept calls from were specified.\n"
           "Add one or more addresses to the nfsserver/network/addresses key.\n";
  }
  error = ResolveWinsServers(config.winsservers);
  if (!error.IsEmpty()) return error;
  config.optimisticnodeinvalidation = ReadFlag("nfsserver/server/optimisticnodeinvalidation");
  return {};
}
