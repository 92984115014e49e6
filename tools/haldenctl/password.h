#pragma once
// haldenctl encode-password: a password in the form in which a profile holds it.

#include <string>

#include "error.h"

// Reads a password without echo from the terminal, twice, or else one line of standard input, and prints the form in
// which it is stored for `user`, the name below nfsserver/shares/smb/ in the profile.
Error EncodePassword(const std::string& user);
