// How a session finds its machine, and finds it again.

#include "machine_session_fixture.h"
#include "support/scripted_resolver.h"

using testing::ElementsAre;

class AddressOfMachine : public MachineSessionTest {
 protected:
  AddressOfMachine() {
    resolver->hosts["pc.there"] = ZnInetAddr::AddressLoopback();
    config.ipaddress = "pc.there";
    MakeSession();
  }
  ~AddressOfMachine() override { ZnDNS::SetResolver(nullptr); }

  ScriptedResolver* resolver = ScriptedResolver::Install();
};

TEST_F(AddressOfMachine, ASlowLookUpLeavesTheLoopFree) {
  resolver->slow = true;
  Ask(Node("f"), {E::SCRequestAttribs});
  LetPass(5000);
  EXPECT_EQ(session->Count(), 1u);
  resolver->AnswerAll();
  Wait();
  EXPECT_THAT(ended, ElementsAre(0));

  peer.HangUp();
  LetPass(400000);
  Ask(Node("f"), {E::SCRequestAttribs});
  session->SendErrors();
  resolver->AnswerAll();  // nobody waits for it any more
  EXPECT_EQ(ended.size(), 2u);
}

TEST_F(AddressOfMachine, IsLookedUpAgainAfterItsTimeAndWhenItLeadsNowhere) {
  const struct {
    uint32_t after;  // milliseconds
    bool hangup;
    const char* address;
    bool works;
    size_t asked;
  } cases[] = {{0, false, "127.0.0.1", true, 1},      {200000, true, "127.0.0.1", true, 0},
               {400000, false, "127.0.0.1", true, 0},  // a connection that stands needs no address
               {1000, true, "127.0.0.1", true, 1},    {400000, true, "127.0.0.2", false, 1},  // nobody is there
               {0, false, "127.0.0.1", true, 1}};
  for (const auto& one : cases) {
    resolver->hosts["pc.there"].FromString(one.address, false);
    resolver->asked.clear();
    if (one.hangup) peer.HangUp();
    LetPass(one.after);
    EXPECT_EQ(Try(Node("f"), E::SCRequestAttribs) == 0, one.works);
    EXPECT_EQ(resolver->asked.size(), one.asked);
  }
}
