#pragma once
// Lists a directory. Its entries go into the tree as they come, a reply at a time: what a million of them take is
// neither held twice nor worked on in one go.

#include "session/task.h"

class ZnListTask : public ZnSessionTask {
 public:
  ZnListTask(ZnMachineSession& session, ZnSMBNFSCommand& command) : ZnSessionTask(session, command, Rows()) {}
  static std::span<const ZnTaskRow> Rows();

 protected:
  ZnUniString TextOf(const ZnSmbOutcome& outcome) const override;

 private:
  static const ZnTaskRow kRows[];

  void List();
  bool TookEntries();

  bool withoutroom_ = false;  // the listing was ended by the tree's limit
};
