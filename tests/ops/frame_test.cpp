#include "ops/frame.h"

#include <gtest/gtest.h>

#include "link/protocol.h"
#include "ops/chip_commands.h"
#include "ops/config_commands.h"
#include "ops/download.h"
#include "tests/ops/ops_rig.h"

namespace lk::test {
namespace {

using ops::Outcome;

TEST(FrameTest, WriterMissingGivesOnlyTheQuotedLineForEveryCommand) {
  const std::function<ops::CommandResult(ops::Station&)> commands[] = {
      ops::BlankCheck, ops::Program, ops::Verify, ops::Read, ops::ConfigWrite, ops::ConfigRead,
      ops::Download};
  for (const auto& run : commands) {
    OpsRig rig("QVM75P82", {.fault = "unplug@1"});
    EXPECT_EQ(run(rig.st()).Verdict, Outcome::NoWriter);
    EXPECT_EQ(rig.host.log, (Lines{"The Writer for \"QVM75P82\" not Found!"}));
    // Window back at once; the progress bar is not touched after the search.
    EXPECT_EQ(rig.ui.calls,
              (Lines{"pause", "disable", "progress0", "pump", "resume", "enable"}));
    EXPECT_TRUE(rig.host.messages.empty());
  }
}

// A writer the user may not open: its bus has said so, and no not-found line follows.
TEST(FrameTest, AWriterThatMayNotBeOpenedIsNotCalledMissing) {
  struct DeniedBus : WriterBus {
    bool Present() override { return false; }
    std::unique_ptr<Transport> Open() override { return nullptr; }
    std::string Describe() const override { return "denied"; }
    bool Denied() const override { return true; }
  };
  OpsRig rig("QVM75P82");
  Writer denied(std::make_unique<DeniedBus>());
  ops::Station st{rig.host, rig.ui, rig.home, rig.project, denied};
  EXPECT_EQ(ops::Program(st).Verdict, Outcome::NoWriter);
  EXPECT_TRUE(rig.host.log.empty());
  EXPECT_TRUE(rig.ui.windowEnabled && rig.ui.monitorRunning);
}

TEST(FrameTest, ChipCheckFailuresEndTheSessionBeforeTheirLine) {
  struct Case {
    const char* what;
    RigOptions options;
    Lines messages;
  };
  const Case cases[] = {
      // The writer refuses a parameter block that does not name the chip in its socket.
      {"another model in the socket", {.socketModel = "QVM75P89"}, {"芯片型号错误！"}},
      // The block is accepted, but the chip's own type word differs: no message.
      {"type word differs", {.fault = "wrongchip@3"}, {}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    OpsRig rig("QVM75P82", c.options);
    rig.Connect();
    EXPECT_EQ(ops::Program(rig.st()).Verdict, Outcome::Failed);
    EXPECT_EQ(rig.host.log, (Lines{"MCU Type Error!"}));
    EXPECT_EQ(rig.host.MessageTexts(), c.messages);
    // Nothing but the chip session: no memory step ran.
    EXPECT_EQ(rig.PacketNumberOf(proto::kProgramRom), 0);
    EXPECT_LT(rig.PacketNumberOf(proto::kFailed), rig.PacketsAtLine(0) + 1);
    EXPECT_EQ(rig.ui.calls.back(), "progress0");
    EXPECT_TRUE(rig.ui.windowEnabled && rig.ui.monitorRunning);
  }
}

TEST(FrameTest, ConfigurationCommands) {
  // Write and check; a read-back that differs gives the same single line; the read
  // always reports success once the chip check passed.
  OpsRig rig("QVM75P89");
  rig.Connect();
  rig.project.Chip.ConfigWords[0] = 0x3FF0;
  EXPECT_EQ(ops::ConfigWrite(rig.st()).Verdict, Outcome::Passed);
  EXPECT_EQ(rig.host.log, (Lines{"Config OK!"}));
  EXPECT_EQ(rig.Chip().config[0], 0x3FF0);
  rig.project.Chip.ConfigWords[0] = 0x3FFF;  // an OTP chip cannot set bits again
  EXPECT_EQ(ops::ConfigWrite(rig.st()).Verdict, Outcome::Failed);
  EXPECT_EQ(rig.host.log, (Lines{"Config Fail!"}));
  rig.ui.calls.clear();
  EXPECT_EQ(ops::ConfigRead(rig.st()).Verdict, Outcome::Passed);
  EXPECT_EQ(rig.host.log, (Lines{"Read Config OK!"}));
  EXPECT_EQ(rig.project.Chip.ConfigWords[0], 0x3FF0);
  EXPECT_EQ(std::count(rig.ui.calls.begin(), rig.ui.calls.end(), "config"), 1);
}

}  // namespace
}  // namespace lk::test
