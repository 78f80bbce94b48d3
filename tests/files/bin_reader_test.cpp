#include <gtest/gtest.h>

#include "files/image_writers.h"
#include "files/readers.h"
#include "tests/files/files_fixture.h"

namespace lk::test {
namespace {

class BinReaderTest : public FilesTest {};

TEST_F(BinReaderTest, LengthMustMatchTheProgramArea) {
  struct Case {
    const char* model;
    std::size_t bytes;
    bool accepted;
  } cases[] = {
      {"T16", 32, true},       {"T16", 31, false},      {"T16", 33, false},
      {"T16", 0, false},       {"T16", 34, false},      {"LK51A1", 4096, true},
      {"LK51A1", 3072, true},  {"LK51A1", 3071, false}, {"LK51A1", 4097, false},
      {"QVM50P99", 3072, false},  // the short form is for 51A1 only
  };
  for (const auto& c : cases) {
    ChipParams chip = Load(c.model);
    std::string bytes(c.bytes, '\x11');
    EXPECT_EQ(ReadBinFile(host, home, chip, dir.Write("in.bin", bytes)), c.accepted)
        << c.model << " " << c.bytes;
  }
}

TEST_F(BinReaderTest, ReadsWordsAndAppliesProductRules) {
  ChipParams chip = Load("T16");
  ASSERT_TRUE(ReadBinFile(host, home, chip, dir.Write("a.bin", MakeBinImage(Pattern(16, 0x3F00)))));
  EXPECT_EQ(chip.RomWords, Pattern(16, 0x3F00));

  // 51A1: only words 0..1535 are read; 1536..2047 are cleared in either file length.
  for (std::size_t length : {4096u, 3072u}) {
    ChipParams c = Load("LK51A1");
    std::string bytes(length, '\x22');
    ASSERT_TRUE(ReadBinFile(host, home, c, dir.Write("b.bin", bytes)));
    EXPECT_EQ(c.RomWords[1535], 0x2222);
    EXPECT_EQ(c.RomWords[1536], 0);
    EXPECT_EQ(c.RomWords[2047], 0);
  }

  ChipParams e = Load("LK101E");
  e.ConfigWords[1] = 0x0000;
  ASSERT_TRUE(ReadBinFile(host, home, e, dir.Write("c.bin", std::string(32, '\0'))));
  EXPECT_EQ(e.ConfigWords[1], 0x0010) << "BIN sets the bit that HEX clears";
}

}  // namespace
}  // namespace lk::test
