#pragma once
// A row of ListShares: the share as a tree that isn't connected yet, and the server's remark on it. A plain value.

#include "smb/client/tree_object.h"

struct ZnSMBCShareObject : ZnSMBCTreeObject {
  ZnUniString remark;

  using ZnSMBCTreeObject::ZnSMBCTreeObject;
};
