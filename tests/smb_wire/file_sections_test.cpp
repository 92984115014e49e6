#include "smb/wire/file_sections.h"

#include "support/layout_check.h"

namespace {

constexpr ZnEncoding kOem = ZnCodeset::Cp850;
constexpr ZnEncoding kUnicode = ZnCodeset::Utf16Lsb;

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

}  // namespace
