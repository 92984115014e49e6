#pragma once
// Names between the command line, which has bytes, and the records of the protocol, which have text.
//
// NFS names are bytes too. Unless an encoding is chosen they pass through as they are, so a terminal of UTF-8 fits a
// daemon whose profile sets nfsserver/server/encoding/rpc to UTF-8.

#include <string>

#include "runtime/uni_string.h"

namespace Text {

// The encoding of names in the profile of the daemon; the command line is taken for UTF-8 then. False if there is no
// encoding of that name.
bool UseEncoding(const std::string& name);
// A name of the command line. False if the chosen encoding can't hold it.
bool FromHost(const std::string& bytes, ZnUniString& name);
std::string ToHost(const ZnUniString& name);
// The text with what could steer a terminal replaced by question marks, if standard output is a terminal: names come
// from machines of others.
std::string Printable(std::string text);

}  // namespace Text
