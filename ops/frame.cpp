#include "ops/frame.h"

#include "core/bounded_read.h"
#include "link/chip_session.h"
#include "link/exchange.h"
#include "rolling/roll_code.h"

namespace lk::ops {

void AttachHost(Writer& writer, Host& host) {
  writer.SetDiagnosticSink([&host](const std::string& line) { host.Diagnostic(line); });
  writer.SetProgressSink([&host](long value, long maximum) { host.Progress(value, maximum); });
  writer.SetNoticeSink([&host](Fault fault) {
    if (fault == Fault::ChipType) {
      host.Message(Icon::Information, "芯片型号错误！", kAppTitle);
    } else if (fault == Fault::TestContent) {
      host.Message(Icon::Information,
                   "未检测到芯片应有的测试内容，请确认芯片型号是否正确以及芯片是否经过最新的测试！",
                   kAppTitle);
    }
  });
}

std::string WriterNotFoundLine(const std::string& model, bool quoted) {
  const std::string name = quoted ? "\"" + model + "\"" : model;
  return "The Writer for " + name + " not Found!";
}

bool ChipTypeAccepted(Station& st, Target target) {
  // A refusal has been shown as the writer's notice.
  return CheckChipType(st.writer, st.project.Chip, target) == Fault::None;
}

void ShowStepMessage(Station& st, Fault fault) {
  switch (fault) {
    case Fault::RollAddress:
      if (const auto settings = RollingSettingsFor(st)) {
        const auto words = static_cast<std::size_t>(std::max(st.project.Chip.RomSize + 1, 0));
        if (const auto address = RollAddressOutside(*settings, words)) {
          st.host.Message(Icon::Critical, RollAddressOutsideText(*address), kAppTitle);
        }
      }
      break;
    default:
      break;  // the failure line says it; the diagnostic log has the detail
  }
}

std::optional<RollSettings> RollingSettingsFor(Station& st) {
  if (!st.project.RollingEnabled) return std::nullopt;
  return ReadRollSettings(st.host, RollSettingsPath(st.project.ProjectPath));
}

bool ReserveRolling(Station& st, std::optional<RollSettings>& roll) {
  if (!roll || st.production == nullptr) return true;
  return st.production->ReserveSerial(st.host, *roll);
}

bool CommitRolling(Station& st, const std::optional<RollSettings>& roll) {
  if (!roll || st.production == nullptr) return true;
  return st.production->CommitSerial(st.host);
}

bool AdvanceRolling(Station& st, CommandResult& result, const std::optional<RollSettings>& roll) {
  RollAdvance advance;
  const bool stored =
      AdvanceRollCode(st.host, st.project.RollingEnabled, RollSettingsPath(st.project.ProjectPath),
                      &advance, roll ? &roll->Counts : nullptr);
  result.RollingCode = advance.Used;
  result.NextRollingCode = advance.Next;
  return stored;
}

void EndStep(CommandResult& result, const char* name, bool passed, Fault fault) {
  const auto now = std::chrono::steady_clock::now();
  StepRecord step;
  step.Name = name;
  step.Passed = passed;
  if (fault != Fault::None) step.Fault = FaultText(fault);
  step.Ms = static_cast<long>(
      std::chrono::duration_cast<std::chrono::milliseconds>(now - result.StepStart).count());
  result.Steps.push_back(std::move(step));
  result.StepStart = now;
}

namespace {

// A rolling-code settings file that is there but cannot be read (a FIFO, a folder, a
// link loop, no permission, too large) would let the chip go out without its serial:
// the command is refused before its first packet, naming the file.
bool SettingsFileReadable(Station& st) {
  if (st.project.ProjectPath.empty()) return true;
  const std::filesystem::path path = RollSettingsPath(st.project.ProjectPath);
  std::string bytes;
  ReadOutcome outcome = ReadRegularFile(path, kMaxDataFileBytes, bytes);
  if (outcome.problem == ReadProblem::Missing) {
    // Missing is today's "not found" path, unless a link leads nowhere or round in a loop.
    std::error_code ec;
    const auto status = std::filesystem::symlink_status(path, ec);
    if (ec || status.type() == std::filesystem::file_type::not_found) return true;
    outcome.problem = ReadProblem::Unreadable;
    outcome.reason = "the link leads nowhere or round in a loop";
  }
  if (outcome.Ok()) return true;
  st.host.FileUnreadable(CannotReadText(path, outcome));
  return false;
}

}  // namespace

bool CheckAndPrepareChip(Station& st) {
  if (!ChipTypeAccepted(st, Target::Chip)) return false;
  st.writer.WaitMs(50);
  const auto info = PrepareChip(st.writer, st.project.Chip);
  if (!info) return false;
  st.project.Chip.ChipInfo1 = info->Info1;
  st.project.Chip.ChipInfo2 = info->Info2;
  return true;
}

void HoldWindow(Station& st) {
  st.writer.ClearFault();
  st.ui.PauseMonitor();
  st.ui.SetWindowEnabled(false);
  st.ui.ResetProgress();
}

void ReleaseWindow(Station& st) {
  st.ui.ResumeMonitor();
  st.ui.SetWindowEnabled(true);
  st.ui.ResetProgress();
}

CommandResult RunFramed(Station& st, const FrameSpec& spec,
                        const std::function<bool(CommandResult&)>& body) {
  Writer& w = st.writer;
  CommandResult result;
  auto record = [&] {
    if (st.production != nullptr) st.production->Record(st.host, spec.Command, result);
  };
  HoldWindow(st);
  st.host.ClearLog();
  st.ui.PumpEvents();

  if ((spec.UsesRollingCode && !SettingsFileReadable(st)) ||
      (st.production != nullptr && !st.production->Ready(st.host))) {
    ReleaseWindow(st);
    result.Verdict = Outcome::Refused;
    record();
    return result;
  }

  if (!w.FindWriter() || !w.OpenWriterHandles()) {
    // Nothing was opened and the progress bar is not touched again: only the line. A
    // writer this user may not open has had its own message, which says more.
    if (!w.WriterDenied()) st.host.Log(WriterNotFoundLine(st.project.Chip.Name, true));
    st.ui.ResumeMonitor();
    st.ui.SetWindowEnabled(true);
    result.Verdict = Outcome::NoWriter;
    record();
    return result;
  }
  w.WaitMs(50);

  bool passed = false;
  result.StepStart = std::chrono::steady_clock::now();
  if (spec.Check == ChipCheck::TypeAndPrepare && !CheckAndPrepareChip(st)) {
    FinishOperation(w, false);
    st.host.Log("MCU Type Error!");
    result.FailureLine = "MCU Type Error!";
    EndStep(result, "Chip Check", false, w.LastFault());
  } else {
    if (spec.Check == ChipCheck::TypeAndPrepare) EndStep(result, "Chip Check", true);
    passed = body(result);
  }

  ReleaseWindow(st);
  w.CloseWriter();
  result.Verdict = passed ? Outcome::Passed : Outcome::Failed;
  if (!passed) {
    result.Why = w.LastFault();
    // A failed chip does not take its code: the next chip gets it.
    if (st.production != nullptr) st.production->ReleaseSerial(st.host);
  }
  record();
  return result;
}

}  // namespace lk::ops
