#pragma once
// Failures in words, for the user's error file and the log, and as a status for NFS.

#include "config/machine_config.h"
#include "model/command.h"
#include "runtime/os_stream.h"
#include "smb/client/client.h"

class ZnSessionReports {
 public:
  // All of these outlive the reports.
  ZnSessionReports(ZnSMBNFSNode* const& machinenode, const ZnSMBNFSMachineConfig& config, const ZnSmbClient& client)
      : machinenode_(machinenode), config_(config), client_(client) {}

  // The machine's address, as lines about the machine tell it.
  void TakeAddress(const ZnInetAddr& address) { address_ = address; }

  // One line: who, where, what was being done (`step`, and `lastcommand` while connecting), and why it failed.
  void Tell(const ZnSMBNFSCommand& command, ZnSMBNFSEnum::SessionStatus step, ZnSMBClientValues::Command lastcommand,
            const ZnUniString& text) const;
  // The same for what the session does of its own accord.
  void Tell(const ZnSMBCFileObject& file, ZnSMBNFSEnum::SessionStatus step, const ZnUniString& text) const;

  // The server's words, or ours, for a call that failed.
  ZnUniString TextOf(const ZnSmbOutcome& outcome) const;
  // What NFS is told of it.
  static ZnNFSEnum::Status StatusOf(const ZnSmbOutcome& outcome, ZnSMBNFSEnum::SessionStatus step);

 private:
  void Write(const ZnUniString& place, ZnSMBNFSEnum::SessionStatus step, ZnSMBClientValues::Command lastcommand,
             const ZnUniString& text) const;

  ZnSMBNFSNode* const& machinenode_;
  const ZnSMBNFSMachineConfig& config_;
  const ZnSmbClient& client_;
  ZnInetAddr address_;
};
