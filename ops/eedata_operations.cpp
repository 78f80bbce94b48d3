#include "ops/eedata_operations.h"

#include "link/eedata_commands.h"
#include "link/exchange.h"
#include "ops/frame.h"

namespace lk::ops {
namespace {

// Find, open, check the chip and that it has EEDATA; then `transfer`, then release the
// link. The window is held as for every chip command.
CommandResult RunEedata(Station& st, const char* command, const EedataReport& report,
                        const std::function<bool()>& transfer) {
  Writer& w = st.writer;
  CommandResult result;
  auto record = [&] {
    if (st.production != nullptr) st.production->Record(st.host, command, result);
  };
  HoldWindow(st);
  if (st.production != nullptr && !st.production->Ready(st.host)) {
    result.Verdict = Outcome::Refused;
    ReleaseWindow(st);
    record();
    return result;
  }
  if (!w.FindWriter() || !w.OpenWriterHandles()) {
    if (!w.WriterDenied()) report(WriterNotFoundLine(st.project.Chip.Name, false));
    result.Verdict = Outcome::NoWriter;
    ReleaseWindow(st);
    record();
    return result;
  }
  result.StepStart = std::chrono::steady_clock::now();
  w.WaitMs(50);
  bool passed = false;
  if (!CheckAndPrepareChip(st)) {
    // Here the line comes before the end of the session.
    report("MCU Type Error!");
    FinishOperation(w, false);
  } else {
    w.WaitMs(50);
    if (st.project.Chip.EeSize < 1) {
      st.host.Message(Icon::Information, "该芯片没有内部Eedata！", kAppTitle);
      FinishOperation(w, false);
    } else {
      passed = transfer();
    }
  }
  EndStep(result, "EEDATA", passed, passed ? Fault::None : w.LastFault());
  result.Verdict = passed ? Outcome::Passed : Outcome::Failed;
  if (!passed) result.Why = w.LastFault();
  w.CloseWriter();
  ReleaseWindow(st);
  record();
  return result;
}

}  // namespace

CommandResult WriteEedataToChip(Station& st, const EedataReport& report) {
  return RunEedata(st, "EEDATA Write", report, [&] {
    Writer& w = st.writer;
    const ChipParams& chip = st.project.Chip;
    bool ok = PrepareEedata(w) == Fault::None;
    if (ok) {
      w.WaitMs(50);
      ReturnToIdle(w);
      w.WaitMs(50);
      ok = ProgramEedata(w, chip) == Fault::None;
    }
    if (ok) {
      w.WaitMs(50);
      ReturnToIdle(w);
      w.WaitMs(50);
      ok = VerifyEedata(w, chip).Pass;
    }
    if (!ok) {
      report("Write Eedata Error!");
      FinishOperation(w, false);
      return false;
    }
    report("Write Eedata OK!");
    w.WaitMs(50);
    FinishOperation(w, true);
    return true;
  });
}

CommandResult ReadEedataFromChip(Station& st, const EedataReport& report) {
  return RunEedata(st, "EEDATA Read", report, [&] {
    // The read is not checked: the bytes replace the project's as they come, and a read
    // that got no answer leaves them as they were; the report is "OK" either way.
    if (auto bytes = ReadEedata(st.writer, st.project.Chip)) {
      st.project.Chip.EeBytes = std::move(*bytes);
    }
    st.ui.RefreshEedataView();
    report("Read Eedata OK!");
    FinishOperation(st.writer, true);
    return true;
  });
}

}  // namespace lk::ops
