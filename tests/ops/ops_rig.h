// A chip command's whole world for the ops tests: a program folder of its own (a copy
// of the shipped dat/), the simulated writer in-process with a chip of the model in its
// socket, a Host and a window that record everything, and the project.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "core/chip_database.h"
#include "link/writer.h"
#include "ops/connection_monitor.h"
#include "ops/station.h"
#include "sim/sim_writer.h"
#include "tests/support/recording_host.h"
#include "tests/support/temp_dir.h"

namespace lk::test {

// Records the window's duties in order, and keeps the state they leave.
class RecordingUi : public ops::FrameUi {
 public:
  void PauseMonitor() override { Note("pause"), monitorRunning = false; }
  void ResumeMonitor() override { Note("resume"), monitorRunning = true; }
  void SetWindowEnabled(bool enabled) override {
    Note(enabled ? "enable" : "disable");
    windowEnabled = enabled;
  }
  void ResetProgress() override { Note("progress0"); }
  void PumpEvents() override { Note("pump"); }
  void RefreshDocument() override { Note("document"); }
  void RefreshConfigDisplay() override { Note("config"); }
  void RefreshEedataView() override { Note("eedata"); }
  std::vector<std::string> OpenWindowNames() const override { return windows; }

  std::vector<std::string> calls;
  std::vector<std::string> windows = {"FrmMain", "FrmDoc", "FrmEedata"};
  bool monitorRunning = true;
  bool windowEnabled = true;

 private:
  int Note(const std::string& call) {
    calls.push_back(call);
    return 0;
  }
};

// Notes, for every log line, how many packets the writer had received when it was
// written: a line before or after the end of the chip session can be told apart.
class TimelineHost : public RecordingHost {
 public:
  void Log(const std::string& line) override {
    RecordingHost::Log(line);
    logAt.push_back(packets ? packets() : 0);
  }
  void ReplaceLastLog(const std::string& line) override {
    if (log.empty()) {
      Log(line);
    } else {
      log.back() = line;
      logAt.back() = packets ? packets() : 0;
    }
  }
  std::function<long()> packets;
  std::vector<long> logAt;
};

struct RigOptions {
  int version = 3;          // the simulated writer's version low byte
  std::string fault = {};   // "KIND@N"
  std::string socketModel = {};  // the chip in the socket ("" = the rig's model)
  std::function<void(sim::SimChip&)> chip = {};  // changes to the chip before the run
  std::uint8_t writerType = 6;   // the identity's writer type (below 6: a dedicated writer)
};

class OpsRig {
 public:
  explicit OpsRig(const std::string& model, RigOptions options = {}) {
    std::filesystem::create_directories(dir.Path() / "dat");
    for (const char* name : {"qvmc.ini", "cfg.ini", "data.dat", "frm.dat"}) {
      std::filesystem::copy_file(std::filesystem::path(LK_PROGRAM_DIR) / "dat" / name,
                                 dir.Path() / "dat" / name);
    }
    project.Chip = LoadChipParams(host, home, model);
    EXPECT_TRUE(project.Chip.Loaded()) << model;
    project.ProjectPath = (dir / "board.lkx").string();

    sim::SimConfig config;
    config.version = options.version;
    config.busyAnswers = 2;
    config.writerType = options.writerType;
    std::string error;
    const auto fault = sim::ParseFault(options.fault, error);
    EXPECT_TRUE(fault) << error;
    sim::SimState state;
    state.id = config.id;
    const std::string socket = options.socketModel.empty() ? model : options.socketModel;
    state.chip = sim::SimChip::FromParams(LoadChipParams(host, home, socket));
    if (options.chip) options.chip(*state.chip);
    simWriter = std::make_shared<sim::SimWriter>(host, config, fault.value_or(sim::SimFault{}),
                                                 std::move(state));
    writer = std::make_unique<Writer>(sim::MakeSimBusFor(simWriter));
    writer->SetWaiter([](int) {});  // no real pauses between steps
    ops::AttachHost(*writer, host);
    writer->SetReceiveTimeoutMs(50);
    host.packets = [this] { return simWriter->PacketCount(); };
    station.emplace(ops::Station{host, ui, home, project, *writer});
  }

  ops::Station& st() { return *station; }

  // The version query a front-end makes before its first command.
  void Connect() {
    ASSERT_TRUE(writer->FindWriter() && writer->OpenWriterHandles());
    ops::QueryWriter(*writer, false);
    writer->CloseWriter();
  }

  // A program image that is not blank, within the model's word width.
  void FillImage() {
    ChipParams& c = project.Chip;
    for (std::size_t i = 0; i < c.RomWords.size(); ++i) {
      c.RomWords[i] = static_cast<std::int32_t>((i * 0x0123 + 7) & c.HexMcu);
    }
    for (std::size_t i = 0; i < c.EeBytes.size(); ++i) c.EeBytes[i] = static_cast<std::uint8_t>(i * 3 + 1);
  }

  // Writes the rolling-code settings beside the project and selects its Enable option.
  void Rolling(const std::string& address, const std::string& count) {
    dir.Write("board.ini", "[Rolling Code]\r\nAddress=" + address + "\r\nWorld_Lenth=4\r\n" +
                               "Mode=False\r\nCount=" + count + "\r\nStep=1 1 1 1\r\n" +
                               "Value=True\r\n2262mode=0\r\nVersion=1.0\r\n");
    project.RollingEnabled = true;
  }

  sim::SimChip Chip() const { return *simWriter->State().chip; }
  // The 1-based number of the first packet with `code` from packet `after` on; 0 if none.
  long PacketNumberOf(std::uint8_t code, long after = 1) const {
    const auto log = simWriter->Log();
    for (std::size_t i = static_cast<std::size_t>(after - 1); i < log.size(); ++i) {
      if (log[i].packet[1] == code) return static_cast<long>(i) + 1;
    }
    return 0;
  }
  // How many packets had been received when log line `index` was written.
  long PacketsAtLine(std::size_t index) const { return host.logAt.at(index); }
  std::vector<std::uint8_t> Codes() const {
    std::vector<std::uint8_t> codes;
    for (const auto& p : simWriter->Log()) codes.push_back(p.packet[1]);
    return codes;
  }

  TempDir dir;
  Home home{dir.Path()};
  TimelineHost host;
  RecordingUi ui;
  Project project;
  std::shared_ptr<sim::SimWriter> simWriter;
  std::unique_ptr<Writer> writer;
  std::optional<ops::Station> station;
};

using Lines = std::vector<std::string>;

}  // namespace lk::test
