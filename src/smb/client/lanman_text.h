#pragma once
// Texts in the replies of the LANMAN remote API.

#include "runtime/byte_buffer.h"
#include "runtime/uni_string.h"

// The text that a pointer of a record leads to: its low 16 bits, less the reply's `converter`, count from the start of
// the reply's `data`. A pointer of 0 is an empty text. Ends at a terminator or with the data. False when it leads
// outside.
bool ZnDecodeLanmanString(ZnUniString& text, const ZnByteBuffer& data, uint32_t pointer, uint16_t converter,
                          ZnEncoding encoding);
// The text in a field of fixed size, up to its first zero byte.
ZnUniString ZnDecodeLanmanName(const ZnByteBuffer& field, ZnEncoding encoding);
