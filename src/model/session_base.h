#pragma once
// What the tree knows of a machine's session: where it hands commands to, and the state that tree and session share.

#include <list>
#include <memory>

#include "config/machine_config.h"
#include "model/enums.h"
#include "model/node.h"
#include "model/open_file.h"
#include "model/share_tree.h"
#include "rpc/nfs_enum.h"

class ZnSMBNFSCommand;

class ZnSMBNFSSessionBase {
 public:
  ZnSMBNFSSessionBase() = default;
  ZnSMBNFSSessionBase(const ZnSMBNFSSessionBase&) = delete;
  ZnSMBNFSSessionBase& operator=(const ZnSMBNFSSessionBase&) = delete;
  virtual ~ZnSMBNFSSessionBase() = default;

  // Does this for a command, beside what is done for others. When it is done the session calls
  // ZnSMBNFSSessionHost::CompleteRequest, perhaps before this returns; a failure shows as sessionstatus SSTError. After
  // the call the command may be gone.
  virtual void Request(ZnSMBNFSCommand* command, ZnSMBNFSEnum::SessionCommand what) = 0;
  // Withdraws a command whose life ends, with what goes on for it. Called by the command's destructor.
  virtual void RemoveCommand(ZnSMBNFSCommand* command) = 0;
  // Fails every command that something is being done for, with a report to the user.
  virtual void SendErrors() = 0;
  // What NFS is told of a request that failed.
  virtual ZnNFSEnum::Status ConvertError(const ZnSMBNFSCommand& command) const = 0;
  // A node that has an open file is about to go: the file is closed when nobody uses it any more.
  virtual void NodeGoes(ZnSMBNFSNode& node) = 0;
  // Periodic: closes what has been idle too long. True when there is no connection.
  virtual bool CleanUp() = 0;
  virtual bool IsConnected() const = 0;
  // What the server can do: 0 oldest dialect, 1 no native operating system told, 2 Windows NT, 3 any other. Known once
  // connected.
  virtual unsigned serverclass() const = 0;

  ZnSMBNFSNode* machinenode = nullptr;  // owns this session
  ZnSMBNFSMachineConfig config;         // a copy
  ZnMoment lastactivity;                // when a command last came or went
  std::list<std::unique_ptr<ZnSMBNFSTree>> trees;
  ZnSMBNFSHandleDictionary handles;  // owns the nodes of level 4 and deeper
  size_t treebytes = 0;              // what those take, about
};
