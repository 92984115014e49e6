#pragma once
// The entries of a directory, as those who make and replace them look for what is in their way.

#include "model/node.h"

// The entry that clients see under the name that `stored` is shown as: a file or directory of that name, or a link. Of
// two, the one that bears just this name on the share. Null when there is none.
ZnSMBNFSNode* ZnEntryShownAs(const ZnSMBNFSNode& directory, const ZnUniString& stored, const ZnUniString& linkstring);

// The entry that a server means by `stored` if it doesn't tell cases apart. Null when there is none. Goes through the
// whole directory.
ZnSMBNFSNode* ZnEntryOfAnyCase(const ZnSMBNFSNode& directory, const ZnUniString& stored);

// Whether a node is `top` or lies below it.
bool ZnIsAtOrBelow(const ZnSMBNFSNode* node, const ZnSMBNFSNode* top);
