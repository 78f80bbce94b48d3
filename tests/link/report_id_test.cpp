#include "link/report_id.h"

#include <gtest/gtest.h>

namespace lk {
namespace {

TEST(ReportIdTest, InputReportGetsTheIdBackAtIndexZero) {
  std::uint8_t read[65] = {};
  for (int i = 0; i < 64; ++i) read[i] = static_cast<std::uint8_t>(0xA0 + i);
  Report report;
  report.fill(0xEE);
  ASSERT_TRUE(InputReportFromRead(read, 64, report));
  EXPECT_EQ(report[0], 0);
  EXPECT_EQ(report[1], 0xA0);  // first answer byte
  EXPECT_EQ(report[64], static_cast<std::uint8_t>(0xA0 + 63));
}

TEST(ReportIdTest, AnythingButAWholeReportIsRefused) {
  std::uint8_t read[65] = {};
  Report report{};
  for (int got : {-1, 0, 1, 63, 65}) EXPECT_FALSE(InputReportFromRead(read, got, report)) << got;
  EXPECT_FALSE(InputReportFromRead(nullptr, 64, report));
}

TEST(ReportIdTest, OutputReportAlwaysStartsWithIdZero) {
  Report report{};
  report[0] = 0x05;
  report[1] = 3;
  report[64] = 0x77;
  const Report out = OutputReportBytes(report);
  EXPECT_EQ(out[0], 0);
  EXPECT_EQ(out[1], 3);
  EXPECT_EQ(out[64], 0x77);
}

}  // namespace
}  // namespace lk
