#pragma once
// Gets a benchmark into the company it needs.

// For the top of main. The first time it replaces the process by beside_servers.py (see there for what it takes) that
// runs the same command beside all servers; in that run it returns at once.
void RunBesideServers(char** arguments, const char* option = nullptr);
