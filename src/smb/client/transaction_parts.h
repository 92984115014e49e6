#pragma once
// The three parts of a transaction's reply, collected from as many messages as the server sends them in.

#include "runtime/byte_buffer.h"

struct ZnSMBTransactionParts {
  ZnByteBuffer setup;
  ZnByteBuffer params;
  ZnByteBuffer data;
};
