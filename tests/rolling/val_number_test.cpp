#include "rolling/val_number.h"

#include <gtest/gtest.h>

namespace lk {
namespace {

TEST(ValInt32, ReadsTheNumericPrefix) {
  const std::pair<const char*, std::int32_t> cases[] = {
      {"12", 12},
      {"12abc", 12},
      {"abc", 0},
      {"", 0},
      {"  7", 7},
      {"-3", -3},
      {"+4", 4},
      {"2.5", 2},
      {"3.5", 4},
      {"-2.5", -2},
      {"1e2", 100},
      {"1e", 1},
      {"&h1F", 31},
      {"&HFFFFFFFF", -1},
      {".5", 0},
      {"99999999999", 2147483647},
      {"-99999999999", -2147483647 - 1},
      {"1e99999", 2147483647},
      {"-", 0},
  };
  for (const auto& [text, value] : cases) EXPECT_EQ(ValInt32(text), value) << text;
}

TEST(ValHex, OverflowNeverLooksSmall) {
  EXPECT_EQ(ValHex32("7ff"), 0x7FF);
  EXPECT_EQ(ValHex32("1fz"), 0x1F);
  EXPECT_EQ(ValHex32("FFFFFFFF"), -1);
  EXPECT_EQ(ValHex32("100000010"), -1);  // past 32 bits: no address
  EXPECT_EQ(ValHex32("zz"), 0);
  EXPECT_GT(ValHexWide("100000010"), 0x7FF);
  EXPECT_GT(ValHexWide("FFFFFFFFFFFFFFFFFFFFFFFF"), 0x7FF);
}

}  // namespace
}  // namespace lk
