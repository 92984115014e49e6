#include "session/failure_words.h"

#include <algorithm>
#include <iterator>

namespace {

using E = ZnSMBNFSEnum;
using Values = ZnSMBClientValues;
using Status = ZnNFSEnum::Status;

struct StepWords {
  E::SessionStatus step;
  const char* doing;
};

constexpr StepWords kSteps[] = {
    {E::SSTGetAddress, "looking for the machine"},
    {E::SSTConnectTree, "connecting the share, at"},
    {E::SSTGetDirs, "listing"},
    {E::SSTGetAttribs, "looking up"},
    {E::SSTMkdir, "making a directory"},
    {E::SSTGetSetAttribs, "setting attributes"},
    {E::SSTRmdir, "removing a directory"},
    {E::SSTCreateFile, "creating"},
    {E::SSTCloseFiles, "closing"},
    {E::SSTOpenFile, "opening"},
    {E::SSTWrite, "writing"},
    {E::SSTFlush, "flushing"},
    {E::SSTRead, "reading"},
    {E::SSTRm, "removing"},
    {E::SSTSetTimes, "setting times"},
    {E::SSTRename, "renaming"},
    {E::SSTReplace, "renaming over what is there"},
    {E::SSTChooseRoom, "renaming"},
    {E::SSTRemoveTarget, "renaming over what is there"},
    {E::SSTMakeRoom, "renaming over what is there"},
    {E::SSTRenameAgain, "renaming over what is there"},
    {E::SSTPutBack, "putting back what was to be renamed over"},
    {E::SSTMakeWritable, "removing"},
    {E::SSTProtectAgain, "making read-only again"},
};

struct RequestWords {
  Values::Command request;
  const char* doing;
};

// The requests of a connection that is being made.
constexpr RequestWords kConnecting[] = {
    {Values::CmdNone, "connecting to"},
    {Values::CmdNegotiate, "agreeing on a dialect with"},
    {Values::CmdSessionSetupX, "logging on to"},
    {Values::CmdTreeConnectX, "connecting IPC$, at"},
};

struct ReasonWords {
  Values::Reason reason;
  const char* sentence;
};

constexpr ReasonWords kReasons[] = {
    {Values::ErrNone, "There was no error"},
    {Values::ErrSMB, "An SMB level error was received"},
    {Values::ErrBusy, "The local server is processing a request"},
    {Values::ErrRead, "A received packet was not understood by the server"},
    {Values::ErrWrite, "The remote end rejected a packet we sent it"},
    {Values::ErrBlocked, "The connection is blocked"},
    {Values::ErrConnected, "The server is already connected"},
    {Values::ErrConnecting, "The local server is currently in the process of connecting"},
    {Values::ErrNotConnected, "The server is not connected"},
    {Values::ErrDisconnect, "The remote server closed the connection"},
    {Values::ErrTimedOut, "The remote server took too long to respond to a request"},
    {Values::ErrNotSupported, "The local server tried to send the wrong command"},
    {Values::ErrInternal, "There was an internal error"},
    {Values::ErrBadValue, "The local server did not understand a reply from the remote server"},
    {Values::ErrServer, "The remote server took only a part of the data"},
    {Values::ErrBadTID, "The local server tried to use a bad Tree ID"},
    {Values::ErrBadFID, "The local server tried to use a bad file ID"},
    {Values::ErrIPC, "There was an error translating an IPC packet"},
    {Values::ErrBadPrinter, "The printer can't be used"},
    {Values::ErrBind, "The local server failed to bind to a local port"},
    {Values::ErrConnect, "The local server failed to connect to the remote server"},
    {Values::ErrNegprot, "The remote server speaks none of our dialects"},
    {Values::ErrClearPassword, "The server wants the password unencrypted, and the key cleartext doesn't allow that"},
    {Values::ErrWeakLogon, "A logon as strong as the key minauth asks for isn't possible with this server"},
    {Values::ErrBadSignature, "A reply had a wrong signature: it isn't the server's, or was changed on the way"},
    {Values::ErrMustSign, "The server wants signed messages, and the key signing doesn't allow that"},
    {Values::ErrCantSign, "Signed messages, which the key signing asks for, aren't possible with this server"},
};

constexpr unsigned Key(unsigned errorclass, unsigned code) { return code * 256 + errorclass; }

struct RefusalWords {
  unsigned refusal;
  const char* advice;
};

constexpr const char* kWrongPassword =
    "the user name or the password is wrong: check winname, domain and password of the machine in the profile";
constexpr const char* kInUse = "it works when the file is no longer used there";

constexpr RefusalWords kLogonAdvice[] = {
    {Key(1, 5), kWrongPassword},
    {Key(1, 86), kWrongPassword},
    {Key(1, 1326), kWrongPassword},
    {Key(2, 2), kWrongPassword},
};

constexpr RefusalWords kAdvice[] = {
    {Key(1, 32), kInUse},
    {Key(1, 33), kInUse},
    {Key(3, 32), kInUse},
    {Key(3, 33), kInUse},
    {Key(1, 123), "choose another name"},
};

struct StatusWords {
  Status status;
  const char* advice;
};

constexpr StatusWords kStatusAdvice[] = {
    {ZnNFSEnum::NFSERR_IO, "if it stays so, the server's own log may tell more"},
    {ZnNFSEnum::NFSERR_ACCES, "check what this user may do there on the server"},
    {ZnNFSEnum::NFSERR_FBIG, "files can't be larger than 4 GiB here, or than the server's disk allows"},
    {ZnNFSEnum::NFSERR_NOSPC, "make room on the server's disk"},
    {ZnNFSEnum::NFSERR_ROFS, "the share can only be read"},
    {ZnNFSEnum::NFSERR_NAMETOOLONG, "choose a shorter name"},
    {ZnNFSEnum::NFSERR_NOTEMPTY, "remove what is in it first"},
    {ZnNFSEnum::NFSERR_DQUOT, "remove files there, or ask for a larger quota"},
};

// The words of the row whose first member is `value`, or the others.
template <class Row, size_t N, class T, class W>
const char* WordsOf(const Row (&table)[N], T Row::*member, T value, W Row::*words, const char* others) {
  const Row* row = std::find_if(table, table + N, [=](const Row& each) { return each.*member == value; });
  return row == table + N ? others : row->*words;
}

}  // namespace

namespace ZnFailureWords {

const char* Doing(E::SessionStatus step, Values::Command lastrequest) {
  if (step == E::SSTConnect) {
    return WordsOf(kConnecting, &RequestWords::request, lastrequest, &RequestWords::doing, "connecting to");
  }
  return WordsOf(kSteps, &StepWords::step, step, &StepWords::doing, "waiting");
}

bool IsAboutMachine(E::SessionStatus step) { return step == E::SSTConnect || step == E::SSTConnectTree; }

bool IsOwnRefusal(Values::Reason reason) {
  return reason == Values::ErrClearPassword || reason == Values::ErrWeakLogon || reason == Values::ErrMustSign ||
         reason == Values::ErrCantSign;
}

const char* Sentence(Values::Reason reason) {
  return WordsOf(kReasons, &ReasonWords::reason, reason, &ReasonWords::sentence, "");
}

const char* Advice(E::SessionStatus step, Values::Reason reason, unsigned refusal, Status status) {
  if (reason == Values::ErrMustSign) return "set it to (auto)";
  if (IsOwnRefusal(reason)) return "allow it only where nobody can listen on the way or pretend to be the server";
  if (step == E::SSTGetAddress) return "give its address in the key ipaddress of the machine";
  if (step == E::SSTConnect && refusal == 0) {
    return "check that the machine is on, and its ipaddress and port in the profile";
  }
  if (step == E::SSTConnect) {
    return WordsOf(kLogonAdvice, &RefusalWords::refusal, refusal, &RefusalWords::advice,
                   "check winname, domain and password of the machine in the profile");
  }
  if (step == E::SSTConnectTree && refusal != 0) {
    return status == ZnNFSEnum::NFSERR_ACCES ? "check that this user may use the share on the server"
                                             : "check the share's name in the profile";
  }
  const char* general = WordsOf(kStatusAdvice, &StatusWords::status, status, &StatusWords::advice, "");
  return WordsOf(kAdvice, &RefusalWords::refusal, refusal, &RefusalWords::advice, general);
}

}  // namespace ZnFailureWords
