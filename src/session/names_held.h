#pragma once
// Names that a machine's encoding doesn't hold. They are refused before anything is sent: shortened, they would be the
// names of other files.

#include "model/command.h"
#include "model/share_tree.h"

// What the user is told if one of the names that the command may send isn't held whole; empty if all are.
ZnUniString ZnNamesNotHeld(const ZnSMBNFSCommand& command, const ZnSMBNFSTree& tree, ZnEncoding encoding);
