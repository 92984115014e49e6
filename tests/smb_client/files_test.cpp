// Replies to single requests of servers that contradict themselves. What a real server does is shown with it.

#include "smb_client/client_fixture.h"

namespace {

using namespace std::string_literals;
using smb_script::Reply;
using smb_script::TransReply;
using smb_script::U16;

class Files : public ClientTest {};

ScriptedSmbPeer::Script Answer(const std::string& words, const std::string& data = "") {
  return [=](const auto& request) { return Messages{Reply(request, words, data)}; };
}

TEST_F(Files, ServersThatContradictThemselvesAreFound) {
  ZnByteBuffer buffer;
  ZnSMBCFileObject file;
  const ZnByteBuffer data("xxxxxxxxxx", 10);
  auto open = [&] { return client.OpenFile(&(file = File()), Values::DenyNone, false, Values::OFOpen, nullptr); };
  auto read = [&] { return client.ReadFile(OpenFile(), 10, 0, &buffer, nullptr); };
  auto write = [&] { return client.WriteFile(OpenFile(), 0, data, nullptr); };
  auto download = [&] { return client.DownloadFile(File(), &buffer, nullptr); };
  auto remove = [&] { return Delete(); };
  auto info = [&] { return client.GetFileInfo(&file, Values::FileInfoSize, nullptr); };
  const std::string zeros(8, '\0'), longer(24, 'c');
  const struct {
    const char* what;
    std::function<Result()> run;
    int command;
    Script answer;
    Values::Reason reason = Values::ErrRead;
  } cases[] = {
      {"another multiplex id", remove, kDelete,
       [](auto request) { return Messages{(request.mid += 2, Reply(request))}; }},
      {"another command", remove, kDelete,
       [](auto request) { return Messages{(request.command = 7, Reply(request))}; }},
      {"no SMB", remove, kDelete, [](const auto&) { return Messages{"hello"}; }},
      {"nothing at all", remove, kDelete, [](const auto&) { return Messages{""}; }},
      {"no access granted", open, kOpen, Answer("\xFF"s + std::string(15, '\0') + U16(3) + std::string(12, '\0')),
       Values::ErrBadValue},
      {"a further command", open, kOpen, Answer("\x2E"s + std::string(29, '\0'))},
      {"counts differ", read, kRead, Answer(U16(3) + zeros, "\1\2\0ab"s), Values::ErrBadValue},
      {"more than asked for", read, kRead, Answer(U16(11) + zeros, "\1\x0B\0abcdefghijk"s), Values::ErrBadValue},
      {"fewer than said", read, kRead, Answer(U16(5) + zeros, "\1\5\0abc"s), Values::ErrBadValue},
      {"no data block", read, kRead, Answer(U16(3) + zeros, "\5\3\0abc"s)},
      {"reserved words used", read, kRead, Answer(U16(3) + "\1" + zeros.substr(1), "\1\3\0abc"s)},
      {"less written", write, kWrite, Answer(U16(9)), Values::ErrServer},
      {"more written", write, kWrite, Answer(U16(11)), Values::ErrServer},
      {"no count", write, kWrite, Answer("")},
      {"longer than said", download, kRead, Answer(U16(24) + zeros, "\1\x18\0"s + longer), Values::ErrBadValue},
      {"shorter than said", download, kRead, Answer(U16(0) + zeros, "\1\0\0"s), Values::ErrBadValue},
      {"size of the wrong size", info, kTrans2,
       [](const auto& request) { return Messages{TransReply(request, "", std::string(21, '\0'))}; }},
  };
  for (const auto& test : cases) {
    SCOPED_TRACE(test.what);
    Again();
    EXPECT_FALSE(client.OutOfStep());
    file = File();
    Replace(test.command, test.answer);
    EXPECT_EQ(Reason(test.run()), test.reason);
    EXPECT_EQ(client.OutOfStep(), test.reason == Values::ErrRead);
    EXPECT_FALSE(file.isopen);
  }

  Again();
  Replace(kRead, Answer(U16(3) + zeros, "\1\3\0abc and what isn't the file's"s));
  EXPECT_EQ(read(), kSuccess);
  EXPECT_EQ(buffer, ZnByteBuffer("abc", 3));
}

}  // namespace
