// The user's error file: what is written, and what a user may put in its place without harm.

#include "session/user.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "runtime/unix_process.h"

namespace {

class UserTest : public testing::Test {
 protected:
  UserTest() {
    the_current_process = &process_;
    char folder[] = "/tmp/halden-user-XXXXXX";
    folder_ = mkdtemp(folder);
    user.config.username = "root";
    user.config.unixuser.emplace("root", true);
    user.config.logfile = File();
  }
  ~UserTest() override {
    the_current_process = nullptr;
    std::filesystem::remove_all(folder_);
  }
  std::string File(const char* name = "errors") const { return folder_ + "/" + name; }
  static std::string Read(const std::string& path) {
    std::stringstream text;
    text << std::ifstream(path).rdbuf();
    return text.str();
  }

  ZnSMBNFSUser user;

 private:
  ZnUnixProcess process_;
  std::string folder_;
};

}  // namespace

TEST_F(UserTest, ReportsAreAppendedAfterABannerAndARemovedFileIsMadeAnew) {
  std::ofstream(File()) << "before\n";
  user.WriteLog("one\n\u0085\u2029\x7F");
  EXPECT_TRUE(Read(File()).starts_with("before\n"));
  EXPECT_TRUE(Read(File()).ends_with("\tHalden(5.60.514)\none????\n"));
  std::filesystem::remove(File());
  user.WriteLog("two");
  EXPECT_TRUE(Read(File()).ends_with("\ntwo\n"));
}

TEST_F(UserTest, OnlyARegularFileIsWrittenToAndNothingWaits) {
  std::ofstream(File("precious")) << "mine";
  std::filesystem::create_symlink(File("precious"), File("link"));
  ASSERT_EQ(mkfifo(File("fifo").c_str(), 0600), 0);
  const int reader = open(File("fifo").c_str(), O_RDONLY | O_NONBLOCK);  // so that the open itself would succeed
  std::filesystem::create_directory(File("folder"));
  for (const char* name : {"link", "fifo", "folder", "no/such/folder", ""}) {
    user.config.logfile = *name ? File(name) : std::string();
    user.WriteLog("report");
  }
  EXPECT_EQ(Read(File("precious")), "mine");
  char byte;
  EXPECT_LE(read(reader, &byte, 1), 0);
  close(reader);
}
