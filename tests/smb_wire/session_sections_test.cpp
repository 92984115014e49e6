#include "smb/wire/session_sections.h"

#include "support/layout_check.h"

namespace {

using V = ZnSMBClientValues;
constexpr ZnEncoding kOem = ZnCodeset::Cp850;
constexpr ZnEncoding kUnicode = ZnCodeset::Utf16Lsb;

TEST(SessionSections, Negotiate) {
  CheckLayout(ZnSMBCNegotiate_ReqData(), "| 02 4100 02 4e54204c4d20302e313200", [](auto& s) {
    s.dialects = {{{}, "A"}, {{}, "NT LM 0.12"}};
  });
  CheckLayout(ZnSMBCNegotiate_RespWords(), "ffff", [](auto& s) { s.index = 0xFFFF; });
  CheckLayout(ZnSMBCNegotiate_RespWords(), "0100 02 0411 0200 0100 02 78563412 0060 5a2d c4ff 00000000", [](auto& s) {
    s.index = V::DialectWfWg, s.encrypted_passwords = s.write_raw = true, s.session_key = 0x12345678;
    s.max_buffer = 0x1104, s.max_mpx = 2, s.max_vcs = 1, s.time_zone = 0xFFC4;
    s.wfwgtime = {{}, 0, 0, 12}, s.wfwgdate = {{}, 26, 10, 22};
  });
  CheckLayout(ZnSMBCNegotiate_RespWords(),
              "0200 03 3200 0100 04410000 00000100 36000000 fd130000 24b684bcf37add01 2c01 08");
  CheckLayout(ZnSMBCNegotiate_RespData(8), "01d8e1b9766d1863 | 5400450053005400");
}

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

TEST(SessionSections, TreeConnect) {
  CheckLayout(ZnSMBCTreeConnect_ReqData(kOem), "045c5c504545525c534841524500 0400 04 | 413a00",
              [](auto& s) { s.path = "\\\\PEER\\SHARE", s.service = "A:"; });
  CheckLayout(ZnSMBCTreeConnect_RespWords(), "04412c03", [](auto& s) { s.max_transmit = 16644, s.tid = 812; });
  CheckLayout(ZnSMBCTreeConnectX_ReqWords(), "ff000000 0100 1800");
  const auto data = [](auto& s) { s.password = Hex("00"), s.path = "\\\\P", s.service = "A:"; };
  CheckLayout(ZnSMBCTreeConnectX_ReqData(kOem, 1), "00 | 5c5c5000 413a00", data);
  CheckLayout(ZnSMBCTreeConnectX_ReqData(kUnicode, 1), "00 | 5c005c0050000000 413a00", data);
  CheckLayout(ZnSMBCTreeConnectX_RespWords(2), "ff000000");
  CheckLayout(ZnSMBCTreeConnectX_RespWords(3), "ff0000000100", [](auto& s) { s.optional_support = true; });
  CheckLayout(ZnSMBCTreeConnectX_RespData(kUnicode), "| 49504300 00 4e000000",
              [](auto& s) { s.service = "IPC", s.nativefs = "N"; });
}

}  // namespace
