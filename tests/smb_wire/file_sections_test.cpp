#include "smb/wire/file_sections.h"

#include "support/layout_check.h"

namespace {

constexpr ZnEncoding kOem = ZnCodeset::Cp850;
constexpr ZnEncoding kUnicode = ZnCodeset::Utf16Lsb;
const ZnTimeVal kTime{0x6b03a72b, 0};

TEST(FileSections, Paths) {
  CheckLayout(ZnSMBCOpen_ReqData(kOem), "04 | 5c8200", [](auto& s) { s.path = "\\é"; });
  CheckLayout(ZnSMBCDeleteDir_ReqData(kUnicode), "04 | 5c0064000000", [](auto& s) { s.removedirname = "\\d"; });
  CheckLayout(ZnSMBCOpenX_ReqData(kUnicode), "| 00 5c0078000000", [](auto& s) { s.path = "\\x"; });
  const auto both = [](auto& s) { s.oldpath = "\\ab", s.newpath = "\\c"; };
  CheckLayout(ZnSMBCRename_ReqData(kOem), "04 5c616200 04 | 5c6300", both);
  CheckLayout(ZnSMBCRename_ReqData(kUnicode), "04 5c00610062000000 04 | 00 5c0063000000", both);
  CheckLayout(ZnSMBCMove_ReqData(kOem), "| 5c616200 5c6300", both);
  CheckLayout(ZnSMBCMove_ReqData(kUnicode), "| 00 5c00610062000000 5c0063000000", both);
}

// Words as a real server sends and takes them; what they mean shows in the tests beside one.
TEST(FileSections, WordsOfEverydayCommands) {
  CheckLayout(ZnSMBCClose_ReqWords(), "730a ffffffff");
  CheckLayout(ZnSMBCOpenX_ReqWords(), "ff000000 0400 4200 1600 2000 00ca9a3b 1100 07000000 08000000 00000000");
  CheckLayout(ZnSMBCOpenX_RespWords(), "ff000000 730a 2000 2ba7036b 09000000 0200 0000 0000 0280 03000000 | 0000");
  CheckLayout(ZnSMBCRead_ReqWords(), "0100 0200 03000000 0400");
  CheckLayout(ZnSMBCSetAttributes_ReqWords(), "0100 2ba7036b 00000000000000000000");
  CheckLayout(ZnSMBCSetTimes_ReqWords(), "730a 1a00 0060 4001 6007 002c 1d00");
  CheckLayout(ZnSMBCMove_ReqWords(), "0300 1000 0200");
}

TEST(FileSections, WordsOfOtherCommands) {
  CheckLayout(ZnSMBCOpen_ReqWords(), "4000 1600", [](auto& s) {
    s.access.sharing = ZnSMBClientValues::DenyNone, s.attribs = {{}, false, true, true, false, true};
  });
  CheckLayout(ZnSMBCOpen_RespWords(), "143b 2000 2ba7036b 05000000 4000", [](auto& s) {
    s.fid = 0x3b14, s.attribs.archive = true, s.last_write_time = kTime, s.file_size = 5, s.access = 64;
  });
  CheckLayout(ZnSMBCCreate_ReqWords(), "0200 2ba7036b",
              [](auto& s) { s.attribs.hidden = true, s.creation_time = kTime; });
  CheckLayout(
      ZnSMBCNTCreateX_ReqWords(),
      "ff000000 00 0e00 16000000 00000000 9f010200 0100000000000000 80000000 03000000 01000000 40000000 02000000 03");
  CheckLayout(ZnSMBCNTCreateX_RespWords(),
              "ff000000 02 0040 01000000 0100000000000000 0200000000000000 0300000000000000 0400000000000000 80000000"
              "02000000 01000000 0200 0500 01");
}

TEST(FileSections, ReadAndWrite) {
  CheckLayout(ZnSMBCRead_RespWords(), "0500 0000000000000000", [](auto& s) { s.count = 5; });
  for (size_t reserved = 2; reserved < 10; reserved++) {
    ZnPacket words = Hex("0500 0000000000000000");
    words.Writable()[reserved] = 1;
    EXPECT_FALSE(ZnSMBCRead_RespWords().Read(words)) << reserved;
  }
  CheckLayout(ZnSMBCWrite_ReqData(), "01 0500 68656c6c6f", [](auto& s) { s.data = Hex("68656c6c6f"); });
  ZnSMBCRead_RespData longer;
  EXPECT_TRUE(longer.Read(Hex("01 0200 68656c6c6f")));
  EXPECT_EQ(longer.length, 2);
  EXPECT_EQ(longer.data.Length(), 5U) << "what follows the stated length is kept for the caller to judge";
}

}  // namespace
