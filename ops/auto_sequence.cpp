#include "ops/auto_sequence.h"

#include "core/image.h"
#include "link/eedata_commands.h"
#include "link/exchange.h"
#include "link/memory_commands.h"
#include "ops/chip_commands.h"
#include "ops/frame.h"
#include "ops/result_lines.h"

namespace lk::ops {
namespace {

// PrepareEedata, ProgramEedata (0xB0) and VerifyEedata (0xB1), each after a return to
// idle; true when the bytes read back equal.
bool WriteEedata(Writer& w, const ChipParams& chip) {
  if (PrepareEedata(w) != Fault::None) return false;
  NextStep(w);
  if (ProgramEedata(w, chip) != Fault::None) return false;
  NextStep(w);
  return VerifyEedata(w, chip).Pass;
}

}  // namespace

CommandResult Auto(Station& st, bool withBlank) {
  return RunFramed(st, {"Auto", ChipCheck::TypeAndPrepare, true}, [&](CommandResult& result) {
    Writer& w = st.writer;
    const ChipParams& chip = st.project.Chip;
    Host& host = st.host;
    // The step that failed, its line in the log, and the end of the chip session.
    auto fail = [&](const char* step, const std::string& line, bool log = true) {
      EndStep(result, step, false, w.LastFault());
      FinishOperation(w, false);
      if (log) host.Log(line);
      result.FailureLine = line;
      return false;
    };

    if (withBlank) {
      const std::string caption = GetBlankEraseCaptions(chip).OpCaption;
      if (WaitWriterReady(w) != Fault::None) return fail(caption.c_str(), caption + " Fail!");
      host.Log(caption + " OK!");
      EndStep(result, caption.c_str(), true);
      st.ui.PumpEvents();
    }

    NextStep(w);
    auto roll = RollingSettingsFor(st);
    if (!ReserveRolling(st, roll)) return fail("Program", "Program Fail!");
    if (const Fault f = ProgramRom(w, chip, roll ? &*roll : nullptr, Target::Chip,
                                   &result.ProgramWords);
        f != Fault::None) {
      ShowStepMessage(st, f);
      return fail("Program", "Program Fail!");
    }
    host.Log("Program OK!");
    EndStep(result, "Program", true);
    st.ui.PumpEvents();

    NextStep(w);
    const VerifyResult rom = VerifyRom(w, chip, roll ? &*roll : nullptr);
    if (rom.Stopped()) {
      ShowStepMessage(st, rom.Why);
      return fail("Verify", kVerifyFail);
    }
    if (!rom.Pass) {
      fail("Verify", kVerifyFail, false);
      LogVerifyFailure(host, rom, false);
      return false;
    }
    EndStep(result, "Verify", true);

    // Without EEDATA the return to idle here and the one before the configuration come
    // one after the other; that is harmless and kept.
    NextStep(w);
    if (chip.EeFlag == kEeFlagPresent && chip.EeSize > 0) {
      // Lower case on purpose: these two lines have always read so in the auto run.
      if (!WriteEedata(w, chip)) return fail("EEDATA", "Write eedata Fail!");
      host.Log("eedata OK!");
      EndStep(result, "EEDATA", true);
    }
    st.ui.PumpEvents();

    NextStep(w);
    if (ProgramConfig(w, chip) != Fault::None) return fail("Config", "Config Fail!");
    host.Log("Config OK!");
    EndStep(result, "Config", true);
    st.ui.PumpEvents();

    NextStep(w);
    const VerifyResult config = VerifyConfig(w, chip);
    if (!config.Pass) {
      fail("Verify Config", kVerifyFail, false);
      LogVerifyFailure(host, config, true);  // "Verify Fail!" takes the place of "Config OK!"
      return false;
    }
    host.Log("Verify OK!");
    EndStep(result, "Verify Config", true);
    st.ui.PumpEvents();
    if (!CommitRolling(st, roll)) return fail("Commit Serial", "serial not committed", false);
    FinishOperation(w, true);
    return AdvanceRolling(st, result, roll);
  });
}

}  // namespace lk::ops
