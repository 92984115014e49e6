#include "session/list_task.h"

#include "model/age.h"
#include "model/name_mapping.h"
#include "model/node.h"
#include "model/share_tree.h"
#include "session/machine_session.h"

const ZnTaskRow ZnListTask::kRows[] = {
    {E::SSTGetDirs,
     ZN_ACTION(ZnListTask, List),
     {{{ZnTaskEvent::Done, E::SSTDone}, {ZnTaskEvent::NotNeeded, E::SSTDone}}},
     ZnTaskRow::kChangesNothing},
};

std::span<const ZnTaskRow> ZnListTask::Rows() { return kRows; }

// While a command waits for the conversation, another may list the same directory.
void ZnListTask::List() {
  ZnSMBNFSCommand& command = this->command();
  const ZnSMBNFSNode& node = *command.node.Get();
  const ZnSMBNFSTree* tree = this->tree();
  if (!tree) return FailQuietly();
  command.alreadylisted = ZnIsFresh(node.contentstime, tree->config.contentsttl);
  if (command.alreadylisted) return Ended(ZnTaskEvent::NotNeeded);
  command.files.Flush();  // a listing that was begun before is begun again
  withoutroom_ = false;
  session().host().ListingBegins(&command);
  const ZnUniString path = node.IsShare() ? node.path : node.Path();
  const ZnSMBCDirectoryObject directory(*tree, InternalToWindowsPath(path, tree->config));
  command.fileobject = std::make_unique<ZnSMBCFileObject>(*tree, directory.path);
  Await(client().List(
      caller(), directory, "*", &command.files, [this] { return TookEntries(); }, WhenAnswered()));
}

bool ZnListTask::TookEntries() {
  withoutroom_ = !session().host().TakeListed(&command());
  return !withoutroom_;
}

ZnUniString ZnListTask::TextOf(const ZnSmbOutcome& outcome) const {
  if (!withoutroom_) return ZnSessionTask::TextOf(outcome);
  return "There are more names than treelimit of the machine in the profile allows to keep";
}
