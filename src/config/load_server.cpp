// The record of the server, read from keys that are of no user.

#include "config/encoding_name.h"
#include "config/record_reader.h"
#include "runtime/dns.h"

namespace {

ZnUniString ResolveWinsServers(const ZnDList<ZnUniString>& names, ZnDList<ZnInetAddr>& servers) {
  for (const ZnUniString& name : names) {
    ZnDList<ZnInetAddr> addresses;
    ZnDNS::GetAddressList(name, addresses);
    if (addresses.IsEmpty()) return "Failed to calculate IP address of WINS server: " + name;
    servers.Append(addresses[0]);
  }
  return {};
}

}  // namespace

ZnUniString ZnSMBNFSConfig::LoadServer(ZnSMBNFSServerConfig& config) {
  ZnRecordReader in;
  config = {};
  config.rpcencoding = ZnEncodingOfName(in.Text("server/encoding/rpc", "ISO88591"));
  if (config.rpcencoding == ZnCodeset::Invalid) {
    return "Invalid character encoding for RPC.\n"
           "Change the nfsserver/server/encoding/rpc key to a valid encoding.\n";
  }
  in.Fill(config);
  if (config.addresses.IsEmpty()) {
    return "No addresses to accept calls from were specified.\n"
           "Add one or more addresses to the nfsserver/network/addresses key.\n";
  }
  return ResolveWinsServers(in.Texts("server/winsservers"), config.winsservers);
}
