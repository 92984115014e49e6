#pragma once
// Request and result of the port mapper's SET, UNSET and GETPORT (RFC 1057, appendix A). The daemon itself asks no port
// mapper.

#include "rpc/xdr.h"

struct ZnPortMapping : ZnXdrRecord<ZnPortMapping> {
  uint32_t program = 0;
  uint32_t version = 0;
  uint32_t protocol = 0;  // 6 TCP, 17 UDP
  uint32_t port = 0;

  template <class Io>
  bool Fields(Io& io) {
    return io.U32(program) && io.U32(version) && io.U32(protocol) && io.U32(port);
  }
  bool operator==(const ZnPortMapping&) const = default;
};

struct ZnPortMapperResponse : ZnXdrRecord<ZnPortMapperResponse> {
  uint32_t result = 0;  // the port, or whether SET or UNSET was done

  template <class Io>
  bool Fields(Io& io) {
    return io.U32(result);
  }
  bool operator==(const ZnPortMapperResponse&) const = default;
};
