#include "rpc/nfs_server.h"

namespace {

struct Call {
  const ZnInetAddr& source;
  ZnRPCAuthBlock& credentials;
  uint32_t xid;
  ZnPacket& data;
};

using Operation = void (ZnNFSServer::*)(const ZnInetAddr&, ZnRPCAuthBlock&, uint32_t);
template <class Args>
using OperationWith = void (ZnNFSServer::*)(const ZnInetAddr&, ZnRPCAuthBlock&, uint32_t, Args&);

void Invoke(ZnNFSServer& server, Operation operation, Call& call) {
  (server.*operation)(call.source, call.credentials, call.xid);
}

template <class Args>
void Invoke(ZnNFSServer& server, OperationWith<Args> operation, Call& call) {
  Args args;
  if (!args.Read(call.data)) return server.SendMiscError(call.source, call.xid, ZnRPCEnum::GARBAGE_ARGS);
  (server.*operation)(call.source, call.credentials, call.xid, args);
}

template <auto Operation>
void Serve(ZnNFSServer& server, Call& call) {
  Invoke(server, Operation, call);
}

using Server = void (*)(ZnNFSServer&, Call&);

// By procedure number.
constexpr Server kNfsProcedures[] = {
    Serve<&ZnNFSServer::ProcNull>,   Serve<&ZnNFSServer::ProcGetattr>,    Serve<&ZnNFSServer::ProcSetattr>,
    Serve<&ZnNFSServer::ProcRoot>,   Serve<&ZnNFSServer::ProcLookup>,     Serve<&ZnNFSServer::ProcReadlink>,
    Serve<&ZnNFSServer::ProcRead>,   Serve<&ZnNFSServer::ProcWritecache>, Serve<&ZnNFSServer::ProcWrite>,
    Serve<&ZnNFSServer::ProcCreate>, Serve<&ZnNFSServer::ProcRemove>,     Serve<&ZnNFSServer::ProcRename>,
    Serve<&ZnNFSServer::ProcLink>,   Serve<&ZnNFSServer::ProcSymlink>,    Serve<&ZnNFSServer::ProcMkdir>,
    Serve<&ZnNFSServer::ProcRmdir>,  Serve<&ZnNFSServer::ProcReaddir>,    Serve<&ZnNFSServer::ProcStatfs>,
};

constexpr Server kMountProcedures[] = {
    Serve<&ZnNFSServer::MntProcNull>,    Serve<&ZnNFSServer::MntProcMount>,      Serve<&ZnNFSServer::MntProcDump>,
    Serve<&ZnNFSServer::MntProcUnmount>, Serve<&ZnNFSServer::MntProcUnmountAll>, Serve<&ZnNFSServer::MntProcExport>,
};

}  // namespace

void ZnNFSServer::HandleRpcMessage(ZnRPCMessageFromClient& message, ZnRPCAuthBlock& credentials,
                                   const ZnInetAddr& source) {
  ZnRPCCallBody& body = message.call_body;
  Call call{source, credentials, message.xid, body.rpc_data};
  switch (body.program) {
    case kNfsProgram:
      // The program's number stands where others give the versions they serve: callers have always seen it so.
      if (body.version != kNfsVersion) return SendProgMismatch(source, message.xid, kNfsProgram, kNfsProgram);
      if (body.procedure < std::size(kNfsProcedures)) return kNfsProcedures[body.procedure](*this, call);
      return HandleOtherNfsMessage(source, credentials, message.xid, body.rpc_data);
    case kMountProgram:
      if (body.version != kMountVersion) return SendProgMismatch(source, message.xid, kMountProgram, kMountProgram);
      if (body.procedure < std::size(kMountProcedures)) return kMountProcedures[body.procedure](*this, call);
      return SendMiscError(source, message.xid, ZnRPCEnum::PROG_UNAVAIL);
    default:
      return SendMiscError(source, message.xid, ZnRPCEnum::PROG_UNAVAIL);
  }
}
