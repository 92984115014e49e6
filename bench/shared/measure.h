#pragma once
// What all benchmarks measure and print alike. Each compares two ways of doing the same work, in turns and short, so
// that what else the machine does falls on both sides; of the turns the medians count. A row says its bound and whether
// it was met, and a benchmark with a missed bound leaves with 1.

#include <chrono>
#include <functional>
#include <string>
#include <vector>

using SteadyClock = std::chrono::steady_clock;

[[noreturn]] void Die(const std::string& why);

// Of the environment, by which a benchmark learns of the servers it runs beside. Required: it dies without.
std::string Setting(const char* name);

SteadyClock::time_point SecondsFromNow(double seconds);
double Seconds(const std::function<void()>& work);
double Median(std::vector<double> values);

// Turns are taken until there are `most` of them, or, but for the first one, `patience` seconds are over.
class Turns {
 public:
  Turns(unsigned most, double patience) : most_(most), patience_(patience) {}
  bool Next();
  unsigned Taken() const { return taken_; }

 private:
  unsigned most_;
  double patience_;
  unsigned taken_ = 0;
  SteadyClock::time_point begin_ = SteadyClock::now();
};

// A bound on a ratio, or on whatever else a row shows.
struct Bound {
  enum Kind { AtLeast, AtMost };
  Kind kind;
  double value;

  bool Met(double seen) const { return kind == AtLeast ? seen >= value : seen <= value; }
};

// The measured of one row, turn by turn, in whatever unit the row shows.
struct Comparison {
  std::vector<double> ours, theirs, ratios;

  void Add(double our, double their, double ratio);
};

// Prints rows, and remembers whether all bounds were met.
class Table {
 public:
  // `values`: what the ratio is of, in words.
  void Heading(const std::string& values);
  void Row(const std::string& what, const Comparison& seen, const char* unit, const std::string& beside, Bound bound);
  void Row(const std::string& what, double seen, const char* unit, Bound bound);
  static void Note(const std::string& text);

  bool AllMet() const { return allmet_; }

 private:
  const char* Verdict(double seen, Bound bound);

  bool allmet_ = true;
};
