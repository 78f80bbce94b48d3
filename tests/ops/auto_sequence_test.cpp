#include "ops/auto_sequence.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "link/protocol.h"
#include "rolling/roll_code.h"
#include "rolling/roll_settings.h"
#include "tests/ops/ops_rig.h"

namespace lk::test {
namespace {

using ops::Outcome;

constexpr const char* kOtp = "QVM75P89";
// Flash, 2048 words, 64 bytes of EEDATA: the whole sequence with every step.
constexpr const char* kEedataChip = "QVM50F77B";

TEST(AutoSequenceTest, LinesOfTheRun) {
  struct Case {
    const char* what;
    const char* model;
    bool withBlank;
    bool eedata;  // the project carries EEDATA
    std::function<void(sim::SimChip&)> chip;
    Outcome outcome;
    Lines lines;
  };
  const Case cases[] = {
      {"with blank check", kOtp, true, false, nullptr, Outcome::Passed,
       {"Blank Check OK!", "Program OK!", "Config OK!", "Verify OK!"}},
      {"without blank check", kOtp, false, false, nullptr, Outcome::Passed,
       {"Program OK!", "Config OK!", "Verify OK!"}},
      {"with EEDATA", kEedataChip, true, true, nullptr, Outcome::Passed,
       {"Erase OK!", "Program OK!", "eedata OK!", "Config OK!", "Verify OK!"}},
      {"EEDATA not carried", kEedataChip, true, false, nullptr, Outcome::Passed,
       {"Erase OK!", "Program OK!", "Config OK!", "Verify OK!"}},
      {"not blank", kOtp, true, false, [](sim::SimChip& c) { c.programmed = true; },
       Outcome::Failed, {"Blank Check Fail!"}},
      {"program memory differs", kOtp, false, false, [](sim::SimChip& c) { c.program[5] = 0; },
       Outcome::Failed, {"Program OK!", "Verify Fail!", "Data Address:0005", "File Data:05B6",
                         "MCU Data:0000"}},
      {"configuration differs: \"Config OK!\" is written over", kOtp, false, false,
       [](sim::SimChip& c) { c.config[0] = 0; }, Outcome::Failed,
       {"Program OK!", "Verify Fail!", "Data Address:Config(0)", "File Data:3FF0",
        "MCU Data:0000"}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    OpsRig rig(c.model, {.chip = c.chip});
    rig.Connect();
    rig.FillImage();
    rig.project.Chip.ConfigWords[0] = 0x3FF0;
    if (c.eedata) rig.project.Chip.EeFlag = kEeFlagPresent;
    const ops::CommandResult result = ops::Auto(rig.st(), c.withBlank);
    EXPECT_EQ(result.Verdict, c.outcome);
    EXPECT_EQ(rig.host.log, c.lines);
    const auto codes = rig.Codes();
    auto count = [&codes](std::uint8_t code) { return std::count(codes.begin(), codes.end(), code); };
    EXPECT_EQ(count(proto::kReady) > 0, c.withBlank);
    EXPECT_EQ(count(proto::kEeProgram) > 0, c.eedata && c.outcome == Outcome::Passed);
    // A program memory mismatch stops before EEDATA and configuration are written.
    if (c.lines.size() > 1 && c.lines[1] == "Verify Fail!" && c.lines[2] == "Data Address:0005") {
      EXPECT_EQ(count(proto::kProgramConfig), 0);
    }
    EXPECT_EQ(count(c.outcome == Outcome::Passed ? proto::kPassed : proto::kFailed), 1);
  }
}

// The code a passed run must have put on the chip: the image with the rolling code.
std::vector<std::int32_t> ExpectedProgram(OpsRig& rig, const RollSettings& roll) {
  std::vector<std::int32_t> words = rig.project.Chip.RomWords;
  PlaceRollCode(roll, words);
  return words;
}

bool IsSuccessLine(const std::string& line) {
  return line.size() > 3 && line.compare(line.size() - 3, 3, "OK!") == 0;
}

// Faults on every packet of an Auto run with EEDATA and the rolling code on: every run
// ends with all the success lines, or with exactly one failure line (a verify with its
// three detail lines) after the success lines of the steps before it; never an "OK"
// for a chip that does not hold the image; the code advances only after success.
class AutoFaultSweep : public ::testing::TestWithParam<int> {};

TEST_P(AutoFaultSweep, EveryPacketEveryFault) {
  const int version = GetParam();
  auto setUp = [](OpsRig& rig) {
    rig.FillImage();
    rig.project.Chip.EeFlag = kEeFlagPresent;
    rig.Rolling("0023 0022 0021 0020", "1 2 3 4");
  };
  long packets = 0;
  Lines success;
  {
    OpsRig dry(kEedataChip, {.version = version});
    dry.Connect();
    setUp(dry);
    ASSERT_EQ(ops::Auto(dry.st(), true).Verdict, Outcome::Passed);
    packets = dry.simWriter->PacketCount();
    success = dry.host.log;
  }
  const Lines failures = {"Erase Fail!", "Program Fail!", "Verify Fail!", "Write eedata Fail!",
                          "Config Fail!"};
  int passed = 0, failed = 0;
  for (const char* kind : {"noanswer", "unplug", "badsum", "badcode"}) {
    for (long n = 1; n <= packets; ++n) {
      const std::string fault = std::string(kind) + "@" + std::to_string(n);
      SCOPED_TRACE(fault + " v" + std::to_string(version));
      OpsRig rig(kEedataChip, {.version = version, .fault = fault});
      if (rig.writer->FindWriter() && rig.writer->OpenWriterHandles()) {
        ops::QueryWriter(*rig.writer, false);
        rig.writer->CloseWriter();
      }
      setUp(rig);
      const RollSettings roll = ReadRollSettings(rig.host, rig.dir / "board.ini");
      const ops::CommandResult result = ops::Auto(rig.st(), true);
      const RollSettings after = ReadRollSettings(rig.host, rig.dir / "board.ini");
      const Lines& log = rig.host.log;
      if (result.Verdict == Outcome::Passed) {
        ++passed;
        EXPECT_EQ(log, success);
        const sim::SimChip chip = rig.Chip();
        const auto expected = ExpectedProgram(rig, roll);
        EXPECT_TRUE(std::equal(expected.begin(), expected.end(), chip.program.begin()))
            << "a passed run must leave the image on the chip";
        EXPECT_EQ(chip.eedata, rig.project.Chip.EeBytes);
        EXPECT_EQ(chip.config[0], rig.project.Chip.ConfigWords[0]);
        EXPECT_EQ(after.Counts, (std::vector<std::int32_t>{5, 3, 2, 1}));
        continue;
      }
      EXPECT_EQ(after.Counts, roll.Counts) << "the code advanced after a failed run";
      if (result.Verdict == Outcome::NoWriter) {
        EXPECT_STREQ(kind, "unplug");
        EXPECT_EQ(log, (Lines{"The Writer for \"" + std::string(kEedataChip) + "\" not Found!"}));
        continue;
      }
      ++failed;
      ASSERT_FALSE(log.empty());
      // The failure line, then for a verify mismatch its three detail lines.
      std::size_t at = log.size() - 1;
      if (log.size() >= 4 && log[at].rfind("MCU Data:", 0) == 0) at -= 3;
      const bool typeError = log.size() == 1 && log[0] == "MCU Type Error!";
      EXPECT_TRUE(typeError ||
                  std::find(failures.begin(), failures.end(), log[at]) != failures.end())
          << log[at];
      for (std::size_t i = 0; i < at; ++i) {
        EXPECT_TRUE(IsSuccessLine(log[i])) << log[i];
        if (i < success.size()) {
          EXPECT_EQ(log[i], success[i]);
        }
      }
    }
  }
  // The sweep reached both ends: runs that the fault did not touch, and failures.
  EXPECT_GT(passed, 0);
  EXPECT_GT(failed, 0);
}

INSTANTIATE_TEST_SUITE_P(BothGenerations, AutoFaultSweep, ::testing::Values(2, 3));

}  // namespace
}  // namespace lk::test
