#include "ops/writer_id.h"

#include <gtest/gtest.h>

#include "core/profile.h"
#include "link/protocol.h"
#include "tests/ops/ops_rig.h"

namespace lk::test {
namespace {

using ops::Outcome;

TEST(WriterIdTest, SetWithIncrementThenReadBackTheLowSixteenBits) {
  OpsRig rig("QVM75P89");
  EXPECT_EQ(ops::StoredWriterIdText(rig.host, rig.home), "000000");
  const ops::WriterIdSet set = ops::SetWriterIdentifier(rig.st(), 41, true);
  EXPECT_EQ(set.Verdict, Outcome::Passed);
  EXPECT_EQ(set.NextText, "00000042");
  EXPECT_EQ(GetValue(rig.host, rig.home.DataDat(), "Setting", "ID"), "42");
  EXPECT_EQ(ops::StoredWriterIdText(rig.host, rig.home), "000042");
  EXPECT_EQ(rig.host.MessageTexts(), (Lines{"设置成功！\r\n烧录器ID为：41"}));
  EXPECT_TRUE(rig.ui.monitorRunning);

  // Above 65535 the set checks all four bytes; the read shows only the two lowest.
  ASSERT_EQ(ops::SetWriterIdentifier(rig.st(), 70000, false).NextText, "");
  EXPECT_EQ(rig.simWriter->State().id, (std::array<std::uint8_t, 4>{0x70, 0x11, 0x01, 0x00}));
  EXPECT_EQ(GetValue(rig.host, rig.home.DataDat(), "Setting", "ID"), "42");
  EXPECT_EQ(ops::ReadWriterIdentifier(rig.st()), Outcome::Passed);
  EXPECT_EQ(rig.host.messages.back().text, "读取完成！\r\n烧录器ID：004464");
}

TEST(WriterIdTest, FailuresAreMessagesAndLeaveTheStoredNumber) {
  struct Case {
    const char* fault;
    bool set;
    Outcome outcome;
    const char* message;
  };
  const Case cases[] = {
      {"unplug@1", true, Outcome::NoWriter, "烧录器未连接！"},
      {"unplug@1", false, Outcome::NoWriter, "烧录器未连接！"},
      {"badcode@2", true, Outcome::Failed, "烧录器ID设置失败！"},  // the read-back
      {"noanswer@1", false, Outcome::Failed, "读取错误！"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::string(c.fault) + (c.set ? " set" : " read"));
    OpsRig rig("QVM75P89", {.fault = c.fault});
    const Outcome outcome = c.set ? ops::SetWriterIdentifier(rig.st(), 7, true).Verdict
                                  : ops::ReadWriterIdentifier(rig.st());
    EXPECT_EQ(outcome, c.outcome);
    EXPECT_EQ(rig.host.MessageTexts(), (Lines{c.message}));
    EXPECT_EQ(ops::StoredWriterIdText(rig.host, rig.home), "000000");
    EXPECT_TRUE(rig.ui.monitorRunning);
    EXPECT_FALSE(rig.writer->IsOpen());
  }
  for (const char* bad : {"", "12a", "-1", "4294967296", "99999999999999999999999"}) {
    EXPECT_FALSE(ops::ParseWriterIdText(bad)) << bad;
  }
  EXPECT_EQ(ops::ParseWriterIdText("4294967295"), 4294967295u);
}

}  // namespace
}  // namespace lk::test
