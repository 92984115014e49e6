// A conversation through every kind of reply, with each reply cut at every place and changed in every byte. Whatever
// comes, each operation ends, and the client is good for another connection.

#include "smb_client/operations_fixture.h"

namespace {

class HostileReplies : public OperationsTest, public testing::WithParamInterface<int> {
 protected:
  void SetUp() override {
    server.dialect = static_cast<unsigned>(GetParam());
    server.capabilities = kAll;
    server.entriesARound = 2;
    peer.script = [this](const Request& request) {
      auto messages = server(request);
      for (auto& message : messages) {
        if (replies.size() == target) change(message);
        replies.push_back(message);
      }
      return messages;
    };
    settings.replytimeout = 1;
    client->Settings(settings);
  }

  // Goes as far as the server lets it, from the beginning or on the connection that there is.
  void Converse(bool anew = true) {
    replies.resize(anew ? 0 : connecting);
    finished = false;
    if (anew) client->Disconnect();
    if (anew) tree = ZnSMBCTreeObject();
    ZnSMBCFileObject file;
    ZnSMBDiskSpace space;
    listed.Flush();
    const std::vector<Begin> steps = {
        Connecting(),
        ConnectingTree(),
        [&](ZnSmbDone done) { return Opening(&(file = File()))(std::move(done)); },
        Reading(0, 1000),
        Writing(0, "abc"),
        Resizing(5),
        Closing(),
        Listing(),
        [&](ZnSmbDone done) { return client->SetInfo(kCaller, File(), {}, std::move(done)); },
        [&](ZnSmbDone done) { return client->Move(kCaller, File(), File(), std::move(done)); },
        [&](ZnSmbDone done) { return client->GetDiskSpace(kCaller, tree, &space, std::move(done)); },
    };
    for (size_t i = anew ? 0 : kConnecting; i < steps.size(); i++) {
      if (i == kConnecting) connecting = replies.size();
      const Reason reason = ReasonOf(steps[i]);
      ASSERT_NE(reason, Values::ErrInternal);
      if (reason != Values::ErrNone) return;
    }
    finished = true;
  }
  static constexpr size_t kConnecting = 2;  // the steps before others

  // There are many, and the host has a limited number of ports to connect from.
  void ConverseWith(std::function<void(std::string&)> how) {
    change = std::move(how);
    Converse(target < connecting || !client->IsConnected() || tree.tid == ZnSMBCTreeObject::kNotConnected);
  }

  std::vector<std::string> replies;
  size_t connecting = 0;                             // replies that belong to this
  size_t target = SIZE_MAX;                          // the reply that is changed
  std::function<void(std::string& message)> change;  // in this way
  bool finished = false;                             // all steps, or not
};

// With counts that hold: the words and the data end early, and nothing else is wrong.
void CutWords(std::string& message, size_t words) {
  const size_t whole = static_cast<uint8_t>(message[32]);
  message.erase(33 + 2 * words, 2 * (whole - words));
  message[32] = static_cast<char>(words);
}
void CutData(std::string& message, size_t length) {
  const size_t start = 35 + 2 * static_cast<size_t>(static_cast<uint8_t>(message[32]));
  message.resize(start + length);
  message.replace(start - 2, 2, U16(static_cast<unsigned>(length)));
}

TEST_P(HostileReplies, CutAndChangedRepliesEndTheOperation) {
  Converse();
  ASSERT_TRUE(finished);
  const auto whole = replies;
  unsigned noticed = 0;
  const auto note = [&] { noticed += finished ? 0 : 1; };
  for (target = 0; target < whole.size(); target++) {
    SCOPED_TRACE("reply " + std::to_string(target));
    const size_t words = static_cast<uint8_t>(whole[target][32]);
    for (size_t count = 0; count < words; count++) {
      ConverseWith([=](std::string& message) { CutWords(message, count); });
      note();
    }
    for (size_t length = 0; length < whole[target].size() - 35 - 2 * words; length++) {
      ConverseWith([=](std::string& message) { CutData(message, length); });
      note();
    }
    for (size_t at = 0; at < whole[target].size(); at++) {
      SCOPED_TRACE("byte " + std::to_string(at));
      ConverseWith([=](std::string& message) { message[at] = static_cast<char>(~message[at]); });
      note();
      if (HasFatalFailure()) return;
    }
    ConverseWith([](std::string& message) { message.resize(message.size() / 2); });
    ASSERT_FALSE(finished);
  }
  EXPECT_GT(noticed, 100U) << "some of the changes have to be noticed";
  Converse();
  EXPECT_TRUE(finished) << "the client is as good as new";
}

INSTANTIATE_TEST_SUITE_P(Dialects, HostileReplies, testing::Values(0, 1, 2));

}  // namespace
