#pragma once
// The calls that run upwards: a finished step hands its command back to the state machine, and a session that has done
// its part of a command has that completed.

#include "model/command.h"

class ZnEventLoopBase;
struct ZnSMBNFSServerConfig;

// The server, as steps and commands know it.
class ZnSMBNFSCommandHandler {
 public:
  virtual ~ZnSMBNFSCommandHandler() = default;
  // One step further. The command may be gone afterwards: touch nothing of it.
  virtual void HandleCommand(ZnSMBNFSCommand* command) = 0;
  // The command is being deleted.
  virtual void CommandEnds(const ZnSMBNFSCommand& command) = 0;
};

// The file system, as its sessions know it.
class ZnSMBNFSSessionHost {
 public:
  virtual ~ZnSMBNFSSessionHost() = default;
  // The session has done what command->sessioncommand asked, or failed (sessionstatus SSTError). The command may be
  // gone afterwards, and with it even the session.
  virtual void CompleteRequest(ZnSMBNFSCommand* command) = 0;
  // The listing of a directory that the command asked for begins, perhaps not for the first time.
  virtual void ListingBegins(ZnSMBNFSCommand* command) = 0;
  // A part of it has come and is taken out of command->files. False when the tree has no room for it: the listing is to
  // end.
  virtual bool TakeListed(ZnSMBNFSCommand* command) = 0;
  virtual ZnEventLoopBase* eventloop() = 0;
  virtual const ZnSMBNFSServerConfig& serverconfig() const = 0;
  // A session enters and leaves the list that the clean-up timer walks.
  virtual void AddSession(ZnSMBNFSSessionBase* session) = 0;
  virtual void RemoveSession(ZnSMBNFSSessionBase* session) = 0;
};
