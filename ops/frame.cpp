#include "ops/frame.h"

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

void AdvanceRolling(Station& st, CommandResult& result) {
  RollAdvance advance;
  AdvanceRollCode(st.host, st.project.RollingEnabled, RollSettingsPath(st.project.ProjectPath),
                  &advance);
  result.RollingCode = advance.Used;
  result.NextRollingCode = advance.Next;
}

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

CommandResult RunFramed(Station& st, ChipCheck check,
                        const std::function<bool(CommandResult&)>& body) {
  Writer& w = st.writer;
  CommandResult result;
  HoldWindow(st);
  st.host.ClearLog();
  st.ui.PumpEvents();

  if (!w.FindWriter() || !w.OpenWriterHandles()) {
    // Nothing was opened and the progress bar is not touched again: only the line. A
    // writer this user may not open has had its own message, which says more.
    if (!w.WriterDenied()) st.host.Log(WriterNotFoundLine(st.project.Chip.Name, true));
    st.ui.ResumeMonitor();
    st.ui.SetWindowEnabled(true);
    result.Verdict = Outcome::NoWriter;
    return result;
  }
  w.WaitMs(50);

  bool passed = false;
  if (check == ChipCheck::TypeAndPrepare && !CheckAndPrepareChip(st)) {
    FinishOperation(w, false);
    st.host.Log("MCU Type Error!");
  } else {
    passed = body(result);
  }

  ReleaseWindow(st);
  w.CloseWriter();
  result.Verdict = passed ? Outcome::Passed : Outcome::Failed;
  if (!passed) result.Why = w.LastFault();
  return result;
}

}  // namespace lk::ops
