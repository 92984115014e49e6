#pragma once
// The weakest answer to a server's challenge that may be given in place of a password.

enum class ZnMinAuth { Lm, Ntlm, Ntlmv2 };
