#include "smb/wire/lanman_sections.h"

#include "support/layout_check.h"

namespace {

using V = ZnSMBClientValues;
constexpr ZnEncoding kOem = ZnCodeset::Cp850;

#define QUEUE_HEX                                                                                            \
  "51000000000000000000000000 00 0500 0000 0000 00000000 00000000 00000000 00000000 09000000 0100 0100"      \
  "0700 750000000000000000000000000000000000000000 00 00000000000000000000000000000000 00000000000000000000" \
  "00000000 0100 0300 00000000 00000000 4d000000 00000000"
// What a real server said of a user.
#define USER_HEX                                                                                                      \
  "746573746572000000000000000000000000000000 00 56000000 5e000000 6a000000 0100 00000000 ffffffff 71000000 7f000000" \
  "00000000 00000000 ffff ffff 80000000 0000 84000000 ffffffff a800 85000000 0000 436f6d6d656e740055736572436f6d6d65"

TEST(LanmanSections, Records) {
  const auto reply = [](V::LanmanIPC api, uint16_t entries, const char* descriptor) {
    return ZnSMBCLanman_RespData(api, entries, 0, descriptor);
  };
  CheckLayout(reply(V::IPCNetShareEnum, 2, "B13BWz"),
              "53484152450000000000000000 00 0000 28000000 49504324000000000000000000 00 0300 29000000");
  const auto server = CheckLayout(reply(V::IPCNetServerEnum, 1, "B16BBDDz"),
                                  "4f544845520000000000000000000000 04 09 03100040 05000000 34000000");
  EXPECT_EQ(server.servers[0].second, 5U);
  EXPECT_EQ(server.servers[0].comment, 0x34U);
  CheckLayout(reply(V::IPCNetRemoteTOD, 1, "DDBBBBWWBBWB"), "2ba7036b 04000000 02 26 23 09 c4ff 1027 17 0b ea07 01",
              [](auto& s) {
                s.times = {{{}, 0x6b03a72b, 4, 2, 38, 35, 9, 0xFFC4, 10000, 23, 11, 2026, 1}};
              });

  const auto queue = CheckLayout(reply(V::IPCDOSPrintGetInfo, 1, ""), QUEUE_HEX).queues[0];
  EXPECT_EQ(std::tuple(queue.priority, queue.comment_at, queue.status), std::tuple(5, 9, 1));
  EXPECT_EQ(std::tuple(queue.jobs[0].job_id, queue.jobs[0].status, queue.jobs[0].size), std::tuple(7, 3, 77));
  const auto user = CheckLayout(reply(V::IPCNetUserGetInfo, 1, "B21BzzzWDDzzDDWWzWzDWb21W"), USER_HEX).users[0];
  EXPECT_EQ(std::tuple(user.comment_at, user.privilege, user.password_age), std::tuple(0x56, V::PrivUser, 0xFFFFFFFF));
  EXPECT_EQ(std::tuple(user.workstations_at, user.units_per_week), std::tuple(0x84, 168));
}

}  // namespace
