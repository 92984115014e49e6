#pragma once
// The enumerations of the SMB client with the values they have on the wire, and their names as text.

#include <cstdint>
#include <string>

struct ZnSMBClientValues {
  // Command codes of the SMB header.
  enum Command : uint8_t {
    CmdCreateDir = 0,
    CmdDeleteDir = 1,
    CmdOpen = 2,
    CmdCreate = 3,
    CmdClose = 4,
    CmdFlush = 5,
    CmdDelete = 6,
    CmdRename = 7,
    CmdSetAttributes = 9,
    CmdRead = 10,
    CmdWrite = 11,
    CmdSetTimes = 34,
    CmdTrans = 37,
    CmdTranss = 38,
    CmdIoctl = 39,
    CmdIoctls = 40,
    CmdMove = 42,
    CmdOpenX = 45,
    CmdReadX = 46,
    CmdWriteX = 47,
    CmdTrans2 = 50,
    CmdTrans2s = 51,
    CmdFindClose = 52,
    CmdTreeConnect = 112,
    CmdTreeDisconnect = 113,
    CmdNegotiate = 114,
    CmdSessionSetupX = 115,
    CmdLogoffX = 116,
    CmdTreeConnectX = 117,
    CmdQueryDisk = 128,
    CmdNTCreateX = 162,
    CmdOpenPrint = 192,
    CmdPrintQueue = 195,
    CmdNone = 255,
  };

  // Why a client operation failed.
  enum Reason : uint8_t {
    ErrNone = 0,
    ErrSMB = 1,
    ErrBusy = 2,
    ErrRead = 3,
    ErrWrite = 4,
    ErrBlocked = 5,
    ErrConnected = 6,
    ErrConnecting = 7,
    ErrNotConnected = 8,
    ErrDisconnect = 9,
    ErrTimedOut = 10,
    ErrNotSupported = 11,
    ErrInternal = 12,
    ErrBadValue = 13,
    ErrServer = 14,
    ErrBadTID = 15,
    ErrBadFID = 16,
    ErrIPC = 17,
    ErrBadPrinter = 18,
    ErrBind = 20,
    ErrConnect = 21,
    ErrNegprot = 22,
    ErrClearPassword = 23,
    ErrWeakLogon = 24,
    ErrBadSignature = 25,
    ErrMustSign = 26,  // the server wants signatures, and the profile doesn't allow them
    ErrCantSign = 27,  // the profile wants signatures, and the server has none
  };

  // The operation that a client is in.
  enum State : uint8_t {
    StateSleeping = 0,
    StateOpenSession = 1,
    StatePassthruConnect = 2,
    StatePassthruSetup = 3,
    StateTreeConnect = 4,
    StateOpen = 5,
    StateRead = 6,
    StateClose = 7,
    StateDownload = 8,
    StateWrite = 9,
    StatePrintQueue = 10,
    StateModifyPrintJob = 11,
    StateUserInfo = 12,
    StateListShares = 13,
    StateListDirectory = 14,
    StateFileInfo = 15,
    StateListServers = 16,
    StateTransaction = 17,
    StateSetFileInfo = 18,
    StateMove = 19,
    StateRename = 20,
    StateDelete = 21,
    StateCreateDirectory = 22,
    StateDeleteDirectory = 23,
    StateFlush = 24,
    StateSetAttributes = 25,
    StateSetTimes = 26,
    StateTime = 27,
    StateNTAuthConnect = 28,
    StateNTAuthValidate = 29,
    StateNTAuthLookup = 30,
    StateDiskSpace = 31,
  };

  // The index in the list of dialects that the client offers.
  enum Dialect : uint8_t { DialectCORE = 0, DialectWfWg = 1, DialectNT = 2 };

  enum SecurityLevel : uint8_t { SecLevelShare = 0, SecLevelUser = 1 };

  // What an open file is opened for, and what others may do with it meanwhile: fields of ZnSMBCAccessMode.
  enum Access : uint8_t { AccessRead = 0, AccessWrite = 1, AccessReadWrite = 2, AccessExecute = 3 };
  enum Sharing : uint8_t { DenyCompat = 0, DenyAll = 1, DenyWrite = 2, DenyRead = 3, DenyNone = 4 };

  // What to do with an existing file. OFOverride doesn't fit into the two bits it would be sent in and has no effect
  // there.
  enum Openfunction : uint8_t { OFFail = 0, OFOpen = 1, OFTruncate = 2, OFOverride = 32 };

  enum Service : uint8_t { ServiceDisk = 0, ServicePrinter = 1, ServiceDevice = 2, ServiceIPC = 3, ServiceUnknown = 4 };

  enum PrinterStatus : uint8_t { PRQActive = 0, PRQPaused = 1, PRQError = 2, PRQPending = 3 };

  enum SpoolFileStatus : uint8_t {
    SpoolQueued = 0,
    SpoolPaused = 1,
    SpoolSpooling = 2,
    SpoolPrinting = 3,
    SpoolComplete = 4,
    SpoolError = 5,
  };

  // API numbers of the LANMAN remote administration protocol.
  enum LanmanIPC : uint16_t {
    IPCNetShareEnum = 0,
    IPCNetUserGetInfo = 56,
    IPCDOSPrintGetInfo = 70,
    IPCDOSPrintJobDel = 81,
    IPCDOSPrintJobPause = 82,
    IPCDOSPrintJobContinue = 83,
    IPCNetRemoteTOD = 91,
    IPCNetServerEnum = 104,
    IPCDOSPrintJobSetInfo = 147,
  };

  // Sub-commands of CmdTrans2, sent as its setup word.
  enum Trans2Command : uint16_t {
    Trans2FindFirst2 = 1,
    Trans2FindNext2 = 2,
    Trans2QueryFSInfo = 3,
    Trans2QueryPathInfo = 5,
    Trans2SetPathInfo = 6,
    Trans2SetFileInfo = 8,
  };

  enum Privilege : uint8_t { PrivGuest = 0, PrivUser = 1, PrivAdmin = 2 };

  enum FileInfoLevel : uint16_t {
    FileInfoOldAttribs = 1,
    FileInfoAttribs = 257,
    FileInfoSize = 258,
    FileInfoName = 260,
    FileInfoAll = 263,
    FileInfoAltname = 264,
  };

  // The enumerator's name; for any other number "Unknown Command (77)", with the name of the enumeration.
  static std::string CommandString(unsigned value);
  static std::string ReasonString(unsigned value);
  static std::string StateString(unsigned value);
  static std::string DialectString(unsigned value);
  static std::string SecurityLevelString(unsigned value);
  static std::string AccessString(unsigned value);
  static std::string SharingString(unsigned value);
  static std::string OpenfunctionString(unsigned value);
  static std::string ServiceString(unsigned value);
  static std::string PrinterStatusString(unsigned value);
  static std::string SpoolFileStatusString(unsigned value);
  static std::string LanmanIPCString(unsigned value);
  static std::string Trans2CommandString(unsigned value);
  static std::string PrivilegeString(unsigned value);
  static std::string FileInfoLevelString(unsigned value);
};
