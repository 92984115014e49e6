// What a procedure answers when no subclass serves it.

#include "rpc/nfs_server.h"

namespace {

void Succeed(ZnNFSServer& server, const ZnInetAddr& source, uint32_t xid) {
  server.SendSuccess(source, xid, ZnPacket());
}

void Unavailable(ZnNFSServer& server, const ZnInetAddr& source, uint32_t xid) {
  server.SendMiscError(source, xid, ZnRPCEnum::PROC_UNAVAIL);
}

}  // namespace

void ZnNFSServer::ProcNull(const ZnInetAddr& source, ZnRPCAuthBlock&, uint32_t xid) { Succeed(*this, source, xid); }
void ZnNFSServer::ProcGetattr(const ZnInetAddr& source, ZnRPCAuthBlock&, uint32_t xid, ZnNFSFileHandle&) {
  Unavailable(*this, source, xid);
}
void ZnNFSServer::ProcSetattr(const ZnInetAddr& source, ZnRPCAuthBlock&, uint32_t xid, ZnNFSSattrargs&) {
  Unavailable(*this, source, xid);
}
void ZnNFSServer::ProcRoot(const ZnInetAddr& source, ZnRPCAuthBlock&, uint32_t xid) { Succeed(*this, source, xid); }
void ZnNFSServer::ProcLookup(const ZnInetAddr& source, ZnRPCAuthBlock&, uint32_t xid, ZnNFSDiropargs&) {
  Unavailable(*this, source, xid);
}
void ZnNFSServer::ProcReadlink(const ZnInetAddr& source, ZnRPCAuthBlock&, uint32_t xid, ZnNFSFileHandle&) {
  Unavailable(*this, source, xid);
}
void ZnNFSServer::ProcRead(const ZnInetAddr& source, ZnRPCAuthBlock&, uint32_t xid, ZnNFSReadargs&) {
  Unavailable(*this, source, xid);
}
void ZnNFSServer::ProcWritecache(const ZnInetAddr& source, ZnRPCAuthBlock&, uint32_t xid) {
  Succeed(*this, source, xid);
}
void ZnNFSServer::ProcWrite(const ZnInetAddr& source, ZnRPCAuthBlock&, uint32_t xid, ZnNFSWriteargs&) {
  Unavailable(*this, source, xid);
}
void ZnNFSServer::ProcCreate(const ZnInetAddr& source, ZnRPCAuthBlock&, uint32_t xid, ZnNFSCreateargs&) {
  Unavailable(*this, source, xid);
}
void ZnNFSServer::ProcRemove(const ZnInetAddr& source, ZnRPCAuthBlock&, uint32_t xid, ZnNFSDiropargs&) {
  Unavailable(*this, source, xid);
}
void ZnNFSServer::ProcRename(const ZnInetAddr& source, ZnRPCAuthBlock&, uint32_t xid, ZnNFSRenameargs&) {
  Unavailable(*this, source, xid);
}
void ZnNFSServer::ProcLink(const ZnInetAddr& source, ZnRPCAuthBlock&, uint32_t xid, ZnNFSLinkargs&) {
  Unavailable(*this, source, xid);
}
void ZnNFSServer::ProcSymlink(const ZnInetAddr& source, ZnRPCAuthBlock&, uint32_t xid, ZnNFSSymlinkargs&) {
  Unavailable(*this, source, xid);
}
void ZnNFSServer::ProcMkdir(const ZnInetAddr& source, ZnRPCAuthBlock&, uint32_t xid, ZnNFSCreateargs&) {
  Unavailable(*this, source, xid);
}
void ZnNFSServer::ProcRmdir(const ZnInetAddr& source, ZnRPCAuthBlock&, uint32_t xid, ZnNFSDiropargs&) {
  Unavailable(*this, source, xid);
}
void ZnNFSServer::ProcReaddir(const ZnInetAddr& source, ZnRPCAuthBlock&, uint32_t xid, ZnNFSReaddirargs&) {
  Unavailable(*this, source, xid);
}
void ZnNFSServer::ProcStatfs(const ZnInetAddr& source, ZnRPCAuthBlock&, uint32_t xid, ZnNFSFileHandle&) {
  Unavailable(*this, source, xid);
}
void ZnNFSServer::MntProcNull(const ZnInetAddr& source, ZnRPCAuthBlock&, uint32_t xid) { Succeed(*this, source, xid); }
void ZnNFSServer::MntProcMount(const ZnInetAddr& source, ZnRPCAuthBlock&, uint32_t xid, ZnNFSMountargs&) {
  Unavailable(*this, source, xid);
}
void ZnNFSServer::MntProcDump(const ZnInetAddr& source, ZnRPCAuthBlock&, uint32_t xid) {
  Unavailable(*this, source, xid);
}
void ZnNFSServer::MntProcUnmount(const ZnInetAddr& source, ZnRPCAuthBlock&, uint32_t xid, ZnNFSMountargs&) {
  Unavailable(*this, source, xid);
}
void ZnNFSServer::MntProcUnmountAll(const ZnInetAddr& source, ZnRPCAuthBlock&, uint32_t xid) {
  Unavailable(*this, source, xid);
}
void ZnNFSServer::MntProcExport(const ZnInetAddr& source, ZnRPCAuthBlock&, uint32_t xid) {
  Unavailable(*this, source, xid);
}
void ZnNFSServer::HandleOtherNfsMessage(const ZnInetAddr& source, ZnRPCAuthBlock&, uint32_t xid, ZnPacket&) {
  Unavailable(*this, source, xid);
}
