#pragma once
// smbclient, the yardstick for the transfer of large files: it has many large requests on their way at once.

#include <string>

// Moves a file between the share in the environment, by way of the server's or a relay's port, and this machine: "get
// NAME /dev/null" or "put PATH NAME". Returns bytes a second, as it measures them itself.
double RunSmbclient(const std::string& port, const std::string& command);
