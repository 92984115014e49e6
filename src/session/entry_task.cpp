#include "session/entry_task.h"

#include "model/name_mapping.h"
#include "model/node.h"
#include "model/share_tree.h"

namespace {

// So many entries at most can have one name, whatever a server says.
constexpr size_t kMostOfOneName = 100;

constexpr unsigned kFileNotFound = 2 * 256 + 1;

}  // namespace

const ZnTaskRow ZnEntryTask::kRows[] = {
    {E::SSTGetAttribs,
     ZN_ACTION(ZnEntryTask, Ask),
     {{{ZnTaskEvent::Done, E::SSTDone}, {ZnTaskEvent::Gone, E::SSTDone}}},
     ZnTaskRow::kChangesNothing},
};

std::span<const ZnTaskRow> ZnEntryTask::Rows() { return kRows; }

void ZnEntryTask::Ask() {
  ZnSMBNFSCommand& command = this->command();
  const ZnSMBNFSNode& node = *command.node.Get();
  const ZnSMBNFSTree* tree = this->tree();
  if (!tree) return FailQuietly();
  command.files.Flush();
  const ZnUniString path = IsOfNode() || node.IsShare() ? node.path : node.Path();
  const ZnSMBCDirectoryObject directory(*tree, InternalToWindowsPath(path, tree->config));
  const ZnUniString name = InternalToWindowsName(IsOfNode() ? node.NameInPath() : command.name, tree->config);
  command.fileobject = std::make_unique<ZnSMBCFileObject>(*tree, directory.path + name);
  Await(client().List(
      caller(), directory, name, &command.files, [&files = command.files] { return files.Count() < kMostOfOneName; },
      WhenAnswered()));
}

std::optional<ZnTaskEvent> ZnEntryTask::EventOf(const ZnSmbOutcome& outcome) {
  if (!IsOfNode() && outcome.Refusal() == kFileNotFound) return ZnTaskEvent::Gone;
  return ZnSessionTask::EventOf(outcome);
}
