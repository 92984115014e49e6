// What conversations with a real server don't show: blocks in unusual places, hostile offsets.

#include <gtest/gtest.h>

#include "smb/wire/session_sections.h"
#include "smb/wire/transaction_sections.h"
#include "support/read_exactly.h"

namespace {

TEST(TransactionSections, Reply) {
  const struct {
    ZnSMBCTranss_RespData blank;
    const char *digits, *params, *data;
  } cases[] = {
      {{1, 2, 5, 1}, "00 0102 0000 03", "0102", "03"},
      {{0, 2, 2, 1}, "0102 03", "0102", "03"},
      {{7, 0, 2, 1}, "0000 03", "", "03"},
      {{0, 2, 9, 0}, "0102", "0102", ""},
  };
  for (const auto& test : cases) {
    const ZnPacket bytes = Hex(test.digits);
    for (size_t length = 0; length <= bytes.Length(); length++) {
      ZnSMBCTranss_RespData section = test.blank;
      EXPECT_EQ(ReadExactly(section, bytes, length), length == bytes.Length()) << test.digits << " cut at " << length;
      if (length < bytes.Length()) continue;
      EXPECT_EQ(ToHex(section.params), test.params);
      EXPECT_EQ(ToHex(section.data), test.data);
    }
  }

  ZnSMBCTranss_RespData hostile[] = {
      {1, 2, 2, 1},                        // data inside the parameters
      {100, 2, 102, 1},                    // parameters outside
      {1, 2, 0xFFFF, 1},                   // data outside
      {1, 2, static_cast<size_t>(-1), 1},  // an offset that wrapped
      {1, 0xFFFF, 3, 1},                   // more parameters than there are
      {1, 2, 5, 0xFFFF},                   // more data than there is
  };
  for (auto& section : hostile) EXPECT_FALSE(ReadExactly(section, Hex("00 0102 0000 03"))) << &section - hostile;
}

TEST(SessionSections, ATokenIsNoLongerThanWhatIsThere) {
  for (const unsigned length : {4U, 0xFFFFU}) {
    ZnSMBCSessionSetupExtended_RespData lying(ZnCodeset::Cp850, static_cast<uint16_t>(length));
    EXPECT_FALSE(ReadExactly(lying, Hex("4e544c")));
  }
}

}  // namespace
