// A conversation through every kind of reply, with each reply cut at every place and changed in every byte. Whatever
// comes, each operation ends with a result, and the client is good for another connection.

#include "smb_client/client_fixture.h"

namespace {

using namespace std::string_literals;
using smb_script::TransReply;
using smb_script::U16;
using smb_script::U32;

class HostileBytes : public ClientTest {
 protected:
  void SetUp() override {
    server.capabilities = 4;
    server.entries = 3;
    server.entriesARound = 2;
    Replace(kTransaction, [](const auto& request) {
      if (request.data.find("B13BWz") == std::string::npos) {
        return Messages{TransReply(request, U16(0) + U16(0) + U16(103), std::string(103, '\0'))};
      }
      std::string record = "DOCS\0\0\0\0\0\0\0\0\0\0"s + U16(0) + U32(20) + "a remark\0"s;
      return Messages{TransReply(request, U16(0) + U16(0) + U16(1) + U16(1), record.substr(0, 10), 8, 29),
                      TransReply(request, "", record.substr(10), 8, 29)};
    });
    peer.script = [this](const smb_script::Request& request) {
      auto messages = server(request);
      for (auto& message : messages) {
        if (replies.size() == target) change(message);
        replies.push_back(message);
      }
      return messages;
    };
    client.replytimeout(1);
  }

  // Goes as far as the server lets it; every call has to come back.
  void Converse() {
    replies.clear();
    client.Disconnect();
    ZnSMBCFileObject file;
    ZnSMBCUserObject user;
    ZnDList<ZnSMBCShareObject> shares;
    ZnByteBuffer buffer;
    listed.Flush();
    const std::function<Result()> calls[kCalls] = {
        [&] { return Open(); },
        [&] { return ConnectTree(""); },
        [&] { return file = File(), client.OpenFile(&file, Values::DenyNone, false, Values::OFOpen, nullptr); },
        [&] { return client.ReadFile(file, 1000, 0, &buffer, nullptr); },
        [&] { return client.WriteFile(file, 0, ZnByteBuffer("abc", 3), nullptr); },
        [&] { return client.CloseFile(&file, {}, nullptr); },
        [&] { return client.DownloadFile(File(), &buffer, nullptr); },
        [&] { return client.MoveFile(File(), File(), nullptr); },
        [&] { return List(); },
        [&] { return client.GetFileInfo(&file, Values::FileInfoSize, nullptr); },
        [&] { return client.SetFileInfo(file, {}, nullptr); },
        [&] { return client.ListShares(&shares, nullptr, false); },
        [&] { return client.GetUserInfo(&user, nullptr); },
    };
    finished = 0;
    for (const auto& call : calls) {
      Result result = call();
      ASSERT_FALSE(client.IsBusy());
      ASSERT_NE(client.reason(), Values::ErrInternal) << "the loop would have waited for ever";
      if (result != kSuccess) return;
      finished++;
    }
  }
  static constexpr unsigned kCalls = 13;

  std::vector<std::string> replies;
  size_t target = SIZE_MAX;                          // the reply that is changed
  std::function<void(std::string& message)> change;  // in this way
  unsigned finished = 0;
};

TEST_F(HostileBytes, CutAndChangedRepliesEndTheOperation) {
  Converse();
  ASSERT_EQ(finished, kCalls) << Why();
  const auto whole = replies;
  unsigned noticed = 0;
  for (target = 0; target < whole.size(); target++) {
    for (size_t at = 0; at < whole[target].size(); at++) {
      SCOPED_TRACE("reply " + std::to_string(target) + ", byte " + std::to_string(at));
      change = [at](std::string& message) { message.resize(at); };
      Converse();
      ASSERT_LT(finished, kCalls);
      ASSERT_EQ(client.reason(), Values::ErrRead);
      ASSERT_TRUE(client.OutOfStep());
      for (char flip : {'\xFF', '\1'}) {
        change = [at, flip](std::string& message) { message[at] = static_cast<char>(message[at] ^ flip); };
        Converse();
        if (HasFatalFailure()) return;
        noticed += finished < kCalls;
      }
    }
  }
  EXPECT_GT(noticed, 100U) << "some of the changes have to be noticed";
  Converse();
  EXPECT_EQ(finished, kCalls) << "the client is as good as new: " << Why();
}

}  // namespace
