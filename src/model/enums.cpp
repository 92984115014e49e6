#include "model/enums.h"

#include <span>

namespace {

using E = ZnSMBNFSEnum;

struct Row {
  int value;
  const char* name;
};

#define ZN_ROW(name) \
  { E::name, #name }

constexpr Row kStatus[] = {ZN_ROW(STStart),   ZN_ROW(STError),   ZN_ROW(STLookup),   ZN_ROW(STLookup2),
                           ZN_ROW(STLookup3), ZN_ROW(STLookup4), ZN_ROW(STUpdate),   ZN_ROW(STSetAttribs),
                           ZN_ROW(STOpen),    ZN_ROW(STRead),    ZN_ROW(STWrite),    ZN_ROW(STCreate),
                           ZN_ROW(STClose),   ZN_ROW(STRemove),  ZN_ROW(STRename),   ZN_ROW(STStatfs),
                           ZN_ROW(STUpdate2), ZN_ROW(STUpdate3), ZN_ROW(STSetTimes), ZN_ROW(STSetAllAttribs)};

constexpr Row kSessionCommand[] = {ZN_ROW(SCRequestShares),
                                   ZN_ROW(SCRequestDirs),
                                   ZN_ROW(SCRequestAttribs),
                                   ZN_ROW(SCRequestMkdir),
                                   ZN_ROW(SCRequestSetAllAttribs),
                                   ZN_ROW(SCRequestRmdir),
                                   ZN_ROW(SCRequestCreateFile),
                                   ZN_ROW(SCRequestOpenFile),
                                   ZN_ROW(SCRequestWrite),
                                   ZN_ROW(SCRequestRead),
                                   ZN_ROW(SCRequestRm),
                                   ZN_ROW(SCRequestSetAttribs),
                                   ZN_ROW(SCRequestSetTimes),
                                   ZN_ROW(SCRequestRename),
                                   ZN_ROW(SCCleanUp)};

constexpr Row kSessionStatus[] = {ZN_ROW(SSTStart),          ZN_ROW(SSTError),         ZN_ROW(SSTGetAddress),
                                  ZN_ROW(SSTConnect),        ZN_ROW(SSTConnectTree),   ZN_ROW(SSTGetShares),
                                  ZN_ROW(SSTGetDirs),        ZN_ROW(SSTGetAttribs),    ZN_ROW(SSTMkdir),
                                  ZN_ROW(SSTGetSetAttribs),  ZN_ROW(SSTRmdir),         ZN_ROW(SSTCreateFile),
                                  ZN_ROW(SSTClosedAllFiles), ZN_ROW(SSTCloseFiles),    ZN_ROW(SSTOpenFile),
                                  ZN_ROW(SSTWrite),          ZN_ROW(SSTRead),          ZN_ROW(SSTRm),
                                  ZN_ROW(SSTClosedAllTrees), ZN_ROW(SSTGetOldAttribs), ZN_ROW(SSTGetSetOldAttribs),
                                  ZN_ROW(SSTSetTimes),       ZN_ROW(SSTRename),        ZN_ROW(SSTGetTime),
                                  ZN_ROW(SSTGotTime)};

constexpr Row kAllowedNames[] = {ZN_ROW(ANMustBeLong),  ZN_ROW(ANMustBeShort),  ZN_ROW(ANNoReserved),
                                 ZN_ROW(ANNoMangled),   ZN_ROW(ANNoShortMatch), ZN_ROW(ANNoLongMatch),
                                 ZN_ROW(ANMustBeUpper), ZN_ROW(ANMustBeLower)};

#undef ZN_ROW

ZnUniString NameOf(std::span<const Row> rows, int value, const char* type) {
  for (const Row& row : rows) {
    if (row.value == value) return row.name;
  }
  return std::string("Unknown ") + type + " (" + std::to_string(value) + ")";
}

}  // namespace

ZnUniString ZnSMBNFSEnum::StatusString(Status value) { return NameOf(kStatus, value, "Status"); }

ZnUniString ZnSMBNFSEnum::SessionCommandString(SessionCommand value) {
  return NameOf(kSessionCommand, value, "SessionCommand");
}

ZnUniString ZnSMBNFSEnum::SessionStatusString(SessionStatus value) {
  return NameOf(kSessionStatus, value, "SessionStatus");
}

ZnUniString ZnSMBNFSEnum::AllowedNamesString(AllowedNames value) {
  return NameOf(kAllowedNames, value, "AllowedNames");
}
