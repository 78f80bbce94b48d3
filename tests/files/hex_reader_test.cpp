#include <gtest/gtest.h>

#include "files/image_writers.h"
#include "files/readers.h"
#include "tests/files/files_fixture.h"

namespace lk::test {
namespace {

class HexReaderTest : public FilesTest {
 protected:
  bool ReadHex(ChipParams& chip, const std::string& text) {
    return ReadHexFile(host, home, chip, dir.Write("in.hex", text));
  }
};

TEST_F(HexReaderTest, StoresWordsLowByteFirstMaskedWithBlankWord) {
  ChipParams chip = Load("T16");
  // Word 0 = 0x1234, word 1 = 0xFFFF (masked to 0x3FFF); word 4 from byte address 8.
  ASSERT_TRUE(ReadHex(chip, ":04000000" "3412FFFF" "00\n:02000800CDAB00\n:00000001FF\n"));
  EXPECT_EQ(chip.RomWords[0], 0x1234);
  EXPECT_EQ(chip.RomWords[1], 0x3FFF);
  EXPECT_EQ(chip.RomWords[2], 0x3FFF);  // untouched blank
  EXPECT_EQ(chip.RomWords[4], 0xABCD & 0x3FFF);
}

TEST_F(HexReaderTest, CountsAndAddressesAreHalvedRoundHalfToEven) {
  struct Case {
    const char* line;
    std::vector<std::pair<int, std::int32_t>> expected;  // index, word
  } cases[] = {
      // 3 bytes -> 2 words: the second word takes byte 3 and the checksum characters.
      {":03000000112233C7", {{0, 0x2211}, {1, 0x3FFF & 0xC733}}},
      // 5 bytes -> 2 words, the fifth byte is not read.
      {":050000001122334455AA", {{0, 0x2211}, {1, 0x3FFF & 0x4433}, {2, 0x3FFF}}},
      // byte address 3 -> word 2 (1.5 rounds to 2), byte address 1 -> word 0.
      {":020003000102F8", {{2, 0x0201}, {1, 0x3FFF}}},
      {":020001000506F2", {{0, 0x0605}}},
      // 1 byte -> 0 words.
      {":01000000AA55", {{0, 0x3FFF}}},
  };
  for (const auto& c : cases) {
    ChipParams chip = Load("T16");
    ASSERT_TRUE(ReadHex(chip, c.line)) << c.line;
    for (auto [index, word] : c.expected) EXPECT_EQ(chip.RomWords[index], word) << c.line;
  }
}

TEST_F(HexReaderTest, FirstRecordBeyondProgramEndsTheReadSuccessfully) {
  ChipParams chip = Load("T16");  // words 0..15, byte addresses 0..31
  const auto blank = chip.RomWords;
  // Only data beyond RomSize: nothing is loaded, and the read still succeeds.
  ASSERT_TRUE(ReadHex(chip, ":02004000AAAA00\n:0200000011110000\n"));
  EXPECT_EQ(chip.RomWords, blank) << "records after the first one beyond memory are not read";

  // A record that starts inside and runs past the end keeps the words that fit.
  ASSERT_TRUE(ReadHex(chip, ":04001E00010002000000\n"));
  EXPECT_EQ(chip.RomWords[15], 0x0001);
}

TEST_F(HexReaderTest, OtherRecordTypesAndBrokenFieldsAreHandled) {
  ChipParams chip = Load("T16");
  // Extended address and unknown record types are skipped; so are short and empty lines.
  ASSERT_TRUE(ReadHex(chip, ":020000040001F9\n\nxx\n:0200000034121200\n:02000005ZZZZ\n"));
  EXPECT_EQ(chip.RomWords[0], 0x1234);
  // The record checksum is neither read nor needed.
  ASSERT_TRUE(ReadHex(chip, ":020002007856"));
  EXPECT_EQ(chip.RomWords[1], 0x5678 & 0x3FFF);
  // A data field cut short keeps the digits it has.
  ASSERT_TRUE(ReadHex(chip, ":02000400AB"));
  EXPECT_EQ(chip.RomWords[2], 0x00AB);

  for (const char* bad : {":0200000012G400\n", ":G2000000123400\n", ":02ZZ0000123400\n"}) {
    ChipParams c = Load("T16");
    EXPECT_FALSE(ReadHex(c, bad)) << bad;
  }
  EXPECT_TRUE(ReadHex(chip, "")) << "an empty file is a HEX file without data";
  EXPECT_FALSE(ReadHexFile(host, home, chip, dir / "missing.hex"));
}

TEST_F(HexReaderTest, ProductRulesAndRotation) {
  ChipParams chip = Load("LK101E");
  chip.ConfigWords[1] = 0x3FFF;
  ASSERT_TRUE(ReadHex(chip, ":00000001FF\n"));
  EXPECT_EQ(chip.ConfigWords[1], 0x3FEF);

  // QVM50F49E stores its words one place out: the last word moves to address 0.
  ChipParams rotated = Load("QVM50F49E");
  ASSERT_TRUE(ReadHex(rotated, MakeIntelHex(Pattern(16))));
  EXPECT_EQ(rotated.RomWords[0], 0x10F);
  EXPECT_EQ(rotated.RomWords[1], 0x100);
  EXPECT_EQ(rotated.RomWords[15], 0x10E);

  ChipParams plain = Load("T16");
  ASSERT_TRUE(ReadHex(plain, MakeIntelHex(Pattern(16))));
  EXPECT_EQ(plain.RomWords, Pattern(16));
}

}  // namespace
}  // namespace lk::test
