#include "session/task_kinds.h"

#include <algorithm>

#include "session/attribute_tasks.h"
#include "session/create_task.h"
#include "session/directory_tasks.h"
#include "session/entry_task.h"
#include "session/list_task.h"
#include "session/read_task.h"
#include "session/remove_task.h"
#include "session/rename_task.h"
#include "session/space_task.h"
#include "session/write_task.h"

using E = ZnSMBNFSEnum;

namespace {

template <class Task>
ZnTaskKind Kind(E::SessionCommand what) {
  return {what,
          [](ZnMachineSession& session, ZnSMBNFSCommand& command) -> std::unique_ptr<ZnSessionTask> {
            return std::make_unique<Task>(session, command);
          },
          Task::Rows()};
}

}  // namespace

std::span<const ZnTaskKind> ZnTaskKinds() {
  static const ZnTaskKind kinds[] = {
      Kind<ZnReadTask>(E::SCRequestRead),
      Kind<ZnWriteTask>(E::SCRequestWrite),
      Kind<ZnEntryTask>(E::SCRequestAttribs),
      Kind<ZnEntryTask>(E::SCRequestEntry),
      Kind<ZnListTask>(E::SCRequestDirs),
      Kind<ZnCreateTask>(E::SCRequestCreateFile),
      Kind<ZnMakeDirectoryTask>(E::SCRequestMkdir),
      Kind<ZnRemoveTask>(E::SCRequestRm),
      Kind<ZnRemoveDirectoryTask>(E::SCRequestRmdir),
      Kind<ZnRenameTask>(E::SCRequestRename),
      Kind<ZnSetAllTask>(E::SCRequestSetAllAttribs),
      Kind<ZnSetModeTask>(E::SCRequestSetAttribs),
      Kind<ZnSetTimesTask>(E::SCRequestSetTimes),
      Kind<ZnSpaceTask>(E::SCRequestSpace),
  };
  return kinds;
}

std::unique_ptr<ZnSessionTask> ZnMakeTask(ZnMachineSession& session, ZnSMBNFSCommand& command) {
  const std::span<const ZnTaskKind> kinds = ZnTaskKinds();
  const auto kind = std::find_if(kinds.begin(), kinds.end(),
                                 [&](const ZnTaskKind& each) { return each.what == command.sessioncommand; });
  return kind->make(session, command);
}
