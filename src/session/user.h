#pragma once
// The user of a user node, and the file in which that user reads what went wrong.

#include "model/user_base.h"
#include "runtime/os_stream.h"

class ZnSMBNFSNode;

class ZnSMBNFSUser : public ZnSMBNFSUserBase {
 public:
  explicit ZnSMBNFSUser(ZnSMBNFSNode* usernode) : usernode_(usernode) {}

  // The file is opened on the first report and stays open; one that can't be opened is tried again at each report.
  void WriteLog(const ZnUniString& text) override;
  ZnSMBNFSNode* usernode() const { return usernode_; }

 private:
  bool IsOpen() const;
  bool Open();

  ZnSMBNFSNode* usernode_;
  ZnCFile file_;
  ZnUniString name_;  // of the open file
};
