#pragma once
// The contents of a file that stands for a symbolic link: the target as ISO-8859-1 where that holds it, else as UTF-8.
// What reads as UTF-8 is UTF-8, so Latin-1 that could be taken for it is written as UTF-8 too.

#include <optional>

#include "runtime/uni_string.h"

// Null for a target that can't be kept: it holds NUL or half a surrogate pair.
std::optional<ZnByteBuffer> ZnLinkContents(const ZnUniString& target);

// Null for what is no path: it holds NUL.
std::optional<ZnUniString> ZnLinkTarget(const ZnByteBuffer& contents);
