#pragma once
// The errors that the client itself can explain, server errors by code and statuses of the LANMAN remote API: what
// happened (why) and what to do about it (how).

#include "runtime/uni_string.h"

struct ZnSMBClientError {
  // By code alone: where a number means different things in several error classes, the server class counts.
  enum SMBError : unsigned {
    ERRerror = 1,
    ERRbadpw = 2,
    ERRaccess = 4,
    ERRinvid = 5,
    ERRinvnetname = 6,
    ERRinvdevice = 7,
    ERRqfull = 49,
    ERRqtoobig = 50,
    ERRqeof = 51,
    ERRinvpfid = 52,
    ERRsmbcmd = 64,
    ERRsrverror = 65,
    ERRfilespecs = 67,
    ERRbadpermits = 69,
    ERRsetattrmode = 71,
    ERRpaused = 81,
    ERRmsgoff = 82,
    ERRnoroom = 83,
    ERRrmuns = 87,
    ERRtimeout = 88,
    ERRnoresource = 89,
    ERRtoomanyuids = 90,
    ERRbaduid = 91,
    ERRusempx = 250,
    ERRusestd = 251,
    NERRUserPassword98 = 514,
    NERRUserPassword = 1281,
    NERRPrintQueueNotFound = 1538,
    NERRPrintQueueNotFoundNT = 17153,
    ERRAccountDisabled = 48898,
    ERRNeedPasswdChange = 49666,
    ERRnosupport = 65535,
  };

  enum IPCError : unsigned {
    NERRSuccess = 0,
    NERRAccessDenied = 5,
    NERRNotSupported = 50,
    NERRBadPass = 86,
    NERRBadJob = 87,
    NERRInvalidLevel = 124,
    NERRMoreData = 234,
    NERRBufTooSmall = 2123,
    NERRBadTransactConfig = 2141,
    NERRQueueNotFound = 2150,
    NERRJobNotFound = 2151,
    NERRDestNotFound = 2152,
    NERRSpoolerNotLoaded = 2161,
    NERRJobStateInvalid = 2164,
    NERRUserNotFound = 2221,
    NERRDomainNotFound = 6118,
  };

  static ZnUniString SMBErrorAsString(SMBError error);  // the enumerator's name
  static ZnUniString SMBStatusWhy(SMBError error);
  static ZnUniString SMBStatusHow(SMBError error);
  static ZnUniString CoherentSMBError(SMBError error);  // name, why and how, a line each
  static ZnUniString SMBErrorInfo(SMBError error);      // why and how, a line each

  static ZnUniString IPCErrorAsString(IPCError error);
  static ZnUniString IPCStatusWhy(IPCError error);
  static ZnUniString IPCStatusHow(IPCError error);
  static ZnUniString CoherentIPCError(IPCError error);
  static ZnUniString IPCErrorInfo(IPCError error);
};
