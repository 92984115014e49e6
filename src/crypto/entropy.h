#pragma once
// Random bytes that nobody can guess: challenges, keys.

#include "runtime/byte_buffer.h"

// Drawn from the host; there is no failure. Secret.
ZnByteBuffer ZnDrawSecret(size_t count);
