#pragma once
// Failures in the user's words: what was being done, why it failed, and what to do about it. Nothing of this names an
// enumerator: these texts are all that a user sees.

#include "model/enums.h"
#include "rpc/nfs_enum.h"
#include "smb/client/call.h"

namespace ZnFailureWords {

// What a command was at: "opening". `lastrequest` tells how far a connection had got: "logging on to".
const char* Doing(ZnSMBNFSEnum::SessionStatus step, ZnSMBClientValues::Command lastrequest);
// Whether these words are about the machine, whose address then follows, rather than about a file.
bool IsAboutMachine(ZnSMBNFSEnum::SessionStatus step);
// A sentence for a failure that isn't the server's refusal; empty for reasons that have none.
const char* Sentence(ZnSMBClientValues::Reason reason);
// Whether it is we who refused, by the rules of the logon.
bool IsOwnRefusal(ZnSMBClientValues::Reason reason);
// What to do about a failure at `step`: a part of a sentence, empty if there is nothing to say. `refusal` is the
// server's error as code times 256 plus class, or 0.
const char* Advice(ZnSMBNFSEnum::SessionStatus step, ZnSMBClientValues::Reason reason, unsigned refusal,
                   ZnNFSEnum::Status status);

}  // namespace ZnFailureWords
