// What conversations with a real server don't show: blocks in unusual places, hostile offsets.

#include "smb/wire/transaction_sections.h"
#include "support/layout_check.h"

namespace {

constexpr ZnEncoding kOem = ZnCodeset::Cp850;
constexpr ZnEncoding kUnicode = ZnCodeset::Utf16Lsb;

// Where the words say that the blocks are, they are; and that is an even position of the message.
TEST(TransactionSections, BlocksAreWhereTheWordsSay) {
  const std::tuple<ZnEncoding, const char*, const char*, const char*> cases[] = {
      {kUnicode, "", "0102", "0304"},
      {kOem, "\\PIPE\\LANMAN", "010203", "04"},
      {kOem, "ab", "01", ""},
      {kUnicode, "abc", "", "01"},
  };
  for (const auto& [encoding, name, params, bytes] : cases) {
    SCOPED_TRACE(name);
    ZnSMBCTrans_ReqData data(encoding);
    data.name = name, data.params = Hex(params), data.data = Hex(bytes);
    ZnSMBCTrans_ReqWords words;
    words.setup = Hex("0100");
    words.Place(data);
    const ZnSMBClientEncode message(ZnSMBCHeader{}, words, data);
    EXPECT_EQ(ToHex(ZnPacket(message.Data() + words.param_offset, words.param_count)), params);
    EXPECT_EQ(ToHex(ZnPacket(message.Data() + words.data_offset, words.data_count)), bytes);
    EXPECT_EQ(words.total_data_count, data.data.Length());
    EXPECT_EQ(words.param_offset % 2 + words.data_offset % 2, 0);
    EXPECT_EQ(words.param_offset == 0, data.params.IsEmpty());
    EXPECT_EQ(words.data_offset == 0, data.data.IsEmpty());
  }
}

TEST(TransactionSections, Reply) {
  const auto both = [](auto& s) { s.params = Hex("0102"), s.data = Hex("03"); };
  CheckLayout(ZnSMBCTranss_RespData(1, 2, 5, 1), "00 0102 0000 03", both);
  CheckLayout(ZnSMBCTranss_RespData(0, 2, 2, 1), "0102 03", both);
  CheckLayout(ZnSMBCTranss_RespData(7, 0, 2, 1), "0000 03", [](auto& s) { s.data = Hex("03"); });
  CheckLayout(ZnSMBCTranss_RespData(0, 2, 9, 0), "0102", [](auto& s) { s.params = Hex("0102"); });

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

}  // namespace
