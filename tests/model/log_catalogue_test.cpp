#include "model/log_catalogue.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

#include "runtime/time_val.h"

namespace {

ZnInetAddr Address() { return {192, 0, 2, 7}; }

// What stands before a message, and such messages with their texts, which begin with their names.
const std::vector<std::pair<const char*, std::vector<std::pair<std::string, void (*)()>>>> kCases = {
    {"2026/11/23 02:18:31.042\tcl42\tHalden(5.60.514) ",
     {{"nfssmb/process/start", [] { Log001(); }},
      {"nfssmb/process/restart", [] { Log002(); }},
      {"nfssmb/process/stop", [] { Log003(); }},
      {"config/profile/warning\nW", [] { Log407("W"); }},
      {"config/profile/read", [] { Log408(); }}}},
    {"2026/11/23 02:18:31.042\tcl42\t\nHalden(5.60.514) ERROR:\n ",
     {{"nfssmb/init/failure\nFailed to initialise the server: R", [] { Log007("R"); }},
      {"nfssmb/initsec/failure\nFailed to initialise the security.\nMake sure the security config key is set to a "
       "valid value.",
       [] { Log008(); }},
      {"nfssmb/process/exit\nCaught an exit signal: 15", [] { Log009(15); }},
      {"nfssmb/start/failure\nFailed to start server: R", [] { Log010("R"); }},
      {"nfs/request/badver\nReceived an NFS packet with the wrong version from 192.0.2.7. Got 3, expected 2.\nCheck "
       "your mount settings are using NFS v2.",
       [] { Log101(Address(), 3, 2); }},
      {"nfs/packet/notlocal\nReceived an NFS packet from 192.0.2.7\nThe server will only respond to packets from: me",
       [] { Log102(Address(), "only", "me"); }},
      {"nfs/packet/notreserved\nReceived an NFS packet from 192.0.2.7, port 0, which needs no root to send "
       "from.\nMount "
       "without \"noresvport\", or set nfsserver/network/reservedports to 0.",
       [] { Log103(Address()); }},
      {"nfs/packet/refused\nRefused 3 more NFS packets within the last minute, like those above.", [] { Log104(3); }},
      {"smb/connect/error\nE?[31m?F?G?H?I", [] { Log200("E\x1B[31m\nF\x7FG\u009BH\u2028I"); }},
      {"user/config/failure\nFailed to open bob's log file: Permission denied",
       [] { Log202("bob", ZnUnixError(EACCES, "open")); }},
      {"config/user/failure\nE", [] { Log400("E"); }},
      {"config/machine/failure\nE", [] { Log401("E"); }},
      {"config/share/failure\nE", [] { Log402("E"); }},
      {"config/server/failure\nInvalid IP address specified for local machine: x.y\nYou will be unable to contact the "
       "server.\nReconfigure the local IP address of the machine.",
       [] { Log403("x.y"); }},
      {"config/machine/failure\nFailed to connect to machine M? because of bad configuration.\nR\nS?",
       [] { Log404("M\n", "R\nS\r"); }},
      {"config/tree/failure\nFailed to connect to share S on M because of bad configuration.\nR",
       [] { Log405("S", "M", "R"); }},
      {"config/profile/failure\nThe profile can't be used as it is now; what was read before goes on to count.\nR",
       [] { Log409("R"); }},
      {"config/controller/failure\nBad configuration for controller: R", [] { Log406("R"); }}}},
    {"2026/11/23 02:18:31.042\tcl42\t\nHalden(5.60.514) FATAL ERROR: \nThe program has encountered an error that means "
     "it cannot continue.\nIt will now exit. A technical description is given below to help\nestablish the cause.\n ",
     {{"nfssmb/process/exit\nCaught a fatal signal: 127", [] { Log006(127); }}}},
    {"",
     {{"log/logging/start", [] { Log004(); }},
      {"log/logging/stop", [] { Log005(); }},
      {"nfs/request/recv\t192.0.2.7\tLOOKUP", [] { Log100(Address(), "LOOKUP"); }},
      {"share/connect/success\tu\tm\ts", [] { Log201("u", "m", "s"); }}}},
};

TEST(LogCatalogue, EachMessageByteForByteAndOnlyTheInformationIsFiltered) {
  setenv("TZ", "UTC", 1);
  tzset();
  ZnTimeVal::SetClock([] { return ZnTimeVal{1795400311, 42999}; });
  MyLogger logger;
  ZnLog::InitLogs(&logger, "");
  ZnLog::AddLogFile("<stderr>", false, false, ZnCodeset::Utf8);
  ZnLog::SetProcInfo("cl42");
  for (const auto& [head, messages] : kCases) {
    for (const auto& [text, message] : messages) {
      for (const char* off : {"", ":0"}) {
        ZnLog::SetupFilters({(text.substr(0, text.find_first_of("\t\n")) + off).c_str(), "*"}, false);
        ::testing::internal::CaptureStderr();
        message();
        EXPECT_EQ(::testing::internal::GetCapturedStderr(), *off && !*head ? "" : head + text + "\n");
      }
    }
  }
  ZnLog::CleanUp();
}

}  // namespace
