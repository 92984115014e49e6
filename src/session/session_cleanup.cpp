// What happens while nobody asks for anything: idle files are closed, and in the end the idle connection.

#include <algorithm>

#include "session/session.h"

using E = ZnSMBNFSEnum;

namespace {

bool HasPassed(ZnMoment since, int32_t seconds) {
  return ZnSteadyClock::now() > since + std::chrono::seconds(std::max(seconds, 0));
}

}  // namespace

bool ZnSMBNFSSession::IsQuiet() const { return queue_.IsEmpty() || (queue_.Count() == 1 && cleanupqueued_); }

// What idles for long goes with its connection, unclosed. Handles stay good: the next command connects again.
bool ZnSMBNFSSession::CleanUp() {
  if (!IsConnected()) {
    if (queue_.IsEmpty()) DropClosingTrees();
    return true;
  }
  if (IsQuiet() && HasPassed(lastactivity, std::max(config.sessiontimeout, 1))) {
    if (!queue_.IsEmpty()) EndCleanUp(*queue_.Head());
    DropConnection();
    DropClosingTrees();
    return true;
  }
  const bool closing = std::any_of(trees.begin(), trees.end(), [](auto& tree) { return tree->closing; });
  if (MarkIdleFiles() || closing) QueueCleanUp();
  return false;
}

void ZnSMBNFSSession::QueueCleanUp() {
  if (cleanupqueued_) return;
  cleanupqueued_ = true;
  Request(new Command(ZnInetAddr(), 0, nullptr), E::SCCleanUp);
}

// True if any file is to be closed.
bool ZnSMBNFSSession::MarkIdleFiles() {
  bool due = false;
  for (auto& file : files) {
    if (file->inuse) continue;
    const ZnSMBNFSTree* tree = TreeOf(file->node.Get());
    if (!tree || HasPassed(file->lastused, tree->config.openfilettl)) file->close = true;
    due |= file->close;
  }
  return due;
}

void ZnSMBNFSSession::DropClosingTrees() {
  trees.remove_if([](auto& tree) { return tree->closing; });
}

// A connected share costs the server little, and nothing is told to it: its id goes with the connection.
void ZnSMBNFSSession::CloseNextTree(Command&) {
  DropClosingTrees();
  Advance();
}

void ZnSMBNFSSession::EndCleanUp(Command& command) {
  cleanupqueued_ = false;
  delete &command;
}
