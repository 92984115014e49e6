#pragma once
// Dispatch of NFS version 2 (program 100003) and MOUNT version 1 (program 100005): one virtual operation a procedure.
// What is served is a subclass's business.

#include "rpc/mount_records.h"
#include "rpc/nfs_records.h"
#include "rpc/rpc_server.h"

class ZnNFSServer : public ZnRPCServer {
 public:
  static constexpr uint32_t kNfsProgram = 100003;
  static constexpr uint32_t kNfsVersion = 2;
  static constexpr uint32_t kMountProgram = 100005;
  static constexpr uint32_t kMountVersion = 1;

  using ZnRPCServer::ZnRPCServer;

  void HandleRpcMessage(ZnRPCMessageFromClient& message, ZnRPCAuthBlock& credentials,
                        const ZnInetAddr& source) override;

  // Each operation answers, now or later, through the sends of ZnRPCServer with the `source` and `xid` given here.
  // Credentials and arguments die with the call. By default NULL, ROOT, WRITECACHE and MOUNT's NULL succeed with no
  // result; all others are unavailable.
  virtual void ProcNull(const ZnInetAddr& source, ZnRPCAuthBlock& credentials, uint32_t xid);
  virtual void ProcGetattr(const ZnInetAddr& source, ZnRPCAuthBlock& credentials, uint32_t xid, ZnNFSFileHandle& args);
  virtual void ProcSetattr(const ZnInetAddr& source, ZnRPCAuthBlock& credentials, uint32_t xid, ZnNFSSattrargs& args);
  virtual void ProcRoot(const ZnInetAddr& source, ZnRPCAuthBlock& credentials, uint32_t xid);
  virtual void ProcLookup(const ZnInetAddr& source, ZnRPCAuthBlock& credentials, uint32_t xid, ZnNFSDiropargs& args);
  virtual void ProcReadlink(const ZnInetAddr& source, ZnRPCAuthBlock& credentials, uint32_t xid, ZnNFSFileHandle& args);
  virtual void ProcRead(const ZnInetAddr& source, ZnRPCAuthBlock& credentials, uint32_t xid, ZnNFSReadargs& args);
  virtual void ProcWritecache(const ZnInetAddr& source, ZnRPCAuthBlock& credentials, uint32_t xid);
  virtual void ProcWrite(const ZnInetAddr& source, ZnRPCAuthBlock& credentials, uint32_t xid, ZnNFSWriteargs& args);
  virtual void ProcCreate(const ZnInetAddr& source, ZnRPCAuthBlock& credentials, uint32_t xid, ZnNFSCreateargs& args);
  virtual void ProcRemove(const ZnInetAddr& source, ZnRPCAuthBlock& credentials, uint32_t xid, ZnNFSDiropargs& args);
  virtual void ProcRename(const ZnInetAddr& source, ZnRPCAuthBlock& credentials, uint32_t xid, ZnNFSRenameargs& args);
  virtual void ProcLink(const ZnInetAddr& source, ZnRPCAuthBlock& credentials, uint32_t xid, ZnNFSLinkargs& args);
  virtual void ProcSymlink(const ZnInetAddr& source, ZnRPCAuthBlock& credentials, uint32_t xid, ZnNFSSymlinkargs& args);
  virtual void ProcMkdir(const ZnInetAddr& source, ZnRPCAuthBlock& credentials, uint32_t xid, ZnNFSCreateargs& args);
  virtual void ProcRmdir(const ZnInetAddr& source, ZnRPCAuthBlock& credentials, uint32_t xid, ZnNFSDiropargs& args);
  virtual void ProcReaddir(const ZnInetAddr& source, ZnRPCAuthBlock& credentials, uint32_t xid, ZnNFSReaddirargs& args);
  virtual void ProcStatfs(const ZnInetAddr& source, ZnRPCAuthBlock& credentials, uint32_t xid, ZnNFSFileHandle& args);

  virtual void MntProcNull(const ZnInetAddr& source, ZnRPCAuthBlock& credentials, uint32_t xid);
  virtual void MntProcMount(const ZnInetAddr& source, ZnRPCAuthBlock& credentials, uint32_t xid, ZnNFSMountargs& args);
  virtual void MntProcDump(const ZnInetAddr& source, ZnRPCAuthBlock& credentials, uint32_t xid);
  virtual void MntProcUnmount(const ZnInetAddr& source, ZnRPCAuthBlock& credentials, uint32_t xid,
                              ZnNFSMountargs& args);
  virtual void MntProcUnmountAll(const ZnInetAddr& source, ZnRPCAuthBlock& credentials, uint32_t xid);
  virtual void MntProcExport(const ZnInetAddr& source, ZnRPCAuthBlock& credentials, uint32_t xid);

  // An NFS procedure above STATFS, with its arguments as they came.
  virtual void HandleOtherNfsMessage(const ZnInetAddr& source, ZnRPCAuthBlock& credentials, uint32_t xid,
                                     ZnPacket& data);
};
