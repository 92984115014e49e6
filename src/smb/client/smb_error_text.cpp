#include "smb/client/smb_error_text.h"

#include <algorithm>
#include <iterator>

using namespace ZnNFSEnum;

namespace {

// One row an error, ascending by class and code. The sentences stand in users' error files and in what people search
// for, so they stay as they are, misspellings included. docs/errors.md shows the same rows.
constexpr ZnSMBError kErrors[] = {
    {0, 0, "SUCCESS__SUCCESS", "The request was successful", NFS_OK},
    {0, 84, "SUCCESS__BUFFERED", "The message was buffered", NFS_OK},
    {0, 85, "SUCCESS__LOGGED", "The message was logged", NFS_OK},
    {0, 86, "SUCCESS__DISPLAYED", "The message was displayed", NFS_OK},
    {0, 255, "SUCCESS__BLOCKED", "The message was blocked", NFS_OK},

    {1, 1, "ERRDOS__ERRbadfunc", "Invalid function. ::SMBSearch - invalid directory id::", NFSERR_IO},
    {1, 2, "ERRDOS__ERRbadfile", "File not found.", NFSERR_NOENT},
    {1, 3, "ERRDOS__ERRbadpath", "Directory invalid", NFSERR_NOENT},
    {1, 4, "ERRDOS__ERRnofids", "Too many open files", NFSERR_IO},
    {1, 5, "ERRDOS__ERRnoaccess", "Access denied", NFSERR_ACCES},
    {1, 6, "ERRDOS__ERRbadfid", "Invalid file handle", NFSERR_IO},
    {1, 7, "ERRDOS__ERRbadmcb", "Memory control blocks destroyed", NFSERR_IO},
    {1, 8, "ERRDOS__ERRnomem", "The server has too little memory for the request", NFSERR_IO},
    {1, 9, "ERRDOS__ERRbadmem", "Invalid memory block address", NFSERR_IO},
    {1, 10, "ERRDOS__ERRbadenv", "Invalid environment", NFSERR_IO},
    {1, 11, "ERRDOS__ERRbadformat", "Invalid format", NFSERR_IO},
    {1, 12, "ERRDOS__ERRbadaccess", "Invalid open mode", NFSERR_ACCES},
    {1, 13, "ERRDOS__ERRbaddata", "Invalid data", NFSERR_IO},
    {1, 15, "ERRDOS__ERRbaddrive", "Invalid drive specified", NFSERR_NOENT},
    {1, 16, "ERRDOS__ERRremcd", "The server's current directory can't be removed", NFSERR_ACCES},
    {1, 17, "ERRDOS__ERRdiffdevice", "A file can't be moved to another device", NFSERR_XDEV},
    {1, 18, "ERRDOS__ERRnofiles", "No more files match the search", NFSERR_NOENT},
    {1, 19, "ERRDOS__ERRnowrite", "The disk or share is write-protected", NFSERR_ROFS},
    {1, 21, "ERRDOS__ERRnotready", "The drive is not ready", NFSERR_IO},
    {1, 31, "ERRDOS__ERRgeneral", "A device of the server does not work", NFSERR_IO},
    {1, 32, "ERRDOS__ERRbadshare", "Another process is using the file or directory", NFSERR_ACCES},
    {1, 33, "ERRDOS__ERRlock", "Another process has locked a part of the file", NFSERR_ACCES},
    {1, 39, "ERRDOS__ERRhandlediskfull", "The disk is full", NFSERR_NOSPC},
    {1, 50, "ERRDOS__ERRnotsupported", "The request is not supported", NFSERR_ACCES},
    {1, 53, "ERRDOS__ERRbadnetpath", "The server was not found in its network", NFSERR_IO},
    {1, 64, "ERRDOS__ERRnetnamedeleted", "The share is no longer connected", NFSERR_IO},
    {1, 65, "ERRDOS__ERRnetaccessdenied", "Access to the network is denied", NFSERR_ACCES},
    {1, 66, "ERRDOS__ERRbaddevtype", "The share is of another kind than was asked for", NFSERR_IO},
    {1, 67, "ERRDOS__ERRbadnetname", "The server has no share of this name", NFSERR_IO},
    {1, 71, "ERRDOS__ERRreqnotacc", "No more licenses available for this connection", NFSERR_IO},
    {1, 80, "ERRDOS__ERRfilexists", "A file or directory of that name already exists", NFSERR_EXIST},
    {1, 82, "ERRDOS__ERRcannotmake", "The file or directory can not be made", NFSERR_ACCES},
    {1, 86, "ERRDOS__ERRinvalidpassword", "The password is wrong", NFSERR_ACCES},
    {1, 87, "ERRDOS__ERRinvalidparameter", "A value in the request is not valid", NFSERR_IO},
    {1, 91, "ERRDOS__ERRbaduid", "The user is not known on this session", NFSERR_IO},
    {1, 110, "ERRDOS__ERRopenfailed", "The server can not open the file", NFSERR_IO},
    {1, 111, "ERRDOS__ERRbufferoverflow", "The file name is too long", NFSERR_NAMETOOLONG},
    {1, 112, "ERRDOS__ERRdiskfull", "The disk is full", NFSERR_NOSPC},
    {1, 123, "ERRDOS__ERRinvalidname", "The server does not allow this name", NFSERR_ACCES},
    {1, 124, "ERRDOS__ERRunknownlevel", "The server doesn't know the information level", NFSERR_IO},
    {1, 145, "ERRDOS__ERRdirnotempty", "The directory is not empty", NFSERR_NOTEMPTY},
    {1, 161, "ERRDOS__ERRbadpathname", "The path is not valid", NFSERR_NOENT},
    {1, 183, "ERRDOS__ERRalreadyexists", "A file of that name already exists", NFSERR_EXIST},
    {1, 206, "ERRDOS__ERRfilenametoolong", "The file name is too long", NFSERR_NAMETOOLONG},
    {1, 223, "ERRDOS__ERRfiletoolarge", "The file is too large for the server", NFSERR_FBIG},
    {1, 230, "ERRDOS__ERRbadpipe", "The named pipe is invalid", NFSERR_IO},
    {1, 231, "ERRDOS__ERRpipebusy", "All instances of the named pipe are busy", NFSERR_IO},
    {1, 232, "ERRDOS__ERRpipeclosing", "The named pipe is being closed", NFSERR_IO},
    {1, 233, "ERRDOS__ERRnotconnected", "No process is at the other end of the named pipe", NFSERR_IO},
    {1, 234, "ERRDOS__ERRmoredata", "There is more data to be returned", NFSERR_IO},
    {1, 267, "ERRDOS__ERRdirectory", "A part of the path is not a directory", NFSERR_NOTDIR},
    {1, 513, "ERRDOS__ERRnotalink", "The file is not a link", NFSERR_IO},
    {1, 1117, "ERRDOS__ERRiodevice", "The server met an error of its disk", NFSERR_IO},
    {1, 1295, "ERRDOS__ERRdiskquota", "The disk quota of the user is used up", NFSERR_DQUOT},
    {1, 1326, "ERRDOS__ERRlogonfailure", "The user name or the password is wrong", NFSERR_ACCES},
    {1, 1327, "ERRDOS__ERRaccountrestriction", "The account may not log on in this way", NFSERR_ACCES},
    {1, 1331, "ERRDOS__ERRaccountdisabled", "The account is disabled", NFSERR_ACCES},
    {1, 1392, "ERRDOS__ERRfilecorrupt", "The file or directory is damaged on the disk of the server", NFSERR_IO},
    {1, 1816, "ERRDOS__ERRquota", "The quota of the user is used up", NFSERR_DQUOT},
    {1, 1909, "ERRDOS__ERRaccountlocked", "The account is locked", NFSERR_ACCES},
    {1, 2239, "ERRDOS__ERRuserexp", "The user account is disabled or has expired", NFSERR_ACCES},
    {1, 2240, "ERRDOS__ERRclientres", "The user may not log on from this computer", NFSERR_ACCES},
    {1, 2241, "ERRDOS__ERRtimeres", "The user may not log on at this time", NFSERR_ACCES},
    {1, 2242, "ERRDOS__ERRuserpwd", "The user's password has expired", NFSERR_ACCES},

    {2, 1, "ERRSRV__ERRerror", "Non-specific server error", NFSERR_IO},
    {2, 2, "ERRSRV__ERRbadpw", "The password supplied does not match the username supplied", NFSERR_ACCES},
    {2, 4, "ERRSRV__ERRaccess",
     "The action you tried is not allowed either because of user rights or attributes on a file or directory",
     NFSERR_ACCES},
    {2, 5, "ERRSRV__ERRinvid", "Invalid tree id", NFSERR_IO},
    {2, 6, "ERRSRV__ERRinvnetname", "The server has no share of this name", NFSERR_IO},
    {2, 7, "ERRSRV__ERRinvdevice", "Invalid device - printer request made to non printer connection or vice versa",
     NFSERR_ACCES},
    {2, 22, "ERRSRV__ERRbadcmd", "The server does not know the command", NFSERR_ACCES},
    {2, 49, "ERRSRV__ERRqfull", "The print queue is full - too many files", NFSERR_NOSPC},
    {2, 50, "ERRSRV__ERRqtoobig", "The print queue is full - no space", NFSERR_NOSPC},
    {2, 51, "ERRSRV__ERRqeof", "End of the print queue listing", NFSERR_IO},
    {2, 52, "ERRSRV__ERRinvpfid", "Invalid print file handle", NFSERR_IO},
    {2, 64, "ERRSRV__ERRsmbcmd", "The server did not recognise the command", NFSERR_ACCES},
    {2, 65, "ERRSRV__ERRsrverror", "The server met an internal error", NFSERR_IO},
    {2, 67, "ERRSRV__ERRfilespecs", "The file handle and the path name do not fit each other", NFSERR_IO},
    {2, 69, "ERRSRV__ERRbadpermits",
     "The access permissions specified for a file or directory are not a valid combination. The server cannot set the "
     "requested attribute ::Also when unix share dir is not accessible::",
     NFSERR_ACCES},
    {2, 71, "ERRSRV__ERRsetattrmode", "The attributes to be set are invalid", NFSERR_ACCES},
    {2, 81, "ERRSRV__ERRpaused", "The server is paused", NFSERR_IO},
    {2, 82, "ERRSRV__ERRmsgoff", "The server is not receiving messages", NFSERR_IO},
    {2, 83, "ERRSRV__ERRnoroom", "The server has no room to buffer the message", NFSERR_IO},
    {2, 87, "ERRSRV__ERRrmuns", "Too many remote user names", NFSERR_IO},
    {2, 88, "ERRSRV__ERRtimeout", "The server took too long to respond to a request", NFSERR_IO},
    {2, 89, "ERRSRV__ERRnoresource", "The server has no resources for the request at present", NFSERR_IO},
    {2, 90, "ERRSRV__ERRtoomanyuids", "Too many users are active on this session", NFSERR_IO},
    {2, 91, "ERRSRV__ERRbaduid", "The user is not known on this session", NFSERR_IO},
    {2, 250, "ERRSRV__ERRusempx", "The server can't do raw transfers now, multiplexed ones are to be used", NFSERR_IO},
    {2, 251, "ERRSRV__ERRusestd", "The server can't do raw transfers now, ordinary ones are to be used", NFSERR_IO},
    {2, 2239, "ERRSRV__ERRuserexp", "The authentication server is not accessible. User account expired", NFSERR_ACCES},
    {2, 2240, "ERRSRV__ERRclientres", "The user may not log on from this computer", NFSERR_ACCES},
    {2, 2241, "ERRSRV__ERRtimeres", "The user may not log on at this time", NFSERR_ACCES},
    {2, 2242, "ERRSRV__ERRuserpwd", "The user's password has expired", NFSERR_ACCES},
    {2, 65535, "ERRSRV__ERRnosupport", "The function is not supported by the server", NFSERR_ACCES},

    {3, 19, "ERRHRD__ERRnowrite", "Attempt to write on write-protected diskette", NFSERR_ROFS},
    {3, 20, "ERRHRD__ERRbadunit", "Unknown unit", NFSERR_IO},
    {3, 21, "ERRHRD__ERRnotready", "The drive is not ready", NFSERR_IO},
    {3, 22, "ERRHRD__ERRbadcmd", "Unkown command", NFSERR_IO},
    {3, 23, "ERRHRD__ERRdata", "Data error (bad checksum)", NFSERR_IO},
    {3, 24, "ERRHRD__ERRbadreq", "Bad length of a request structure", NFSERR_IO},
    {3, 25, "ERRHRD__ERRseek", "Seek error", NFSERR_IO},
    {3, 26, "ERRHRD__ERRbadmedia", "Unknown media type", NFSERR_IO},
    {3, 27, "ERRHRD__ERRbadsector", "Sector not found", NFSERR_IO},
    {3, 28, "ERRHRD__ERRnopaper", "The printer is out of paper", NFSERR_IO},
    {3, 29, "ERRHRD__ERRwrite", "Write fault", NFSERR_IO},
    {3, 30, "ERRHRD__ERRread", "Read fault", NFSERR_IO},
    {3, 31, "ERRHRD__ERRgeneral", "General failure", NFSERR_IO},
    {3, 32, "ERRHRD__ERRbadshare", "Another process has the file open in a way that does not allow this", NFSERR_ACCES},
    {3, 33, "ERRHRD__ERRlock", "Another process has locked a part of the file", NFSERR_ACCES},
    {3, 34, "ERRHRD__ERRwrongdisk", "The wrong disk is in the drive", NFSERR_IO},
    {3, 35, "ERRHRD__ERRFCBUnavail", "No file control block is available", NFSERR_IO},
    {3, 36, "ERRHRD__ERRsharebufexc", "The sharing buffer is exceeded", NFSERR_IO},
    {3, 39, "ERRHRD__ERRdiskfull", "The disk is full", NFSERR_NOSPC},
};

constexpr bool Before(const ZnSMBError& row, unsigned key) {
  const unsigned errorclass = key & 0xFF;
  return row.errorclass != errorclass ? row.errorclass < errorclass : row.code < key >> 8;
}

}  // namespace

std::span<const ZnSMBError> ZnSMBErrors() { return kErrors; }

const ZnSMBError* ZnFindSMBError(unsigned key) {
  const auto* row = std::lower_bound(std::begin(kErrors), std::end(kErrors), key, Before);
  return row != std::end(kErrors) && row->Key() == key ? row : nullptr;
}

ZnUniString ZnSMBErrorNumbers(unsigned key) {
  return "class " + ZnUniString::CreateFromUnsigned(key & 0xFF) + ", code " + ZnUniString::CreateFromUnsigned(key >> 8);
}

ZnUniString ZnSMBErrorToString(unsigned key) {
  const ZnSMBError* row = ZnFindSMBError(key);
  return row ? ZnUniString(row->name) : "Unknown error (" + ZnSMBErrorNumbers(key) + ")";
}

ZnUniString ZnSMBErrorToDescription(unsigned key) {
  const ZnSMBError* row = ZnFindSMBError(key);
  return row ? ZnUniString(row->sentence) : "Unknown error (" + ZnSMBErrorNumbers(key) + ")";
}

Status ZnSMBErrorToStatus(unsigned key) {
  const ZnSMBError* row = ZnFindSMBError(key);
  return row ? row->status : NFSERR_IO;
}
