// The texts of errors, in their three layers.

#include <gtest/gtest.h>

#include "smb/client/client_error.h"
#include "smb/client/smb_error_text.h"

namespace {

using Error = ZnSMBClientError;

TEST(ErrorText, NamesAndSentencesOfServerErrors) {
  const struct {
    unsigned key;
    const char *name, *sentence;
  } cases[] = {
      {0x1201, "ERRDOS__ERRnofiles", "No more files match the search"},
      {2239 * 256 + 2, "ERRSRV__ERRuserexp", "The authentication server is not accessible. User account expired"},
      {0xFFFF02, "ERRSRV__ERRnosupport", "The function is not supported by the server"},
      {22 * 256 + 3, "ERRHRD__ERRbadcmd", "Unkown command"},
      {0x0000, "SUCCESS__SUCCESS", "The request was successful"},
      {0x0E01, "Unknown error", "Unknown error"},
      {0x0004, "Unknown error", "Unknown error"},
  };
  for (const auto& test : cases) {
    EXPECT_EQ(ZnSMBErrorToString(test.key), test.name) << test.key;
    EXPECT_EQ(ZnSMBErrorToDescription(test.key), test.sentence) << test.key;
  }
}

TEST(ErrorText, WhatTheClientExplainsItself) {
  const std::string how = "\nThe print server could not process the request";
  EXPECT_EQ(Error::CoherentSMBError(static_cast<Error::SMBError>(3)),
            ("Unknown SMBStatus (3)\nUnrecognised server error" + how).c_str());
  EXPECT_EQ(Error::CoherentIPCError(Error::NERRInvalidLevel),
            ("NERRInvalidLevel\nThe server does not support the extensions" + how).c_str());
}

}  // namespace
