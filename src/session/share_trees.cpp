#include "session/share_trees.h"

ZnWaitPlace ZnShareTrees::Connect(ZnSMBNFSTree& tree, ZnSmbDone done) {
  const auto [position, isnew] = connecting_.try_emplace(&tree, wakeups_);
  Connecting& connecting = position->second;
  if (isnew) {
    connecting.call = client_.TreeConnect(&tree, tree.config.password,
                                          [this, &tree](const ZnSmbOutcome& outcome) { Connected(tree, outcome); });
  }
  return connecting.waiting.Enter(std::move(done));
}

void ZnShareTrees::Connected(ZnSMBNFSTree& tree, const ZnSmbOutcome& told) {
  const ZnSmbOutcome outcome = told;  // goes with the call
  tree.connected = outcome.Ok();
  const auto position = connecting_.find(&tree);
  position->second.waiting.WakeAll(outcome);
  connecting_.erase(position);
}

void ZnShareTrees::Forget() {
  for (auto& tree : trees_) {
    tree->connected = false;
    tree->tid = ZnSMBCTreeObject::kNotConnected;
  }
}

void ZnShareTrees::DropClosing() {
  trees_.remove_if([this](auto& tree) { return tree->closing && !connecting_.contains(tree.get()); });
}
