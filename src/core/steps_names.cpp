// Which names a call changes: it waits for its turn at them, and then looks what they lead to.

#include "core/steps.h"

namespace ZnSteps {

Outcome TakeNewName(FS& filesystem, Command& command) {
  filesystem.BTakeNames(&command, {{command.node.Get(), command.As<ZnNFSCreateargs>().where.name}});
  return Outcome::Called;
}

Outcome TakeNewLinkName(FS& filesystem, Command& command) {
  filesystem.BTakeNames(&command, {{command.node.Get(), command.As<ZnNFSSymlinkargs>().from.name}});
  return Outcome::Called;
}

Outcome TakeEntryName(FS& filesystem, Command& command) {
  filesystem.BTakeNames(&command, {{command.node.Get(), command.As<ZnNFSDiropargs>().name}});
  return Outcome::Called;
}

Outcome TakeRenameNames(FS& filesystem, Command& command) {
  const auto& args = command.As<ZnNFSRenameargs>();
  filesystem.BTakeNames(&command, {{command.directory.Get(), args.from.name}, {command.node2.Get(), args.to.name}});
  return Outcome::Called;
}

}  // namespace ZnSteps
