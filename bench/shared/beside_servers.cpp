#include "shared/beside_servers.h"

#include <unistd.h>

#include <cstdlib>
#include <vector>

#include "shared/measure.h"

void RunBesideServers(char** arguments, const char* option) {
  if (getenv("HALDEN_NFS_PORT")) return;
  setenv("HALDEN_BIN_DIR", HALDEN_BIN_DIR, 0);
  setenv("HALDEN_BENCH_DIR", HALDEN_BENCH_DIR, 0);
  std::vector<const char*> command = {"python3", "-B", HALDEN_SOURCE_DIR "/bench/shared/beside_servers.py"};
  if (option) command.push_back(option);
  for (; *arguments; arguments++) command.push_back(*arguments);
  command.push_back(nullptr);
  execvp(command[0], const_cast<char**>(command.data()));
  Die("can't start bench/shared/beside_servers.py");
}
