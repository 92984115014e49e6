#include "session/task_kinds.h"

#include <algorithm>

#include "session/create_task.h"
#include "session/entry_task.h"
#include "session/list_task.h"
#include "session/open_task.h"
#include "session/read_task.h"
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
      Kind<ZnListTask>(E::SCRequestDirs),     Kind<ZnEntryTask>(E::SCRequestAttribs),
      Kind<ZnEntryTask>(E::SCRequestEntry),   Kind<ZnCreateTask>(E::SCRequestCreateFile),
      Kind<ZnOpenTask>(E::SCRequestOpenFile), Kind<ZnWriteTask>(E::SCRequestWrite),
      Kind<ZnReadTask>(E::SCRequestRead),     Kind<ZnSpaceTask>(E::SCRequestSpace),
  };
  return kinds;
}

std::unique_ptr<ZnSessionTask> ZnMakeTask(ZnMachineSession& session, ZnSMBNFSCommand& command) {
  const std::span<const ZnTaskKind> kinds = ZnTaskKinds();
  const auto kind = std::find_if(kinds.begin(), kinds.end(),
                                 [&](const ZnTaskKind& each) { return each.what == command.sessioncommand; });
  return kind->make(session, command);
}
