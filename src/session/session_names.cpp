// Names that a machine's encoding doesn't hold. They are refused before anything is sent: shortened, they would be the
// names of other files.

#include <optional>

#include "model/name_mapping.h"
#include "runtime/codeset_converter.h"
#include "session/session.h"

using E = ZnSMBNFSEnum;

namespace {

bool IsHeldWhole(const ZnUniString& text, ZnEncoding encoding) {
  return text.IsEmpty() || ZnUniString::CreateFrom(text.AsEncoding(encoding), encoding) == text;
}

// The first character of a text that its encoding doesn't hold; all of it where that shows only in the whole.
ZnUniString FirstNotHeld(const ZnUniString& text, ZnEncoding encoding) {
  for (size_t i = 0; i < text.Length(); i++) {
    const bool pair = (text[i] & 0xFC00) == 0xD800 && i + 1 < text.Length() && (text[i + 1] & 0xFC00) == 0xDC00;
    ZnUniString character = text.SubString(i, pair ? 2 : 1);
    if (!IsHeldWhole(character, encoding)) return character;
    if (pair) i++;
  }
  return text;
}

ZnUniString CodesOf(const ZnUniString& character) {
  ZnUniString codes;
  for (char16_t unit : character.View()) {
    uint8_t digits[4];
    size_t count = 0;
    ZnCodesetConverter::MakeRecover(unit, digits, count);
    codes += (codes.IsEmpty() ? "" : " ") + ZnUniString::CreateFrom(digits, count, ZnCodeset::Ascii);
  }
  return codes;
}

bool SendsName(E::SessionCommand command) {
  return command == E::SCRequestCreateFile || command == E::SCRequestMkdir || command == E::SCRequestRename ||
         command == E::SCRequestEntry;
}

}  // namespace

// Whether all names that the command may send can be sent. If not, it has failed.
bool ZnSMBNFSSession::NamesAreHeld(const Command& command) {
  ZnUniString names = command.node->IsInside() ? command.node->Path() : ZnUniString();
  if (command.sessioncommand == E::SCRequestRename && command.node2) names += command.node2->PathInside();
  if (SendsName(command.sessioncommand)) names += command.name;
  names = InternalToWindowsPath(names, TreeOf(command)->config);
  const ZnEncoding encoding = nameencoding();
  if (IsHeldWhole(names, encoding)) return true;
  const ZnUniString missing = FirstNotHeld(names, encoding);
  SendError(ZnUniString("The machine's names are in ") + ZnUniString::GetEncodingName(encoding) + ", which has no \"" +
                missing + "\" (" + CodesOf(missing) + ")",
            ZnNFSEnum::NFSERR_ACCES);
  return false;
}
