// The production run end to end: Auto (blank check, program, verify, configuration,
// verify) of a 4096-word chip through the operations layer, against the simulated
// writer with its timing model, compared with the bound the link and the protocol's
// own pauses allow: every report 1 ms, every programmed word its programming time, and
// every pause the operation asks for (between steps, at the end of the session). Prints
// bound / measured (1.0: the host side costs nothing; goal >= 0.98).
//
// Then the peak memory of `lkwriter-cli auto` on the same chip (goal <= 20 MB), read
// from the child's resource usage.
#include <fcntl.h>
#include <spawn.h>
#include <unistd.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "bench/bench_support.h"
#include "core/chip_database.h"
#include "core/quiet_host.h"
#include "ops/auto_sequence.h"
#include "ops/connection_monitor.h"
#include "ops/production.h"
#include "prod/database.h"
#include "sim/sim_bus.h"
#include "sim/sim_writer.h"

extern char** environ;

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

// Peak resident memory of a child process in kB, -1 when it could not run.
long PeakKilobytes(const std::vector<std::string>& args) {
  std::vector<char*> argv;
  for (const std::string& a : args) argv.push_back(const_cast<char*>(a.c_str()));
  argv.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
  pid_t pid = 0;
  const int rc = posix_spawn(&pid, argv[0], &actions, nullptr, argv.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  if (rc != 0) return -1;
  int status = 0;
  rusage usage{};
  if (wait4(pid, &status, 0, &usage) < 0 || !WIFEXITED(status) || WEXITSTATUS(status) != 0) {
    return -1;
  }
  return usage.ru_maxrss;
}

}  // namespace

int main(int argc, char** argv) {
  // The simulator sleeps for its timing model; the kernel's default 50 us timer slack on
  // every one of those sleeps would be charged to the host otherwise.
  prctl(PR_SET_TIMERSLACK, 1UL, 0, 0, 0);
  const fs::path home = argc > 1 ? argv[1] : LK_PROGRAM_DIR;
  const std::string model = "QVM50F96A";
  lk::QuietHost host(stderr, false);
  lk::Home programHome(home);
  lk::Project project;
  project.Chip = lk::LoadChipParams(host, programHome, model);
  if (!project.Chip.Loaded() || project.Chip.RomSize != 0xFFF) {
    std::fprintf(stderr, "auto_bench: %s with 4096 words not found under %s\n", model.c_str(),
                 home.c_str());
    return 2;
  }
  for (int i = 0; i <= project.Chip.RomSize; ++i) project.Chip.RomWords[i] = (i * 37) & 0xFEFF;

  double best = 0;
  for (int round = 0; round < 3; ++round) {
    lk::sim::SimConfig config;
    config.chipModel = model;
    config.timing = true;
    long reports = 0;
    lk::Writer writer(std::make_unique<lk::bench::CountingBus>(
        lk::sim::MakeSimBus(host, programHome, config), reports));
    long pausedMs = 0;
    writer.SetWaiter([&pausedMs](int ms) {
      pausedMs += ms;
      std::this_thread::sleep_for(std::chrono::milliseconds(ms));
    });
    writer.FindWriter();
    writer.OpenWriterHandles();
    lk::ops::QueryWriter(writer, false);
    writer.CloseWriter();
    reports = 0;
    lk::ops::NullFrameUi ui;
    lk::ops::Station st{host, ui, programHome, project, writer};
    const auto start = Clock::now();
    const lk::ops::CommandResult result = lk::ops::Auto(st, true);
    const auto took = Clock::now() - start;
    if (result.Verdict != lk::ops::Outcome::Passed) {
      std::fprintf(stderr, "auto_bench: the run failed\n");
      return 1;
    }
    // The programmed words: program memory and the configuration words below ConfigLength.
    const long words = project.Chip.RomSize + 1 + project.Chip.ConfigLength;
    const auto bound = lk::sim::TimingBound(reports, words) + std::chrono::milliseconds(pausedMs);
    const double ratio = std::chrono::duration<double>(bound).count() /
                         std::chrono::duration<double>(took).count();
    std::printf("auto 4096 words: %ld reports, %ld ms of pauses, bound %.1f ms, measured %.1f ms, "
                "ratio %.3f\n",
                reports, pausedMs, std::chrono::duration<double, std::milli>(bound).count(),
                std::chrono::duration<double, std::milli>(took).count(), ratio);
    best = std::max(best, ratio);
  }
  std::printf("auto_bench ratio (best of 3): %.3f (goal >= 0.98)\n", best);

  // The production database's cost: the same Auto with the rolling code on, without and
  // with the serial ledger and the record (SQLite in a scratch folder), rounds
  // alternating. Prints off / on (goal >= 0.98).
  const fs::path prodDir = fs::temp_directory_path() / ("auto_bench_db." + std::to_string(getpid()));
  fs::create_directories(prodDir);
  std::ofstream(prodDir / "bench.ini") << "[Rolling Code]\r\nAddress=7F3 7F2 7F1 7F0\r\n"
                                          "World_Lenth=4\r\nMode=False\r\nCount=1 0 0 0\r\n"
                                          "Step=0 0 0 1\r\nValue=True\r\n2262mode=0\r\n"
                                          "Version=1.0\r\n";
  project.ProjectPath = (prodDir / "bench.lkx").string();
  project.RollingEnabled = true;
  auto db = lk::prod::OpenDatabase("sqlite:" + (prodDir / "production.sqlite").string());
  if (!db) {
    std::fprintf(stderr, "auto_bench: %s\n", db.ErrorText().c_str());
    return 1;
  }
  double bestOff = 1e9, bestOn = 1e9;
  for (int round = 0; round < 6; ++round) {
    const bool on = round % 2 == 1;
    lk::sim::SimConfig config;
    config.chipModel = model;
    config.timing = true;
    lk::Writer writer(lk::sim::MakeSimBus(host, programHome, config));
    writer.FindWriter();
    writer.OpenWriterHandles();
    lk::ops::QueryWriter(writer, false);
    writer.CloseWriter();
    lk::ops::NullFrameUi ui;
    lk::ops::Station st{host, ui, programHome, project, writer};
    lk::ops::ProductionRun production(**db, project, writer, "");
    if (on) st.production = &production;
    const auto start = Clock::now();
    const lk::ops::CommandResult result = lk::ops::Auto(st, true);
    const double secs = std::chrono::duration<double>(Clock::now() - start).count();
    if (result.Verdict != lk::ops::Outcome::Passed || (on && !production.Recorded())) {
      std::fprintf(stderr, "auto_bench: the run with the rolling code failed (%s)\n",
                   result.FailureLine.c_str());
      return 1;
    }
    (on ? bestOn : bestOff) = std::min(on ? bestOn : bestOff, secs);
  }
  std::printf("auto 4096 words, rolling code: ledger and record off %.1f ms, on %.1f ms, "
              "ratio off/on %.3f (goal >= 0.98)\n",
              bestOff * 1000, bestOn * 1000, bestOff / bestOn);
  project.ProjectPath.clear();
  project.RollingEnabled = false;
  fs::remove_all(prodDir);

  // Peak memory of the command line on the same chip, with an image file of its own.
  const fs::path scratch = fs::temp_directory_path() / ("auto_bench." + std::to_string(getpid()));
  fs::create_directories(scratch);
  std::string bin(2 * 4096, '\0');
  for (int i = 0; i < 4096; ++i) {
    const int w = project.Chip.RomWords[i];
    bin[2 * i] = static_cast<char>(w & 0xFF);
    bin[2 * i + 1] = static_cast<char>((w >> 8) & 0xFF);
  }
  std::ofstream(scratch / "image.bin", std::ios::binary) << bin;
  const long kb = PeakKilobytes({(home / "lkwriter-cli").string(), "--home", home.string(),
                                 "--chip", model, "--db",
                                 "sqlite:" + (scratch / "production.sqlite").string(),
                                 "--device", "sim", "--sim-state",
                                 (scratch / "w.state").string(), "auto",
                                 (scratch / "image.bin").string()});
  fs::remove_all(scratch);
  if (kb < 0) {
    std::fprintf(stderr, "auto_bench: lkwriter-cli auto did not run cleanly\n");
    return 1;
  }
  std::printf("lkwriter-cli auto peak RSS: %.1f MB (goal <= 20 MB)\n", kb / 1024.0);
  return 0;
}
