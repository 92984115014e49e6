// The texts of errors, in their three layers.

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "smb/client/smb_error_text.h"

namespace {

TEST(ErrorText, NamesAndSentencesOfServerErrors) {
  const struct {
    unsigned key;
    const char *name, *sentence;
    unsigned status;
  } cases[] = {
      {145 * 256 + 1, "ERRDOS__ERRdirnotempty", "The directory is not empty", 66},
      {2239 * 256 + 2, "ERRSRV__ERRuserexp", "The authentication server is not accessible. User account expired", 13},
      {0xFFFF02, "ERRSRV__ERRnosupport", "The function is not supported by the server", 13},
      {0x0000, "SUCCESS__SUCCESS", "The request was successful", 0},
      {0x0E01, "Unknown error (class 1, code 14)", "Unknown error (class 1, code 14)", 5},
      {0x120304, "Unknown error (class 4, code 4611)", "Unknown error (class 4, code 4611)", 5},
  };
  for (const auto& test : cases) {
    EXPECT_EQ(ZnSMBErrorToString(test.key), test.name) << test.key;
    EXPECT_EQ(ZnSMBErrorToDescription(test.key), test.sentence) << test.key;
    EXPECT_EQ(ZnSMBErrorToStatus(test.key), test.status) << test.key;
  }
}

// Every row is found by its key, and the document shows it.
TEST(ErrorText, TheDocumentHasTheTable) {
  std::stringstream document;
  document << std::ifstream(HALDEN_SOURCE_DIR "/docs/errors.md").rdbuf();
  for (const ZnSMBError& row : ZnSMBErrors()) {
    EXPECT_EQ(ZnFindSMBError(row.Key()), &row) << row.name;
    if (row.errorclass == 0) continue;  // no error
    std::ostringstream line;
    line << "| " << int{row.errorclass} << " | " << row.code << " | `" << std::string(row.name).substr(8) << "` | "
         << row.sentence << " | " << row.status << " |\n";
    EXPECT_NE(document.str().find(line.str()), std::string::npos) << line.str();
  }
}

}  // namespace
