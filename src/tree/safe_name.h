#pragma once
// Names that may stand in a directory of the tree.

#include "runtime/uni_string.h"

// Whether a client could take the name for a path, or our own paths would lead elsewhere with it: it is empty, "." or
// "..", or holds "/", "\" or NUL.
bool ZnLeavesDirectory(const ZnUniString& name);

// Whether the name, in the encoding of the NFS side, is longer than the 255 bytes that its protocol allows.
bool ZnIsTooLong(const ZnUniString& name);

// Neither of them. No other name is ever shown, whoever brings it: a server's listing, its list of shares, the
// configuration.
inline bool ZnIsSafeName(const ZnUniString& name) { return !ZnLeavesDirectory(name) && !ZnIsTooLong(name); }
