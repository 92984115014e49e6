#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "smb/client/smb_error_text.h"

namespace {

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
