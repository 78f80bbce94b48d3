#include "link/trace_transport.h"

#include <gtest/gtest.h>

#include <sstream>

#include "tests/link/fake_wire.h"

namespace lk::test {
namespace {

TEST(TraceTest, OneLinePerReportBothWays) {
  auto wire = std::make_shared<FakeWire>();
  wire->script = {Checked(0xA0, {3, 1}), std::nullopt};
  std::ostringstream out;
  auto bus = MakeTraceBus(std::make_unique<FakeBus>(wire), out);
  ASSERT_TRUE(bus->Present());
  auto transport = bus->Open();
  Report sent{};
  sent[1] = 3;
  sent[2] = 0xA0;
  sent[3] = 0xA3;
  ASSERT_TRUE(transport->Send(sent, 100));
  Report answer;
  ASSERT_TRUE(transport->Receive(answer, 100));
  EXPECT_FALSE(transport->Receive(answer, 100));  // nothing came: no line

  std::istringstream lines(out.str());
  std::string first, second, extra;
  ASSERT_TRUE(std::getline(lines, first));
  ASSERT_TRUE(std::getline(lines, second));
  EXPECT_FALSE(std::getline(lines, extra));
  EXPECT_EQ(first.size(), 2u + 65 * 3 - 1);
  EXPECT_EQ(first.substr(0, 14), "> 00 03 a0 a3 ");
  EXPECT_EQ(second.substr(0, 20), "< 00 05 a0 03 01 a9 ");
  EXPECT_EQ(second.substr(second.size() - 3), " 00");
}

}  // namespace
}  // namespace lk::test
