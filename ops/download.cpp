#include "ops/download.h"

#include "core/image.h"
#include "core/model_quirks.h"
#include "link/download_commands.h"
#include "link/eedata_commands.h"
#include "link/exchange.h"
#include "link/memory_commands.h"
#include "ops/frame.h"

namespace lk::ops {
namespace {

// Every step in order; false at the first that fails.
bool StoreProject(Station& st) {
  Writer& w = st.writer;
  const ChipParams& chip = st.project.Chip;
  const auto roll = RollingSettingsFor(st);
  const RollRecord record = MakeRollRecord(roll ? &*roll : nullptr);
  // The checksum the document window shows for the image, and the EEDATA sum.
  const auto imageSum = static_cast<std::uint16_t>(ProgramChecksum(chip) & 0xFFFF);
  const std::uint16_t eeSum = EedataChecksum(chip);

  // No PrepareChip here: the writer keeps the project, no chip is read.
  if (!ChipTypeAccepted(st, Target::Chip)) return false;
  if (ProgramRom(w, chip, nullptr, Target::Store) != Fault::None) return false;
  if (ProgramConfig(w, chip, Target::Store) != Fault::None) return false;
  if (SendImageSum(w, imageSum) != Fault::None) return false;
  if (SendRollingStart(w, record) != Fault::None) return false;
  if (SendRollingStep(w, record) != Fault::None) return false;
  // The stand-alone parameter block; QVM75P82 writers take it with the chip code.
  if (!ChipTypeAccepted(st, StoresBlockWithChipCode(chip) ? Target::Chip : Target::Store)) {
    return false;
  }
  ReturnToIdle(w);
  const VerifyResult rom = VerifyRom(w, chip, nullptr, Target::Store);
  if (rom.Stopped() || !rom.Pass) return false;
  if (!VerifyConfig(w, chip, Target::Store).Pass) return false;
  if (CheckStoredSum(w, imageSum) != Fault::None) return false;
  ReturnToIdle(w);
  if (DownloadCarriesEedata(chip)) {
    // The writer is told 0xA2 or 0xA0, never the empty flag of a fresh image.
    const std::uint8_t flag = chip.EeFlag == kEeFlagPresent ? kEeFlagPresent : kEeFlagAbsent;
    if (SendEedataInfo(w, flag, eeSum) != Fault::None) return false;
    if (EndEedataInfo(w) != Fault::None) return false;
    if (chip.EeFlag == kEeFlagPresent) {
      if (ProgramEedata(w, chip, Target::Store) != Fault::None) return false;
      if (!VerifyEedata(w, chip, Target::Store).Pass) return false;
    }
  }
  if (ReadRollingStart(w, record) != Fault::None) return false;
  return ReadRollingStep(w, record) == Fault::None;
}

}  // namespace

CommandResult Download(Station& st) {
  return RunFramed(st, {"Download", ChipCheck::None}, [&](CommandResult& result) {
    if (!StoreProject(st)) {
      EndStep(result, "Download", false, st.writer.LastFault());
      FinishOperation(st.writer, false);
      st.host.Log("Download Fail!");
      result.FailureLine = "Download Fail!";
      return false;
    }
    EndStep(result, "Download", true);
    st.host.Log("Download OK!");
    FinishOperation(st.writer, true);
    return true;
  });
}

}  // namespace lk::ops
