#include "ops/connection_monitor.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>

#include "files/open_path.h"
#include "tests/ops/ops_rig.h"

namespace lk::test {
namespace {

TEST(ConnectionMonitorTest, ArrivalSteadyTicksAndDeparture) {
  OpsRig rig("QVM75P89");
  ops::MonitorState state;
  ops::WatchedFile none;
  const ops::TickResult first = ops::MonitorTick(rig.host, *rig.writer, state, none);
  ASSERT_TRUE(first.Arrived);
  EXPECT_EQ(rig.host.log, (Lines{"烧录器已经连接！版本号： v3.1", "烧录器ID：123456"}));
  EXPECT_EQ(rig.host.status[4], "Device Connected");
  EXPECT_EQ(rig.host.status[3], "");
  EXPECT_TRUE(state.WriterConnected);
  EXPECT_FALSE(rig.writer->IsOpen());

  // A steady tick only refreshes the panel: no line, no packet.
  const long packets = rig.simWriter->PacketCount();
  EXPECT_FALSE(ops::MonitorTick(rig.host, *rig.writer, state, none).Arrived);
  EXPECT_EQ(rig.host.log.size(), 2u);
  EXPECT_EQ(rig.simWriter->PacketCount(), packets);

  // A writer made for the QVM50F96B/98B only says so on its arrival.
  OpsRig dedicated("QVM75P89", {.writerType = 5});
  ops::MonitorState fresh;
  ops::MonitorTick(dedicated.host, *dedicated.writer, fresh, none);
  EXPECT_EQ(dedicated.host.log.size(), 3u);
  EXPECT_EQ(dedicated.host.log.back(), "QVM50F96B/98B专用烧录器！");

  // Gone: the list is cleared and says so, once.
  OpsRig later("QVM75P89", {.fault = "unplug@1"});
  ops::MonitorTick(later.host, *later.writer, state, none);
  EXPECT_EQ(later.host.log, (Lines{"烧录器断开连接！"}));
  EXPECT_EQ(later.host.status[4], "No Device Connected");
  EXPECT_FALSE(state.WriterConnected);
  ops::MonitorTick(later.host, *later.writer, state, none);
  EXPECT_EQ(later.host.log.size(), 1u);
}

TEST(ConnectionMonitorTest, ABadIdentityStopsPolling) {
  OpsRig rig("QVM75P89", {.fault = "badcode@2"});
  ops::MonitorState state;
  ops::WatchedFile none;
  ops::MonitorTick(rig.host, *rig.writer, state, none);
  EXPECT_EQ(rig.host.log, (Lines{"烧录器已经连接！版本号： v3.1"}));
  EXPECT_EQ(rig.host.MessageTexts(), (Lines{"读取错误！"}));
  EXPECT_FALSE(state.Polling);
  EXPECT_TRUE(state.WriterConnected);  // a restarted monitor does not announce it again
}

TEST(ConnectionMonitorTest, FileChangedQuestion) {
  OpsRig rig("QVM75P89", {.fault = "unplug@1"});
  const auto file = rig.dir.Write("p.hex", ":00000001FF\r\n");
  ops::MonitorState state;
  ops::WatchedFile watched{file.string(), FileModifiedText(file.string())};
  EXPECT_FALSE(ops::MonitorTick(rig.host, *rig.writer, state, watched).Reload);
  EXPECT_TRUE(rig.host.questions.empty());
  std::filesystem::last_write_time(file, std::filesystem::last_write_time(file) + std::chrono::seconds(3));
  rig.host.answers = {false, true};
  EXPECT_FALSE(ops::MonitorTick(rig.host, *rig.writer, state, watched).Reload);  // Cancel
  ASSERT_EQ(rig.host.questions.size(), 1u);
  EXPECT_EQ(rig.host.questions[0].caption, "File Changed");
  EXPECT_EQ(rig.host.questions[0].text,
            file.string() +
                "\r\nThis file has been modified outside of the Writer\r\nDo you want to reload it?");
  EXPECT_FALSE(ops::MonitorTick(rig.host, *rig.writer, state, watched).Reload);  // seen already
  std::filesystem::last_write_time(file, std::filesystem::last_write_time(file) + std::chrono::seconds(3));
  EXPECT_TRUE(ops::MonitorTick(rig.host, *rig.writer, state, watched).Reload);
}

}  // namespace
}  // namespace lk::test
