#include "runtime/checksum.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <tuple>

#include "runtime/random.h"

namespace {

// What the cksum command says of these bytes, without its final complement.
uint32_t Cksum(const std::string& bytes) {
  std::string path = testing::TempDir() + "cksum." + std::to_string(testing::UnitTest::GetInstance()->random_seed());
  std::ofstream(path, std::ios::binary) << bytes;
  FILE* command = popen(("cksum < " + path).c_str(), "r");
  unsigned sum = 0;
  EXPECT_EQ(fscanf(command, "%u", &sum), 1);
  pclose(command);
  remove(path.c_str());
  return ~sum;
}

TEST(CheckSum, OfBytesIsThatOfTheCommand) {
  for (size_t length : {0, 1, 9, 255, 256, 257, 65536, 70001}) {
    ZnByteBuffer bytes = ZnRandom::RndBuffer(length);
    std::string text(reinterpret_cast<const char*>(bytes.Data()), length);
    EXPECT_EQ(ZnCheckSum::Sum(bytes), Cksum(text)) << length;
  }
}

// The sums come from a bit by bit calculation outside of this program.
TEST(CheckSum, OfTextGoesOverUnitsLowByteFirstAndTheirNumber) {
  const std::tuple<ZnUniString, uint32_t, ZnUniString> cases[] = {
      {".", 1, "."},
      {"..", 2, ".."},
      {"", 3, ""},
      {"a", 0x48270010, "A"},
      {"stra\xC3\x9F\x65", 0x625c7b86, "STRA\xC3\x9F\x45"},
      {ZnUniString(std::u16string(300, u'x')), 0x81f61d31, ZnUniString(std::u16string(300, u'X'))},
      {ZnUniString(std::u16string(1, u'\0')), 0x04c11db7, ZnUniString(std::u16string(1, u'\0'))},
  };
  for (const auto& [text, sum, othercase] : cases) {
    EXPECT_EQ(ZnCheckSum::Sum(text), sum) << text.AsUtf8();
    EXPECT_EQ(ZnCheckSum::SumCaseless(othercase), sum) << text.AsUtf8();
  }
}

}  // namespace
