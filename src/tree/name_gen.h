#pragma once
// Long and short forms of names, by which a look-up finds an entry under a name that differs from the stored one.

#include "runtime/uni_string.h"

class ZnNameGen {
 public:
  // How SetNames makes the forms.
  struct FNConfig {
    char16_t manglechar = u'~';   // first character of a generated tail
    uint32_t hashdigits = 2;      // base-32 digits in a tail
    bool mangleifdiffers = true;  // the short form gets a tail when it isn't the base and extension of the long form
    bool mangleillegalshort = false;  // dropped or cut characters force a tail on the short form
    bool mangleshortlower = false;    // so does a lower-case character
    bool mangleshortupper = false;    // so does an upper-case character
    bool manglelongillegal = false;   // the same for the long form
    bool manglelonglower = false;
    bool manglelongupper = false;
  };

  // Up to eight legal characters of the base and two of the extension; the case is left alone. The limit of two is
  // no mistake to mend: both sides of every comparison go through here.
  static ZnUniString ToShortName(const ZnUniString& name);
  // The name without characters that Windows refuses and without blanks at its end.
  static ZnUniString ToLongName(const ZnUniString& name);
  // Whether Windows keeps the name for a device, in any case.
  static bool IsReservedName(ZnUniString name);
  // Makes both forms of a name; a null config means the defaults.
  static void SetNames(const ZnUniString& name, const FNConfig* config, ZnUniString& shortname, ZnUniString& longname);
};
