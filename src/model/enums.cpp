#include "model/enums.h"

#include "runtime/enum_names.h"

namespace {

using E = ZnSMBNFSEnum;

#define ZN_ROW(name) \
  { E::name, #name }

constexpr ZnEnumName kSessionCommand[] = {
    ZN_ROW(SCRequestShares),        ZN_ROW(SCRequestDirs),  ZN_ROW(SCRequestAttribs),    ZN_ROW(SCRequestMkdir),
    ZN_ROW(SCRequestSetAllAttribs), ZN_ROW(SCRequestRmdir), ZN_ROW(SCRequestCreateFile), ZN_ROW(SCRequestWrite),
    ZN_ROW(SCRequestRead),          ZN_ROW(SCRequestRm),    ZN_ROW(SCRequestSetAttribs), ZN_ROW(SCRequestSetTimes),
    ZN_ROW(SCRequestRename),        ZN_ROW(SCRequestSpace), ZN_ROW(SCRequestEntry)};

constexpr ZnEnumName kSessionStatus[] = {
    ZN_ROW(SSTStart),        ZN_ROW(SSTError),        ZN_ROW(SSTDone),         ZN_ROW(SSTReady),
    ZN_ROW(SSTGetAddress),   ZN_ROW(SSTConnect),      ZN_ROW(SSTConnectTree),  ZN_ROW(SSTGetShares),
    ZN_ROW(SSTGetDirs),      ZN_ROW(SSTGetAttribs),   ZN_ROW(SSTMkdir),        ZN_ROW(SSTGetSetAttribs),
    ZN_ROW(SSTRmdir),        ZN_ROW(SSTCreateFile),   ZN_ROW(SSTCloseFiles),   ZN_ROW(SSTOpenFile),
    ZN_ROW(SSTWrite),        ZN_ROW(SSTRead),         ZN_ROW(SSTRm),           ZN_ROW(SSTSetTimes),
    ZN_ROW(SSTRename),       ZN_ROW(SSTReplace),      ZN_ROW(SSTMakeRoom),     ZN_ROW(SSTRenameAgain),
    ZN_ROW(SSTPutBack),      ZN_ROW(SSTMakeWritable), ZN_ROW(SSTProtectAgain), ZN_ROW(SSTFlush),
    ZN_ROW(SSTCloseWritten), ZN_ROW(SSTGetSpace),     ZN_ROW(SSTTurn),         ZN_ROW(SSTChooseWay),
    ZN_ROW(SSTChooseRoom),   ZN_ROW(SSTRemoveTarget), ZN_ROW(SSTSettle)};

constexpr ZnEnumName kAllowedNames[] = {ZN_ROW(ANMustBeLong),  ZN_ROW(ANMustBeShort),  ZN_ROW(ANNoReserved),
                                        ZN_ROW(ANNoMangled),   ZN_ROW(ANNoShortMatch), ZN_ROW(ANNoLongMatch),
                                        ZN_ROW(ANMustBeUpper), ZN_ROW(ANMustBeLower)};

#undef ZN_ROW

}  // namespace

ZnUniString ZnSMBNFSEnum::SessionCommandString(SessionCommand value) {
  return ZnNameOf(kSessionCommand, "SessionCommand", static_cast<int>(value));
}

ZnUniString ZnSMBNFSEnum::SessionStatusString(SessionStatus value) {
  return ZnNameOf(kSessionStatus, "SessionStatus", static_cast<int>(value));
}

ZnUniString ZnSMBNFSEnum::AllowedNamesString(AllowedNames value) {
  return ZnNameOf(kAllowedNames, "AllowedNames", static_cast<int>(value));
}
