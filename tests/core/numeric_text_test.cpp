#include "core/numeric_text.h"

#include <gtest/gtest.h>

namespace lk {
namespace {

TEST(NumericTextTest, HexLongAndHexShortDifferOnPurpose) {
  struct Case {
    const char* text;
    std::optional<std::int32_t> hexLong;
    std::optional<std::int32_t> hexShort;
  } cases[] = {
      {"FFFF", 65535, -1},
      {"8000", 32768, -32768},
      {"7FFF", 32767, 32767},
      {"3fff", 0x3FFF, 0x3FFF},
      {"12345", 0x12345, 0x12345},
      {"FFFFFFFF", -1, -1},
      {"1FFFFFFFF", std::nullopt, std::nullopt},  // more than 32 bits overflows
      {"", 0, 0},
      {"XYZ", 0, 0},
      {"1G2", 1, 1},                  // stops at the first character that does not fit
      {" F F ", 0xFF, 0xFF},          // blanks are ignored
      {"00000000000FF", 0xFF, 0xFF},  // leading zeros are no overflow
  };
  for (const auto& c : cases) {
    EXPECT_EQ(ParseHexLong(c.text), c.hexLong) << c.text;
    EXPECT_EQ(ParseHexShort(c.text), c.hexShort) << c.text;
  }
}

TEST(NumericTextTest, DecimalPrefix) {
  struct Case {
    const char* text;
    std::optional<double> value;
  } cases[] = {
      {"12.5", 12.5},
      {"12.5V", 12.5},
      {"-3", -3.0},
      {"+7", 7.0},
      {"", 0.0},
      {"abc", 0.0},
      {".5", 0.5},
      {"1E3", 1000.0},
      {"2E", 2.0},
      {"1 2", 12.0},
      {"1e999", std::nullopt},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(ParseDecimal(c.text), c.value) << c.text;
  }
}

TEST(NumericTextTest, FitIntegerRoundsHalfToEvenAndChecksRange) {
  EXPECT_EQ(FitInteger(2.5, 0, 255), 2);
  EXPECT_EQ(FitInteger(3.5, 0, 255), 4);
  EXPECT_EQ(FitInteger(255.4, 0, 255), 255);
  EXPECT_EQ(FitInteger(255.6, 0, 255), std::nullopt);
  EXPECT_EQ(FitInteger(-0.6, 0, 255), std::nullopt);
  EXPECT_EQ(FitInteger(40000, -32768, 32767), std::nullopt);
}

TEST(NumericTextTest, WrittenForms) {
  EXPECT_EQ(Hex4(0x0A), "000A");
  EXPECT_EQ(Hex4(0x13FFF), "3FFF");  // only the low 16 bits
  EXPECT_EQ(Hex4(-1), "FFFF");
  EXPECT_EQ(FloatText(0.1f), "0.1");  // shortest, not 0.100000001
  EXPECT_EQ(FloatText(1234.5f), "1234.5");
  EXPECT_EQ(FloatText(2600), "2600");
}

}  // namespace
}  // namespace lk
