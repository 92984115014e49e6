#pragma once
// A bar that shows how far a long transfer is, for people: on a terminal, for files that take a moment.

#include <chrono>
#include <cstdint>
#include <string>

class Progress {
 public:
  Progress(std::string name, uint64_t total);
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  // Ends the bar's line.
  ~Progress();

  void Add(uint64_t bytes);

 private:
  using Clock = std::chrono::steady_clock;
  void Draw();

  std::string name_;
  uint64_t total_;
  uint64_t done_ = 0;
  bool shown_;
  Clock::time_point began_ = Clock::now();
  Clock::time_point drawn_;
};
