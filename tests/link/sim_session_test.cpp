// The command layer against the simulated writer: whole sessions end to end, and the
// faults a real writer can show (silence, corruption, unplugging, endless busy).
#include <gtest/gtest.h>

#include <chrono>

#include "core/chip_database.h"
#include "link/writer.h"
#include "sim/sim_bus.h"
#include "tests/support/recording_host.h"

namespace lk::test {
namespace {

struct SimSession {
  RecordingHost host;
  Home home{LK_PROGRAM_DIR};
  Project project;
  std::unique_ptr<Writer> writer;

  SimSession(const std::string& model, int version, const std::string& fault = "") {
    project.Chip = LoadChipParams(host, home, model);
    sim::SimConfig config;
    config.chipModel = model;
    config.version = version;
    config.fault = fault;
    writer = std::make_unique<Writer>(host, sim::MakeSimBus(host, home, config));
    writer->SetWaiter([](int) {});
    writer->SetReceiveTimeoutMs(200);
  }
  bool Start() {
    return writer->FindWriter() && writer->OpenWriterHandles() && writer->GetWriterVersion() &&
           writer->CheckChipType(project.Chip, 0xF6) && writer->PrepareChip(project.Chip);
  }
};

TEST(SimSessionTest, ProgramAndVerifyBothGenerations) {
  for (int version : {2, 3}) {
    SimSession s("QVM50F96A", version);
    ASSERT_TRUE(s.project.Chip.Loaded());
    ASSERT_TRUE(s.Start()) << version;
    for (int i = 0; i <= s.project.Chip.RomSize; ++i) s.project.Chip.RomWords[i] = (i * 7) & 0x3FFF;
    ASSERT_TRUE(s.writer->ProgramRom(s.project, 0xF3)) << version;
    s.writer->ReturnToIdle();
    VerifyResult result;
    s.writer->VerifyRom(s.project, result, 0xF2);
    EXPECT_TRUE(result.Pass) << version << " " << result.Address;
    s.project.Chip.RomWords[100] ^= 1;
    s.writer->ReturnToIdle();  // first generation: restarts the writer's address counter
    s.writer->VerifyRom(s.project, result, 0xF2);
    EXPECT_FALSE(result.Pass);
    EXPECT_EQ(result.Address, "0064");
    s.writer->FinishOperation(true);
  }
}

TEST(SimSessionTest, FaultsEndTheStepWithinTheTimeout) {
  // Packet 1 is the version query, 2 the block, 3 the configuration read, 4.. program.
  for (const char* fault : {"noanswer@6", "badsum@6", "badcode@6", "unplug@6"}) {
    SimSession s("QVM50F96A", 3, fault);
    ASSERT_TRUE(s.Start()) << fault;
    const auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(s.writer->ProgramRom(s.project, 0xF3)) << fault;
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(2)) << fault;
  }
}

TEST(SimSessionTest, BusyForeverMeetsTheDeadline) {
  SimSession s("QVM50F96A", 3, "busy@1");
  ASSERT_TRUE(s.Start());
  s.writer->SetReadyDeadlineMs(100);
  EXPECT_FALSE(s.writer->WaitWriterReady());
}

TEST(SimSessionTest, WrongChipIsRefused) {
  SimSession s("QVM50F96A", 3, "wrongchip@1");
  ASSERT_TRUE(s.writer->FindWriter() && s.writer->OpenWriterHandles());
  const bool typeOk =
      s.writer->CheckChipType(s.project.Chip, 0xF6) && s.writer->PrepareChip(s.project.Chip);
  EXPECT_FALSE(typeOk);
}

}  // namespace
}  // namespace lk::test
