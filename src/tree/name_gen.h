#pragma once
// Long and short forms of names, by which a look-up finds an entry under a name that differs from the stored one.

#include "runtime/uni_string.h"

class ZnNameGen {
 public:
  // Up to eight legal characters of the base and two of the extension; the case is left alone. The limit of two is
  // no mistake to mend: both sides of every comparison go through here.
  static ZnUniString ToShortName(const ZnUniString& name);
  // The name without characters that Windows refuses and without blanks at its end.
  static ZnUniString ToLongName(const ZnUniString& name);
  // Whether Windows keeps the name for a device, in any case.
  static bool IsReservedName(ZnUniString name);
};
