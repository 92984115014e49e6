#pragma once
// The enumerations of the SMB client with the values they have on the wire.

#include <cstdint>
#include <string>

struct ZnSMBClientValues {
  // Command codes of the SMB header.
  enum Command : uint8_t {
    CmdCreateDir = 0,
    CmdDeleteDir = 1,
    CmdOpen = 2,
    CmdClose = 4,
    CmdFlush = 5,
    CmdDelete = 6,
    CmdRename = 7,
    CmdSetAttributes = 9,
    CmdRead = 10,
    CmdWrite = 11,
    CmdSetTimes = 34,
    CmdMove = 42,
    CmdOpenX = 45,
    CmdReadX = 46,
    CmdWriteX = 47,
    CmdTrans2 = 50,
    CmdFindClose = 52,
    CmdTreeConnect = 112,
    CmdNegotiate = 114,
    CmdSessionSetupX = 115,
    CmdTreeConnectX = 117,
    CmdQueryDisk = 128,
    CmdNTCreateX = 162,
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

  // The index in the list of dialects that the client offers.
  enum Dialect : uint8_t { DialectCORE = 0, DialectWfWg = 1, DialectNT = 2 };

  enum SecurityLevel : uint8_t { SecLevelShare = 0, SecLevelUser = 1 };

  // What an open file is opened for, and what others may do with it meanwhile: fields of ZnSMBCAccessMode.
  enum Access : uint8_t { AccessRead = 0, AccessWrite = 1, AccessReadWrite = 2, AccessExecute = 3 };
  enum Sharing : uint8_t { DenyCompat = 0, DenyAll = 1, DenyWrite = 2, DenyRead = 3, DenyNone = 4 };

  // What to do with an existing file.
  enum Openfunction : uint8_t { OFFail = 0, OFOpen = 1, OFTruncate = 2 };

  enum Service : uint8_t { ServiceDisk = 0, ServicePrinter = 1, ServiceDevice = 2, ServiceIPC = 3, ServiceUnknown = 4 };

  // Sub-commands of CmdTrans2, sent as its setup word.
  enum Trans2Command : uint16_t {
    Trans2FindFirst2 = 1,
    Trans2FindNext2 = 2,
    Trans2QueryFSInfo = 3,
    Trans2SetPathInfo = 6,
    Trans2SetFileInfo = 8,
  };

  enum FileInfoLevel : uint16_t { FileInfoOldAttribs = 1, FileInfoAttribs = 257 };

  // The enumerator's name; for any other number "Unknown Reason (77)".
  static std::string ReasonString(unsigned value);
};
