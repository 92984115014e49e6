#pragma once
// Messages of ONC RPC version 2 (RFC 1057, section 8).

#include "rpc/xdr.h"

namespace ZnRPCEnum {

inline constexpr uint32_t kRpcVersion = 2;

enum MessageType : uint32_t { CALL = 0, REPLY = 1 };
enum ReplyStat : uint32_t { MSG_ACCEPTED = 0, MSG_DENIED = 1 };
enum AcceptStat : uint32_t { SUCCESS = 0, PROG_UNAVAIL = 1, PROG_MISMATCH = 2, PROC_UNAVAIL = 3, GARBAGE_ARGS = 4 };
enum RejectStat : uint32_t { RPC_MISMATCH = 0, AUTH_ERROR = 1 };
enum AuthStat : uint32_t {
  AUTH_OK = 0,
  AUTH_BADCRED = 1,
  AUTH_REJECTEDCRED = 2,
  AUTH_BADVERF = 3,
  AUTH_REJECTEDVERF = 4,
  AUTH_TOOWEAK = 5,
};
enum AuthFlavour : uint32_t { AUTH_NULL = 0, AUTH_UNIX = 1 };

}  // namespace ZnRPCEnum

struct ZnRPCGroup : ZnXdrRecord<ZnRPCGroup> {
  uint32_t gid = 0;

  template <class Io>
  bool Fields(Io& io) {
    return io.U32(gid);
  }
  bool operator==(const ZnRPCGroup&) const = default;
};

// The body of an AUTH_UNIX block.
struct ZnRPCUnixAuth : ZnXdrRecord<ZnRPCUnixAuth> {
  uint32_t stamp = 0;
  std::string_view machinename;  // lies in the bytes that were read, or wherever the writer keeps it
  uint32_t uid = 0;
  uint32_t gid = 0;
  ZnStructList<ZnRPCGroup> grouplist;

  template <class Io>
  bool Fields(Io& io) {
    return io.U32(stamp) && io.View(machinename) && io.U32(uid) && io.U32(gid) && io.CountedList(grouplist);
  }
  bool operator==(const ZnRPCUnixAuth&) const = default;
};

// Credentials or a verifier. Only AUTH_NULL, which must be empty, and AUTH_UNIX can be read.
struct ZnRPCAuthBlock : ZnXdrRecord<ZnRPCAuthBlock> {
  ZnRPCEnum::AuthFlavour flavour = ZnRPCEnum::AUTH_NULL;
  ZnRPCUnixAuth auth_body;  // AUTH_UNIX only

  template <class Io>
  bool Fields(Io& io) {
    using namespace ZnRPCEnum;
    uint32_t length = 0;  // the fields say themselves where the body ends, so a reader needs it for AUTH_NULL only
    if constexpr (!Io::kReading) length = flavour == AUTH_UNIX ? static_cast<uint32_t>(auth_body.HowBig()) : 0;
    if (!io.U32(flavour) || !io.U32(length)) return false;
    if (flavour == AUTH_UNIX) return io.Record(auth_body);
    return flavour == AUTH_NULL && length == 0;
  }
  bool operator==(const ZnRPCAuthBlock&) const = default;
};

struct ZnRPCCallBody : ZnXdrRecord<ZnRPCCallBody> {
  uint32_t rpcversion = ZnRPCEnum::kRpcVersion;
  uint32_t program = 0;
  uint32_t version = 0;
  uint32_t procedure = 0;
  ZnRPCAuthBlock credentials;
  ZnRPCAuthBlock verifier;
  ZnPacket rpc_data;  // the arguments: all the rest of the datagram

  // What stands in front of the arguments.
  template <class Io>
  bool Header(Io& io) {
    return io.U32(rpcversion) && io.U32(program) && io.U32(version) && io.U32(procedure) && io.Record(credentials) &&
           io.Record(verifier);
  }
  template <class Io>
  bool Fields(Io& io) {
    return Header(io) && io.Rest(rpc_data);
  }
  bool operator==(const ZnRPCCallBody&) const = default;
};

struct ZnRPCMessageFromClient : ZnXdrRecord<ZnRPCMessageFromClient> {
  uint32_t xid = 0;
  ZnRPCEnum::MessageType type = ZnRPCEnum::CALL;
  ZnRPCCallBody call_body;

  template <class Io>
  bool Fields(Io& io) {
    return io.U32(xid) && io.U32(type) && type == ZnRPCEnum::CALL && io.Record(call_body);
  }
  // Reads all but the arguments, which `in` then stands at.
  bool ReadHeader(ZnXdrReader& in) {
    return in.U32(xid) && in.U32(type) && type == ZnRPCEnum::CALL && call_body.Header(in);
  }
  bool operator==(const ZnRPCMessageFromClient&) const = default;
};

struct ZnRPCAccepted : ZnXdrRecord<ZnRPCAccepted> {
  ZnRPCAuthBlock verifier;
  ZnRPCEnum::AcceptStat status = ZnRPCEnum::SUCCESS;
  ZnPacket rpc_data;           // SUCCESS only: the results, without a length word
  uint32_t low = 0, high = 0;  // PROG_MISMATCH only

  template <class Io>
  bool Fields(Io& io) {
    using namespace ZnRPCEnum;
    return io.Record(verifier) && io.U32(status) && (status != SUCCESS || io.Rest(rpc_data)) &&
           (status != PROG_MISMATCH || (io.U32(low) && io.U32(high)));
  }
  bool operator==(const ZnRPCAccepted&) const = default;
};

struct ZnRPCRejected : ZnXdrRecord<ZnRPCRejected> {
  ZnRPCEnum::RejectStat status = ZnRPCEnum::RPC_MISMATCH;
  uint32_t low = 0, high = 0;                         // RPC_MISMATCH only
  ZnRPCEnum::AuthStat authstat = ZnRPCEnum::AUTH_OK;  // AUTH_ERROR only

  template <class Io>
  bool Fields(Io& io) {
    using namespace ZnRPCEnum;
    if (!io.U32(status)) return false;
    if (status == RPC_MISMATCH) return io.U32(low) && io.U32(high);
    return status == AUTH_ERROR && io.U32(authstat);
  }
  bool operator==(const ZnRPCRejected&) const = default;
};

struct ZnRPCReplyBody : ZnXdrRecord<ZnRPCReplyBody> {
  ZnRPCEnum::ReplyStat status = ZnRPCEnum::MSG_ACCEPTED;
  ZnRPCAccepted accepted;  // MSG_ACCEPTED only
  ZnRPCRejected rejected;  // MSG_DENIED only

  template <class Io>
  bool Fields(Io& io) {
    using namespace ZnRPCEnum;
    if (!io.U32(status)) return false;
    if (status == MSG_ACCEPTED) return io.Record(accepted);
    return status == MSG_DENIED && io.Record(rejected);
  }
  bool operator==(const ZnRPCReplyBody&) const = default;
};

struct ZnRPCMessageFromServer : ZnXdrRecord<ZnRPCMessageFromServer> {
  uint32_t xid = 0;
  ZnRPCEnum::MessageType type = ZnRPCEnum::REPLY;
  ZnRPCReplyBody reply_body;

  template <class Io>
  bool Fields(Io& io) {
    return io.U32(xid) && io.U32(type) && type == ZnRPCEnum::REPLY && io.Record(reply_body);
  }
  bool operator==(const ZnRPCMessageFromServer&) const = default;
};
