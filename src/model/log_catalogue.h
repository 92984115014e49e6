#pragma once
// Every line that the gateway writes to its logs, one function for each. Errors always go out; filtered messages only
// if the filters let their names pass, and cost next to nothing if they don't.

#include "runtime/inet_addr.h"
#include "runtime/log.h"
#include "runtime/unix_error.h"

// The first line of a user's error file.
inline constexpr char user_error[] = "Halden(5.60.514)\n";

// Knows the names of the filtered messages.
class MyLogger : public ZnLog {
 public:
  const char* const* MessageStrings() const override;
};

// The process.
void Log001();                           // start
void Log002();                           // restart
void Log003();                           // stop
void Log004();                           // filtered: logging starts
void Log005();                           // filtered: logging stops
void Log006(int code);                   // end by a fatal signal, or the code of a loop that failed
void Log007(const ZnUniString& reason);  // the configuration can't be used
void Log008();                           // security can't be set up
void Log009(int signal);                 // end by an exit signal
void Log010(const ZnUniString& reason);  // the server can't start

// NFS.
void Log100(const ZnInetAddr& source, const ZnUniString& call);  // filtered: a call was received
void Log101(const ZnInetAddr& source, int version, int expected);
// A call from an address that isn't served; `only` is "only", or "not" where the list names those that aren't.
void Log102(const ZnInetAddr& source, const ZnUniString& only, const ZnUniString& addresses);
void Log103(const ZnInetAddr& source);  // a call from a port that anybody can send from
void Log104(unsigned left_out);         // so many messages like the two before were left out

// SMB and users.
void Log200(const ZnUniString& error);                                                       // an SMB conversation
void Log201(const ZnUniString& user, const ZnUniString& machine, const ZnUniString& share);  // filtered: connected
void Log202(const ZnUniString& user, const ZnUnixError& error);  // a user's error file can't be opened

// Configuration: of a user, a machine, a share, the server's address.
void Log400(const ZnUniString& error);
void Log401(const ZnUniString& error);
void Log402(const ZnUniString& error);
void Log403(const ZnUniString& address);
void Log404(const ZnUniString& machine, const ZnUniString& reason);
void Log405(const ZnUniString& share, const ZnUniString& machine, const ZnUniString& reason);
void Log406(const ZnUniString& reason);
void Log407(const ZnUniString& warning);  // what looks like a mistake in the profile, and ends nothing
void Log408();                            // an edited profile counts from now on
void Log409(const ZnUniString& reason);   // an edited profile can't be used
