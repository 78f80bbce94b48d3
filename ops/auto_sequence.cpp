#include "ops/auto_sequence.h"

#include "core/image.h"
#include "link/eedata_commands.h"
#include "link/exchange.h"
#include "link/memory_commands.h"
#include "ops/chip_commands.h"
#include "ops/frame.h"

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
  return RunFramed(st, ChipCheck::TypeAndPrepare, [&](CommandResult& result) {
    Writer& w = st.writer;
    const ChipParams& chip = st.project.Chip;
    Host& host = st.host;
    auto fail = [&](const std::string& line) {
      FinishOperation(w, false);
      host.Log(line);
      return false;
    };

    if (withBlank) {
      const std::string caption = GetBlankEraseCaptions(chip).OpCaption;
      if (WaitWriterReady(w) != Fault::None) return fail(caption + " Fail!");
      host.Log(caption + " OK!");
      st.ui.PumpEvents();
    }

    NextStep(w);
    const auto roll = RollingSettingsFor(st);
    if (const Fault f = ProgramRom(w, chip, roll ? &*roll : nullptr); f != Fault::None) {
      ShowStepMessage(st, f);
      return fail("Program Fail!");
    }
    host.Log("Program OK!");
    st.ui.PumpEvents();

    NextStep(w);
    const VerifyResult rom = VerifyRom(w, chip, roll ? &*roll : nullptr);
    if (rom.Status == 1) {
      ShowStepMessage(st, rom.Why);
      return fail("Verify Fail!");
    }
    if (!rom.Pass) {
      FinishOperation(w, false);
      LogVerifyFailure(host, rom, false);
      return false;
    }

    // Without EEDATA the return to idle here and the one before the configuration come
    // one after the other; that is harmless and kept.
    NextStep(w);
    if (chip.EeFlag == kEeFlagPresent && chip.EeSize > 0) {
      // Lower case on purpose: these two lines have always read so in the auto run.
      if (!WriteEedata(w, chip)) return fail("Write eedata Fail!");
      host.Log("eedata OK!");
    }
    st.ui.PumpEvents();

    NextStep(w);
    if (ProgramConfig(w, chip) != Fault::None) return fail("Config Fail!");
    host.Log("Config OK!");
    st.ui.PumpEvents();

    NextStep(w);
    const VerifyResult config = VerifyConfig(w, chip);
    if (!config.Pass) {
      FinishOperation(w, false);
      LogVerifyFailure(host, config, true);  // "Verify Fail!" takes the place of "Config OK!"
      return false;
    }
    host.Log("Verify OK!");
    st.ui.PumpEvents();
    FinishOperation(w, true);
    AdvanceRolling(st, result);
    return true;
  });
}

}  // namespace lk::ops
