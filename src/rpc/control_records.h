#pragma once
// Connection, configuration and usage reports of a controller. No procedure carries them yet. Responses whose status
// isn't 0 end behind their first two words.

#include "rpc/xdr.h"
#include "runtime/inet_addr.h"

struct ZnNFSConnectInfo : ZnXdrRecord<ZnNFSConnectInfo> {
  ZnUniString label;
  ZnInetAddr ipaddress;  // travels without its port
  uint32_t word = 0;
  ZnUniString machname;
  ZnUniString sharename;
  ZnUniString localuser;
  ZnUniString remoteuser;
  ZnUniString remotepwd;
  uint8_t flag = 0;
  uint32_t words[4] = {};

  template <class Io>
  bool Fields(Io& io) {
    uint32_t address = ipaddress.AsUint32();
    if (!io.String(label) || !io.U32(address)) return false;
    if constexpr (Io::kReading) ipaddress = ZnInetAddr(address);
    return io.U32(word) && io.String(machname) && io.String(sharename) && io.String(localuser) &&
           io.String(remoteuser) && io.String(remotepwd) && io.U8(flag) && io.U32(words[0]) && io.U32(words[1]) &&
           io.U32(words[2]) && io.U32(words[3]);
  }
  bool operator==(const ZnNFSConnectInfo&) const = default;
};

struct ZnNFSUserConnection : ZnXdrRecord<ZnNFSUserConnection> {
  ZnUniString localuser;
  ZnUniString label;
  ZnUniString filename;
  uint32_t words[4] = {};

  template <class Io>
  bool Fields(Io& io) {
    return io.String(localuser) && io.String(label) && io.String(filename) && io.U32(words[0]) && io.U32(words[1]) &&
           io.U32(words[2]) && io.U32(words[3]);
  }
  bool operator==(const ZnNFSUserConnection&) const = default;
};

struct ZnNFSClientConnectInfo : ZnXdrRecord<ZnNFSClientConnectInfo> {
  uint32_t word = 0;

  template <class Io>
  bool Fields(Io& io) {
    return io.U32(word);
  }
  bool operator==(const ZnNFSClientConnectInfo&) const = default;
};

struct ZnNFSClientConnectResponse : ZnXdrRecord<ZnNFSClientConnectResponse> {
  uint32_t status = 0;
  uint32_t word = 0;
  ZnUniString local_user;
  ZnUniString homedir;
  ZnUniString config;

  template <class Io>
  bool Fields(Io& io) {
    return io.U32(status) && io.U32(word) &&
           (status != 0 || (io.String(local_user) && io.String(homedir) && io.String(config)));
  }
  bool operator==(const ZnNFSClientConnectResponse&) const = default;
};

struct ZnNFSClientConfigInfo : ZnXdrRecord<ZnNFSClientConfigInfo> {
  uint32_t word = 0;
  ZnStructList<ZnNFSConnectInfo> connectlist;

  template <class Io>
  bool Fields(Io& io) {
    return io.U32(word) && io.CountedList(connectlist);
  }
  bool operator==(const ZnNFSClientConfigInfo&) const = default;
};

struct ZnNFSClientConfigResponse : ZnXdrRecord<ZnNFSClientConfigResponse> {
  uint32_t status = 0;
  uint32_t word = 0;
  ZnStructList<ZnNFSConnectInfo> connectlist;

  template <class Io>
  bool Fields(Io& io) {
    return io.U32(status) && io.U32(word) && (status != 0 || io.CountedList(connectlist));
  }
  bool operator==(const ZnNFSClientConfigResponse&) const = default;
};

struct ZnNFSClientUsageRequest : ZnXdrRecord<ZnNFSClientUsageRequest> {
  uint32_t word = 0;

  template <class Io>
  bool Fields(Io& io) {
    return io.U32(word);
  }
  bool operator==(const ZnNFSClientUsageRequest&) const = default;
};

struct ZnNFSClientUsageResponse : ZnXdrRecord<ZnNFSClientUsageResponse> {
  uint32_t status = 0;
  uint32_t word = 0;
  ZnStructList<ZnNFSUserConnection> usagelist;

  template <class Io>
  bool Fields(Io& io) {
    return io.U32(status) && io.U32(word) && (status != 0 || io.CountedList(usagelist));
  }
  bool operator==(const ZnNFSClientUsageResponse&) const = default;
};

struct ZnNFSClientTestInfo : ZnXdrRecord<ZnNFSClientTestInfo> {
  ZnPacket testdata;  // all the rest

  template <class Io>
  bool Fields(Io& io) {
    return io.Rest(testdata);
  }
  bool operator==(const ZnNFSClientTestInfo&) const = default;
};

struct ZnNFSClientTestResponse : ZnXdrRecord<ZnNFSClientTestResponse> {
  uint32_t words[2] = {};

  template <class Io>
  bool Fields(Io& io) {
    return io.U32(words[0]) && io.U32(words[1]);
  }
  bool operator==(const ZnNFSClientTestResponse&) const = default;
};
