#pragma once
// Names and link targets in the encoding of RPC strings. Every name has a form of its own there, whatever the encoding
// can't hold: a name that it holds whole is written as it is; of any other, each character that has no code is written
// as the code set's escape ("#4E2D"), and its "#" as "##". A name that looks like such a form is written as an escape
// too, so that no two names share one.

#include "runtime/uni_string.h"

ZnByteBuffer ZnEncodeRpcName(const ZnUniString& name);

// The reverse. False for bytes that are no text in the encoding, as UTF-8 that is cut or overlong: nothing is guessed.
bool ZnDecodeRpcName(const uint8_t* bytes, size_t length, ZnUniString& name);
