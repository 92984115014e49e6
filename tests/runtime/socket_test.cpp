#include "runtime/socket.h"

#include <gtest/gtest.h>

#include <cstring>
#include <tuple>

namespace {

using IoStatus = ZnFile::IoStatus;

const ZnInetAddr kLoopback = ZnInetAddr::AddressLoopback();

TEST(Datagrams, StatusTellsHowTheBufferWasFilled) {
  ZnSocket receiver, sender;
  ZnInetAddr to, from, expected;
  ASSERT_TRUE(receiver.Bind(kLoopback, ZnSocket::Datagram, false, 0, false) && receiver.LocalAddress(to));
  ASSERT_TRUE(sender.Bind(kLoopback, ZnSocket::Datagram, false, 0, false) && sender.LocalAddress(expected));
  ASSERT_TRUE(receiver.SetBlocking(false));
  ASSERT_TRUE(receiver.SetReceiveBufferSize(40000));
  EXPECT_GE(receiver.GetReceiveBufferSize(), 40000U);
  // How many bytes are sent, what sending and receiving say of it, and the length received, if it is told.
  const std::tuple<size_t, IoStatus, IoStatus, size_t> cases[] = {
      {3, IoStatus::Complete, IoStatus::Partial, 3},
      {8, IoStatus::Complete, IoStatus::Complete, 99},
      {9, IoStatus::Complete, IoStatus::Complete, 99},
      {0, IoStatus::Closed, IoStatus::Closed, 99},
  };
  for (const auto& [sent, sending, receiving, received] : cases) {
    char buffer[8];
    size_t length = 0;
    EXPECT_EQ(sender.WriteMessage("123456789", sent, length, to), sending);
    length = 99;
    from = ZnInetAddr();
    EXPECT_EQ(receiver.ReadMessage(buffer, sizeof(buffer), length, from), receiving);
    EXPECT_EQ(length, received);
    EXPECT_EQ(from, expected);
    EXPECT_EQ(memcmp(buffer, "12345678", std::min<size_t>(sent, 8)), 0);
  }

  char buffer[8];
  size_t length = 99;
  EXPECT_EQ(receiver.ReadMessage(buffer, sizeof(buffer), length, from), IoStatus::Failed);
  EXPECT_TRUE(receiver.Error().IsEmpty());  // nothing there is no failure
}

}  // namespace
