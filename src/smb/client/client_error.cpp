#include "smb/client/client_error.h"

namespace {

// The texts stay as they are, misspellings included: people search for them.
struct Row {
  unsigned value;
  const char* name;
  const char* why;
  const char* how;
};

constexpr const char* kCantProcess = "The print server could not process the request";
constexpr const char* kRights = "Check user has the correct access rights/permissions";
constexpr const char* kQueueName = "Check the queue name used in the request is valid";
constexpr const char* kBadPair = "Incorrect Username password pair";
constexpr const char* kBadQueue = "The specified queue name is invalid";
constexpr const char* kNoAccess = "Access to the resouce has been denied";

constexpr Row kSMBErrors[] = {
    {1, "ERRerror", "Non specific error code", kCantProcess},
    {2, "ERRbadpw", kBadPair, "Check the supplied password is correct"},
    {4, "ERRaccess", kNoAccess, kRights},
    {5, "ERRinvid", "The TID specified in a command was invalid", kCantProcess},
    {6, "ERRinvnetname", "Invalid network name in tree connect", kCantProcess},
    {7, "ERRinvdevice", kBadQueue, kQueueName},
    {49, "ERRqfull", "Print queue full (files)", kCantProcess},
    {50, "ERRqtoobig", "Print queue full -- no space", kCantProcess},
    {51, "ERRqeof", "EOF on print queue dump", kCantProcess},
    {52, "ERRinvpfid", "Invalid print file FID", "Check print job exists"},
    {64, "ERRsmbcmd", "The server did not recognise the SMB command received", kCantProcess},
    {65, "ERRsrverror", "The server encountered an internal error", kCantProcess},
    {67, "ERRfilespecs", "The FID and pathname parameters  are invalid", kCantProcess},
    {69, "ERRbadpermits", "The access permissions specified are not valid", kRights},
    {71, "ERRsetattrmode", "The attribute mode in the Set File Attribute request is invalid", kCantProcess},
    {81, "ERRpaused", "Server is paused.( reserved for messaging)", kCantProcess},
    {82, "ERRmsgoff", "Not receiving messages", kCantProcess},
    {83, "ERRnoroom", "No room to buffer message", kCantProcess},
    {87, "ERRrmuns", "Too many remote user names.", kCantProcess},
    {88, "ERRtimeout", "Operation timed out", kCantProcess},
    {89, "ERRnoresource", "No resources currently available for request.", kCantProcess},
    {90, "ERRtoomanyuids", "Too many UIDs active on this session", kCantProcess},
    {91, "ERRbaduid", "The UID is not known on this session", "Check user exists on remote server"},
    {250, "ERRusempx", "Temp unable to support Raw, use MPX mode", kCantProcess},
    {251, "ERRusestd", "Temp unable to support Raw, use standard read/write", kCantProcess},
    {514, "NERRUserPassword98", kBadPair, "Check the supplied userename and password are correct"},
    {1281, "NERRUserPassword", kBadPair, "Check the supplied username and password are correct"},
    {1538, "NERRPrintQueueNotFound", kBadQueue, kQueueName},
    {17153, "NERRPrintQueueNotFoundNT", kBadQueue, kQueueName},
    {48898, "ERRAccountDisabled", "The user account has been disabled", ""},
    {49666, "ERRNeedPasswdChange", "The users password has timed out and needs changing", ""},
    {65535, "ERRnosupport", "Function not supported", kCantProcess},
};

constexpr Row kIPCErrors[] = {
    {0, "NERRSuccess", "No Errors have been encountered", "The command has been completed successfully"},
    {5, "NERRAccessDenied", kNoAccess, kRights},
    {50, "NERRNotSupported", "The specified command is not supported", kCantProcess},
    {86, "NERRBadPass", kBadPair, "Check the supplied password is correct"},
    {87, "NERRBadJob", "Bad print job", kCantProcess},
    {124, "NERRInvalidLevel", "The server does not support the extensions", kCantProcess},
    {234, "NERRMoreData", "Additional data is available", "Further transactions will follow"},
    {2123, "NERRBufTooSmall", "The supplied buffer is too small", "Client buffer is too small"},
    {2141, "NERRBadTransactConfig", "The server is not configured for transactions",
     "Remote server IPC$ is not shared"},
    {2150, "NERRQueueNotFound", kBadQueue, kQueueName},
    {2151, "NERRJobNotFound", "The specified print job could not be located", "Check print job exists"},
    {2152, "NERRDestNotFound", "Incorrect server/queue pair", "Check the server and print queue exist"},
    {2161, "NERRSpoolerNotLoaded", "The spooler is not started on the remote server", "Start spooler on remote server"},
    {2164, "NERRJobStateInvalid", "The operation cannot be performed on the job in it's current state",
     "Job is already printing"},
    {2221, "NERRUserNotFound", "The user name was not found", "User does not exist on remote server"},
    {6118, "NERRDomainNotFound", "Cannot get a list of workgroups", "Check client is in the correct domain"},
};

template <size_t N>
const Row* Find(const Row (&table)[N], unsigned value) {
  for (const Row& row : table) {
    if (row.value == value) return &row;
  }
  return nullptr;
}

template <size_t N>
ZnUniString Name(const Row (&table)[N], unsigned value, const char* unknown) {
  if (const Row* row = Find(table, value)) return row->name;
  return unknown + ZnUniString(" (") + ZnUniString::CreateFromUnsigned(value) + ")";
}

template <size_t N>
ZnUniString Why(const Row (&table)[N], unsigned value, const char* unknown) {
  const Row* row = Find(table, value);
  return row ? row->why : unknown;
}

template <size_t N>
ZnUniString How(const Row (&table)[N], unsigned value) {
  const Row* row = Find(table, value);
  return row ? row->how : kCantProcess;
}

}  // namespace

ZnUniString ZnSMBClientError::SMBErrorAsString(SMBError error) { return Name(kSMBErrors, error, "Unknown SMBStatus"); }
ZnUniString ZnSMBClientError::SMBStatusWhy(SMBError error) {
  return Why(kSMBErrors, error, "Unrecognised server error");
}
ZnUniString ZnSMBClientError::SMBStatusHow(SMBError error) { return How(kSMBErrors, error); }
ZnUniString ZnSMBClientError::SMBErrorInfo(SMBError error) { return SMBStatusWhy(error) + "\n" + SMBStatusHow(error); }
ZnUniString ZnSMBClientError::CoherentSMBError(SMBError error) {
  return SMBErrorAsString(error) + "\n" + SMBErrorInfo(error);
}

ZnUniString ZnSMBClientError::IPCErrorAsString(IPCError error) { return Name(kIPCErrors, error, "Unknown IPCStatus"); }
ZnUniString ZnSMBClientError::IPCStatusWhy(IPCError error) { return Why(kIPCErrors, error, "Unknown error"); }
ZnUniString ZnSMBClientError::IPCStatusHow(IPCError error) { return How(kIPCErrors, error); }
ZnUniString ZnSMBClientError::IPCErrorInfo(IPCError error) { return IPCStatusWhy(error) + "\n" + IPCStatusHow(error); }
ZnUniString ZnSMBClientError::CoherentIPCError(IPCError error) {
  return IPCErrorAsString(error) + "\n" + IPCErrorInfo(error);
}
