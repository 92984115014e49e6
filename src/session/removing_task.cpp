#include "session/removing_task.h"

#include "model/node.h"
#include "session/reports.h"
#include "smb/client/client.h"

namespace {

constexpr unsigned kDenied = 5 * 256 + 1;

}  // namespace

void ZnRemovingTask::Doom(const ZnSMBCFileObject& file, const ZnSMBNFSNode* node) {
  doomed_ = file;
  doomed_->attribs = node ? node->fileobject.attribs : ZnSMBCFileAttributes();
  madewritable_ = false;
}

void ZnRemovingTask::Spare() {
  doomed_.reset();
  madewritable_ = false;
}

void ZnRemovingTask::RemoveDoomed() {
  if (!doomed_) return Ended(ZnTaskEvent::NotNeeded);
  Await(client().Delete(caller(), *doomed_, WhenAnswered()));
}

std::optional<ZnTaskEvent> ZnRemovingTask::EventOfRemoval(const ZnSmbOutcome& refusal) {
  if (madewritable_) {
    Tell(refusal, Remains());
    command().failure = ZnSessionReports::StatusOf(refusal, state());
    return ZnTaskEvent::StaysReadOnly;
  }
  if (refusal.Refusal() == kDenied && doomed_ && doomed_->attribs.read_only) return ZnTaskEvent::ReadOnly;
  return std::nullopt;
}

void ZnRemovingTask::MakeWritable() {
  madewritable_ = true;
  ZnSMBCFileObject writable = *doomed_;
  writable.attribs.read_only = false;
  Await(client().SetAttributes(caller(), writable, WhenAnswered()));
}

void ZnRemovingTask::ProtectAgain() {
  madewritable_ = false;
  Await(client().SetAttributes(caller(), *doomed_, WhenAnswered()));
}
