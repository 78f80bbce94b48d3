// The link's overhead: ProgramRom + VerifyRom of a 4096-word chip against the simulated
// writer with its timing model on, compared with the lower bound the link allows
// (every report 1 ms, every programmed word its programming time). Prints the ratio
// bound / measured; 1.0 would mean the host side costs nothing.
#include <sys/prctl.h>

#include <chrono>
#include <cstdio>
#include <memory>
#include <thread>

#include "bench/bench_support.h"
#include "core/chip_database.h"
#include "core/project.h"
#include "core/quiet_host.h"
#include "link/protocol.h"
#include "link/chip_session.h"
#include "link/exchange.h"
#include "link/memory_commands.h"
#include "link/writer.h"
#include "sim/sim_bus.h"
#include "sim/sim_writer.h"

int main(int argc, char** argv) {
  // The simulator sleeps for its timing model; the kernel's default 50 us timer slack
  // on every one of those sleeps would be charged to the link otherwise.
  prctl(PR_SET_TIMERSLACK, 1UL, 0, 0, 0);
  const char* home = argc > 1 ? argv[1] : LK_PROGRAM_DIR;
  const std::string model = "QVM50F96A";
  lk::QuietHost host(stderr, true);
  lk::Home programHome(home);
  lk::Project project;
  project.Chip = lk::LoadChipParams(host, programHome, model);
  if (!project.Chip.Loaded() || project.Chip.RomSize != 0xFFF) {
    std::fprintf(stderr, "link_bench: %s with 4096 words not found under %s\n", model.c_str(), home);
    return 2;
  }
  for (int i = 0; i <= project.Chip.RomSize; ++i) project.Chip.RomWords[i] = (i * 37) & 0xFFFF;

  lk::sim::SimConfig config;
  config.chipModel = model;
  config.version = 3;
  config.timing = true;
  long reports = 0;
  lk::Writer writer(
      std::make_unique<lk::bench::CountingBus>(lk::sim::MakeSimBus(host, programHome, config), reports));
  if (!writer.FindWriter() || !writer.OpenWriterHandles() ||
      lk::GetWriterVersion(writer) != lk::Fault::None ||
      lk::CheckChipType(writer, project.Chip) != lk::Fault::None ||
      !lk::PrepareChip(writer, project.Chip)) {
    std::fprintf(stderr, "link_bench: chip session could not start\n");
    return 1;
  }

  const long words = project.Chip.RomSize + 1;
  double best = 0;
  for (int round = 0; round < 3; ++round) {
    reports = 0;
    const auto start = std::chrono::steady_clock::now();
    const bool programmed = lk::ProgramRom(writer, project.Chip, nullptr) == lk::Fault::None;
    const lk::VerifyResult result = lk::VerifyRom(writer, project.Chip, nullptr);
    const auto took = std::chrono::steady_clock::now() - start;
    if (!programmed || !result.Pass) {
      std::fprintf(stderr, "link_bench: program/verify failed\n");
      return 1;
    }
    const auto bound = lk::sim::TimingBound(reports, words);
    const double ratio = std::chrono::duration<double>(bound).count() /
                         std::chrono::duration<double>(took).count();
    std::printf("program+verify 4096 words: %ld reports, bound %.1f ms, measured %.1f ms, "
                "ratio %.3f\n",
                reports, std::chrono::duration<double, std::milli>(bound).count(),
                std::chrono::duration<double, std::milli>(took).count(), ratio);
    if (ratio > best) best = ratio;
  }
  std::printf("link_bench ratio (best of 3): %.3f (goal >= 0.97)\n", best);

  // The same number of sleeps with nothing else: what the machine's timer costs alone.
  // When this baseline is already far from the bound the shortfall is the scheduler's.
  const auto bound = lk::sim::TimingBound(reports, words);
  const auto each = bound / reports;
  const auto start = std::chrono::steady_clock::now();
  for (long i = 0; i < reports; ++i) std::this_thread::sleep_for(each);
  const auto alone = std::chrono::steady_clock::now() - start;
  std::printf("sleep baseline: %ld sleeps take %.1f ms alone (bound / baseline %.3f)\n", reports,
              std::chrono::duration<double, std::milli>(alone).count(),
              std::chrono::duration<double>(bound).count() /
                  std::chrono::duration<double>(alone).count());
  lk::FinishOperation(writer, true);
  return 0;
}
