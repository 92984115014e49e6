#include "smb/wire/message.h"

#include <gtest/gtest.h>

#include "smb/wire/file_sections.h"
#include "smb/wire/session_sections.h"
#include "support/read_exactly.h"

namespace {

// A real server's reply to a READ.
const char kReadReply[] =
    "ff534d42 0a 00000000 80 0340 000000000000000000000000 f8ff 4d00 a5bb 0700"
    "05 0500 0000000000000000 0800 01 0500 68656c6c6f";

TEST(SmbMessage, Decoded) {
  ZnPacket bytes = Hex(kReadReply);
  const ZnSMBCDecode reply(bytes);
  ASSERT_TRUE(reply.valid);
  EXPECT_TRUE(reply.header.reply && reply.header.nt_status && !reply.header.unicode);
  EXPECT_EQ(reply.DataStart(), 45U);
  ZnSMBCRead_RespWords words;
  ZnSMBCFileBlock block;
  ZnSmbReader data = reply.Data();
  EXPECT_TRUE(reply.ReadWords(words) && words.count == 5);
  EXPECT_TRUE(block.Read(data) && block.length == 5 && data.Remaining() == 5);

  for (size_t length = 0; length < bytes.Length(); length++) {
    const ZnSMBCDecode cut{ZnPacket(bytes.Data(), length)};
    EXPECT_FALSE(cut.valid) << length;
    EXPECT_EQ(cut.Words().Remaining() + cut.Data().Remaining(), 0U) << length;
  }
  bytes.Append(uint8_t{1});
  EXPECT_TRUE(ZnSMBCDecode(bytes) == reply) << "what follows the data is ignored";
}

TEST(SmbMessage, AChainedCommandIsRefused) {
  const std::pair<const char*, bool> cases[] = {
      {"ff002a00", true}, {"75002900", false}, {"ff010000", false}, {"00000000", false}};
  for (const auto& [words, good] : cases) EXPECT_EQ(ZnSMBCNoChainedCommand().Read(Hex(words)), good) << words;
}

}  // namespace
