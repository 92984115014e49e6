#include "smb/client/smb_error_text.h"

#include <algorithm>
#include <iterator>

namespace {

// One row an error, ascending by class and code. The sentences stand in users' error files and in what people search
// for, so they stay as they are, misspellings included.
struct Row {
  unsigned errorClass;
  unsigned code;
  const char* name;
  const char* description;
};

constexpr Row kErrors[] = {
    {0, 0, "SUCCESS__SUCCESS", "The request was successful"},
    {0, 84, "SUCCESS__BUFFERED", "The message was buffered"},
    {0, 85, "SUCCESS__LOGGED", "The message was logged"},
    {0, 86, "SUCCESS__DISPLAYED", "The message was displayed"},
    {0, 255, "SUCCESS__BLOCKED", "The message was blocked"},

    {1, 1, "ERRDOS__ERRbadfunc", "Invalid function. ::SMBSearch - invalid directory id::"},
    {1, 2, "ERRDOS__ERRbadfile", "File not found."},
    {1, 3, "ERRDOS__ERRbadpath", "Directory invalid"},
    {1, 4, "ERRDOS__ERRnofids", "Too many open files"},
    {1, 5, "ERRDOS__ERRnoaccess", "Access denied"},
    {1, 6, "ERRDOS__ERRbadfid", "Invalid file handle"},
    {1, 7, "ERRDOS__ERRbadmcb", "Memory control blocks destroyed"},
    {1, 8, "ERRDOS__ERRnomem", "The server has too little memory for the request"},
    {1, 9, "ERRDOS__ERRbadmem", "Invalid memory block address"},
    {1, 10, "ERRDOS__ERRbadenv", "Invalid environment"},
    {1, 11, "ERRDOS__ERRbadformat", "Invalid format"},
    {1, 12, "ERRDOS__ERRbadaccess", "Invalid open mode"},
    {1, 13, "ERRDOS__ERRbaddata", "Invalid data"},
    {1, 15, "ERRDOS__ERRbaddrive", "Invalid drive specified"},
    {1, 16, "ERRDOS__ERRremcd", "The server's current directory can't be removed"},
    {1, 17, "ERRDOS__ERRdiffdevice", "A file can't be moved to another device"},
    {1, 18, "ERRDOS__ERRnofiles", "No more files match the search"},
    {1, 32, "ERRDOS__ERRbadshare", "Another process is using the file or directory"},
    {1, 33, "ERRDOS__ERRlock", "Another process has locked a part of the file"},
    {1, 50, "ERRDOS__ERRnotsupported", "The request is not supported"},
    {1, 71, "ERRDOS__ERRreqnotacc", "No more licenses available for this connection"},
    {1, 80, "ERRDOS__ERRfilexists", "A file or directory of that name already exists"},
    {1, 112, "ERRDOS__ERRdiskfull", "The disk is full"},
    {1, 124, "ERRDOS__ERRunknownlevel", "The server doesn't know the information level"},
    {1, 183, "ERRDOS__ERRalreadyexists", "A file of that name already exists"},
    {1, 230, "ERRDOS__ERRbadpipe", "The named pipe is invalid"},
    {1, 231, "ERRDOS__ERRpipebusy", "All instances of the named pipe are busy"},
    {1, 232, "ERRDOS__ERRpipeclosing", "The named pipe is being closed"},
    {1, 233, "ERRDOS__ERRnotconnected", "No process is at the other end of the named pipe"},
    {1, 234, "ERRDOS__ERRmoredata", "There is more data to be returned"},
    {1, 513, "ERRDOS__ERRnotalink", "The file is not a link"},

    {2, 1, "ERRSRV__ERRerror", "Non-specific server error"},
    {2, 2, "ERRSRV__ERRbadpw", "The password supplied does not match the username supplied"},
    {2, 4, "ERRSRV__ERRaccess",
     "The action you tried is not allowed either because of user rights or attributes on a file or directory"},
    {2, 5, "ERRSRV__ERRinvid", "Invalid tree id"},
    {2, 6, "ERRSRV__ERRinvnetname", "Invalid name of a share"},
    {2, 7, "ERRSRV__ERRinvdevice", "Invalid device - printer request made to non printer connection or vice versa"},
    {2, 49, "ERRSRV__ERRqfull", "The print queue is full - too many files"},
    {2, 50, "ERRSRV__ERRqtoobig", "The print queue is full - no space"},
    {2, 51, "ERRSRV__ERRqeof", "End of the print queue listing"},
    {2, 52, "ERRSRV__ERRinvpfid", "Invalid print file handle"},
    {2, 64, "ERRSRV__ERRsmbcmd", "The server did not recognise the command"},
    {2, 65, "ERRSRV__ERRsrverror", "The server met an internal error"},
    {2, 67, "ERRSRV__ERRfilespecs", "The file handle and the path name do not fit each other"},
    {2, 69, "ERRSRV__ERRbadpermits",
     "The access permissions specified for a file or directory are not a valid combination. The server cannot set "
     "the requested attribute ::Also when unix share dir is not accessible::"},
    {2, 71, "ERRSRV__ERRsetattrmode", "The attributes to be set are invalid"},
    {2, 81, "ERRSRV__ERRpaused", "The server is paused"},
    {2, 82, "ERRSRV__ERRmsgoff", "The server is not receiving messages"},
    {2, 83, "ERRSRV__ERRnoroom", "The server has no room to buffer the message"},
    {2, 87, "ERRSRV__ERRrmuns", "Too many remote user names"},
    {2, 88, "ERRSRV__ERRtimeout", "The server took too long to respond to a request"},
    {2, 89, "ERRSRV__ERRnoresource", "The server has no resources for the request at present"},
    {2, 90, "ERRSRV__ERRtoomanyuids", "Too many users are active on this session"},
    {2, 91, "ERRSRV__ERRbaduid", "The user is not known on this session"},
    {2, 250, "ERRSRV__ERRusempx", "The server can't do raw transfers now, multiplexed ones are to be used"},
    {2, 251, "ERRSRV__ERRusestd", "The server can't do raw transfers now, ordinary ones are to be used"},
    {2, 2239, "ERRSRV__ERRuserexp", "The authentication server is not accessible. User account expired"},
    {2, 2240, "ERRSRV__ERRclientres", "The user may not log on from this computer"},
    {2, 2241, "ERRSRV__ERRtimeres", "The user may not log on at this time"},
    {2, 2242, "ERRSRV__ERRuserpwd", "The user's password has expired"},
    {2, 65535, "ERRSRV__ERRnosupport", "The function is not supported by the server"},

    {3, 19, "ERRHRD__ERRnowrite", "Attempt to write on write-protected diskette"},
    {3, 20, "ERRHRD__ERRbadunit", "Unknown unit"},
    {3, 21, "ERRHRD__ERRnotready", "The drive is not ready"},
    {3, 22, "ERRHRD__ERRbadcmd", "Unkown command"},
    {3, 23, "ERRHRD__ERRdata", "Data error (bad checksum)"},
    {3, 24, "ERRHRD__ERRbadreq", "Bad length of a request structure"},
    {3, 25, "ERRHRD__ERRseek", "Seek error"},
    {3, 26, "ERRHRD__ERRbadmedia", "Unknown media type"},
    {3, 27, "ERRHRD__ERRbadsector", "Sector not found"},
    {3, 28, "ERRHRD__ERRnopaper", "The printer is out of paper"},
    {3, 29, "ERRHRD__ERRwrite", "Write fault"},
    {3, 30, "ERRHRD__ERRread", "Read fault"},
    {3, 31, "ERRHRD__ERRgeneral", "General failure"},
    {3, 32, "ERRHRD__ERRbadshare", "Another process has the file open in a way that does not allow this"},
    {3, 33, "ERRHRD__ERRlock", "Another process has locked a part of the file"},
    {3, 34, "ERRHRD__ERRwrongdisk", "The wrong disk is in the drive"},
    {3, 35, "ERRHRD__ERRFCBUnavail", "No file control block is available"},
    {3, 36, "ERRHRD__ERRsharebufexc", "The sharing buffer is exceeded"},
};

const Row* Find(unsigned key) {
  const auto* row = std::find_if(std::begin(kErrors), std::end(kErrors),
                                 [key](const Row& each) { return each.code * 256 + each.errorClass == key; });
  return row == std::end(kErrors) ? nullptr : row;
}

}  // namespace

ZnUniString ZnSMBErrorToString(unsigned key) {
  const Row* row = Find(key);
  return row ? row->name : "Unknown error";
}

ZnUniString ZnSMBErrorToDescription(unsigned key) {
  const Row* row = Find(key);
  return row ? row->description : "Unknown error";
}
