#pragma once
// Text on its way into a call of the host that takes a C string.

#include <optional>

#include "runtime/uni_string.h"

// `text` in an encoding of the host, with a zero behind it. Nothing for a text that the host would take for another
// one: with a zero inside, or with characters that the encoding doesn't have and that would be dropped. Whoever looks
// up a user or a machine must not find the one whose name is left.
std::optional<ZnByteBuffer> ZnHostText(const ZnUniString& text, ZnEncoding encoding, unsigned options);

inline const char* ZnCStringOf(const ZnByteBuffer& bytes) { return reinterpret_cast<const char*>(bytes.Data()); }
