// The user's error file. What a user may put in its place without harm is shown with the daemon.

#include "session/user.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "runtime/unix_process.h"

TEST(User, ReportsAreAppendedAfterABannerAndARemovedFileIsMadeAnew) {
  ZnUnixProcess process;
  the_current_process = &process;
  const std::string file = "/tmp/halden-user-" + std::to_string(getpid());
  ZnSMBNFSUser user;
  user.config.username = "root";
  user.config.unixuser.emplace("root", true);
  user.config.logfile = file;
  auto read = [&file] { return (std::stringstream() << std::ifstream(file).rdbuf()).str(); };
  std::ofstream(file) << "before\n";
  user.WriteLog("one\n\u0085\u2029\x7F");
  EXPECT_TRUE(read().starts_with("before\n"));
  EXPECT_TRUE(read().ends_with("\tHalden(5.60.514)\none????\n"));
  std::filesystem::remove(file);
  user.WriteLog("two");
  EXPECT_TRUE(read().ends_with("\ntwo\n"));
  std::filesystem::remove(file);
  the_current_process = nullptr;
}
