// How connections begin and end: dialects, logons, refusals, lost and confused conversations.

#include "smb_client/client_fixture.h"

namespace {

using namespace std::string_literals;
using smb_script::Reply;
using testing::ElementsAre;

constexpr ZnSMBLogonRules kLm{false, ZnMinAuth::Lm};

class Connection : public ClientTest {};

// It has no way to connect "IPC$", but its trees and files can be used.
TEST_F(Connection, OldestDialectServesFilesWithoutLogonSucceeding) {
  server.dialect = 0;
  client.logonrules(kAnyLogon);
  Connect();
  EXPECT_THAT(Asked(), ElementsAre(kNegotiate, kSetup, kOldTree));
  EXPECT_EQ(Last().data, "\4\\\\PEER\\SHARE\0\4secret\0\4A:\0"s);
  ZnByteBuffer buffer;
  EXPECT_EQ(client.ReadFile(OpenFile(), 1000, 4, &buffer, nullptr), kSuccess);
  EXPECT_EQ(buffer.Length(), server.content.size() - 4);
  EXPECT_EQ(Last().Word(1), 1024U - 200U);
  ZnDList<ZnSMBCShareObject> shares;
  EXPECT_EQ(Reason(client.ListShares(&shares, nullptr, false)), Values::ErrNotConnected);
}

// What a session setup and a tree connect carry as passwords. Responses are known from their length; their bytes are
// tested with the real server.
TEST_F(Connection, LogonsTakeTheFormTheServerWants) {
  const struct {
    const char* what;
    ZnSMBLogonRules rules;
    unsigned dialect, security;
    const char *user, *password;
    std::string logon;  // empty: responses
    size_t first, second;
    std::string tree;  // empty: a response
  } cases[] = {
      {"user level, encrypted", {}, 2, 3, "user", "Pass", "", 24, 24, "\0"s},
      {"the same, with the LAN manager's", kLm, 2, 3, "user", "Pass", "", 24, 24, "\0"s},
      {"user level, encrypted, older", kLm, 1, 3, "user", "Pass", "", 24, 0, "\0"s},
      {"anonymous", {}, 2, 3, "", "", "", 0, 0, "\0"s},
      {"a user without password", {}, 1, 3, "user", "", "", 24, 0, "\0"s},
      {"user level, clear text", {true}, 2, 1, "user", "Pass", "PASS\0"s, 5, 0, "\0"s},
      {"share level, clear text", {true}, 1, 0, "user", "Pass", "PASS\0"s, 5, 0, "Pass\0"s},
      {"share level, encrypted", {}, 2, 2, "user", "Pass", "", 24, 24, ""},
  };
  for (const auto& test : cases) {
    SCOPED_TRACE(test.what);
    server.dialect = test.dialect;
    server.securityMode = test.security;
    client.logonrules(test.rules);
    ASSERT_EQ(Open(test.user, test.password), kSuccess) << Why();
    ASSERT_EQ(ConnectTree(test.password), kSuccess) << Why();
    EXPECT_THAT(Asked(), ElementsAre(kNegotiate, kSetup, kTree, kTree));
    EXPECT_EQ(Last(3).data, "\2PC NETWORK PROGRAM 1.0\0\2Windows for Workgroups 3.1a\0\2NT LM 0.12\0"s);
    EXPECT_EQ(client.server().timezone, test.dialect == 2 ? -60 : 300);
    const auto& setup = Last(2);
    EXPECT_EQ(setup.Word(7), test.first);
    EXPECT_EQ(test.dialect == 2 ? setup.Word(8) : 0U, test.second);
    EXPECT_EQ(setup.data.substr(0, test.logon.size()), test.logon);
    if (test.second > 0) {
      const bool lm = setup.data.substr(0, 24) != setup.data.substr(24, 24);
      EXPECT_EQ(lm, test.rules.minauth == ZnMinAuth::Lm) << "otherwise the NT response stands in both";
    }
    EXPECT_EQ(setup.data.substr(test.first + test.second, strlen(test.user) + 1), test.user + "\0"s);
    EXPECT_EQ(Last().Word(3), test.tree.empty() ? 24U : test.tree.size());
    EXPECT_EQ(Last().data.substr(0, test.tree.size()), test.tree);
    client.Disconnect();
  }
}

// Anybody can say that he is the server and knows no better.
TEST_F(Connection, NoPasswordGoesOutInAFormThatIsTooWeak) {
  const struct {
    ZnSMBLogonRules rules;
    unsigned dialect, security;
    Values::Reason refused;
  } cases[] = {
      {{}, 0, 0, Values::ErrClearPassword},
      {{}, 2, 1, Values::ErrClearPassword},
      {kLm, 1, 0, Values::ErrClearPassword},
      {{}, 1, 3, Values::ErrWeakLogon},
      {{true, ZnMinAuth::Ntlmv2}, 2, 3, Values::ErrWeakLogon},
  };
  for (const auto& test : cases) {
    server.dialect = test.dialect;
    server.securityMode = test.security;
    client.logonrules(test.rules);
    EXPECT_EQ(Reason(Open()), test.refused);
    client.Disconnect();
    server.securityMode &= 2;  // share level: nothing to hide in the logon, but in the tree connect
    Open("", "");
    EXPECT_EQ(Reason(ConnectTree("secret")), test.refused);
    for (const int asked : Asked()) EXPECT_THAT(asked, testing::AnyOf(kNegotiate, kSetup, kTree));
    for (const auto& request : peer.requests) EXPECT_EQ(request.data.find("ecret"), std::string::npos);
    client.Disconnect();
  }
}

// Whatever size a server announces, nothing wraps, and files can be read and written.
TEST_F(Connection, TinyBuffersDoNoHarm) {
  for (unsigned buffer : {0U, 1U, 47U, 48U, 199U, 200U, 299U, 300U, 0x10000U, 0xFFFFU}) {
    SCOPED_TRACE(buffer);
    server.maxBuffer = buffer;
    Connect();
    EXPECT_EQ(Last(2).Word(2), buffer & 0xFFFF) << "session setup returns it";
    ZnSMBCFileObject file = OpenFile();
    ZnByteBuffer read;
    EXPECT_EQ(client.ReadFile(file, 65535, 0, &read, nullptr), kSuccess) << Why();
    EXPECT_EQ(read.Length(), server.content.size());
    EXPECT_EQ(Last().Word(1), client.maxbuffersize() - 200U);
    const std::string data(1000, 'x');
    EXPECT_EQ(client.WriteFile(file, 0, ZnByteBuffer(data.data(), data.size()), nullptr), kSuccess) << Why();
    client.Disconnect();
  }
}

// ---- out of step ----------------------------------------------------------------------------------------------------

TEST_F(Connection, LateReplyIsTakenOutAndTold) {
  Connect();
  Replace(kDelete, Silence);
  client.replytimeout(3);
  EXPECT_EQ(Reason(Delete()), Values::ErrTimedOut);
  EXPECT_TRUE(client.OutOfStep());
  EXPECT_TRUE(client.IsConnected());
  peer.Send(Reply(Last()));
  LetPass(5);
  EXPECT_FALSE(client.HasMessage());
  Again();
  EXPECT_EQ(Delete(), kSuccess) << "nothing of the old conversation is left";
}

TEST_F(Connection, AReplyThatComesWhileIdleIsNoticed) {
  Connect();
  Replace(kDelete, [](const auto& request) { return Messages{Reply(request), Reply(request)}; });
  EXPECT_EQ(Delete(), kSuccess);
  LetPass(5);
  EXPECT_TRUE(client.OutOfStep()) << "by the second reply";
}

TEST_F(Connection, DisconnectWithdrawsTheOperation) {
  Connect();
  ZnByteBuffer buffer;
  ZnSMBCFileObject file = OpenFile();
  EXPECT_EQ(client.ReadFile(file, 100, 0, &buffer, Done()), kPending);
  client.Disconnect();
  LetPass(20000);
  EXPECT_EQ(fired, 0U);
  EXPECT_TRUE(buffer.IsEmpty());
  EXPECT_EQ(client.ReadFile(file, 100, 0, &buffer, nullptr), kFailure) << "its tree belonged to the old connection";
  Connect();
}

}  // namespace
