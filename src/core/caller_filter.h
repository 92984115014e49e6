#pragma once
// Whose calls are served, by the address and the port that they come from. Refusals are told in the log, within limits.

#include "config/server_config.h"
#include "core/log_limit.h"

class ZnCallerFilter {
 public:
  // Addresses of the configuration that are none are told in the log and left out. The loop isn't owned.
  ZnCallerFilter(ZnEventLoopBase* loop, const ZnSMBNFSServerConfig& config);

  // Where to listen: on loopback when nobody else may call, else on all interfaces. Port 0.
  static ZnInetAddr SocketAddress(const ZnSMBNFSServerConfig& config);

  bool ServesAddress(const ZnInetAddr& caller);
  // Only root can send from a port below 1024, so whose credentials come from there are true; others may be made up.
  bool ServesPort(const ZnInetAddr& caller);

 private:
  bool IsListed(const ZnInetAddr& caller) const;

  ZnDList<ZnInetAddr> addresses_;
  bool wildcard_ = false;  // then the list names those that aren't served
  bool reserved_ports_only_;
  ZnLogLimit limit_;
};
