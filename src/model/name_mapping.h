#pragma once
// Names between client and share: the reversible escape of what Windows refuses in a name, and the prefix that makes a
// plain file a symbolic link. Pure functions of a name and a share's settings.

#include "runtime/uni_string.h"

struct ZnSMBNFSShareConfig;

// The client's name as it stands on the share. The escape character and two (hashmethod 0) or four (1) upper-case
// hexadecimal digits stand for each of `hashchars`, for control characters, for a dot or blank at the end and for the
// first letter of a device's name (CON, also in CON.txt), and the escape character itself is doubled. Names of the
// share that no client's name becomes in that way get the client's names that WindowsToInternalName shows for them. No
// two names become one, and all of them are fit for Windows. Unchanged with empty hashchars.
ZnUniString InternalToWindowsName(const ZnUniString& name, const ZnSMBNFSShareConfig& config);
// The same for each part of a path between backslashes.
ZnUniString InternalToWindowsPath(const ZnUniString& path, const ZnSMBNFSShareConfig& config);

// The reverse: for every name that is fit for Windows, the one client's name that becomes it. What merely looks like an
// escape stays as it is ("a;41b"), or shows each escape character as its own escape ("a; b" as "a;3B b") where
// unchanged it would be the name of another file.
ZnUniString WindowsToInternalName(const ZnUniString& name, const ZnSMBNFSShareConfig& config);

// A file whose name begins with `linkstring` is a link, and its contents are the target. An empty linkstring makes no
// links.
bool IsLinkName(const ZnUniString& name, const ZnUniString& linkstring);
ZnUniString FromLinkName(const ZnUniString& name, const ZnUniString& linkstring);
ZnUniString ToLinkName(const ZnUniString& name, const ZnUniString& linkstring);
