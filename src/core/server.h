#pragma once
// The NFS server of the gateway: filters calls, makes each one a command, and moves commands along their procedure's
// table.

#include <memory>
#include <unordered_set>

#include "config/server_config.h"
#include "core/command_tables.h"
#include "model/upward.h"
#include "rpc/nfs_server.h"
#include "runtime/event_loop.h"
#include "runtime/timer.h"
#include "runtime/unix_process.h"
#include "tree/file_system.h"

// A call in flight, as a retransmission of it would look.
struct ZnSMBNFSCallKey {
  uint32_t address = 0;
  uint16_t port = 0;
  uint32_t xid = 0;
  int procedure = 0;
  bool operator==(const ZnSMBNFSCallKey&) const = default;
};
template <>
struct std::hash<ZnSMBNFSCallKey> {
  size_t operator()(const ZnSMBNFSCallKey& key) const noexcept;
};

class ZnSMBNFSServer : public ZnNFSServer, public ZnSMBNFSCommandHandler {
 public:
  // Binds the configuration's port, catches the signals that end the daemon and arms the clean-up timer. A failure
  // leaves the base's `error` text. `process` and `loop` outlive the server.
  ZnSMBNFSServer(ZnProcess* process, ZnEventLoopBase* loop, const ZnSMBNFSServerConfig& config);
  ~ZnSMBNFSServer() override;

  void ProcNull(const ZnInetAddr& source, ZnRPCAuthBlock& auth, uint32_t xid) override;
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
  void ForgetCall(const ZnSMBNFSCommand& command) override;

 protected:
  // For tests: a server over a file system of their own, and an eye on every step taken.
  using MakeFileSystem = std::unique_ptr<ZnSMBNFSFileSystem> (*)(ZnSMBNFSCommandHandler* server, ZnEventLoopBase* loop,
                                                                 const ZnSMBNFSServerConfig& config);
  ZnSMBNFSServer(ZnProcess* process, ZnEventLoopBase* loop, const ZnSMBNFSServerConfig& config, MakeFileSystem make);
  virtual void StepTaken(const ZnSMBNFSCommand& command, const ZnSMBNFSStep& step);

 private:
  // False when the call is to be ignored: the same xid as the last call's, a call that is in flight, or a source that
  // isn't served.
  bool CheckSource(const ZnInetAddr& source, uint32_t xid, int procedure);
  bool IsServed(const ZnInetAddr& source) const;
  // False, after rejecting the call, while there is no root.
  bool CheckInited(const ZnInetAddr& source, uint32_t xid);
  // A profile that tells the root's handle makes it hold over restarts, whatever call comes first.
  void TakeConfiguredRoot(const std::array<uint8_t, 32>& bytes);
  // Else the first GETATTR or STATFS of a caller that is served brings it.
  void DefineRoot(const ZnInetAddr& source, const ZnNFSFileHandle& handle);
  // The road of every call with arguments: filters, root, command, first step.
  template <class Args>
  void Begin(int procedure, const ZnInetAddr& source, ZnRPCAuthBlock& auth, uint32_t xid, Args& args);
  void ReadAddresses();
  void Reply(ZnSMBNFSCommand* command, const ZnSMBNFSProcedure& procedure);

  void CatchSignals(ZnProcess* process);
  void SignalCB(ZnCallback<ZnEvent::cbdispatch>* callback, ZnEvent::cbdispatch value, unsigned code);
  void TimeoutCallback(ZnCallback<ZnEvent::cbdispatch>* callback, ZnEvent::cbdispatch value);
  void ArmCleanUp();

  using SignalCallback = ZnCallbackWithData<ZnEvent::cbdispatch, ZnSMBNFSServer, unsigned>;

  ZnEventLoopBase* loop_;
  ZnSMBNFSServerConfig config_;
  std::unique_ptr<ZnSMBNFSFileSystem> filesystem_;
  ZnDList<ZnInetAddr> addresses_;
  bool wildcard_ = false;
  bool anycall_ = false;  // a call has come; lastxid_ is meaningful
  uint32_t lastxid_ = 0;
  std::unordered_set<ZnSMBNFSCallKey> inflight_;
  SignalCallback stop_, buserror_, segmentfault_;
  ZnSimpleCallback<ZnEvent::cbdispatch, ZnSMBNFSServer> cleanup_;
  ZnTimer timer_;
};
