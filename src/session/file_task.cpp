#include "session/file_task.h"

#include "model/share_tree.h"
#include "session/machine_session.h"

// What is under way for a task that dies is withdrawn before others have their turn.
ZnFileTask::~ZnFileTask() { Await(nullptr); }

void ZnFileTask::TakeTurn(ZnFileTurnPlace turn) {
  turn_ = std::move(turn);
  if (turn_->IsThere()) return Ended();
  Wait(nullptr);
}

void ZnFileTask::OpenFile() {
  if (ShareHasGone()) return Ended(ZnTaskEvent::Gone);
  ZnWaitPlace place = session().openfiles().Open(command(), caller(), WhenAnswered());
  if (!place) return Ended(ZnTaskEvent::Opened);
  Wait(std::move(place));
}

bool ZnFileTask::UseFile() {
  file_ = session().openfiles().Use(*command().node.Get());
  return static_cast<bool>(file_);
}

// While others had their turn the connection may have gone, and another have come.
bool ZnFileTask::ShareHasGone() {
  if (tree() && tree()->connected) return false;
  BeginsAgain();
  return true;
}

// The next use opens a file afresh that something went wrong with.
std::optional<ZnTaskEvent> ZnFileTask::EventOf(const ZnSmbOutcome& outcome) {
  if (state() == E::SSTTurn && ShareHasGone()) return ZnTaskEvent::Gone;
  if (outcome.Ok()) return state() == E::SSTOpenFile ? ZnTaskEvent::Again : ZnTaskEvent::Done;
  if (file_) session().openfiles().CloseAfterUse(*file_.Get());
  return std::nullopt;
}

void ZnFileTask::BeginsAgain() {
  turn_.reset();
  file_.End();
}
