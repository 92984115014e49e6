// The tables of all tasks, as they are printed: every state is reached, and every branch leads somewhere.

#include <gmock/gmock.h>

#include <map>
#include <set>
#include <sstream>

#include "session/machine_session.h"

TEST(SessionTable, EveryStateIsReachedAndEveryBranchLeadsToOneOrToTheEnd) {
  const std::set<std::string> ends = {"SSTDone", "SSTError", "SSTStart"};  // or all begins again
  std::map<std::string, std::set<std::string>> states, reached;            // by request
  std::map<std::string, std::string> first;
  std::istringstream table(ZnMachineSession::TableAsString().AsUtf8());
  std::string what, state, action, event, next;
  while (table >> what >> state >> action >> event >> next) {
    EXPECT_NE(next, "*");
    if (state == "*") continue;
    states[what].insert(state);
    reached[what].insert(next);
    first.try_emplace(what, state);
  }
  EXPECT_EQ(first["*"], "SSTStart");
  EXPECT_EQ(states.size(), 1u + 14u);  // the rows in front, and those of each request to a server
  for (auto& [request, own] : states) {
    reached[request].insert(first[request]);
    if (request == "*") own.insert("SSTReady");
    for (const std::string& each : reached[request]) {
      EXPECT_TRUE(own.contains(each) || ends.contains(each)) << request << " leads to " << each;
    }
    for (const std::string& each : own) EXPECT_TRUE(reached[request].contains(each)) << request << " never " << each;
  }
}
