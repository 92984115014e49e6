#include "shared/placement.h"

#include <sched.h>

#include <filesystem>
#include <fstream>

#include "shared/measure.h"

void Place(pid_t pid, Processor processor) {
  static const cpu_set_t all = [] {
    cpu_set_t set;
    sched_getaffinity(0, sizeof set, &set);
    return set;
  }();
  if (CPU_COUNT(&all) < 2) return;
  cpu_set_t chosen = all;
  if (processor != Processor::Any) {
    CPU_ZERO(&chosen);
    int left = processor == Processor::First ? 0 : 1;
    for (int cpu = 0; cpu < CPU_SETSIZE && left >= 0; cpu++) {
      if (CPU_ISSET(cpu, &all) && left-- == 0) CPU_SET(cpu, &chosen);
    }
  }
  // Of all threads: the server's read and write for it, and one that has just ended needs no place.
  const std::filesystem::path process = "/proc/" + (pid == 0 ? "self" : std::to_string(pid)) + "/task";
  for (const auto& thread : std::filesystem::directory_iterator(process)) {
    sched_setaffinity(std::stoi(thread.path().filename()), sizeof chosen, &chosen);
  }
  cpu_set_t seen;
  if (sched_getaffinity(pid, sizeof seen, &seen) != 0 || !CPU_EQUAL(&seen, &chosen)) Die("can't place a process");
}

pid_t LatestSmbServer() {
  const std::string server = Setting("HALDEN_SMB_PID");
  std::ifstream children("/proc/" + server + "/task/" + server + "/children");
  pid_t latest = 0;
  while (children >> latest) continue;
  if (latest == 0) Die("the SMB server serves nobody");
  return latest;
}
