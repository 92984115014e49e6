#pragma once
// The user of a user node, and the file in which that user reads what went wrong.

#include "model/user_base.h"
#include "runtime/os_stream.h"

class ZnSMBNFSUser : public ZnSMBNFSUserBase {
 public:
  // The file is opened on the first report and stays open; one that can't be opened is tried again at each report.
  void WriteLog(const ZnUniString& text) override;

 private:
  bool IsOpen() const;
  bool Open();

  ZnCFile file_;
  ZnUniString name_;  // of the open file
};
