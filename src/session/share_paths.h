#pragma once
// What requests to a server name: shares, and files by their path.

#include "model/command.h"
#include "model/share_tree.h"

// The share of a node; null when there is none, or not any more.
ZnSMBNFSTree* ZnTreeOf(const ZnSMBNFSNode* node);
// An object for a request: closed, without times, at the Windows form of a path of the share.
std::unique_ptr<ZnSMBCFileObject> ZnFileAt(const ZnSMBNFSTree& tree, const ZnUniString& path);
// The attributes that stand for the mode that a command tells, or for the share's own, in what is `present`.
ZnSMBCFileAttributes ZnAttribsToSet(const ZnSMBNFSCommand& command, const ZnSMBNFSTree& tree,
                                    const ZnSMBCFileAttributes& present);
