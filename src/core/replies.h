#pragma once
// The results of the procedures, from the command that has done its steps or failed: its error, and where that is
// NFS_OK what it found.

#include "model/command.h"

class ZnSMBNFSFileSystem;

namespace ZnReplies {

void NoResult(ZnSMBNFSFileSystem& filesystem, ZnSMBNFSCommand& command, ZnXdrWriter& out);
void StatReply(ZnSMBNFSFileSystem& filesystem, ZnSMBNFSCommand& command, ZnXdrWriter& out);
void AttributesReply(ZnSMBNFSFileSystem& filesystem, ZnSMBNFSCommand& command, ZnXdrWriter& out);
void NodeReply(ZnSMBNFSFileSystem& filesystem, ZnSMBNFSCommand& command, ZnXdrWriter& out);
void LinkReply(ZnSMBNFSFileSystem& filesystem, ZnSMBNFSCommand& command, ZnXdrWriter& out);
void ReadReply(ZnSMBNFSFileSystem& filesystem, ZnSMBNFSCommand& command, ZnXdrWriter& out);
void DirectoryReply(ZnSMBNFSFileSystem& filesystem, ZnSMBNFSCommand& command, ZnXdrWriter& out);
void StatfsReply(ZnSMBNFSFileSystem& filesystem, ZnSMBNFSCommand& command, ZnXdrWriter& out);

}  // namespace ZnReplies
