// The client against a real server, whose disk shows what has become of a request. Runs beside
// tests/support/with_smb_peer.

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <set>

#include "runtime/poll_event_loop.h"
#include "runtime/unix_process.h"
#include "smb/client/smb_client.h"

namespace {

namespace fs = std::filesystem;
using Values = ZnSMBClientValues;

std::string Setting(const char* name) {
  const char* value = getenv(name);
  if (!value) ADD_FAILURE() << name << " isn't set: run this through tests/support/with_smb_peer";
  return value ? value : "";
}

class RealPeer : public testing::Test {
 protected:
  static constexpr auto kSuccess = ZnSMBClient::ResultSuccess;
  static constexpr auto kFailure = ZnSMBClient::ResultFailure;

  ZnMachine Machine() const {
    ZnMachine machine(Setting("HALDEN_SMB_NAME"), ZnMachine::Server);
    ZnInetAddr address = ZnInetAddr::AddressLoopback();
    address.Port(std::stoi(Setting("HALDEN_SMB_PORT")));
    machine.Name(address);
    return machine;
  }
  ZnSMBClient::Result Open(const ZnUniString& user, const ZnUniString& password) {
    return client.OpenSession(Machine(), "TESTCLIENT", user, password, nullptr);
  }
  void SetUp() override {
    ASSERT_EQ(Open(Setting("HALDEN_SMB_USER"), Setting("HALDEN_SMB_PASSWORD")), kSuccess) << Why();
    tree = ZnSMBCTreeObject(Machine(), Setting("HALDEN_SMB_SHARE"), Values::ServiceDisk);
    ASSERT_EQ(client.TreeConnect(&tree, "", nullptr), kSuccess) << Why();
  }
  std::string Why() const { return client.ReasonAsString().AsUtf8(); }

  // A file of the share, as the client and as the server's host see it.
  ZnSMBCFileObject File(const std::string& name) const { return {tree, ZnUniString("\\" + name)}; }
  fs::path OnDisk(const std::string& name) const { return fs::path(Setting("HALDEN_SMB_ROOT")) / name; }
  void WriteOnDisk(const std::string& name, const std::string& content) const {
    std::ofstream(OnDisk(name), std::ios::binary) << content;
  }
  std::string ReadOnDisk(const std::string& name) const {
    std::ifstream in(OnDisk(name), std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
  }
  ZnSMBCFileObject OpenFile(const std::string& name, Values::Access access, bool create = false,
                            bool truncate = false) {
    ZnSMBCFileObject file = File(name);
    file.access = access;
    EXPECT_EQ(client.OpenFile(&file, Values::DenyNone, create, truncate, nullptr), kSuccess) << name << Why();
    return file;
  }
  void Close(ZnSMBCFileObject& file, const ZnTimeVal& time = {}) {
    EXPECT_EQ(client.CloseFile(&file, time, nullptr), kSuccess) << Why();
  }
  // The names in a directory, without "." and "..".
  std::multiset<std::string> List(const std::string& directory, const std::string& pattern = "*") {
    listed.Flush();
    ZnSMBCDirectoryObject object(tree, ZnUniString("\\" + directory));
    EXPECT_EQ(client.ListDirectory(object, &listed, pattern, nullptr), kSuccess) << Why();
    std::multiset<std::string> names;
    for (const auto& file : listed) {
      if (file.path != "." && file.path != "..") names.insert(file.path.AsUtf8());
    }
    return names;
  }
  // The one file of that name, as a listing shows it.
  ZnSMBCFileObject Listed(const std::string& name) {
    EXPECT_EQ(List("", name), std::multiset<std::string>{name});
    return listed.IsEmpty() ? ZnSMBCFileObject() : listed[0];
  }
  // What the server refuses an operation with: class in the low byte, code above.
  unsigned Refusal(ZnSMBClient::Result result) const {
    EXPECT_EQ(result, kFailure);
    EXPECT_EQ(client.reason(), Values::ErrSMB);
    return client.errorkey();
  }

  ZnUnixProcess process;
  ZnEventLoop loop{&process};
  ZnSMBClient client{&loop};
  ZnSMBCTreeObject tree;
  ZnDList<ZnSMBCFileObject> listed;
};

std::string Bytes(const ZnByteBuffer& buffer) {
  return {reinterpret_cast<const char*>(buffer.Data()), buffer.Length()};
}

TEST_F(RealPeer, LogsOnWithTheRightPasswordOnly) {
  const std::string user = Setting("HALDEN_SMB_USER");
  const std::string password = Setting("HALDEN_SMB_PASSWORD");
  client.Disconnect();
  EXPECT_EQ(Refusal(Open(user, "wrong")), 5 * 256 + 1U);
  EXPECT_THAT(Why(), testing::Not(testing::HasSubstr("wrong")));
  EXPECT_FALSE(client.OutOfStep());
  EXPECT_EQ(client.OpenSessionRetry(user, password, nullptr), kSuccess) << Why();
  EXPECT_EQ(client.server().dialect, Values::DialectNT);
  EXPECT_TRUE(client.server().domain.StartsWith(Setting("HALDEN_SMB_WORKGROUP")));
  EXPECT_EQ(Open(user, password), kFailure);
  EXPECT_EQ(client.reason(), Values::ErrConnected);
  client.Disconnect();
  EXPECT_EQ(Open("", ""), kSuccess) << "anonymous: " << Why();
  client.Disconnect();
  EXPECT_EQ(Open(user, ""), kFailure);
}

TEST_F(RealPeer, ListsDirectoriesOfAnySize) {
  for (int count : {0, 1, 20, 21, 10000}) {
    const std::string directory = "list" + std::to_string(count);
    fs::create_directory(OnDisk(directory));
    std::multiset<std::string> expected;
    for (int i = 0; i < count; i++) {
      expected.insert("file " + std::to_string(i) + ".dat");
      WriteOnDisk(directory + "/file " + std::to_string(i) + ".dat", "");
    }
    EXPECT_EQ(List(directory), expected) << count;
    fs::remove_all(OnDisk(directory));
  }
  // Listings that left their searches open would run out of them after about 1,800.
  WriteOnDisk("one", "");
  for (int i = 0; i < 5000 && !HasFailure(); i++) Listed("one");
}

TEST_F(RealPeer, WritesWhatItReads) {
  std::string content;
  for (size_t i = 0; content.size() < 3UL * client.maxbuffersize(); i++) content += std::to_string(i * 7919) + ",";
  ZnSMBCFileObject file = OpenFile("data", Values::AccessReadWrite, true);
  EXPECT_EQ(client.WriteFile(file, 0, ZnByteBuffer(content.data(), content.size()), nullptr), kSuccess) << Why();
  EXPECT_EQ(client.FlushFile(file, nullptr), kSuccess) << Why();
  EXPECT_EQ(ReadOnDisk("data"), content);

  ZnByteBuffer buffer;
  std::string back;
  do {
    ASSERT_EQ(client.ReadFile(file, 65535, static_cast<uint32_t>(back.size()), &buffer, nullptr), kSuccess) << Why();
    back += Bytes(buffer);
  } while (!buffer.IsEmpty());
  EXPECT_EQ(back, content);

  EXPECT_EQ(client.WriteFile(file, 1000, ZnByteBuffer(), nullptr), kSuccess) << "a write of nothing cuts the file";
  Close(file);
  EXPECT_EQ(ReadOnDisk("data"), content.substr(0, 1000));
  EXPECT_EQ(client.DownloadFile(File("data"), &buffer, nullptr), kSuccess) << Why();
  EXPECT_EQ(Bytes(buffer), content.substr(0, 1000));
}

TEST_F(RealPeer, OpensCreatesAndTruncates) {
  ZnSMBCFileObject missing = File("missing");
  EXPECT_EQ(Refusal(client.OpenFile(&missing, Values::DenyNone, false, false, nullptr)), 2 * 256 + 1U);
  WriteOnDisk("old", "some content");
  ZnSMBCFileObject old = OpenFile("old", Values::AccessRead);
  EXPECT_EQ(old.size, 12U);
  EXPECT_EQ(client.OpenFile(&old, Values::DenyNone, false, false, nullptr), kFailure);
  EXPECT_EQ(client.reason(), Values::ErrBadFID);
  EXPECT_EQ(client.WriteFile(old, 0, ZnByteBuffer("x", 1), nullptr), kFailure) << "it is open for reading";
  Close(old);
  old = OpenFile("old", Values::AccessWrite, false, true);
  Close(old);
  EXPECT_EQ(ReadOnDisk("old"), "");
}

TEST_F(RealPeer, RenamesDeletesAndMakesDirectories) {
  WriteOnDisk("before", "content");
  EXPECT_EQ(client.CreateDir(File("made"), nullptr), kSuccess) << Why();
  EXPECT_TRUE(fs::is_directory(OnDisk("made")));
  EXPECT_EQ(client.RenameFile(File("before"), "\\made\\inside", nullptr), kSuccess) << Why();
  EXPECT_FALSE(fs::exists(OnDisk("before")));
  EXPECT_EQ(ReadOnDisk("made/inside"), "content");
  EXPECT_EQ(Refusal(client.DeleteDir(File("made"), nullptr)), 145 * 256 + 1U) << "it isn't empty";
  EXPECT_EQ(client.DeleteFile(File("made\\inside"), nullptr), kSuccess) << Why();
  EXPECT_EQ(client.DeleteDir(File("made"), nullptr), kSuccess) << Why();
  EXPECT_FALSE(fs::exists(OnDisk("made")));
  EXPECT_EQ(Refusal(client.MoveFile(File("x"), File("y"), nullptr)), 22 * 256 + 2U) << "it doesn't know how to move";
}

TEST_F(RealPeer, SetsAttributesAndTimes) {
  WriteOnDisk("file", "abc");
  ZnSMBCFileObject file = File("file");
  file.attribs.hidden = file.attribs.read_only = true;
  EXPECT_EQ(client.SetAttributes(file, nullptr), kSuccess) << Why();
  EXPECT_EQ(Listed("file").attribs, file.attribs);
  file.attribs = ZnSMBCFileAttributes();
  file.attribs.archive = true;
  EXPECT_EQ(client.SetAttributes(file, nullptr), kSuccess) << Why();

  file = OpenFile("file", Values::AccessReadWrite);
  file.created = file.accessed = file.modified = {1200000000, 0};
  EXPECT_EQ(client.SetTimes(file, nullptr), kSuccess) << Why();
  EXPECT_EQ(Listed("file").modified.seconds, 1200000000U);
  file.modified = {1300000000, 0};
  EXPECT_EQ(client.SetFileInfo(file, nullptr), kSuccess) << Why();
  EXPECT_EQ(Listed("file").modified.seconds, 1300000000U);
  Close(file, {1400000000, 0});
  EXPECT_EQ(Listed("file").modified.seconds, 1400000000U);
  file.modified = {1500000000, 0};
  EXPECT_EQ(client.SetFileInfo(file, nullptr), kSuccess) << "not open any more: " << Why();
  EXPECT_EQ(Listed("file").modified.seconds, 1500000000U);
}

TEST_F(RealPeer, ReadsFileInformationAtEachLevel) {
  const std::string name = "file with a longer Größe";
  WriteOnDisk(name, std::string(70000, 'x'));
  const timespec times[2] = {{1100000000, 0}, {1234567890, 0}};
  utimensat(AT_FDCWD, OnDisk(name).c_str(), times, 0);

  auto info = [&](Values::FileInfoLevel level) {
    ZnSMBCFileObject file = File(name);
    file.modified = {};
    EXPECT_EQ(client.GetFileInfo(&file, level, nullptr), kSuccess) << level << Why();
    return file;
  };
  for (const auto& file : {info(Values::FileInfoOldAttribs), Listed(name)}) {
    EXPECT_EQ(file.size, 70000U);
    EXPECT_EQ(file.modified.seconds, 1234567890U);
    EXPECT_FALSE(file.attribs.directory);
  }
  EXPECT_EQ(info(Values::FileInfoAttribs).modified.seconds, 1234567890U);
  EXPECT_EQ(info(Values::FileInfoAll).modified.seconds, 1234567890U);
  EXPECT_EQ(info(Values::FileInfoSize).size, 70000U);
  EXPECT_EQ(info(Values::FileInfoName).altname, ("\\" + name).c_str());
  EXPECT_FALSE(info(Values::FileInfoAltname).altname.IsEmpty());
  ZnSMBCFileObject missing = File("missing");
  EXPECT_EQ(Refusal(client.GetFileInfo(&missing, Values::FileInfoSize, nullptr)), 2 * 256 + 1U);
}

TEST_F(RealPeer, AnswersQuestionsAboutItself) {
  ZnSMBCTreeObject missing(Machine(), "NOTHERE", Values::ServiceDisk);
  EXPECT_EQ(Refusal(client.TreeConnect(&missing, "", nullptr)), 67 * 256 + 1U);
  ZnDList<ZnSMBCShareObject> shares;
  EXPECT_EQ(client.ListShares(&shares, nullptr, false), kSuccess) << Why();
  std::set<std::string> names;
  for (const auto& share : shares) names.insert(share.share.AsUtf8());
  EXPECT_THAT(names, testing::IsSupersetOf({Setting("HALDEN_SMB_SHARE"), std::string("IPC$")}));
  EXPECT_EQ(client.ListShares(&shares, nullptr, true), kFailure) << "this server doesn't know the long form";
  EXPECT_EQ(client.ipcstatus(), 50U);

  for (bool longNames : {false, true}) {
    ZnDList<ZnSMBCServerObject> servers;
    EXPECT_EQ(client.ListServers(Setting("HALDEN_SMB_WORKGROUP"), &servers, 0xFFFFFFFF, longNames, nullptr), kSuccess)
        << Why();
    std::set<std::string> comments;
    for (const auto& server : servers) comments.insert(server.name.AsUtf8() + ": " + server.comment.AsUtf8());
    EXPECT_THAT(comments, testing::Contains("OTHER: another one")) << longNames;
  }
  ZnSMBCUserObject user;
  user.name = Setting("HALDEN_SMB_USER");
  EXPECT_EQ(client.GetUserInfo(&user, nullptr), kSuccess) << Why();
  EXPECT_EQ(user.name, Setting("HALDEN_SMB_USER").c_str());
  user.name = "nobodyknows";
  EXPECT_EQ(client.GetUserInfo(&user, nullptr), kFailure);
  EXPECT_EQ(client.ipcstatus(), 1332U);
  ZnSMBCTimeObject clock;
  EXPECT_EQ(client.GetServerTime(&clock, nullptr), kSuccess) << Why();
  EXPECT_NEAR(static_cast<double>(clock.time), static_cast<double>(time(nullptr)), 5.0);
}

}  // namespace
