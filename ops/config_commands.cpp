#include "ops/config_commands.h"

#include "link/exchange.h"
#include "link/memory_commands.h"
#include "link/protocol.h"
#include "ops/frame.h"

namespace lk::ops {

CommandResult ConfigWrite(Station& st) {
  return RunFramed(st, {"Config Write"}, [&](CommandResult& result) {
    Writer& w = st.writer;
    const ChipParams& chip = st.project.Chip;
    // A write that fails and one that does not read back equal give the same line.
    bool ok = ProgramConfig(w, chip) == Fault::None;
    if (ok) {
      NextStep(w);
      ok = VerifyConfig(w, chip).Pass;
    }
    EndStep(result, "Config", ok, ok ? Fault::None : w.LastFault());
    if (!ok) {
      FinishOperation(w, false);
      st.host.Log("Config Fail!");
      result.FailureLine = "Config Fail!";
      return false;
    }
    st.host.Log("Config OK!");
    FinishOperation(w, true);
    return true;
  });
}

CommandResult ConfigRead(Station& st) {
  return RunFramed(st, {"Config Read"}, [&](CommandResult& result) {
    ChipParams& chip = st.project.Chip;
    // The words replace the image's as they come; a read that got no answer leaves them.
    if (const auto words = ReadWords(st.writer, chip.ConfigLength, proto::kReadConfig)) {
      for (std::size_t i = 0; i < words->size() && i < chip.ConfigWords.size(); ++i) {
        chip.ConfigWords[i] = (*words)[i];
      }
    }
    EndStep(result, "Config", true);
    st.host.Log("Read Config OK!");
    st.ui.RefreshConfigDisplay();
    FinishOperation(st.writer, true);
    return true;
  });
}

}  // namespace lk::ops
