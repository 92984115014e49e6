// Every encoding against the C library's iconv: all 65,536 characters one way, all sequences of the set's lengths the
// other.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <iconv.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <map>
#include <optional>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "runtime/codeset_converter.h"

namespace {

// How the sequences of a set are made up, so that all can be walked.
enum class Shape : uint8_t { Single, Pairs, Gb18030, Utf16, Utf8 };

// The sets that aren't of single bytes, and what iconv calls them.
const std::map<std::string_view, std::pair<Shape, const char*>> kShapes = {{"BIG5", {Shape::Pairs, "BIG5"}},
                                                                           {"GB18030", {Shape::Gb18030, "GB18030"}},
                                                                           {"SHIFT_JIS", {Shape::Pairs, "SJIS"}},
                                                                           {"EUC-JP", {Shape::Pairs, "EUC-JP"}},
                                                                           {"UNICODE MSB", {Shape::Utf16, "UTF-16BE"}},
                                                                           {"UNICODE LSB", {Shape::Utf16, "UTF-16LE"}},
                                                                           {"UTF-8", {Shape::Utf8, "UTF-8"}}};

const char* const kSets[] = {"US-ASCII",  "ISO-8859-1", "KOI8-R",      "TIS-620",     "CP037",  "CP437",  "CP500",
                             "CP737",     "CP775",      "CP850",       "CP852",       "CP855",  "CP857",  "CP860",
                             "CP861",     "CP862",      "CP863",       "CP864",       "CP865",  "CP866",  "CP869",
                             "CP874",     "CP875",      "CP1026",      "CP1250",      "CP1251", "CP1252", "CP1253",
                             "CP1254",    "CP1255",     "CP1256",      "CP1257",      "CP1258", "BIG5",   "GB18030",
                             "SHIFT_JIS", "EUC-JP",     "UNICODE MSB", "UNICODE LSB", "UTF-8"};

// Where the daemon means another mapping than this C library: "first-last:count", in which `count` of the codes, as
// big-endian numbers, differ.
const std::map<std::string_view, const char*> kDifferences = {
    // No controls above 127; the table published for the set has it so; additions of vendors, which the published table
    // lacks.
    {"BIG5", "80-80:1 A145-A2CE:18 A3E1-A3E1:1 C6A1-C8FE:408 F9D6-F9FE:41"},
    // The table published for the set has it so.
    {"CP875", "6A-74:2 DC-FD:7"},
    {"CP1026", "9D-BC:2"},
    // The first edition, with eight codes unassigned.
    {"CP1256", "8A-FF:8"},
    // The edition of 2000, with private characters where later ones moved.
    {"GB18030", "A6D9-A8BC:11 FE51-FEA0:14 8135F437-8135F437:1 82359037-82359134:8 84318236-84318335:10"},
    // Codes below 128 are ASCII.
    {"SHIFT_JIS", "5C-7E:2"},
    // No controls above 127.
    {"EUC-JP", "80-9F:30"},
    // Controls stand for themselves.
    {"TIS-620", "80-9F:32"},
    // A mark of the other order turns the reading round.
    {"UNICODE MSB", "FFFE-FFFE:1"},
    {"UNICODE LSB", "FEFF-FEFF:1"},
};

class Iconv {
 public:
  Iconv(const char* to, const char* from) : descriptor_(iconv_open(to, from)) {}
  ~Iconv() { iconv_close(descriptor_); }
  Iconv(const Iconv&) = delete;
  Iconv& operator=(const Iconv&) = delete;

  std::optional<std::string> operator()(std::string in) {
    char out[64];
    char *inAt = in.data(), *outAt = out;
    size_t inLeft = in.size(), outLeft = sizeof out;
    iconv(descriptor_, nullptr, nullptr, nullptr, nullptr);
    if (iconv(descriptor_, &inAt, &inLeft, &outAt, &outLeft) != 0 || inLeft != 0) return std::nullopt;
    if (iconv(descriptor_, nullptr, nullptr, &outAt, &outLeft) != 0) return std::nullopt;
    return std::string(out, outAt);
  }

 private:
  iconv_t descriptor_;
};

std::string Bytes(const ZnByteBuffer& bytes) { return {reinterpret_cast<const char*>(bytes.Data()), bytes.Length()}; }

class CodesetIconv : public testing::TestWithParam<const char*> {
 protected:
  const ZnEncoding encoding_ = ZnUniString::GetEncoding(GetParam());
  const bool single_ = kShapes.count(GetParam()) == 0;
  const Shape shape_ = single_ ? Shape::Single : kShapes.at(GetParam()).first;
  Iconv iconv_{"UTF-16LE", single_ ? GetParam() : kShapes.at(GetParam()).second};

  // All sequences of the set whose first byte alone says nothing to iconv, and all single bytes.
  template <class F>
  void ForEachSequence(F&& f) {
    auto number = [&](uint32_t value, size_t length) {
      std::string bytes;
      for (size_t i = length; i > 0; i--) bytes += static_cast<char>(value >> 8 * (i - 1));
      f(value, bytes);
    };
    for (unsigned lead = 0; lead < 0x100; lead++) {
      if (shape_ != Shape::Utf16) number(lead, 1);
      if (shape_ == Shape::Single || (shape_ != Shape::Utf16 && iconv_({static_cast<char>(lead)}))) continue;
      for (unsigned trail = 0; trail < 0x100; trail++) number(lead << 8 | trail, 2);
    }
    if (shape_ == Shape::Utf8) {
      for (unsigned u = 0; u < 0x10000; u++) number(0xE08080 | (u & 0xF000) << 4 | (u & 0xFC0) << 2 | (u & 0x3F), 3);
    }
    for (uint32_t n = 0; shape_ == Shape::Gb18030 && n < 126 * 10 * 126 * 10; n++) {
      number((0x81 + n / 12600) << 24 | (0x30 + n / 1260 % 10) << 16 | (0x81 + n / 10 % 126) << 8 | (0x30 + n % 10), 4);
    }
  }
};

TEST_P(CodesetIconv, EverySequenceAndEveryCharacter) {
  std::vector<uint32_t> differing;
  std::set<char16_t> characters;
  ForEachSequence([&](uint32_t value, const std::string& sequence) {
    std::optional<std::string> ours, theirs = iconv_(sequence);
    if (theirs && theirs->size() > 2 && value > 0xFFFF) theirs.reset();  // beyond U+FFFF
    ZnByteBuffer bytes(sequence.data(), sequence.size());
    ZnUniString text = ZnUniString::CreateFrom(bytes, encoding_);
    if (ZnUniString::IsValid(bytes, encoding_)) ours = Bytes(text.Bytes());
    if (ours && text.Length() == 1) characters.insert(text[0]);
    bool surrogate = ours && text.Length() == 1 && text[0] >= 0xD800 && text[0] <= 0xDFFF;
    if (ours != theirs && !(surrogate && !theirs)) differing.push_back(value);
  });
  const auto row = kDifferences.find(GetParam());
  std::istringstream ranges(row == kDifferences.end() ? "" : row->second);
  uint32_t first = 0, last = 0;
  size_t count = 0;
  for (char to = 0, of = 0; ranges >> std::hex >> first >> to >> last >> of >> std::dec >> count;) {
    EXPECT_EQ(std::erase_if(differing, [&](uint32_t item) { return item >= first && item <= last; }), count)
        << std::hex << first;
  }
  EXPECT_THAT(differing, testing::IsEmpty());

  // What has a code is written as one, and nothing else is written.
  if (encoding_ == ZnCodeset::Ascii) characters.erase(u'\0');  // a zero never goes into ASCII text
  for (unsigned number = 0; number < 0x10000; number++) {
    const auto unit = static_cast<char16_t>(number);
    if (shape_ == Shape::Utf16 && unit == 0xFFFE) continue;  // is read as a mark of the other order
    const ZnUniString text(std::u16string(1, unit));
    const ZnByteBuffer code = text.AsEncoding(encoding_);
    if (code.IsEmpty())
      EXPECT_FALSE(characters.count(unit)) << number;
    else
      EXPECT_EQ(ZnUniString::CreateFrom(code, encoding_), text) << number;
  }
}

INSTANTIATE_TEST_SUITE_P(All, CodesetIconv, testing::ValuesIn(kSets));

// The committed tables are what the script makes of the published mappings.
TEST(CodesetTables, AreAsGenerated) {
  if (access("/usr/bin/python3", X_OK) != 0) GTEST_SKIP() << "no /usr/bin/python3";
  int status = system("/usr/bin/python3 -B " HALDEN_SOURCE_DIR "/tools/codeset_tables/generate.py --check");
  ASSERT_TRUE(WIFEXITED(status));
  if (WEXITSTATUS(status) == 77) GTEST_SKIP() << "its Unicode data is of another version";
  EXPECT_EQ(WEXITSTATUS(status), 0);
}

}  // namespace
