#pragma once
// Which processor a process runs on. Two that wait for each other are fastest on one; kept apart, as a kernel does by
// load and mood, each exchange pays for waking a processor, which is more than what is measured here. So a comparison
// says where either side runs.

#include <sys/types.h>

enum class Processor { First, Second, Any };

// All threads of a process; pid 0 is this one. Without a second processor all run on the first.
void Place(pid_t pid, Processor processor);

// The process of the SMB server that serves the connection that was made last.
pid_t LatestSmbServer();
