#include "ops/eedata_operations.h"

#include <gtest/gtest.h>

#include "link/protocol.h"
#include "tests/ops/ops_rig.h"

namespace lk::test {
namespace {

using ops::Outcome;

// The two operations report to the EEDATA window's status, not to the log.
struct Reports {
  Lines lines;
  ops::EedataReport sink() {
    return [this](const std::string& line) { lines.push_back(line); };
  }
};

TEST(EedataOperationsTest, WriteAndReadWithTheirReports) {
  OpsRig rig("QVM50F77B");
  rig.Connect();
  rig.FillImage();
  Reports write;
  EXPECT_EQ(ops::WriteEedataToChip(rig.st(), write.sink()).Verdict, Outcome::Passed);
  EXPECT_EQ(write.lines, (Lines{"Write Eedata OK!"}));
  EXPECT_EQ(rig.Chip().eedata, rig.project.Chip.EeBytes);
  EXPECT_TRUE(rig.host.log.empty());

  rig.project.Chip.EeBytes.assign(rig.project.Chip.EeBytes.size(), 0);
  rig.ui.calls.clear();
  Reports read;
  EXPECT_EQ(ops::ReadEedataFromChip(rig.st(), read.sink()).Verdict, Outcome::Passed);
  EXPECT_EQ(read.lines, (Lines{"Read Eedata OK!"}));
  EXPECT_EQ(rig.project.Chip.EeBytes, rig.Chip().eedata);
  EXPECT_EQ(std::count(rig.ui.calls.begin(), rig.ui.calls.end(), "eedata"), 1);

  // The read is not checked: a writer that falls silent still gives "OK", and the
  // project's bytes stay as they were.
  OpsRig dry("QVM50F77B");
  dry.Connect();
  Reports ignored;
  ops::ReadEedataFromChip(dry.st(), ignored.sink());
  const long firstRead = dry.PacketNumberOf(proto::kEeRead);
  OpsRig silent("QVM50F77B", {.fault = "noanswer@" + std::to_string(firstRead)});
  silent.Connect();
  silent.FillImage();
  const std::vector<std::uint8_t> before = silent.project.Chip.EeBytes;
  Reports quiet;
  EXPECT_EQ(ops::ReadEedataFromChip(silent.st(), quiet.sink()).Verdict, Outcome::Passed);
  EXPECT_EQ(quiet.lines, (Lines{"Read Eedata OK!"}));
  EXPECT_EQ(silent.project.Chip.EeBytes, before);
  EXPECT_EQ(silent.Codes().back(), proto::kEnd);
}

TEST(EedataOperationsTest, FailuresAndTheirOrder) {
  struct Case {
    const char* what;
    const char* model;
    RigOptions options;
    Lines reports;
    Lines messages;
  };
  const Case cases[] = {
      // No quotes around the model here, unlike the main window's line.
      {"writer missing", "QVM50F77B", {.fault = "unplug@1"},
       {"The Writer for QVM50F77B not Found!"}, {}},
      {"wrong chip", "QVM50F77B", {.socketModel = "QVM75P89"}, {"MCU Type Error!"},
       {"芯片型号错误！"}},
      {"no EEDATA", "QVM75P89", {}, {}, {"该芯片没有内部Eedata！"}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    OpsRig rig(c.model, c.options);
    if (c.options.fault.empty()) rig.Connect();
    Reports reports;
    ops::WriteEedataToChip(rig.st(), reports.sink());
    EXPECT_EQ(reports.lines, c.reports);
    EXPECT_EQ(rig.host.MessageTexts(), c.messages);
    for (std::uint8_t code : {proto::kEePrepare, proto::kEeProgram, proto::kEeRead}) {
      EXPECT_EQ(rig.PacketNumberOf(code), 0);
    }
    EXPECT_TRUE(rig.ui.windowEnabled && rig.ui.monitorRunning);
  }
  // The chip reads back something else: the verify fails the write.
  Reports reports;
  OpsRig dry("QVM50F77B");
  dry.Connect();
  dry.FillImage();
  ops::WriteEedataToChip(dry.st(), reports.sink());
  OpsRig spoiled("QVM50F77B", {.fault = "badsum@" + std::to_string(dry.PacketNumberOf(proto::kEeRead))});
  spoiled.Connect();
  spoiled.FillImage();
  Reports failed;
  EXPECT_EQ(ops::WriteEedataToChip(spoiled.st(), failed.sink()).Verdict, Outcome::Failed);
  EXPECT_EQ(failed.lines, (Lines{"Write Eedata Error!"}));
  EXPECT_EQ(spoiled.Codes().back(), proto::kEnd);
}

}  // namespace
}  // namespace lk::test
