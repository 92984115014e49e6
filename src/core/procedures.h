#pragma once
// The programs that the gateway serves, with all their procedures.

#include "core/procedure.h"

// Null for a program that isn't served.
const ZnProgram* ZnFindProgram(uint32_t number);
