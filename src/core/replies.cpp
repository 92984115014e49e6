#include "core/replies.h"

#include <algorithm>
#include <optional>

#include "model/link_target.h"
#include "tree/file_system.h"

namespace {

template <class Result>
Result WithStatus(ZnSMBNFSCommand& command, bool needsnode = true) {
  Result result;
  if (needsnode && command.error == ZnNFSEnum::NFS_OK && !command.node) command.error = ZnNFSEnum::NFSERR_STALE;
  result.status = command.error;
  return result;
}

}  // namespace

namespace ZnReplies {

using FS = ZnSMBNFSFileSystem;
using Command = ZnSMBNFSCommand;

void NoResult(FS&, Command&, ZnXdrWriter&) {}

void StatReply(FS&, Command& command, ZnXdrWriter& out) { WithStatus<ZnNFSStat>(command, false).Write(out); }

void AttributesReply(FS&, Command& command, ZnXdrWriter& out) {
  auto result = WithStatus<ZnNFSAttrstat>(command);
  if (result.status == ZnNFSEnum::NFS_OK) result.attributes = command.node->attribs;
  result.Write(out);
}

void NodeReply(FS&, Command& command, ZnXdrWriter& out) {
  auto result = WithStatus<ZnNFSDiropres>(command);
  if (result.status == ZnNFSEnum::NFS_OK) {
    result.file = command.node->handle;
    result.attributes = command.node->attribs;
  }
  result.Write(out);
}

// What is no path, or none that the protocol can carry, is never shown shortened.
void LinkReply(FS&, Command& command, ZnXdrWriter& out) {
  const std::optional<ZnUniString> target = ZnLinkTarget(command.data);
  const bool fits = target && ZnEncodeRpcName(*target).Length() <= ZnNFSEnum::kMaxPath;
  if (command.error == ZnNFSEnum::NFS_OK && !fits) command.error = ZnNFSEnum::NFSERR_IO;
  auto result = WithStatus<ZnNFSReadlinkres>(command, false);
  if (result.status == ZnNFSEnum::NFS_OK) result.data = *target;
  result.Write(out);
}

void ReadReply(FS&, Command& command, ZnXdrWriter& out) {
  auto result = WithStatus<ZnNFSReadres>(command);
  if (result.status == ZnNFSEnum::NFS_OK) {
    result.attributes = command.node->attribs;
    result.data = command.data;
  }
  result.Write(out);
}

void DirectoryReply(FS& filesystem, Command& command, ZnXdrWriter& out) {
  auto result = WithStatus<ZnNFSReaddirres>(command);
  if (result.status == ZnNFSEnum::NFS_OK) {
    const auto& args = command.As<ZnNFSReaddirargs>();
    uint32_t eof = 0;
    filesystem.FillContents(command.node.Get(), args.cookie, std::min(args.count, ZnNFSEnum::kMaxData), result.entries,
                            eof);
    result.eof = eof != 0;
  }
  result.Write(out);
}

void StatfsReply(FS&, Command& command, ZnXdrWriter& out) {
  command.statfs.status = command.error;
  command.statfs.Write(out);
}

}  // namespace ZnReplies
