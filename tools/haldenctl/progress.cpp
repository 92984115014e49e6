#include "progress.h"

#include <unistd.h>

#include <cstdio>
#include <utility>

#include "text.h"

namespace {

constexpr uint64_t kWorthABar = 1 << 20;
constexpr double kMebibyte = 1 << 20;
constexpr size_t kBarWidth = 30;
constexpr std::chrono::milliseconds kBetweenDrawings{100};

}  // namespace

Progress::Progress(std::string name, uint64_t total)
    : name_(Text::Printable(std::move(name))),
      total_(total),
      shown_(total >= kWorthABar && isatty(STDOUT_FILENO) == 1) {}

Progress::~Progress() {
  if (!shown_) return;
  Draw();
  puts("");
}

void Progress::Add(uint64_t bytes) {
  done_ += bytes;
  const auto now = Clock::now();
  if (!shown_ || now < drawn_ + kBetweenDrawings) return;
  drawn_ = now;
  Draw();
}

void Progress::Draw() {
  const double seconds = std::chrono::duration<double>(Clock::now() - began_).count();
  const std::string bar(done_ * kBarWidth / total_, '#');
  printf("\r%s  [%-*s] %3u %%  %.1f of %.1f MiB, %.1f MiB/s ", name_.c_str(), static_cast<int>(kBarWidth), bar.c_str(),
         static_cast<unsigned>(done_ * 100 / total_), static_cast<double>(done_) / kMebibyte,
         static_cast<double>(total_) / kMebibyte, static_cast<double>(done_) / kMebibyte / seconds);
  fflush(stdout);
}
