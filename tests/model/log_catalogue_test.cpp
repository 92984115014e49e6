#include "model/log_catalogue.h"

#include <gtest/gtest.h>

#include <string>

namespace {

// Failures are told whatever the filters say, information is told as they say; nothing from outside moves a cursor.
TEST(LogCatalogue, OnlyTheInformationIsFilteredAndControlCharactersAreReplaced) {
  MyLogger logger;
  ZnLog::InitLogs(&logger, "");
  ZnLog::AddLogFile("<stderr>", false, false, ZnCodeset::Utf8);
  const struct {
    std::string name, text;
    void (*message)();
    bool filtered;
  } cases[] = {
      {"smb/connect/error", "\nE?[31m?F?G?H?I", [] { Log200("E\x1B[31m\nF\x7FG\u009BH\u2028I"); }, false},
      {"config/machine/failure", "\nFailed to connect to machine M? because of bad configuration.\nR\nS?",
       [] { Log404("M\n", "R\nS\r"); }, false},
      {"nfs/packet/refused", "\nRefused 3 more NFS packets within the last minute, like those above.",
       [] { Log104(3); }, false},
      {"share/connect/success", "\tu\tm\ts", [] { Log201("u", "m", "s"); }, true},
  };
  for (const auto& [name, text, message, filtered] : cases) {
    for (const char* off : {"", ":0"}) {
      ZnLog::SetupFilters({(name + off).c_str(), "*"}, false);
      ::testing::internal::CaptureStderr();
      message();
      const std::string told = ::testing::internal::GetCapturedStderr();
      EXPECT_EQ(told.empty(), filtered && *off) << name;
      EXPECT_TRUE(told.empty() || told.ends_with(name + text + "\n")) << told;
    }
  }
  ZnLog::CleanUp();
}

}  // namespace
