#pragma once
// The NFS server of the gateway: filters calls, makes each one a command, and moves commands along their procedure's
// table.

#include <memory>

#include "config/server_config.h"
#include "core/caller_filter.h"
#include "core/command_tables.h"
#include "core/duplicate_cache.h"
#include "model/upward.h"
#include "rpc/nfs_server.h"
#include "runtime/event_loop.h"
#include "runtime/timer.h"
#include "runtime/unix_process.h"
#include "tree/file_system.h"

class ZnSMBNFSServer : public ZnNFSServer, public ZnSMBNFSCommandHandler {
 public:
  // Binds the configuration's port, catches the signals that end the daemon and arms the clean-up timer. A failure
  // leaves the base's `error` text. `process` and `loop` outlive the server.
  ZnSMBNFSServer(ZnProcess* process, ZnEventLoopBase* loop, const ZnSMBNFSServerConfig& config);
  ~ZnSMBNFSServer() override;

  // The filters, in this order: the caller's address, of NFS calls also its port, and what the call repeats. Nothing
  // else happens for a call that doesn't pass.
  bool ServesCaller(const ZnInetAddr& source) override { return callers_.ServesAddress(source); }
  void HandleRpcMessage(ZnRPCMessageFromClient& message, ZnRPCAuthBlock& credentials,
                        const ZnInetAddr& source) override;

  void ProcGetattr(const ZnInetAddr& source, ZnRPCAuthBlock& auth, uint32_t xid, ZnNFSFileHandle& args) override;
  void ProcSetattr(const ZnInetAddr& source, ZnRPCAuthBlock& auth, uint32_t xid, ZnNFSSattrargs& args) override;
  void ProcLookup(const ZnInetAddr& source, ZnRPCAuthBlock& auth, uint32_t xid, ZnNFSDiropargs& args) override;
  void ProcReadlink(const ZnInetAddr& source, ZnRPCAuthBlock& auth, uint32_t xid, ZnNFSFileHandle& args) override;
  void ProcRead(const ZnInetAddr& source, ZnRPCAuthBlock& auth, uint32_t xid, ZnNFSReadargs& args) override;
  void ProcWrite(const ZnInetAddr& source, ZnRPCAuthBlock& auth, uint32_t xid, ZnNFSWriteargs& args) override;
  void ProcCreate(const ZnInetAddr& source, ZnRPCAuthBlock& auth, uint32_t xid, ZnNFSCreateargs& args) override;
  void ProcRemove(const ZnInetAddr& source, ZnRPCAuthBlock& auth, uint32_t xid, ZnNFSDiropargs& args) override;
  void ProcRename(const ZnInetAddr& source, ZnRPCAuthBlock& auth, uint32_t xid, ZnNFSRenameargs& args) override;
  void ProcLink(const ZnInetAddr& source, ZnRPCAuthBlock& auth, uint32_t xid, ZnNFSLinkargs& args) override;
  void ProcSymlink(const ZnInetAddr& source, ZnRPCAuthBlock& auth, uint32_t xid, ZnNFSSymlinkargs& args) override;
  void ProcMkdir(const ZnInetAddr& source, ZnRPCAuthBlock& auth, uint32_t xid, ZnNFSCreateargs& args) override;
  void ProcRmdir(const ZnInetAddr& source, ZnRPCAuthBlock& auth, uint32_t xid, ZnNFSDiropargs& args) override;
  void ProcReaddir(const ZnInetAddr& source, ZnRPCAuthBlock& auth, uint32_t xid, ZnNFSReaddirargs& args) override;
  void ProcStatfs(const ZnInetAddr& source, ZnRPCAuthBlock& auth, uint32_t xid, ZnNFSFileHandle& args) override;

  void HandleCommand(ZnSMBNFSCommand* command) override;
  void CommandEnds(const ZnSMBNFSCommand& command) override;

 protected:
  // For tests: a server over a file system of their own, and an eye on every step taken.
  using MakeFileSystem = std::unique_ptr<ZnSMBNFSFileSystem> (*)(ZnSMBNFSCommandHandler* server, ZnEventLoopBase* loop,
                                                                 const ZnSMBNFSServerConfig& config);
  ZnSMBNFSServer(ZnProcess* process, ZnEventLoopBase* loop, const ZnSMBNFSServerConfig& config, MakeFileSystem make);
  virtual void StepTaken(const ZnSMBNFSCommand& command, const ZnSMBNFSStep& step);

 private:
  // False, after rejecting the call, while there is no root.
  bool CheckInited(const ZnInetAddr& source, uint32_t xid);
  // A profile that tells the root's handle makes it hold over restarts, whatever call comes first.
  void TakeConfiguredRoot(const std::array<uint8_t, 32>& bytes);
  // Else the first GETATTR or STATFS brings it.
  void DefineRoot(const ZnNFSFileHandle& handle);
  // The road of every call with arguments: root, command, first step.
  template <class Args>
  void Begin(int procedure, const ZnInetAddr& source, ZnRPCAuthBlock& auth, uint32_t xid, Args& args);
  void Reply(ZnSMBNFSCommand* command, const ZnSMBNFSProcedure& procedure);

  void CatchSignals(ZnProcess* process);
  void HangUpCB(ZnCallback<ZnEvent::cbdispatch>* callback, ZnEvent::cbdispatch value);
  void SignalCB(ZnCallback<ZnEvent::cbdispatch>* callback, ZnEvent::cbdispatch value, unsigned code);
  void TimeoutCallback(ZnCallback<ZnEvent::cbdispatch>* callback, ZnEvent::cbdispatch value);
  void ArmCleanUp();

  using SignalCallback = ZnCallbackWithData<ZnEvent::cbdispatch, ZnSMBNFSServer, unsigned>;

  ZnEventLoopBase* loop_;
  ZnSMBNFSServerConfig config_;
  std::unique_ptr<ZnSMBNFSFileSystem> filesystem_;
  ZnCallerFilter callers_;
  ZnDuplicateCache duplicates_;
  ZnCallKey call_;  // the one that HandleRpcMessage is at
  SignalCallback stop_, buserror_, segmentfault_;
  ZnSimpleCallback<ZnEvent::cbdispatch, ZnSMBNFSServer> hangup_;
  ZnSimpleCallback<ZnEvent::cbdispatch, ZnSMBNFSServer> cleanup_;
  ZnTimer timer_;
};
