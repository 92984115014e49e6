// The record of the server, read from keys that are of no user.

#include "config/encoding_name.h"
#include "config/record_reader.h"
#include "runtime/dns.h"

namespace {

ZnUniString ResolveWinsServers(const ZnDList<ZnUniString>& names, ZnDList<ZnInetAddr>& servers) {
  for (const ZnUniString& name : names) {
    ZnDList<ZnInetAddr> addresses;
    ZnDNS::AwaitAddressList(name, addresses);
    if (addresses.IsEmpty()) return "Failed to calculate IP address of WINS server: " + name;
    servers.Append(addresses[0]);
  }
  return {};
}

bool ReadHexDigits(const ZnUniString& text, std::array<uint8_t, 32>& bytes) {
  static constexpr std::u16string_view kDigits = u"0123456789abcdefABCDEF";
  if (text.Length() != 2 * bytes.size()) return false;
  for (size_t i = 0; i < text.Length(); i++) {
    const size_t digit = kDigits.find(text[i]);
    if (digit == std::u16string_view::npos) return false;
    const size_t value = digit < 16 ? digit : digit - 6;
    bytes[i / 2] = static_cast<uint8_t>(bytes[i / 2] << 4 | value);
  }
  return true;
}

ZnUniString ReadRootHandle(const ZnUniString& text, std::optional<std::array<uint8_t, 32>>& handle) {
  if (text.IsEmpty() || ReadHexDigits(text, handle.emplace())) return {};
  return "The root's handle isn't 64 hexadecimal digits.\n"
         "Change the nfsserver/mount/roothandle key to the handle that the file system is mounted with.\n";
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
  ZnUniString error = ReadRootHandle(in.Text("mount/roothandle"), config.roothandle);
  if (!error.IsEmpty()) return error;
  in.Fill(config);
  if (config.addresses.IsEmpty()) {
    return "No addresses to accept calls from were specified.\n"
           "Add one or more addresses to the nfsserver/network/addresses key.\n";
  }
  return ResolveWinsServers(in.Texts("server/winsservers"), config.winsservers);
}

void ZnSMBNFSConfig::LoadServerAgain(ZnSMBNFSServerConfig& config) { ZnRecordReader().Fill(config, true); }
