#pragma once
// The NFS server of the gateway: filters calls, makes each one a command, and moves commands along the steps of their
// procedure.

#include <memory>

#include "config/server_config.h"
#include "core/caller_filter.h"
#include "core/duplicate_cache.h"
#include "core/procedures.h"
#include "model/upward.h"
#include "rpc/rpc_server.h"
#include "runtime/event_loop.h"
#include "runtime/timer.h"
#include "runtime/unix_process.h"
#include "tree/file_system.h"

class ZnSMBNFSServer : public ZnRPCServer, public ZnSMBNFSCommandHandler {
 public:
  // Binds the configuration's port, catches the signals that end the daemon and arms the clean-up timer. A failure
  // leaves the base's `error` text. `process` and `loop` outlive the server.
  ZnSMBNFSServer(ZnProcess* process, ZnEventLoopBase* loop, const ZnSMBNFSServerConfig& config);
  ~ZnSMBNFSServer() override;

  // The filters, in this order: the caller's address, of NFS calls also its port, and what the call repeats. Nothing
  // else happens for a call that doesn't pass.
  bool ServesCaller(const ZnInetAddr& source) override { return callers_.ServesAddress(source); }
  void HandleCall(const ZnRPCMessageFromClient& call, ZnXdrReader& arguments, const ZnInetAddr& source) override;

  void HandleCommand(ZnSMBNFSCommand* command) override;
  void CommandEnds(const ZnSMBNFSCommand& command) override;

 protected:
  // For tests: a server over a file system of their own, and an eye on every step taken.
  using MakeFileSystem = std::unique_ptr<ZnSMBNFSFileSystem> (*)(ZnSMBNFSCommandHandler* server, ZnEventLoopBase* loop,
                                                                 const ZnSMBNFSServerConfig& config);
  ZnSMBNFSServer(ZnProcess* process, ZnEventLoopBase* loop, const ZnSMBNFSServerConfig& config, MakeFileSystem make);
  virtual void StepTaken(const ZnSMBNFSCommand& command, const ZnStep& step);

 private:
  // True when the call is a repetition, which has got what it gets.
  bool Repeats(const ZnProcedure& procedure, const ZnCallKey& call);
  // One that has passed the filters: decodes it, and takes its first step.
  void Begin(const ZnProcedure& procedure, const ZnRPCMessageFromClient& call, const ZnCallKey& key,
             ZnXdrReader& arguments);
  // A profile that tells the root's handle makes it hold over restarts, whatever call comes first.
  void TakeConfiguredRoot(const std::array<uint8_t, 32>& bytes);
  bool HasRoot(const ZnProcedure& procedure, const ZnSMBNFSArguments& arguments);
  void Reply(ZnSMBNFSCommand* command);

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
  const ZnSMBNFSCommand* begun_ = nullptr;  // while its call is in its first turn
  SignalCallback stop_, buserror_, segmentfault_;
  ZnSimpleCallback<ZnEvent::cbdispatch, ZnSMBNFSServer> hangup_;
  ZnSimpleCallback<ZnEvent::cbdispatch, ZnSMBNFSServer> cleanup_;
  ZnTimer timer_;
};
