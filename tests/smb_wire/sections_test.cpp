// What conversations with a real server don't show: blocks in unusual places, hostile offsets.

#include "smb/wire/session_sections.h"
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

// A real server's, cut short where texts repeat.
TEST(SessionSections, ExtendedSecurity) {
  const auto words = CheckLayout(ZnSMBCNegotiate_RespWords(),
                                 "0200 0f 3200 0100 04410000 00000100 16080000 fcf30080 00a459b0717bdd01 0000 00");
  EXPECT_TRUE(words.user_level && words.encrypted_passwords && words.signing_enabled && words.signing_required);
  EXPECT_TRUE(words.capabilities.extended_security && words.capabilities.large_readx &&
              words.capabilities.large_writex);
  CheckLayout(ZnSMBCNegotiateExtended_RespData(), "70656572000000000000000000000000 | 6048", [](auto& data) {
    data.guid = {'p', 'e', 'e', 'r'}, data.token = Hex("6048");
  });

  CheckLayout(ZnSMBCSessionSetupExtended_ReqWords(), "ff000000 00f0 3200 0100 04030201 2000 00000000 44000080",
              [](auto& asked) {
                asked.max_buffer = 61440, asked.max_mpx = 50, asked.vc_number = 1, asked.session_key = 0x01020304;
                asked.token_length = 32;
                asked.capabilities.extended_security = asked.capabilities.unicode = asked.capabilities.nt_status = true;
              });
  CheckLayout(ZnSMBCSessionSetupExtended_RespWords(), "ff000000 0100 7400",
              [](auto& reply) { reply.guest = true, reply.token_length = 0x74; });
  const auto fill = [](auto& data) { data.token = Hex("4e544c"), data.nativeos = "W", data.nativelanman = "S"; };
  CheckLayout(ZnSMBCSessionSetupExtended_ReqData(kOem, 3), "4e544c | 5700 5300", fill);
  CheckLayout(ZnSMBCSessionSetupExtended_RespData(kUnicode, 3), "4e544c | 57000000 53000000 0000", fill);
  for (const unsigned length : {4U, 0xFFFFU}) {
    ZnSMBCSessionSetupExtended_RespData lying(kOem, static_cast<uint16_t>(length));
    EXPECT_FALSE(ReadExactly(lying, Hex("4e544c")));
  }
}

}  // namespace
