#include "core/image.h"

#include <gtest/gtest.h>


namespace lk {
namespace {

ChipParams Blank(std::int32_t romSize, std::int32_t hexMcu, std::size_t configWords = 1) {
  ChipParams c;
  c.Name = "TEST";
  c.RomSize = romSize;
  c.HexMcu = hexMcu;
  c.RomWords.assign(static_cast<std::size_t>(romSize) + 1, hexMcu);
  c.ConfigLength = static_cast<std::int16_t>(configWords - 1);
  c.ConfigWords.assign(configWords, hexMcu);
  return c;
}

TEST(HexTextTest, LinesOfEightWordsWithAddresses) {
  ChipParams c = Blank(8, 0xFFFF);
  c.RomWords[1] = 0x13FFF;  // only the last four digits show
  c.RomWords[2] = 0x0A;
  EXPECT_EQ(HexText(c),
            "000000: FFFF 3FFF 000A FFFF FFFF FFFF FFFF FFFF\r\n"
            "000008: FFFF");
  EXPECT_EQ(HexText(ChipParams{}), "");
}

TEST(HexTextTest, LargestImageHasEveryLine) {
  const std::string text = HexText(Blank(0xFFFF, 0x3FFF));
  EXPECT_EQ(text.size(), 8192u * 47 + 8191u * 2);
  EXPECT_EQ(text.substr(text.size() - 47, 7), "00FFF8:");
}

TEST(EedataHexTextTest, SixteenBytesALine) {
  ChipParams c;
  c.EeSize = 16;
  c.EeBytes.assign(17, 0xFF);
  c.EeBytes[0] = 0x01;
  EXPECT_EQ(EedataHexText(c),
            "0000: 01 FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF\r\n"
            "0010: FF");
  // One byte (EEDATA=0) counts as no EEDATA.
  ChipParams one;
  one.EeSize = 0;
  one.EeBytes = {0xFF};
  EXPECT_EQ(EedataHexText(one), "");
  EXPECT_FALSE(EedataMenusEnabled(one));
  EXPECT_TRUE(EedataMenusEnabled(c));
}

TEST(ChecksumTest, Blank14BitChip) {
  const ChipParams c = Blank(0x7FF, 0x3FFF);
  EXPECT_EQ(ProgramChecksum(c), 651582);
  EXPECT_EQ(ChecksumText(ProgramChecksum(c)), "Checksum:F13E");
}

TEST(ChecksumTest, HighBitsAreIgnored) {
  ChipParams c = Blank(0, 0);
  c.ConfigWords.clear();
  c.RomWords[0] = 0x13FFF;
  EXPECT_EQ(ProgramChecksum(c), 0xFF + 0x3F);
  c.RomWords[0] = -1;  // 0xFFFFFFFF
  EXPECT_EQ(ProgramChecksum(c), 0xFF + 0xFF);
}

// Each special case: the words it names count as a fixed value whatever they hold (the
// sum of an all-zero image shows the value), and the word next to them counts as usual.
TEST(ChecksumTest, SpecialWordsCountAsFixedValues) {
  struct Case {
    const char* name;
    const char* prod;
    std::int32_t romSize;
    std::int32_t hexMcu;
    std::vector<std::int32_t> fixed;  // indices that must not change the sum
    std::int32_t counted;             // an index that must
    std::int32_t zeroImageSum;        // -1: not checked
  } cases[] = {
      {"QVM50F96B", "", 0xFFF, 0xFEFF, {4093, 4094}, 4095, 2 * 509},
      {"QVM50F98B", "", 0xFFF, 0xFEFF, {4093, 4094}, 4092, -1},
      {"QVM50P99", "", 0x7FF, 0x3FFF, {2045, 2046}, 2047, 2 * 318},
      {"X", "32A3", 0x3FF, 0xFFFF, {1020, 1021, 1022, 1023}, 1019, 4 * 510},
      {"X", "2023", 0x7FF, 0x1234, {2045, 2046}, 2047, 2 * (0x12 + 0x34)},  // from HEXMCU
      {"X", "34A4", 0xFFF, 0x3FFF, {4093, 4094}, 4095, -1},
      {"X", "LK467", 0x7FF, 0x3FFF, {2045, 2046}, 2044, -1},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(c.name) + " " + c.prod);
    ChipParams chip = Blank(c.romSize, c.hexMcu);
    chip.Name = c.name;
    chip.Prod = c.prod;
    const std::int32_t blank = ProgramChecksum(chip);
    for (std::int32_t i : c.fixed) chip.RomWords[static_cast<std::size_t>(i)] = 0;
    EXPECT_EQ(ProgramChecksum(chip), blank);
    chip.RomWords[static_cast<std::size_t>(c.counted)] = 0;
    EXPECT_NE(ProgramChecksum(chip), blank);
    if (c.zeroImageSum >= 0) {
      std::fill(chip.RomWords.begin(), chip.RomWords.end(), 0);
      chip.ConfigWords.clear();
      EXPECT_EQ(ProgramChecksum(chip), c.zeroImageSum);
    }
  }
}

TEST(ChecksumTest, ConfigurationWords) {
  ChipParams c = Blank(0, 0, 4);
  c.RomWords = {0};
  c.ConfigWords = {0x0101, 0x0202, 0x0303, 0x0404};
  EXPECT_EQ(ProgramChecksum(c), 2 + 4 + 6 + 8);
  c.Prod = "32A3";  // word 1: high byte OR 0xE0
  EXPECT_EQ(ProgramChecksum(c), 2 + (0x02 + 0xE2) + 6 + 8);

  ChipParams e1 = Blank(0, 0, 4);
  e1.Prod = "16E1";
  const std::int32_t sum = ProgramChecksum(e1);
  EXPECT_EQ(sum, (0xFA + 0x5A) + 0 + 2 * (0xFE + 0xFF));
  for (std::size_t j : {0u, 2u, 3u}) {
    ChipParams changed = e1;
    changed.ConfigWords[j] = 0x1234;
    EXPECT_EQ(ProgramChecksum(changed), sum) << j;
    EXPECT_EQ(changed.ConfigWords[j], 0x1234);  // the project's words are not touched
  }
  e1.ConfigWords[1] = 0x0101;
  EXPECT_EQ(ProgramChecksum(e1), sum + 2);
}

TEST(ChecksumTest, TextAndEedataSum) {
  EXPECT_EQ(ChecksumText(0), "Checksum:0000");
  EXPECT_EQ(ChecksumText(0x9F13E), "Checksum:F13E");
  ChipParams c;
  c.EeBytes.assign(300, 0xFF);
  EXPECT_EQ(EedataChecksum(c), static_cast<std::uint16_t>(300 * 255));
}

// The captions' texts are the toolbar's (Qt test, an OTP and a flash model) and the result
// lines' (ops tests); only "OTP" exactly is an OTP chip.
TEST(CaptionsTest, OnlyTheExactCraftIsOtp) {
  ChipParams chip;
  chip.Crafts = "otp";
  EXPECT_EQ(GetBlankEraseCaptions(chip).Blank, "擦除");
  chip.Crafts = "OTP";
  EXPECT_EQ(GetBlankEraseCaptions(chip).Blank, "空检");
}

}  // namespace
}  // namespace lk
