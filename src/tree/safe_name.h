#pragma once
// Names that may stand in a directory of the tree.

#include "runtime/uni_string.h"

// Whether a client could take the name for a path, or our own paths would lead elsewhere with it: it is empty, "." or
// "..", or holds "/", "\" or NUL.
bool ZnLeavesDirectory(const ZnUniString& name);

// Whether the name, in the encoding of the NFS side, is longer than the 255 bytes that its protocol allows.
bool ZnIsTooLong(const ZnUniString& name);

// Whether a name may be shown: neither of the above holds for it as it is or for the bytes of its form on the NFS side,
// and that form leads back to it. No other name is ever shown, whoever brings it: a server's listing, its list of
// shares, the configuration.
bool ZnIsSafeName(const ZnUniString& name);
