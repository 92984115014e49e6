#pragma once
// Names between client and share: the reversible escape of characters that Windows refuses, and the prefix that makes a
// plain file a symbolic link. Pure functions of a name and a share's settings.

#include "runtime/uni_string.h"

struct ZnSMBNFSShareConfig;

// The client's name as it stands on the share: each of `hashchars` becomes the escape character and two (hashmethod 0)
// or four (1) upper-case hexadecimal digits, and the escape character itself is doubled. Unchanged with empty
// hashchars.
ZnUniString InternalToWindowsName(const ZnUniString& name, const ZnSMBNFSShareConfig& config);

// The reverse. What merely looks like an escape (its value isn't one of hashchars) stays as it is. With hashmethod 1 an
// escape that ends with the name's last character stays too: names of that form exist on shares and keep their meaning.
ZnUniString WindowsToInternalName(const ZnUniString& name, const ZnSMBNFSShareConfig& config);

// A file whose name begins with `linkstring` is a link, and its contents are the target. An empty linkstring makes no
// links.
bool IsLinkName(const ZnUniString& name, const ZnUniString& linkstring);
ZnUniString FromLinkName(const ZnUniString& name, const ZnUniString& linkstring);
ZnUniString ToLinkName(const ZnUniString& name, const ZnUniString& linkstring);
