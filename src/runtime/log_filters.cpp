#include <algorithm>

#include "runtime/log_state.h"
#include "runtime/wildcard_match.h"

void ZnLog::SetupFilters(const ZnDList<ZnUniString>& list, bool onnomatch, const char* const* table) {
  State& log = state();
  log.logonnomatch = onnomatch;
  if (!table && the_logger) table = the_logger->MessageStrings();
  ProcessFilters(list, table);
  log.filterbitset.clear();
  for (const ZnUniString& name : log.loglist) log.filterbitset.push_back(FilterMessage(name));
  log.Filtering = true;
}

void ZnLog::ProcessFilters(const ZnDList<ZnUniString>& list, const char* const* table) {
  State& log = state();
  log.filters.clear();
  for (ZnUniString pattern : list) {
    bool status = true;
    const size_t length = pattern.Length();
    if (length >= 2 && pattern[length - 2] == u':') {
      status = pattern[length - 1] != u'0';
      pattern.Truncate(length - 2);
    }
    log.filters.push_back({pattern, status});
  }

  // A message's number is its place in the table, so names that came up by themselves go behind.
  const std::vector<ZnUniString> earlier = std::move(log.loglist);
  log.loglist.clear();
  log.lognumbers.clear();
  for (; table && *table; table++) log.loglist.emplace_back(*table);
  log.numlogs = log.loglist.size();
  for (size_t i = 0; i < log.numlogs; i++) log.lognumbers.try_emplace(log.loglist[i], i);
  for (const ZnUniString& name : earlier) {
    if (log.lognumbers.try_emplace(name, log.loglist.size()).second) log.loglist.push_back(name);
  }
}

bool ZnLog::FilterMessage(const ZnUniString& name) {
  const State& log = state();
  const auto match = std::find_if(log.filters.begin(), log.filters.end(), [&name](const State::Filter& filter) {
    return ZnWildcardMatch(filter.pattern, name);
  });
  return match == log.filters.end() ? log.logonnomatch : match->status;
}

bool ZnLog::Gen(size_t number) {
  const State& log = state();
  if (!log.Filtering) return true;
  return number < log.numlogs && log.filterbitset[number];
}

bool ZnLog::Gen(const ZnUniString& a, const ZnUniString& b, const ZnUniString& c) {
  State& log = state();
  if (!log.Filtering) return true;
  const ZnUniString name = a + "/" + b + "/" + c;
  const auto [entry, isnew] = log.lognumbers.try_emplace(name, log.loglist.size());
  if (isnew) {
    log.loglist.push_back(name);
    log.filterbitset.push_back(FilterMessage(name));
  }
  return log.filterbitset[entry->second];
}
