#pragma once
// Names between client and share: the reversible escape of what Windows refuses in a name, and the prefix that makes a
// plain file a symbolic link. Pure functions of a name and a share's settings.

#include "runtime/uni_string.h"

struct ZnSMBNFSShareConfig;

// The client's name as it stands on the share. The escape character and two (hashmethod 0) or four (1) upper-case
// hexadecimal digits stand for each of `hashchars`, for control characters, for a dot or blank at the end and for the
// first letter of a device's name (CON, also in CON.txt), and the escape character itself is doubled. So every name
// comes back, no two names become one, and all of them are fit for Windows. Unchanged with empty hashchars.
ZnUniString InternalToWindowsName(const ZnUniString& name, const ZnSMBNFSShareConfig& config);
// What InternalToWindowsName makes this name of the share of again.
ZnUniString AsItStands(const ZnUniString& name);
// The same for each part of a path between backslashes.
ZnUniString InternalToWindowsPath(const ZnUniString& path, const ZnSMBNFSShareConfig& config);

// The reverse. What merely looks like an escape ("a;41b") stays as it is.
ZnUniString WindowsToInternalName(const ZnUniString& name, const ZnSMBNFSShareConfig& config);

// A file whose name begins with `linkstring` is a link, and its contents are the target. An empty linkstring makes no
// links.
bool IsLinkName(const ZnUniString& name, const ZnUniString& linkstring);
ZnUniString FromLinkName(const ZnUniString& name, const ZnUniString& linkstring);
ZnUniString ToLinkName(const ZnUniString& name, const ZnUniString& linkstring);
