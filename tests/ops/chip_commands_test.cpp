#include "ops/chip_commands.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "link/protocol.h"
#include "rolling/roll_settings.h"
#include "tests/ops/ops_rig.h"

namespace lk::test {
namespace {

using ops::Outcome;
using Command = std::function<ops::CommandResult(ops::Station&)>;

// A plain OTP chip, a flash chip, and the flash chip whose verify looks at the
// configuration first (type low byte 4).
constexpr const char* kOtp = "QVM75P89";
constexpr const char* kFlash = "QVM50F775";
constexpr const char* kMarked = "QVM50F98D";

const Command kBlank = [](ops::Station& st) { return ops::BlankCheck(st); };
const Command kProgram = [](ops::Station& st) { return ops::Program(st); };
const Command kVerify = [](ops::Station& st) { return ops::Verify(st); };
const Command kRead = [](ops::Station& st) { return ops::Read(st); };

// Programs a known image into the rig's chip (configuration word 0 = 0x3FF0).
void ProgramFirst(OpsRig& rig) {
  rig.FillImage();
  rig.project.Chip.ConfigWords[0] = 0x3FF0;
  ASSERT_EQ(ops::Program(rig.st()).Verdict, Outcome::Passed);
  rig.host.log.clear();
  rig.host.logAt.clear();
}

// The number of the first packet with `code` in a fault-free run of `run` on `model`.
long PacketOfStep(const char* model, const Command& run, std::uint8_t code) {
  OpsRig dry(model);
  dry.Connect();
  dry.FillImage();
  run(dry.st());
  return dry.PacketNumberOf(code);
}

class ChipCommandsTest : public ::testing::TestWithParam<int> {};

TEST_P(ChipCommandsTest, LinesOfEverySuccessAndFailureRoad) {
  const int version = GetParam();
  struct Case {
    const char* what;
    const char* model;
    std::function<void(OpsRig&)> before;  // the chip and the image before the command
    Command run;
    Outcome outcome;
    Lines lines;
    std::function<void(sim::SimChip&)> chip = nullptr;
  };
  const auto none = [](OpsRig&) {};
  const Case cases[] = {
      {"blank OTP", kOtp, none, kBlank, Outcome::Passed, {"Blank Check OK!"}},
      {"erase flash", kFlash, none, kBlank, Outcome::Passed, {"Erase OK!"}},
      {"programmed OTP is not blank", kOtp, ProgramFirst, kBlank, Outcome::Failed,
       {"Blank Check Fail!"}},
      {"program", kOtp, [](OpsRig& r) { r.FillImage(); }, kProgram, Outcome::Passed,
       {"Program OK!", "Config OK!"}},
      {"verify", kOtp, ProgramFirst, kVerify, Outcome::Passed, {"Verify OK!"}},
      {"verify, a program word differs", kOtp,
       [](OpsRig& r) {
         ProgramFirst(r);
         r.project.Chip.RomWords[0x12] ^= 0x0101;
       },
       kVerify, Outcome::Failed,
       {"Verify Fail!", "Data Address:0012", "File Data:157C", "MCU Data:147D"}},
      {"verify, the configuration differs (empty log: the line is added)", kOtp,
       [](OpsRig& r) {
         ProgramFirst(r);
         r.project.Chip.ConfigWords[0] = 0x1234;
       },
       kVerify, Outcome::Failed,
       {"Verify Fail!", "Data Address:Config(0)", "File Data:1234", "MCU Data:3FF0"}},
      {"verify of an unmarked chip compares nothing", kMarked, none, kVerify, Outcome::Failed,
       {"Verify Fail!"}, [](sim::SimChip& c) { c.config[1] = 0x3FFD; }},
      {"read", kFlash, ProgramFirst, kRead, Outcome::Passed,
       {"Read OK!", "CheckSum In IC is 1752"}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::string(c.what) + " v" + std::to_string(version));
    OpsRig rig(c.model, {.version = version, .chip = c.chip});
    rig.Connect();
    c.before(rig);
    const long before = rig.simWriter->PacketCount();
    const ops::CommandResult result = c.run(rig.st());
    EXPECT_EQ(result.Verdict, c.outcome);
    ASSERT_EQ(rig.host.log, c.lines);
    // Success writes its last line before the session ends, failure after it (the
    // unmarked chip's verify excepted: its line comes first).
    const std::uint8_t end = c.outcome == Outcome::Passed ? proto::kPassed : proto::kFailed;
    const long endAt = rig.PacketNumberOf(end, before + 1);
    ASSERT_GT(endAt, 0);
    const bool lineFirst = c.outcome == Outcome::Passed || c.chip != nullptr;
    EXPECT_EQ(rig.PacketsAtLine(c.lines.size() - 1) < endAt, lineFirst);
    // The first generation goes back to idle between steps; the second never does.
    const auto codes = rig.Codes();
    EXPECT_EQ(std::count(codes.begin(), codes.end(), proto::kIdle) > 0, version < 3);
    // The window is given back.
    EXPECT_TRUE(rig.ui.windowEnabled && rig.ui.monitorRunning);
    EXPECT_EQ(rig.ui.calls.back(), "progress0");
    EXPECT_FALSE(rig.writer->IsOpen());
  }
}

INSTANTIATE_TEST_SUITE_P(BothGenerations, ChipCommandsTest, ::testing::Values(2, 3));

TEST(ChipCommandsReadTest, TakesTheChipIntoTheImageAndLeavesTheEedataWindowAlone) {
  OpsRig rig(kMarked);
  rig.Connect();
  ProgramFirst(rig);
  const ChipParams programmed = rig.project.Chip;
  rig.project.Chip.RomWords.assign(rig.project.Chip.RomWords.size(), 0);
  rig.project.Chip.EeBytes.assign(rig.project.Chip.EeBytes.size(), 0);
  rig.ui.calls.clear();
  ASSERT_EQ(ops::Read(rig.st()).Verdict, Outcome::Passed);
  EXPECT_EQ(rig.project.Chip.RomWords, programmed.RomWords);
  EXPECT_EQ(rig.project.Chip.ConfigWords[0], programmed.ConfigWords[0]);
  EXPECT_EQ(rig.project.Chip.EeBytes, rig.Chip().eedata);
  EXPECT_EQ(rig.host.log.at(1), "CheckSum In IC is " + rig.project.Chip.ChipInfo1);
  // "FrmEedata" is open, but only a window named "Frmeedata" would be refreshed.
  EXPECT_EQ(std::count(rig.ui.calls.begin(), rig.ui.calls.end(), "eedata"), 0);
  EXPECT_EQ(std::count(rig.ui.calls.begin(), rig.ui.calls.end(), "document"), 1);
  rig.ui.windows = {"Frmeedata"};
  ASSERT_EQ(ops::Read(rig.st()).Verdict, Outcome::Passed);
  EXPECT_EQ(std::count(rig.ui.calls.begin(), rig.ui.calls.end(), "eedata"), 1);

  // An "LK3P" chip shows its second information text.
  rig.project.Chip.Arch = "LK3P";
  ASSERT_EQ(ops::Read(rig.st()).Verdict, Outcome::Passed);
  EXPECT_EQ(rig.host.log.at(1), "CheckSum In IC is " + rig.project.Chip.ChipInfo2);
  EXPECT_NE(rig.project.Chip.ChipInfo1, rig.project.Chip.ChipInfo2);
}

TEST(ChipCommandsFailureTest, AFailingStepGivesItsOwnLineAfterTheSessionEnds) {
  struct Case {
    const char* what;
    std::uint8_t code;  // the first packet of the step that fails
    const char* fault;
    Command run;
    Lines lines;
  };
  const Case cases[] = {
      {"program memory refused", proto::kProgramRom, "badcode", kProgram, {"Program Fail!"}},
      {"configuration refused", proto::kProgramConfig, "badsum", kProgram,
       {"Program OK!", "Config Fail!"}},
      {"program memory read silent", proto::kReadRom, "noanswer", kRead, {"Read Eedata Fail!"}},
      {"verify read silent", proto::kReadRom, "noanswer", kVerify, {"Verify Fail!"}},
      {"writer gone", proto::kProgramRom, "unplug", kProgram, {"Program Fail!"}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    const long at = PacketOfStep(kOtp, c.run, c.code);
    ASSERT_GT(at, 0);
    OpsRig rig(kOtp, {.fault = std::string(c.fault) + "@" + std::to_string(at)});
    rig.Connect();
    rig.FillImage();
    EXPECT_EQ(c.run(rig.st()).Verdict, Outcome::Failed);
    EXPECT_EQ(rig.host.log, c.lines);
    EXPECT_TRUE(rig.host.messages.empty());
    if (std::string(c.fault) != "unplug") {
      EXPECT_EQ(rig.Codes().back(), proto::kEnd);
      EXPECT_LT(rig.PacketNumberOf(proto::kFailed), rig.PacketsAtLine(c.lines.size() - 1) + 1);
    }
  }
}

TEST(ChipCommandsFailureTest, RollingCodeGoesOnTheChipAndAdvancesOnlyAfterAFullProgram) {
  for (bool configFails : {false, true}) {
    SCOPED_TRACE(configFails ? "configuration refused" : "passed");
    std::string fault;
    if (configFails) fault = "badcode@" + std::to_string(PacketOfStep(kOtp, kProgram, proto::kProgramConfig));
    OpsRig rig(kOtp, {.fault = fault});
    rig.Connect();
    rig.Rolling("0013 0012 0011 0010", "1 2 3 4");
    rig.FillImage();
    const ops::CommandResult result = ops::Program(rig.st());
    // Byte 0 (the last item) goes to the last address, into the word's low byte.
    EXPECT_EQ(rig.Chip().program[0x10] & 0xFF, 4);
    EXPECT_EQ(rig.Chip().program[0x13] & 0xFF, 1);
    EXPECT_NE(rig.project.Chip.RomWords[0x10] & 0xFF, 4);  // the image keeps its word
    const RollSettings after = ReadRollSettings(rig.host, rig.dir / "board.ini");
    if (configFails) {
      EXPECT_EQ(rig.host.log, (Lines{"Program OK!", "Config Fail!"}));
      EXPECT_EQ(after.Counts, (std::vector<std::int32_t>{4, 3, 2, 1}));
      EXPECT_TRUE(result.RollingCode.empty());
    } else {
      EXPECT_EQ(rig.host.log, (Lines{"Program OK!", "Config OK!", "Rolling Code:1 2 3 4",
                                     "Next Rolling Code:1 2 3 5"}));
      EXPECT_EQ(after.Counts, (std::vector<std::int32_t>{5, 3, 2, 1}));
      EXPECT_EQ(result.RollingCode, "1 2 3 4");
      EXPECT_EQ(result.NextRollingCode, "1 2 3 5");
    }
  }
}

}  // namespace
}  // namespace lk::test
