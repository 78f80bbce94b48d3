#include "link/hid_bus.h"

#include <gtest/gtest.h>

#include "tests/support/recording_host.h"

namespace lk {
namespace {

// The build machines have no writer attached: discovery must say so quietly.
TEST(HidBusTest, NoWriterOnThisMachineIsNotAnError) {
  test::RecordingHost host;
  EXPECT_TRUE(EnumerateWriters(host).empty());
  auto bus = MakeHidBus(host);
  EXPECT_FALSE(bus->Present());
  EXPECT_EQ(bus->Open(), nullptr);
  auto byPath = MakeHidBus(host, "/dev/hidraw99");
  EXPECT_FALSE(byPath->Present());
  EXPECT_EQ(byPath->Describe(), "usb:/dev/hidraw99");
  EXPECT_TRUE(host.messages.empty());
  EXPECT_TRUE(host.log.empty());
}

}  // namespace
}  // namespace lk
