// The sessions and users that the tree's nodes own in earnest.

#include "session/machine_session.h"
#include "session/user.h"
#include "tree/file_system.h"

std::unique_ptr<ZnSMBNFSSessionBase> ZnSMBNFSFileSystem::MakeSession(ZnSMBNFSNode* machinenode,
                                                                     const ZnSMBNFSMachineConfig& config) {
  return std::make_unique<ZnMachineSession>(machinenode, this, config);
}

std::unique_ptr<ZnSMBNFSUserBase> ZnSMBNFSFileSystem::MakeUser() { return std::make_unique<ZnSMBNFSUser>(); }
