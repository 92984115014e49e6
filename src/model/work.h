#pragma once
// Something that a command owns and that ends with it: work over several turns of the loop, a place where it waits.

struct ZnSMBNFSWork {
  ZnSMBNFSWork() = default;
  ZnSMBNFSWork(const ZnSMBNFSWork&) = delete;
  ZnSMBNFSWork& operator=(const ZnSMBNFSWork&) = delete;
  virtual ~ZnSMBNFSWork() = default;
};
