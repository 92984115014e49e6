#include "session/write_task.h"

#include <limits>

#include "model/share_tree.h"
#include "session/machine_session.h"

using Event = ZnTaskEvent;

namespace {

constexpr uint64_t kLargestFile = std::numeric_limits<uint32_t>::max();  // bytes, as far as NFS can say

}  // namespace

const ZnTaskRow ZnWriteTask::kRows[] = {
    {E::SSTTurn,
     ZN_ACTION(ZnWriteTask, TakeTurnAtBytes),
     {{{Event::Done, E::SSTOpenFile}, {Event::Gone, E::SSTStart}}}},
    // It is open usually, unless it went with a dead connection or made way for another.
    {E::SSTOpenFile,
     ZN_ACTION(ZnWriteTask, OpenFile),
     {{{Event::Again, E::SSTOpenFile}, {Event::Gone, E::SSTStart}, {Event::Opened, E::SSTWrite}}},
     ZnTaskRow::kChangesNothing},
    {E::SSTWrite, ZN_ACTION(ZnWriteTask, Write), {{{Event::Done, E::SSTFlush}}}},
    {E::SSTFlush,
     ZN_ACTION(ZnWriteTask, FlushIfPromised),
     {{{Event::Done, E::SSTDone}, {Event::NotNeeded, E::SSTDone}}},
     ZnTaskRow::kChangesNothing},
};

ZnWriteTask::ZnWriteTask(ZnMachineSession& session, ZnSMBNFSCommand& command) : ZnFileTask(session, command, Rows()) {
  command.openread = command.freshopen = false;
  command.openwrite = true;
}

std::span<const ZnTaskRow> ZnWriteTask::Rows() { return kRows; }

void ZnWriteTask::TakeTurnAtBytes() {
  const uint64_t begin = command().offset;
  const uint64_t end = begin + command().data.Length();
  if (end > kLargestFile) return Fail("The file would become too large", ZnNFSEnum::NFSERR_FBIG);
  ZnSMBNFSNode& node = *command().node.Get();
  ZnFileTurns& turns = session().turns();
  TakeTurn(begin == end ? turns.Alone(node, WhenAnswered()) : turns.Bytes(node, {begin, end, true}, WhenAnswered()));
}

void ZnWriteTask::Write() {
  UseFile();
  const ZnByteBuffer& bytes = command().data;
  const uint64_t offset = command().offset;
  Await(bytes.IsEmpty() ? client().SetSize(caller(), *file().Get(), offset, WhenAnswered())
                        : client().Write(caller(), *file().Get(), offset, bytes, WhenAnswered()));
}

std::optional<ZnTaskEvent> ZnWriteTask::EventOf(const ZnSmbOutcome& outcome) {
  if (outcome.Ok() && state() == E::SSTWrite && file()) session().openfiles().Written(*file().Get());
  return ZnFileTask::EventOf(outcome);
}

// NFS promises that what was answered with success is on the disk.
void ZnWriteTask::FlushIfPromised() {
  LeaveTurn();
  if (!tree() || !tree()->config.syncwrites) return Ended(Event::NotNeeded);
  if (!file()) return FailQuietly();
  ZnWaitPlace place = session().openfiles().Flush(*file().Get(), WhenAnswered());
  if (!place) return Ended(Event::NotNeeded);
  Wait(std::move(place));
}
