#include "smb/wire/session_sections.h"

#include "support/layout_check.h"

namespace {

using V = ZnSMBClientValues;
constexpr ZnEncoding kOem = ZnCodeset::Cp850;
constexpr ZnEncoding kUnicode = ZnCodeset::Utf16Lsb;

TEST(SessionSections, SessionSetup) {
  CheckLayout(ZnSMBCSessionSetupX_ReqWords(V::DialectNT),
              "ff000000 0441 3200 0000 36000000 0300 0200 00000000 04000000");
  CheckLayout(ZnSMBCSessionSetupX_ReqWords(V::DialectWfWg), "ff000000 0441 3200 0000 36000000 0300 00000000",
              [](auto& s) { s.max_buffer = 16644, s.max_mpx = 50, s.session_key = 54, s.password_length = 3; });

  const auto data = [](auto& s) {
    s.password = Hex("010203"), s.ntpassword = Hex("0405");
    s.name = "ab", s.domain = "G", s.nativeos = "Unix", s.nativelanman = "h";
  };
  CheckLayout(ZnSMBCSessionSetupX_ReqData(V::DialectNT, kOem, 3, 2), "010203 0405 | 616200 4700 556e697800 6800", data);
  // Unicode: the texts begin at odd distances, behind 5 bytes of passwords, so nothing is padded; behind 3 + 1, one is.
  CheckLayout(ZnSMBCSessionSetupX_ReqData(V::DialectNT, kUnicode, 3, 2),
              "010203 0405 | 610062000000 47000000 55006e0069007800 0000 68000000", data);
  CheckLayout(ZnSMBCSessionSetupX_ReqData(V::DialectWfWg, kUnicode, 4), "01020304 | 00 61000000 0000 0000 0000",
              [](auto& s) { s.password = Hex("01020304"), s.name = "a"; });
  ZnSMBCSessionSetupX_ReqData older(V::DialectWfWg, kOem);
  data(older);
  EXPECT_EQ(ToHex(older.Pack()), ToHex(Hex("010203 616200 4700 556e697800 6800"))) << "no second password before NT";

  CheckLayout(ZnSMBCSessionSetupX_RespWords(), "ff0000000100", [](auto& s) { s.guest = true; });
  CheckLayout(ZnSMBCSessionSetupX_RespData(kOem), "| 57696e646f777320362e3100 4e5400 5445535447525000",
              [](auto& s) { s.nativeos = "Windows 6.1", s.nativelanman = "NT", s.domain = "TESTGRP"; });
}

}  // namespace
