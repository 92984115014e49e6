#pragma once
// The answer to a server's challenge that today's servers want (MS-NLMP 3.3.2). It depends on the time and on a
// challenge of the client's own, so that neither can be looked up in a table made beforehand.

#include "runtime/uni_string.h"

// All three are secret.
struct ZnNtlmv2Answer {
  ZnByteBuffer lm;          // LMv2, 24 bytes
  ZnByteBuffer nt;          // NTLMv2, 48 bytes and what the server told about itself
  ZnByteBuffer sessionkey;  // 16 bytes, which the server knows too: the session base key
};

// What is answered to.
struct ZnNtlmv2Question {
  ZnByteBuffer challenge;        // 8 bytes of the server
  ZnByteBuffer clientchallenge;  // 8 random bytes
  uint64_t time = 0;             // 100 ns since 1601, by the server's clock
  ZnByteBuffer targetinfo;       // the server's facts about itself, as they came; may be empty
};

// The hash of a password as this user of this domain, in which the domain's case counts: 16 bytes, secret.
ZnByteBuffer ZnNtlmv2Hash(const ZnUniString& user, const ZnUniString& domain, const ZnUniString& password);

ZnNtlmv2Answer ZnAnswerNtlmv2(const ZnByteBuffer& hash, const ZnNtlmv2Question& question);
