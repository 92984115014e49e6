// How conversations begin and end: dialects, logons, refusals, lost connections, and handles that go early.

#include "smb_client/operations_fixture.h"

namespace {

using namespace std::string_literals;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr ZnSMBLogonRules kLm{false, ZnMinAuth::Lm};

class Client : public OperationsTest {
 protected:
  void Rules(const ZnSMBLogonRules& rules) {
    settings.rules = rules;
    client->Settings(settings);
  }
};

// It has neither logons nor "IPC$".
TEST_F(Client, OldestDialect) {
  server.dialect = 0;
  Connect();
  EXPECT_THAT(Asked(), ElementsAre(kNegotiate, kOldTree));
  EXPECT_EQ(Last().data, "\4\\\\PEER\\SHARE\0\4secret\0\4A:\0"s);
  EXPECT_EQ(ReasonOf(Reading(4, 1000)), Values::ErrNone);
  EXPECT_EQ(Read(), server.content.substr(4));
}

// What a session setup and a tree connect carry as passwords. Responses are known from their length; their bytes are
// tested with the real server.
TEST_F(Client, LogonsTakeTheFormTheServerWants) {
  const struct {
    const char* what;
    ZnSMBLogonRules rules;
    unsigned dialect, security;
    const char *user, *password;
    std::string logon;  // empty: responses
    size_t first, second;
    std::string tree;  // empty: a response
  } cases[] = {
      {"user level, encrypted", {}, 2, 3, "user", "Pass", "", 24, 52, "\0"s},
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
    Rules(test.rules);
    ASSERT_EQ(ReasonOf(Connecting(test.user, test.password)), Values::ErrNone);
    ASSERT_EQ(ReasonOf(ConnectingTree(test.password)), Values::ErrNone);
    EXPECT_THAT(Asked(), ElementsAre(kNegotiate, kSetup, kTree, kTree));
    EXPECT_EQ(Last(3).data, "\2PC NETWORK PROGRAM 1.0\0\2Windows for Workgroups 3.1a\0\2NT LM 0.12\0"s);
    EXPECT_EQ(client->server().timezone, test.dialect == 2 ? -60 : 300);
    const Request& setup = Last(2);
    EXPECT_EQ(setup.Word(7), test.first);
    EXPECT_EQ(test.dialect == 2 ? setup.Word(8) : 0U, test.second);
    EXPECT_EQ(setup.data.substr(0, test.logon.size()), test.logon);
    EXPECT_EQ(setup.data.substr(test.first + test.second, strlen(test.user) + 1), test.user + "\0"s);
    EXPECT_EQ(Last().Word(3), test.tree.empty() ? 24U : test.tree.size());
    EXPECT_EQ(Last().data.substr(0, test.tree.size()), test.tree);
  }
}

TEST_F(Client, ARefusedLogonIsTriedInTheNextForm) {
  Rules(kLm);
  std::vector<unsigned> lengths;  // of the second field
  Replace(kSetup, [&](const Request& request) {
    lengths.push_back(request.Word(8));
    return Messages{Refusal(request, 1, 5)};
  });
  const ZnSmbOutcome outcome = Run(Connecting());
  EXPECT_THAT(lengths, ElementsAre(52, 24, 0));
  EXPECT_EQ(outcome.Refusal(), 5U * 256 + 1);
  EXPECT_EQ(outcome.lastcommand, Values::CmdSessionSetupX);
  EXPECT_EQ(peer.connections, 1U);
  EXPECT_FALSE(client->IsConnected());
}

// Anybody can say that he is the server and knows no better.
TEST_F(Client, NoPasswordGoesOutInAFormThatIsTooWeak) {
  const struct {
    ZnSMBLogonRules rules;
    unsigned dialect, security;
    Reason refused;
  } cases[] = {
      {{}, 0, 0, Values::ErrNone},  // no logon
      {{}, 2, 1, Values::ErrClearPassword},
      {kLm, 1, 0, Values::ErrClearPassword},
      {{}, 1, 3, Values::ErrWeakLogon},
      {{true, ZnMinAuth::Ntlmv2}, 2, 2, Values::ErrWeakLogon},
      {{false, ZnMinAuth::Lm, ZnSigning::Never}, 2, 0xF, Values::ErrMustSign},
      {{false, ZnMinAuth::Lm, ZnSigning::Always}, 2, 3, Values::ErrCantSign},
  };
  for (const auto& test : cases) {
    SCOPED_TRACE(test.refused);
    server.dialect = test.dialect;
    server.securityMode = test.security;
    Rules(test.rules);
    EXPECT_EQ(ReasonOf(Connecting()), test.refused);
    if (test.refused == Values::ErrMustSign || test.refused == Values::ErrCantSign) continue;
    server.securityMode &= 2;  // share level: nothing to hide in the logon, but in the tree connect
    EXPECT_EQ(ReasonOf(Connecting("", "")), Values::ErrNone);
    EXPECT_EQ(ReasonOf(ConnectingTree()), test.dialect == 0 ? Values::ErrClearPassword : test.refused);
    for (const int asked : Asked()) EXPECT_THAT(asked, testing::AnyOf(kNegotiate, kSetup, kTree));
    for (const auto& request : peer.requests) EXPECT_EQ(request.data.find("ecret"), std::string::npos);
  }
}

// A challenge that isn't one, and a server that never has enough.
TEST_F(Client, TokensThatLeadNowhere) {
  server.capabilities = 0x80000000;
  const std::string challenge =
      "NTLMSSP\0\2\0\0\0\0\0\0\0\x38\0\0\0\x15\x82\x88\xE0"s + "12345678" + std::string(24, '\0');
  for (const std::string& token : {challenge, "hello"s, ""s, challenge.substr(0, 40)}) {
    Replace(kSetup, [&](Request request) {
      request.uid = 9;
      std::string reply = Reply(request, "\xFF\0\0\0"s + U16(0) + U16(static_cast<unsigned>(token.size())), token);
      reply.replace(5, 4, "\x16\0\0\xC0"s);
      return Messages{reply};
    });
    Asked();
    EXPECT_EQ(ReasonOf(Connecting()), Values::ErrBadValue);
    EXPECT_EQ(Asked().size(), token == challenge ? 3U : 2U);
    EXPECT_EQ(Last().uid, token == challenge ? 9U : 0U);
  }
}

// Whatever size a server announces, nothing wraps, and files can be read and written.
TEST_F(Client, TinyBuffersDoNoHarm) {
  for (const unsigned size : {0U, 1U, 47U, 48U, 259U, 260U, 299U, 300U, 0x10000U, 0xFFFFU}) {
    for (const unsigned dialect : {1U, 2U}) {
      SCOPED_TRACE(size);
      server.maxBuffer = size;
      server.dialect = dialect;
      Connect();
      EXPECT_EQ(Last(2).Word(2), dialect == 2 ? 0xFFFFU : size & 0xFFFF);
      EXPECT_EQ(ReasonOf(Reading(0, 1000)), Values::ErrNone);
      EXPECT_EQ(Read(), server.content);
      EXPECT_EQ(ReasonOf(Writing(0, std::string(1000, 'x'))), Values::ErrNone);
    }
  }
}

// ---- ends

TEST_F(Client, ConnectingFailsAtEveryStep) {
  const std::vector<int> steps = {kNegotiate, kSetup, kTree};
  for (size_t i = 0; i < steps.size(); i++) {
    SCOPED_TRACE(steps[i]);
    const std::pair<Script, Reason> ways[] = {
        {[](const Request& request) { return Messages{Refusal(request, 2, 1)}; }, Values::ErrSMB},
        {[](const Request& request) { return Messages{Reply(request, "", "")}; }, Values::ErrRead},
        {[this](const Request&) { return peer.HangUp(), Messages(); }, Values::ErrDisconnect},
        {&Silence, Values::ErrTimedOut},
    };
    for (const auto& [script, reason] : ways) {
      server.replaced.clear();
      Replace(steps[i], script);
      Asked();
      const ZnSmbOutcome outcome = Run(Connecting());
      EXPECT_EQ(outcome.reason, reason);
      EXPECT_EQ(outcome.lastcommand, steps[i]);
      EXPECT_EQ(Asked().size(), i + 1);
      EXPECT_FALSE(client->IsConnected());
    }
    // A handle that goes ends the connection that it made.
    Replace(steps[i], &Silence);
    ZnSmbCall call = Connecting()([](const ZnSmbOutcome&) { FAIL() << "withdrawn"; });
    LetPass(5);
    EXPECT_EQ(Asked().size(), i + 1);
    call.reset();
    LetPass(20000);
    Again();
  }
  EXPECT_THAT(lost, IsEmpty()) << "the connecting tells of its end itself";
}

TEST_F(Client, NothingIsSentWhereNothingCanCome) {
  const ZnSmbOutcome outcome = Run(Deleting());
  EXPECT_EQ(outcome.reason, Values::ErrNotConnected);
  EXPECT_TRUE(outcome.unserved);
  Connect();
  Asked();
  tree.tid = 77;
  EXPECT_EQ(ReasonOf(Deleting()), Values::ErrBadTID);
  tree.tid = 2;
  ZnSMBCFileObject opened = OpenFile();
  EXPECT_EQ(ReasonOf(Opening(&opened)), Values::ErrBadFID);
  tree.share = ZnUniString();
  EXPECT_EQ(ReasonOf([&](const ZnSmbDone& done) { return client->TreeConnect(&tree, "", done); }), Values::ErrInternal);
  const std::string path(70000, 'x');
  EXPECT_EQ(ReasonOf([&](const ZnSmbDone& done) { return client->Delete(1, File(path.c_str()), done); }),
            Values::ErrInternal);
  EXPECT_THAT(Asked(), IsEmpty());
}

// The owner hears first; and what it begins then doesn't meet the end of what was.
TEST_F(Client, ALostConnectionEndsAllOperations) {
  server.maxMpx = 2;
  Connect();
  Replace(kDelete, Silence);
  std::vector<std::string> ends;
  std::vector<ZnSmbCall> calls;
  for (int i = 0; i < 4; i++) {
    calls.push_back(Deleting()([&](const ZnSmbOutcome& outcome) {
      EXPECT_THAT(lost, ElementsAre(Values::ErrDisconnect));
      ends.push_back(Values::ReasonString(outcome.reason) + (outcome.unserved ? " unserved" : ""));
    }));
  }
  LetPass(5);
  peer.HangUp();
  LetPass(5);
  EXPECT_THAT(ends, ElementsAre("ErrDisconnect", "ErrDisconnect", "ErrDisconnect unserved", "ErrDisconnect unserved"));
  EXPECT_FALSE(client->IsConnected());
  Again();
}

TEST_F(Client, ADoneMayDeleteTheClientAndHandlesMayOutliveIt) {
  Connect();
  ZnSmbCall other;
  const ZnSmbOutcome outcome = Run([&](const ZnSmbDone& done) {
    ZnSmbCall call = Deleting()([&, done](const ZnSmbOutcome& how) {
      client.reset();
      done(how);
    });
    other = Listing()([](const ZnSmbOutcome&) { FAIL() << "there is no client any more"; });
    return call;
  });
  EXPECT_TRUE(outcome.Ok());
  LetPass(20000);
}

}  // namespace
