#pragma once
// The enumerations of the gateway: what a command's session is asked to do, and how far it has got with that.

#include "runtime/uni_string.h"

struct ZnSMBNFSEnum {
  // What a session is asked to do for a command.
  enum SessionCommand : int {
    SCRequestShares = 0,
    SCRequestDirs = 1,
    SCRequestAttribs = 2,
    SCRequestMkdir = 3,
    SCRequestSetAllAttribs = 4,
    SCRequestRmdir = 5,
    SCRequestCreateFile = 6,
    SCRequestWrite = 8,
    SCRequestRead = 9,
    SCRequestRm = 10,
    SCRequestSetAttribs = 11,
    SCRequestSetTimes = 12,
    SCRequestRename = 13,
    SCRequestSpace = 14,
    SCRequestEntry = 15,  // the one entry of that name in a directory, of which nothing is known yet
  };

  // How far the session has got with it.
  enum SessionStatus : int {
    SSTStart = 0,
    SSTError = 1,
    SSTDone = 2,
    SSTReady = 3,  // conversation and share stand: stands for the first state of the request's own
    SSTGetAddress = 10,
    SSTConnect = 11,
    SSTConnectTree = 13,
    SSTGetShares = 14,
    SSTGetDirs = 15,
    SSTGetAttribs = 16,
    SSTMkdir = 17,
    SSTGetSetAttribs = 18,
    SSTRmdir = 19,
    SSTCreateFile = 30,
    SSTCloseFiles = 32,
    SSTOpenFile = 33,
    SSTWrite = 34,
    SSTRead = 35,
    SSTRm = 36,
    SSTSetTimes = 40,
    SSTRename = 41,
    SSTReplace = 44,       // one request that renames over what is there
    SSTMakeRoom = 45,      // what is in a rename's way goes aside
    SSTRenameAgain = 46,   // there is room now
    SSTPutBack = 47,       // there was, but it didn't help
    SSTMakeWritable = 48,  // what is to be removed was read-only
    SSTProtectAgain = 49,  // and stays, as it was
    SSTFlush = 50,
    SSTCloseWritten = 51,
    SSTGetSpace = 52,
    SSTTurn = 53,          // waits for its turn at a file
    SSTChooseWay = 54,     // whether the server may replace what a rename meets
    SSTChooseRoom = 55,    // what becomes of what is in a rename's way
    SSTRemoveTarget = 56,  // it is a directory: it goes, if it is empty
    SSTSettle = 57,        // what was set is to last
  };

  // Restrictions on names that clients create; a mask.
  enum AllowedNames : int {
    ANMustBeLong = 1,
    ANMustBeShort = 2,
    ANNoReserved = 32,
    ANNoMangled = 64,
    ANNoShortMatch = 256,
    ANNoLongMatch = 512,
    ANMustBeUpper = 4096,
    ANMustBeLower = 8192,
  };

  // The enumerator's name; for other values "Unknown <type> (<number>)".
  static ZnUniString SessionCommandString(SessionCommand value);
  static ZnUniString SessionStatusString(SessionStatus value);
  static ZnUniString AllowedNamesString(AllowedNames value);
};
