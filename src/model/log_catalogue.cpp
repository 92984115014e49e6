#include "model/log_catalogue.h"

#include "runtime/os_stream.h"
#include "runtime/printable_text.h"

namespace {

constexpr char kNotice[] = "Halden(5.60.514)";
constexpr char kError[] = "\nHalden(5.60.514) ERROR:\n";
constexpr char kFatal[] =
    "\nHalden(5.60.514) FATAL ERROR: \n"
    "The program has encountered an error that means it cannot continue.\n"
    "It will now exit. A technical description is given below to help\n"
    "establish the cause.\n";

// The filtered messages, by their places in the logger's table.
enum Filtered : size_t { kLoggingStart, kLoggingStop, kNfsRequest, kShareConnected };
constexpr const char* kNames[] = {"log/logging/start", "log/logging/stop", "nfs/request/recv", "share/connect/success",
                                  nullptr};

// A piece of a line: our own words and numbers as they are, text from elsewhere made printable.
template <class T>
const T& Piece(const T& own) {
  return own;
}
ZnUniString Piece(const ZnUniString& text) { return ZnPrintableLine(text); }
// A text of ours that may have several lines, and quotes others.
ZnUniString Piece(const ZnError& reason) { return ZnPrintableLines(reason.Text()); }

template <class... Text>
void WriteError(const char* banner, const char* category, const Text&... text) {
  ZnOSStream line;
  line << ZnTimeVal::now() << ZnLog::kFieldSeparator << ZnLog::ProcInfo() << ZnLog::kFieldSeparator << banner
       << category;
  (line << ... << Piece(text)) << ZnLog::kLineEnd;
  ZnLog::Error(line.text());
}

template <class... Field>
void WriteFiltered(Filtered index, const Field&... fields) {
  if (!ZnLog::Gen(index)) return;
  ZnOSStream line;
  line << kNames[index];
  ((line << ZnLog::kFieldSeparator << Piece(fields)), ...);
  line << ZnLog::kLineEnd;
  ZnLog::Log(line.text());
}

}  // namespace

const char* const* MyLogger::MessageStrings() const { return kNames; }

void Log001() { WriteError(kNotice, " nfssmb/process/start"); }
void Log002() { WriteError(kNotice, " nfssmb/process/restart"); }
void Log003() { WriteError(kNotice, " nfssmb/process/stop"); }
void Log004() { WriteFiltered(kLoggingStart); }
void Log005() { WriteFiltered(kLoggingStop); }

void Log006(int code) { WriteError(kFatal, " nfssmb/process/exit\n", "Caught a fatal signal: ", code); }

void Log007(const ZnUniString& reason) {
  WriteError(kError, " nfssmb/init/failure\n", "Failed to initialise the server: ", ZnError(reason));
}

void Log008() {
  WriteError(kError, " nfssmb/initsec/failure\n",
             "Failed to initialise the security.\nMake sure the security config key is set to a valid value.");
}

void Log009(int signal) { WriteError(kError, " nfssmb/process/exit\n", "Caught an exit signal: ", signal); }

void Log010(const ZnUniString& reason) {
  WriteError(kError, " nfssmb/start/failure\n", "Failed to start server: ", ZnError(reason));
}

void Log100(const ZnInetAddr& source, const ZnUniString& call) { WriteFiltered(kNfsRequest, source, call); }

void Log101(const ZnInetAddr& source, int version, int expected) {
  WriteError(kError, " nfs/request/badver\n", "Received an NFS packet with the wrong version from ", source, ". Got ",
             version, ", expected ", expected, ".\nCheck your mount settings are using NFS v2.");
}

void Log102(const ZnInetAddr& source, const ZnUniString& only, const ZnUniString& addresses) {
  WriteError(kError, " nfs/packet/notlocal\n", "Received an NFS packet from ", source, "\nThe server will ", only,
             " respond to packets from: ", addresses);
}

void Log103(const ZnInetAddr& source) {
  WriteError(kError, " nfs/packet/notreserved\n", "Received an NFS packet from ", source, ", port ", source.GetPort(),
             ", which needs no root to send from.\nMount without \"noresvport\", or set "
             "nfsserver/network/reservedports to 0.");
}

void Log104(unsigned left_out) {
  WriteError(kError, " nfs/packet/refused\n", "Refused ", left_out,
             " more NFS packets within the last minute, like those above.");
}

void Log200(const ZnUniString& error) { WriteError(kError, " smb/connect/error\n", error); }

void Log201(const ZnUniString& user, const ZnUniString& machine, const ZnUniString& share) {
  WriteFiltered(kShareConnected, user, machine, share);
}

void Log202(const ZnUniString& user, const ZnUnixError& error) {
  WriteError(kError, " user/config/failure\n", "Failed to open ", user, "'s log file: ", error);
}

void Log400(const ZnUniString& error) { WriteError(kError, " config/user/failure\n", ZnError(error)); }
void Log401(const ZnUniString& error) { WriteError(kError, " config/machine/failure\n", ZnError(error)); }
void Log402(const ZnUniString& error) { WriteError(kError, " config/share/failure\n", ZnError(error)); }

void Log403(const ZnUniString& address) {
  WriteError(kError, " config/server/failure\n", "Invalid IP address specified for local machine: ", address,
             "\nYou will be unable to contact the server.\nReconfigure the local IP address of the machine.");
}

void Log404(const ZnUniString& machine, const ZnUniString& reason) {
  WriteError(kError, " config/machine/failure\n", "Failed to connect to machine ", machine,
             " because of bad configuration.\n", ZnError(reason));
}

void Log405(const ZnUniString& share, const ZnUniString& machine, const ZnUniString& reason) {
  WriteError(kError, " config/tree/failure\n", "Failed to connect to share ", share, " on ", machine,
             " because of bad configuration.\n", ZnError(reason));
}

void Log406(const ZnUniString& reason) {
  WriteError(kError, " config/controller/failure\n", "Bad configuration for controller: ", ZnError(reason));
}

void Log407(const ZnUniString& warning) { WriteError(kNotice, " config/profile/warning\n", warning); }

void Log408() { WriteError(kNotice, " config/profile/read"); }

void Log409(const ZnUniString& reason) {
  WriteError(kError, " config/profile/failure\n",
             "The profile can't be used as it is now; what was read before goes on to count.\n", ZnError(reason));
}
