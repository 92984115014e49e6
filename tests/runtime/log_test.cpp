#include "runtime/log.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <tuple>

#include "runtime/time_val.h"

namespace {

class TestLogger : public ZnLog {
 public:
  const char* const* MessageStrings() const override {
    static const char* const names[] = {"log/logging/start", "nfs/call/failure", "nfs/call/success", nullptr};
    return names;
  }
};

class Log : public ::testing::Test {
 protected:
  Log() {
    std::string pattern = ::testing::TempDir() + "logXXXXXX";
    directory = mkdtemp(pattern.data());
    setenv("TZ", "UTC", 1);
    tzset();
    ZnTimeVal::SetClock([] { return ZnTimeVal{1795400311, 42999}; });
    ZnLog::InitLogs(&logger, directory.string());
  }
  ~Log() override {
    ZnLog::CleanUp();
    ZnTimeVal::SetClock(nullptr);
    std::filesystem::remove_all(directory);
  }

  std::string Contents(const std::string& name) const {
    std::ifstream file(directory / name);
    return (std::ostringstream() << file.rdbuf()).str();
  }

  TestLogger logger;
  std::filesystem::path directory;
};

TEST_F(Log, FirstMatchingFilterDecides) {
  EXPECT_TRUE(ZnLog::Gen(0) && ZnLog::Gen("x", "y", "z"));
  // Filters, what holds where none matches, and what is on for numbers 0 to 3.
  const std::tuple<ZnDList<ZnUniString>, bool, std::array<bool, 4>> cases[] = {
      {{}, false, {false, false, false}},
      {{"*/*/failure"}, false, {false, true, false}},
      {{"NFS/*/*:0", "*/*/*"}, false, {true, false, false}},
      {{"*/*/*", "nfs/*/*:0"}, false, {true, true, true}},
      {{"nfs/call/failure:0", "nfs/*:x"}, false, {false, false, true}},
      {{"log/*:", ":1", ""}, true, {true, true, true}},
  };
  for (const auto& [filters, onnomatch, on] : cases) {
    ZnLog::SetupFilters(filters, onnomatch);
    for (size_t i = 0; i < on.size(); i++) EXPECT_EQ(ZnLog::Gen(i), on[i]) << i;
  }
}

TEST_F(Log, PlainAndStructuredFormsByteForByte) {
  const std::string pid = std::to_string(getpid());
  ZnLog::SetupFilters({"*/*/failure"}, false);
  ZnLog::SetupJSFilters({"nfs/*/*:s%%PID%%.jsl", "*/call/FAILURE:plain.txt", "*/*/*:/one:too many", "a/b:short.jsl",
                         "*/*/*:.../elsewhere", "no destination"});
  ASSERT_EQ(ZnLog::AddLogFile("out", false, false, ZnCodeset::Utf8), ZnLog::Success);
  EXPECT_FALSE(ZnLog::JsGen(0));
  EXPECT_TRUE(ZnLog::JsGen(1));
  EXPECT_FALSE(ZnLog::JsGen(77));
  ZnLog::JserverLog(0, "nobody wants this");
  ZnLog::JserverLog(1, "100%,\na=b");
  ZnLog::JserverLog(2, "only structured");
  ZnLog::Flush();
  const std::string plain =
      "2026/11/23 02:18:31.042\t (pid " + pid + ")\tnfs/call/failure\t#1\tHalden((legacy))\n100%,\na=b\n";
  EXPECT_EQ(Contents("out.log"), plain);
  EXPECT_EQ(Contents("plain.txt"), plain);
  const std::string head = ",date=2026/11/23 02:18:31.042,pid=" + pid + ",systime=1795400311,message=";
  EXPECT_EQ(Contents("s" + pid + ".jsl"), "category=nfs/call/failure" + head + "100%25%2c%0aa%3db\n" +
                                              "category=nfs/call/success" + head + "only structured\n");
  EXPECT_FALSE(std::filesystem::exists(directory / "short.jsl"));
}

}  // namespace
