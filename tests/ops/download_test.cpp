#include "ops/download.h"

#include <gtest/gtest.h>

#include "core/image.h"
#include "link/protocol.h"
#include "tests/ops/ops_rig.h"

namespace lk::test {
namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes Without(Bytes codes, std::uint8_t code) {
  codes.erase(std::remove(codes.begin(), codes.end(), code), codes.end());
  return codes;
}

TEST(DownloadTest, StepsTheModelExceptionsAndWhatTheWriterKeeps) {
  struct Case {
    const char* model;
    bool eedata;            // the project carries EEDATA
    std::uint8_t block;     // the second parameter block's code
    bool eedataInfo;        // 0xC2/0xC3 sent
    bool eedataSent;        // 0xC0 sent
  };
  const Case cases[] = {
      {"QVM75P82", false, proto::kChipType, false, false},
      {"QVM50F77B", true, proto::kStoreChipType, false, false},  // EEDATA, but not its family
      {"LK8F101F", true, proto::kStoreChipType, true, true},
      {"LK8F101F", false, proto::kStoreChipType, true, false},
      {"LK8F101E", false, proto::kStoreChipType, true, false},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::string(c.model) + (c.eedata ? " with EEDATA" : ""));
    OpsRig rig(c.model);
    rig.Connect();
    rig.FillImage();
    if (c.eedata) rig.project.Chip.EeFlag = kEeFlagPresent;
    const sim::SimChip socket = rig.Chip();
    ASSERT_EQ(ops::Download(rig.st()).Verdict, ops::Outcome::Passed);
    EXPECT_EQ(rig.Chip(), socket) << "the chip in the socket is left alone";
    EXPECT_EQ(rig.host.log, (Lines{"Download OK!"}));
    const Bytes all = rig.Codes();
    Bytes codes(all.begin() + 1, all.end());  // after the version query
    codes = Without(Without(Without(Without(codes, proto::kStoreRom), proto::kStoreReadRom),
                            proto::kStoreEeProgram), proto::kStoreEeRead);
    // QVM75P82 has no configuration word below ConfigLength to store.
    const bool config = rig.project.Chip.ConfigLength > 0;
    Bytes expected = {proto::kChipType};
    if (config) expected.push_back(proto::kStoreConfig);
    expected.insert(expected.end(),
                    {proto::kImageSum, proto::kRollingStart, proto::kRollingStep, c.block});
    if (config) expected.push_back(proto::kStoreReadConfig);
    expected.push_back(proto::kCheckStoredSum);
    if (c.eedataInfo) expected.insert(expected.end(), {proto::kStoreEeInfo, proto::kStoreEeInfoEnd});
    expected.insert(expected.end(), {proto::kReadRollingStart, proto::kReadRollingStep,
                                     proto::kPassed, proto::kEnd});
    EXPECT_EQ(codes, expected);
    const sim::SimStore store = rig.simWriter->State().store;
    EXPECT_EQ(store.imageSum, ProgramChecksum(rig.project.Chip) & 0xFFFF);
    EXPECT_EQ(!store.eedata.empty(), c.eedataSent);
    EXPECT_TRUE(std::equal(rig.project.Chip.RomWords.begin(), rig.project.Chip.RomWords.end(),
                           store.program.begin()));
  }
}

TEST(DownloadTest, EveryFailingStepIsDownloadFail) {
  // A refused chip too: its message, then the same single line.
  OpsRig refused("QVM75P82", {.socketModel = "QVM75P89"});
  refused.Connect();
  EXPECT_EQ(ops::Download(refused.st()).Verdict, ops::Outcome::Failed);
  EXPECT_EQ(refused.host.log, (Lines{"Download Fail!"}));
  EXPECT_EQ(refused.host.MessageTexts(), (Lines{"芯片型号错误！"}));
  for (std::uint8_t code : {proto::kImageSum, proto::kCheckStoredSum, proto::kReadRollingStep}) {
    OpsRig dry("QVM75P82");
    dry.Connect();
    ops::Download(dry.st());
    OpsRig rig("QVM75P82", {.fault = "badcode@" + std::to_string(dry.PacketNumberOf(code))});
    rig.Connect();
    EXPECT_EQ(ops::Download(rig.st()).Verdict, ops::Outcome::Failed) << int(code);
    EXPECT_EQ(rig.host.log, (Lines{"Download Fail!"}));
    EXPECT_EQ(rig.Codes().back(), proto::kEnd);
  }
}

}  // namespace
}  // namespace lk::test
