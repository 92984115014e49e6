// 64 MiB of mixed UTF-8 text to UTF-16 and back, by the C library's iconv and by the daemon's converters in the same
// run.

#include <iconv.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string>
#include <string_view>

#include "runtime/uni_string.h"

namespace {

constexpr size_t kSize = size_t{64} << 20;
constexpr int kRounds = 3;

// Paths as they are listed, with a share of Latin, Greek, Cyrillic and Chinese letters.
std::string MixedText() {
  const std::string line =
      "/home/projects/report 2026/summary.txt\nÜbergrößen/façade/señor/ångström\nΕλληνικά/Русские буквы/документы\n"
      "漢字テスト/中文文件名\nreadme.md\nWindows/system32/drivers/etc/hosts\n";
  std::string text;
  text.reserve(kSize + line.size());
  while (text.size() < kSize) text += line;
  return text;
}

// Converts `in` into `out`, which has room enough, and gives the bytes written.
size_t Iconv(const char* to, const char* from, std::string_view in, std::string& out) {
  iconv_t descriptor = iconv_open(to, from);
  char *inAt = const_cast<char*>(in.data()), *outAt = out.data();
  size_t inLeft = in.size(), outLeft = out.size();
  if (iconv(descriptor, &inAt, &inLeft, &outAt, &outLeft) != 0 || inLeft != 0) abort();
  iconv_close(descriptor);
  return out.size() - outLeft;
}

// Processor time, which the machine's other work hardly touches.
template <class F>
double BestSeconds(F&& convert) {
  double best = 1e9;
  for (int i = 0; i < kRounds; i++) {
    clock_t began = clock();
    convert();
    best = std::min(best, static_cast<double>(clock() - began) / CLOCKS_PER_SEC);
  }
  return best;
}

}  // namespace

int main() {
  std::string text = MixedText(), units(2 * text.size(), '\0'), back(text.size() + 4, '\0');
  size_t length = 0;
  double theirs = BestSeconds([&] {
    size_t unitsLength = Iconv("UTF-16LE", "UTF-8", text, units);
    length = Iconv("UTF-8", "UTF-16LE", std::string_view(units).substr(0, unitsLength), back);
  });
  if (std::string_view(back).substr(0, length) != text) abort();
  double ours = BestSeconds([&] { back = ZnUniString(text).AsUtf8(); });
  if (back != text) abort();
  printf("64 MiB of UTF-8 to UTF-16 and back: iconv %.3f s, ours %.3f s, ratio %.2f\n", theirs, ours, ours / theirs);
}
