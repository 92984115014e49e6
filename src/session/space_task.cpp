#include "session/space_task.h"

#include "model/share_tree.h"

const ZnTaskRow ZnSpaceTask::kRows[] = {
    {E::SSTGetSpace, ZN_ACTION(ZnSpaceTask, Ask), {{{ZnTaskEvent::Done, E::SSTDone}}}, ZnTaskRow::kChangesNothing},
};

std::span<const ZnTaskRow> ZnSpaceTask::Rows() { return kRows; }

void ZnSpaceTask::Ask() {
  const ZnSMBNFSTree* share = tree();
  if (!share) return FailQuietly();
  Await(client().GetDiskSpace(caller(), *share, &command().space, WhenAnswered()));
}
