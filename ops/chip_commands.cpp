#include "ops/chip_commands.h"

#include "core/image.h"
#include "core/model_quirks.h"
#include "link/eedata_commands.h"
#include "link/exchange.h"
#include "link/protocol.h"
#include "ops/frame.h"
#include "ops/result_lines.h"

namespace lk::ops {

void LogVerifyFailure(Host& host, const VerifyResult& result, bool overwriteLast) {
  if (overwriteLast) {
    host.ReplaceLastLog(kVerifyFail);
  } else {
    host.Log(kVerifyFail);
  }
  host.Log("Data Address:" + result.Address);
  host.Log("File Data:" + result.FileData);
  host.Log("MCU Data:" + result.ChipData);
}

CommandResult BlankCheck(Station& st) {
  return RunFramed(st, {"Blank Check"}, [&](CommandResult& result) {
    // The writer runs the blank check (or the erase) and answers when it is done.
    const std::string caption = GetBlankEraseCaptions(st.project.Chip).OpCaption;
    if (WaitWriterReady(st.writer) != Fault::None) {
      EndStep(result, caption.c_str(), false, st.writer.LastFault());
      FinishOperation(st.writer, false);
      st.host.Log(caption + " Fail!");
      result.FailureLine = caption + " Fail!";
      return false;
    }
    st.host.Log(caption + " OK!");
    EndStep(result, caption.c_str(), true);
    FinishOperation(st.writer, true);
    return true;
  });
}

CommandResult Program(Station& st) {
  return RunFramed(st, {"Program", ChipCheck::TypeAndPrepare, true}, [&](CommandResult& result) {
    Writer& w = st.writer;
    const ChipParams& chip = st.project.Chip;
    auto fail = [&](const char* step, const std::string& line, bool log = true) {
      EndStep(result, step, false, w.LastFault());
      FinishOperation(w, false);
      if (log) st.host.Log(line);
      result.FailureLine = line;
      return false;
    };
    auto roll = RollingSettingsFor(st);
    if (!ReserveRolling(st, roll)) return fail("Program", "Program Fail!");
    if (const Fault f = ProgramRom(w, chip, roll ? &*roll : nullptr, Target::Chip,
                                   &result.ProgramWords);
        f != Fault::None) {
      ShowStepMessage(st, f);
      return fail("Program", "Program Fail!");
    }
    st.host.Log("Program OK!");
    EndStep(result, "Program", true);
    st.ui.PumpEvents();
    NextStep(w);
    if (ProgramConfig(w, chip) != Fault::None) return fail("Config", "Config Fail!");
    st.host.Log("Config OK!");
    EndStep(result, "Config", true);
    st.ui.PumpEvents();
    if (!CommitRolling(st, roll)) return fail("Commit Serial", "serial not committed", false);
    FinishOperation(w, true);
    // The command has reported success; a next code that could not be stored fails it.
    return AdvanceRolling(st, result, roll);
  });
}

CommandResult Verify(Station& st) {
  return RunFramed(st, {"Verify", ChipCheck::TypeAndPrepare, true}, [&](CommandResult& result) {
    Writer& w = st.writer;
    const ChipParams& chip = st.project.Chip;
    auto failed = [&](const char* step) {
      EndStep(result, step, false, w.LastFault());
      result.FailureLine = kVerifyFail;
      return false;
    };
    if (VerifyChecksConfigFirst(chip)) {
      // These chips carry a "programmed" mark in bit 1 of configuration word 1: a chip
      // without it is not compared at all. The line comes before the end of the session.
      const auto config = ReadWords(w, chip.ConfigLength, proto::kReadConfig);
      if (!config || config->size() < 2 || ((*config)[1] & 0x2) == 0) {
        st.host.Log(kVerifyFail);
        FinishOperation(w, false);
        return failed("Verify Config");
      }
    }
    NextStep(w);
    const auto roll = RollingSettingsFor(st);
    const VerifyResult rom = VerifyRom(w, chip, roll ? &*roll : nullptr);
    if (rom.Stopped()) {
      ShowStepMessage(st, rom.Why);
      FinishOperation(w, false);
      st.host.Log(kVerifyFail);
      return failed("Verify");
    }
    if (!rom.Pass) {
      FinishOperation(w, false);
      LogVerifyFailure(st.host, rom, false);
      return failed("Verify");
    }
    EndStep(result, "Verify", true);
    NextStep(w);
    const VerifyResult config = VerifyConfig(w, chip);
    if (!config.Pass) {
      FinishOperation(w, false);
      // Over the last line: nothing has been written in this command yet, so the log is
      // empty and the line is appended.
      LogVerifyFailure(st.host, config, true);
      return failed("Verify Config");
    }
    EndStep(result, "Verify Config", true);
    st.host.Log("Verify OK!");
    st.ui.PumpEvents();
    FinishOperation(w, true);
    return true;
  });
}

CommandResult Read(Station& st) {
  return RunFramed(st, {"Read"}, [&](CommandResult& result) {
    Writer& w = st.writer;
    ChipParams& chip = st.project.Chip;
    const auto rom = ReadRom(w, chip);
    if (!rom) {
      EndStep(result, "Read", false, rom.Why());
      FinishOperation(w, false);
      st.host.Log("Read Eedata Fail!");  // the program memory read failed; the text is kept
      result.FailureLine = "Read Eedata Fail!";
      return false;
    }
    chip.RomWords = *rom;
    // Whatever the configuration and EEDATA reads give is taken; a read that got no
    // answer at all leaves those words as they were.
    NextStep(w);
    if (const auto config = ReadWords(w, chip.ConfigLength, proto::kReadConfig)) {
      for (std::size_t i = 0; i < config->size() && i < chip.ConfigWords.size(); ++i) {
        chip.ConfigWords[i] = (*config)[i];
      }
    }
    NextStep(w);
    if (chip.EeSize > 0) {
      if (auto ee = ReadEedata(w, chip)) chip.EeBytes = std::move(*ee);
    }
    // The EEDATA window is looked for under a name that differs from its own in letter
    // case, so it is never refreshed here; the comparison is kept as it always was.
    for (const std::string& name : st.ui.OpenWindowNames()) {
      if (name == "Frmeedata") {
        st.ui.RefreshEedataView();
        break;
      }
    }
    EndStep(result, "Read", true);
    st.host.Log("Read OK!");
    st.host.Log("CheckSum In IC is " + ChipChecksumText(chip));
    st.ui.RefreshDocument();
    st.ui.RefreshConfigDisplay();
    FinishOperation(w, true);
    return true;
  });
}

}  // namespace lk::ops
