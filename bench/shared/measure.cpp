#include "shared/measure.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

void Die(const std::string& why) {
  fflush(stdout);
  fprintf(stderr, "bench: %s\n", why.c_str());
  exit(1);
}

std::string Setting(const char* name) {
  const char* value = getenv(name);
  if (!value) Die(std::string(name) + " isn't set: bench/shared/beside_servers.py sets it");
  return value;
}

SteadyClock::time_point SecondsFromNow(double seconds) {
  return SteadyClock::now() + std::chrono::duration_cast<SteadyClock::duration>(std::chrono::duration<double>(seconds));
}

double Seconds(const std::function<void()>& work) {
  const auto begin = SteadyClock::now();
  work();
  return std::chrono::duration<double>(SteadyClock::now() - begin).count();
}

double Median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

bool Turns::Next() {
  const std::chrono::duration<double> spent = SteadyClock::now() - begin_;
  if (taken_ == most_ || (taken_ > 0 && spent.count() > patience_)) return false;
  taken_++;
  return true;
}

void Comparison::Add(double our, double their, double ratio) {
  ours.push_back(our);
  theirs.push_back(their);
  ratios.push_back(ratio);
}

void Table::Heading(const std::string& values) {
  printf("\n%-40s %14s  %-34s %14s   %s\n", "daemon", "", "beside", "", values.c_str());
  fflush(stdout);
}

const char* Table::Verdict(double seen, Bound bound) {
  const bool met = bound.Met(seen);
  allmet_ = allmet_ && met;
  return met ? "met" : "MISSED";
}

void Table::Row(const std::string& what, const Comparison& seen, const char* unit, const std::string& beside,
                Bound bound) {
  const auto [low, high] = std::minmax_element(seen.ratios.begin(), seen.ratios.end());
  const double ratio = Median(seen.ratios);
  printf("%-40s %8.1f %-5s  %-34s %8.1f %-5s   %5.2f (%4.2f to %4.2f)  %s %4.2f  %s\n", what.c_str(), Median(seen.ours),
         unit, beside.c_str(), Median(seen.theirs), unit, ratio, *low, *high,
         bound.kind == Bound::AtLeast ? "at least" : "at most ", bound.value, Verdict(ratio, bound));
  fflush(stdout);
}

void Table::Row(const std::string& what, double seen, const char* unit, Bound bound) {
  printf("%-40s %8.1f %-24s %s %6.1f  %s\n", what.c_str(), seen, unit,
         bound.kind == Bound::AtLeast ? "at least" : "at most ", bound.value, Verdict(seen, bound));
  fflush(stdout);
}

void Table::Note(const std::string& text) {
  printf("  %s\n", text.c_str());
  fflush(stdout);
}
