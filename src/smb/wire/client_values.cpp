#include "smb/wire/client_values.h"

#include "runtime/enum_names.h"

namespace {

using Values = ZnSMBClientValues;

// A row of a table: the enumerator under its own name.
#define ROW(enumerator) \
  { Values::enumerator, #enumerator }

constexpr ZnEnumName kCommand[] = {
    ROW(CmdCreateDir), ROW(CmdDeleteDir),     ROW(CmdOpen),       ROW(CmdCreate),        ROW(CmdClose),
    ROW(CmdFlush),     ROW(CmdDelete),        ROW(CmdRename),     ROW(CmdSetAttributes), ROW(CmdRead),
    ROW(CmdWrite),     ROW(CmdSetTimes),      ROW(CmdTrans),      ROW(CmdTranss),        ROW(CmdIoctl),
    ROW(CmdIoctls),    ROW(CmdMove),          ROW(CmdOpenX),      ROW(CmdReadX),         ROW(CmdWriteX),
    ROW(CmdFindClose), ROW(CmdTrans2),        ROW(CmdTrans2s),    ROW(CmdTreeConnect),   ROW(CmdTreeDisconnect),
    ROW(CmdNegotiate), ROW(CmdSessionSetupX), ROW(CmdLogoffX),    ROW(CmdTreeConnectX),  ROW(CmdQueryDisk),
    ROW(CmdNTCreateX), ROW(CmdOpenPrint),     ROW(CmdPrintQueue), ROW(CmdNone),
};

constexpr ZnEnumName kReason[] = {
    ROW(ErrNone),     ROW(ErrSMB),          ROW(ErrBusy),          ROW(ErrRead),         ROW(ErrWrite),
    ROW(ErrBlocked),  ROW(ErrConnected),    ROW(ErrConnecting),    ROW(ErrNotConnected), ROW(ErrDisconnect),
    ROW(ErrTimedOut), ROW(ErrNotSupported), ROW(ErrInternal),      ROW(ErrBadValue),     ROW(ErrServer),
    ROW(ErrBadTID),   ROW(ErrBadFID),       ROW(ErrIPC),           ROW(ErrBadPrinter),   ROW(ErrBind),
    ROW(ErrConnect),  ROW(ErrNegprot),      ROW(ErrClearPassword), ROW(ErrWeakLogon),    ROW(ErrBadSignature),
    ROW(ErrMustSign), ROW(ErrCantSign),
};

constexpr ZnEnumName kState[] = {
    ROW(StateSleeping),
    ROW(StateOpenSession),
    ROW(StatePassthruConnect),
    ROW(StatePassthruSetup),
    ROW(StateTreeConnect),
    ROW(StateOpen),
    ROW(StateRead),
    ROW(StateClose),
    ROW(StateDownload),
    ROW(StateWrite),
    ROW(StatePrintQueue),
    ROW(StateModifyPrintJob),
    ROW(StateUserInfo),
    ROW(StateListShares),
    ROW(StateListDirectory),
    ROW(StateFileInfo),
    ROW(StateListServers),
    ROW(StateTransaction),
    ROW(StateSetFileInfo),
    ROW(StateMove),
    ROW(StateRename),
    ROW(StateDelete),
    ROW(StateCreateDirectory),
    ROW(StateDeleteDirectory),
    ROW(StateFlush),
    ROW(StateSetAttributes),
    ROW(StateSetTimes),
    ROW(StateTime),
    ROW(StateNTAuthConnect),
    ROW(StateNTAuthValidate),
    ROW(StateNTAuthLookup),
    ROW(StateDiskSpace),
};

constexpr ZnEnumName kDialect[] = {
    ROW(DialectCORE),
    ROW(DialectWfWg),
    ROW(DialectNT),
};

constexpr ZnEnumName kSecurityLevel[] = {
    ROW(SecLevelShare),
    ROW(SecLevelUser),
};

constexpr ZnEnumName kAccess[] = {
    ROW(AccessRead),
    ROW(AccessWrite),
    ROW(AccessReadWrite),
    ROW(AccessExecute),
};

constexpr ZnEnumName kSharing[] = {
    ROW(DenyCompat), ROW(DenyAll), ROW(DenyWrite), ROW(DenyRead), ROW(DenyNone),
};

constexpr ZnEnumName kOpenfunction[] = {
    ROW(OFFail),
    ROW(OFOpen),
    ROW(OFTruncate),
    ROW(OFOverride),
};

constexpr ZnEnumName kService[] = {
    ROW(ServiceDisk), ROW(ServicePrinter), ROW(ServiceDevice), ROW(ServiceIPC), ROW(ServiceUnknown),
};

constexpr ZnEnumName kPrinterStatus[] = {
    ROW(PRQActive),
    ROW(PRQPaused),
    ROW(PRQError),
    ROW(PRQPending),
};

constexpr ZnEnumName kSpoolFileStatus[] = {
    ROW(SpoolQueued), ROW(SpoolPaused), ROW(SpoolSpooling), ROW(SpoolPrinting), ROW(SpoolComplete), ROW(SpoolError),
};

constexpr ZnEnumName kLanmanIPC[] = {
    ROW(IPCNetShareEnum),   ROW(IPCNetUserGetInfo),   ROW(IPCDOSPrintGetInfo),
    ROW(IPCDOSPrintJobDel), ROW(IPCDOSPrintJobPause), ROW(IPCDOSPrintJobContinue),
    ROW(IPCNetRemoteTOD),   ROW(IPCNetServerEnum),    ROW(IPCDOSPrintJobSetInfo),
};

constexpr ZnEnumName kTrans2Command[] = {
    ROW(Trans2FindFirst2),    ROW(Trans2FindNext2),   ROW(Trans2QueryFSInfo),
    ROW(Trans2QueryPathInfo), ROW(Trans2SetPathInfo), ROW(Trans2SetFileInfo),
};

constexpr ZnEnumName kPrivilege[] = {
    ROW(PrivGuest),
    ROW(PrivUser),
    ROW(PrivAdmin),
};

constexpr ZnEnumName kFileInfoLevel[] = {
    ROW(FileInfoOldAttribs), ROW(FileInfoAttribs), ROW(FileInfoSize),
    ROW(FileInfoName),       ROW(FileInfoAll),     ROW(FileInfoAltname),
};

#undef ROW

}  // namespace

std::string ZnSMBClientValues::CommandString(unsigned value) { return ZnNameOf(kCommand, "Command", value); }
std::string ZnSMBClientValues::ReasonString(unsigned value) { return ZnNameOf(kReason, "Reason", value); }
std::string ZnSMBClientValues::StateString(unsigned value) { return ZnNameOf(kState, "State", value); }
std::string ZnSMBClientValues::DialectString(unsigned value) { return ZnNameOf(kDialect, "Dialect", value); }
std::string ZnSMBClientValues::SecurityLevelString(unsigned value) {
  return ZnNameOf(kSecurityLevel, "SecurityLevel", value);
}
std::string ZnSMBClientValues::AccessString(unsigned value) { return ZnNameOf(kAccess, "Access", value); }
std::string ZnSMBClientValues::SharingString(unsigned value) { return ZnNameOf(kSharing, "Sharing", value); }
std::string ZnSMBClientValues::OpenfunctionString(unsigned value) {
  return ZnNameOf(kOpenfunction, "Openfunction", value);
}
std::string ZnSMBClientValues::ServiceString(unsigned value) { return ZnNameOf(kService, "Service", value); }
std::string ZnSMBClientValues::PrinterStatusString(unsigned value) {
  return ZnNameOf(kPrinterStatus, "PrinterStatus", value);
}
std::string ZnSMBClientValues::SpoolFileStatusString(unsigned value) {
  return ZnNameOf(kSpoolFileStatus, "SpoolFileStatus", value);
}
std::string ZnSMBClientValues::LanmanIPCString(unsigned value) { return ZnNameOf(kLanmanIPC, "LanmanIPC", value); }
std::string ZnSMBClientValues::Trans2CommandString(unsigned value) {
  return ZnNameOf(kTrans2Command, "Trans2Command", value);
}
std::string ZnSMBClientValues::PrivilegeString(unsigned value) { return ZnNameOf(kPrivilege, "Privilege", value); }
std::string ZnSMBClientValues::FileInfoLevelString(unsigned value) {
  return ZnNameOf(kFileInfoLevel, "FileInfoLevel", value);
}
