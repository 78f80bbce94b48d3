#include "ops/config_commands.h"

#include "link/exchange.h"
#include "link/memory_commands.h"
#include "link/protocol.h"
#include "ops/frame.h"

namespace lk::ops {

CommandResult ConfigWrite(Station& st) {
  return RunFramed(st, ChipCheck::TypeAndPrepare, [&](CommandResult&) {
    Writer& w = st.writer;
    const ChipParams& chip = st.project.Chip;
    // A write that fails and one that does not read back equal give the same line.
    bool ok = ProgramConfig(w, chip) == Fault::None;
    if (ok) {
      NextStep(w);
      ok = VerifyConfig(w, chip).Pass;
    }
    if (!ok) {
      FinishOperation(w, false);
      st.host.Log("Config Fail!");
      return false;
    }
    st.host.Log("Config OK!");
    FinishOperation(w, true);
    return true;
  });
}

CommandResult ConfigRead(Station& st) {
  return RunFramed(st, ChipCheck::TypeAndPrepare, [&](CommandResult&) {
    ChipParams& chip = st.project.Chip;
    // The words replace the image's as they come; a read that got no answer leaves them.
    if (const auto words = ReadWords(st.writer, chip.ConfigLength, proto::kReadConfig)) {
      for (std::size_t i = 0; i < words->size() && i < chip.ConfigWords.size(); ++i) {
        chip.ConfigWords[i] = (*words)[i];
      }
    }
    st.host.Log("Read Config OK!");
    st.ui.RefreshConfigDisplay();
    FinishOperation(st.writer, true);
    return true;
  });
}

}  // namespace lk::ops
