// What a chip command works on: the Host (everything the user sees), the window around
// the command, the program folder, the open project and the writer session. The CLI and
// the desktop program each build one and pass it to the commands.
#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "core/home.h"
#include "core/host.h"
#include "core/project.h"
#include "link/fault.h"
#include "link/writer.h"
#include "ops/production_hooks.h"

namespace lk::ops {

// The window's duties around a chip command. The desktop program implements them with
// its widgets; a command line has no window and takes NullFrameUi.
class FrameUi {
 public:
  virtual ~FrameUi() = default;
  // The connection monitor must not use the link while a command runs.
  virtual void PauseMonitor() = 0;
  virtual void ResumeMonitor() = 0;
  // No menu, button or child window takes input while a command runs.
  virtual void SetWindowEnabled(bool enabled) = 0;
  // The document window's progress bar back to 0.
  virtual void ResetProgress() = 0;
  // Let pending events run once, so that what was just written shows.
  virtual void PumpEvents() = 0;
  // The views that follow from the image: the hex document with its checksum, the
  // configuration display, and the EEDATA window's text.
  virtual void RefreshDocument() = 0;
  virtual void RefreshConfigDisplay() = 0;
  virtual void RefreshEedataView() = 0;
  // The names of the application's open windows, in order.
  virtual std::vector<std::string> OpenWindowNames() const = 0;
};

class NullFrameUi : public FrameUi {
 public:
  void PauseMonitor() override {}
  void ResumeMonitor() override {}
  void SetWindowEnabled(bool) override {}
  void ResetProgress() override {}
  void PumpEvents() override {}
  void RefreshDocument() override {}
  void RefreshConfigDisplay() override {}
  void RefreshEedataView() override {}
  std::vector<std::string> OpenWindowNames() const override { return {}; }
};

struct Station {
  Host& host;
  FrameUi& ui;
  const Home& home;
  Project& project;
  Writer& writer;
  // The production database's serials and records; nullptr on a PC without one.
  Production* production = nullptr;
};

// How a chip command ended.
enum class Outcome {
  Passed,    // the command reported success
  Failed,    // it wrote its failure line (or the chip check failed)
  NoWriter,  // the writer was not on the bus
  Refused,   // refused before the first packet (settings file or production database)
};

struct CommandResult {
  Outcome Verdict = Outcome::Failed;
  // What stopped a failed command on the link (None when the writer answered and the
  // failure is the chip's or the data's).
  Fault Why = Fault::None;
  // The rolling code given to this chip and the one stored for the next, when the
  // command advanced it.
  std::string RollingCode;
  std::string NextRollingCode;
  // The named steps in the order they ran, each timed.
  std::vector<StepRecord> Steps;
  // The line that ended a failed command in the message log ("Verify Fail!", ...).
  std::string FailureLine;
  // The program words actually sent (rolling code placed), empty when none were sent.
  std::vector<std::int32_t> ProgramWords;
  // The writer's firmware version ("v1.0") and ID (8 digits) when known, else empty.
  std::string WriterVersion;
  std::string WriterId;
  // When the step now running began (EndStep in frame.h).
  std::chrono::steady_clock::time_point StepStart = std::chrono::steady_clock::now();
};

// Routes the session's diagnostics, progress and notices (the message boxes of a refused
// chip and of missing factory test words) to the host.
void AttachHost(Writer& writer, Host& host);

}  // namespace lk::ops
