#include "smb/client/tree_object.h"

namespace {

constexpr struct {
  ZnSMBClientValues::Service service;
  const char* text;
} kServices[] = {
    {ZnSMBClientValues::ServiceDisk, "A:"},
    {ZnSMBClientValues::ServicePrinter, "LPT1:"},
    {ZnSMBClientValues::ServiceDevice, "COMM"},
    {ZnSMBClientValues::ServiceIPC, "IPC"},
};

}  // namespace

ZnSMBCTreeObject::ZnSMBCTreeObject(const ZnMachine& server, const ZnUniString& shareName,
                                   ZnSMBClientValues::Service kind)
    : machine(server), share(shareName), service(kind) {
  share.UpperCase();
}

ZnUniString ZnSMBCTreeObject::UNCShare() const { return "\\\\" + machine.ShortName() + "\\" + share; }

ZnUniString ZnSMBCTreeObject::ServiceString(ZnSMBClientValues::Service service) {
  for (const auto& row : kServices) {
    if (row.service == service) return row.text;
  }
  return "?????";
}

ZnSMBClientValues::Service ZnSMBCTreeObject::ServiceType(const ZnUniString& text) {
  for (const auto& row : kServices) {
    if (text == row.text) return row.service;
  }
  return ZnSMBClientValues::ServiceUnknown;
}
