#pragma once
// Renaming, also over what is there. Nothing is lost on the way: the server replaces the file in one request where it
// can; else what is in the way goes aside under another name, and only when the new file stands in its place is it
// removed.

#include <vector>

#include "session/removing_task.h"

class ZnRenameTask : public ZnRemovingTask {
 public:
  ZnRenameTask(ZnMachineSession& session, ZnSMBNFSCommand& command) : ZnRemovingTask(session, command, Rows()) {}
  static std::span<const ZnTaskRow> Rows();

 protected:
  std::optional<ZnTaskEvent> EventOf(const ZnSmbOutcome& outcome) override;
  void BeginsAgain() override { turns_.clear(); }
  ZnUniString Remains() const override;

 private:
  static const ZnTaskRow kRows[];
  struct OtherWay;
  static const OtherWay kOtherWays[];

  // What stands at the new name as far as the tree knows; null for nothing.
  ZnSMBNFSNode* Target() const;
  bool StaysInDirectory() const;
  bool MayReplace() const;
  void TakeTurn(ZnFileTurnPlace turn) { turns_.push_back(std::move(turn)); }
  void TurnCame();

  // The actions.
  void AwaitTurns();
  void CloseFiles();
  void ChooseWay();
  void Replace();
  void MoveOrRename();
  void ChooseRoom();
  void RemoveTarget();
  void MoveAside();
  void PutBack();

  // Whether a refusal has a way of its own.
  bool MoveIsUnknown(const ZnSmbOutcome& refusal) const;
  bool NameIsTaken(const ZnSmbOutcome& refusal) const;
  bool CannotReplace(const ZnSmbOutcome& refusal) const;
  bool Always(const ZnSmbOutcome&) const { return true; }

  std::vector<ZnFileTurnPlace> turns_;
  bool replacetried_ = false;
  bool movetried_ = false;  // the last request was a move
  ZnSmbOutcome refusal_;    // the last
};
