// The order among commands of one machine, which run side by side. What is in flight together, and what waits, is told
// in docs/architecture.md.

#include "model/name_mapping.h"
#include "tree/file_system.h"

void ZnSMBNFSFileSystem::StepOut(ZnSMBNFSCommand* command) {
  if (ZnSMBNFSSessionBase* session = std::exchange(command->session, nullptr)) session->RemoveCommand(command);
}

void ZnSMBNFSFileSystem::BTakeNames(ZnSMBNFSCommand* command,
                                    const std::vector<std::pair<ZnSMBNFSNode*, ZnUniString>>& names) {
  std::vector<ZnNameTurns::Name> wanted;
  for (const auto& [directory, name] : names) {
    if (!directory) return SendError(command, ZnNFSEnum::NFSERR_STALE);
    const ZnSMBNFSTree* tree = GetTree(directory);
    ZnUniString shown = tree ? FromLinkName(name, tree->config.linkstring) : name;
    shown.LowerCase();
    wanted.emplace_back(directory->id, shown);
  }
  switch (nameturns_.Take(*command, std::move(wanted))) {
    case ZnNameTurns::Result::There:
      return Continue(command);
    case ZnNameTurns::Result::Waits:
      return StepOut(command);
    case ZnNameTurns::Result::TooMany:
      return command->Drop();
  }
}
