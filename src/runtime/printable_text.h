#pragma once
// Contract. Text from outside as it may stand in a log: who names a file, a machine or a user gets neither to write
// lines nor to drive the terminal of those who read them.

#include "runtime/uni_string.h"

// Control characters (C0, DEL, C1) and the separators of lines and paragraphs become "?".
ZnUniString ZnPrintableLine(ZnUniString text);
// The same for a text of several lines, whose ends stay.
ZnUniString ZnPrintableLines(ZnUniString text);
