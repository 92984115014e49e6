#include "shared/smbclient.h"

#include <cstdio>
#include <regex>

#include "shared/measure.h"

double RunSmbclient(const std::string& port, const std::string& command) {
  const std::string line = "smbclient -s /dev/null -m NT1 --option='client min protocol=NT1' -p " + port + " -U " +
                           Setting("HALDEN_SMB_USER") + "%" + Setting("HALDEN_SMB_PASSWORD") + " //127.0.0.1/" +
                           Setting("HALDEN_SMB_SHARE") + " -c '" + command + "' 2>&1";
  FILE* output = popen(line.c_str(), "r");
  if (!output) Die("can't start smbclient");
  std::string text;
  char buffer[512];
  while (fgets(buffer, sizeof buffer, output)) text += buffer;
  std::smatch found;
  if (pclose(output) != 0 || !std::regex_search(text, found, std::regex(R"(\(([0-9.]+) (KiloBytes/sec|kb/s)\))"))) {
    Die("smbclient: " + text);
  }
  return 1024 * std::stod(found[1]);
}
