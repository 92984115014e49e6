#pragma once
// Names that Windows, and servers that follow it, take for devices wherever they stand.

#include <string_view>

// Whether a name, up to its first dot and without blanks before that, is a device's in any letter case: "con", "Aux.c".
bool ZnIsDeviceName(std::u16string_view name);
