#include "session/entry_task.h"

#include "model/name_mapping.h"
#include "model/node.h"
#include "model/share_tree.h"

namespace {

// So many entries at most can have one name, whatever a server says.
constexpr size_t kMostOfOneName = 100;

}  // namespace

const ZnTaskRow ZnEntryTask::kRows[] = {
    {E::SSTGetAttribs, ZN_ACTION(ZnEntryTask, Ask), {{{ZnTaskEvent::Done, E::SSTDone}}}, ZnTaskRow::kChangesNothing},
};

std::span<const ZnTaskRow> ZnEntryTask::Rows() { return kRows; }

void ZnEntryTask::Ask() {
  ZnSMBNFSCommand& command = this->command();
  const ZnSMBNFSTree* tree = this->tree();
  if (!tree) return FailQuietly();
  command.files.Flush();
  const ZnSMBCDirectoryObject directory(*tree, InternalToWindowsPath(command.node->path, tree->config));
  const ZnUniString name = InternalToWindowsName(command.node->NameInPath(), tree->config);
  command.fileobject = std::make_unique<ZnSMBCFileObject>(*tree, directory.path + name);
  Await(client().List(
      caller(), directory, name, &command.files, [&files = command.files] { return files.Count() < kMostOfOneName; },
      WhenAnswered()));
}
