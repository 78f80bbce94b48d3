#include <gtest/gtest.h>

#include "files/image_writers.h"
#include "files/readers.h"
#include "tests/files/files_fixture.h"

namespace lk::test {
namespace {

class Sn8ReaderTest : public FilesTest {};

TEST_F(Sn8ReaderTest, ExactSizeIsReadAndTheTopWordsAreForced) {
  ChipParams chip = Load("SN32A3");  // 1024 words
  const auto words = Pattern(1024, 0x2000);
  std::string bytes = MakeSn8Image(words);
  bytes[0] = 'S';  // header bytes are not looked at
  ASSERT_TRUE(ReadSn8File(host, home, chip, dir.Write("a.sn8", bytes)));
  EXPECT_EQ(chip.RomWords[0], words[0]);
  EXPECT_EQ(chip.RomWords[1019], words[1019]);
  for (int i = 1020; i <= 1023; ++i) EXPECT_EQ(chip.RomWords[i], 0xFFFF) << i;
}

TEST_F(Sn8ReaderTest, AnyOtherSizeIsRefusedAndTheImageStays) {
  for (std::size_t size : {256u + 2046u, 256u + 2047u, 256u + 2049u, 256u + 2050u, 0u, 255u}) {
    ChipParams chip = Load("SN32A3");
    chip.RomWords[5] = 0x0555;
    EXPECT_FALSE(ReadSn8File(host, home, chip, dir.Write("b.sn8", std::string(size, '\1'))))
        << size;
    EXPECT_EQ(chip.RomWords[5], 0x0555);
  }
}

}  // namespace
}  // namespace lk::test
