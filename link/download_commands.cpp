// The download: storing a whole project in the writer for stand-alone programming,
// with the records the writer needs to program the rolling code itself.
#include <algorithm>

#include "link/protocol.h"
#include "link/writer.h"
#include "rolling/roll_settings.h"

namespace lk {

using proto::Hi;
using proto::Lo;

RollRecord Writer::MakeRollRecord(const Project& project) {
  RollRecord record;
  if (!project.RollingEnabled) return record;
  const RollSettings s = ReadRollSettings(host_, RollSettingsPath(project.ProjectPath));
  int length = std::clamp(s.WordLength, 0, 4);
  for (int i = 0; i < length; ++i) {
    if (i < static_cast<int>(s.Addresses.size())) record.Addresses[i] = s.Addresses[i] & 0xFFFF;
    if (i < static_cast<int>(s.Counts.size())) record.Codes[i] = Lo(s.Counts[i]);
    if (i < static_cast<int>(s.Steps.size())) record.Steps[i] = Lo(s.Steps[i]);
  }
  record.Flags = static_cast<std::uint8_t>(0x01 | (s.Mode2262 ? 0x02 : 0) | (length << 4));
  return record;
}

bool Writer::SendImageSum(std::uint16_t imageSum) {
  return ExchangeOk(Framed({5, proto::kImageSum, Lo(imageSum), Hi(imageSum)}));
}

bool Writer::SendRollingStart(const RollRecord& r) {
  std::vector<std::uint8_t> packet = {14, proto::kRollingStart, proto::kRollMarkA5,
                                      proto::kRollMark69};
  for (std::uint16_t address : r.Addresses) {
    packet.push_back(Lo(address));
    packet.push_back(Hi(address));
  }
  packet.push_back(r.Flags);
  return ExchangeOk(Framed(std::move(packet)));
}

bool Writer::SendRollingStep(const RollRecord& r) {
  std::vector<std::uint8_t> packet = {11, proto::kRollingStep};
  packet.insert(packet.end(), r.Codes.begin(), r.Codes.end());
  packet.insert(packet.end(), r.Steps.begin(), r.Steps.end());
  return ExchangeOk(Framed(std::move(packet)));
}

bool Writer::CheckStoredSum(std::uint16_t imageSum) {
  if (!SendShort(proto::kCheckStoredSum)) return false;  // checksum byte 0: 3 + 0xFD wraps
  Report a;
  if (!ReceiveReport(a)) return false;
  if (!CheckAnswer(a) || a[1] != 5 || a[2] != proto::kAnswerOk) return false;
  return (a[3] | (a[4] << 8)) == imageSum;
}

bool Writer::SendEedataInfo(std::uint8_t eeFlag, std::uint16_t eeSum) {
  return ExchangeOk(Framed({6, proto::kStoreEeInfo, eeFlag, Lo(eeSum), Hi(eeSum)}));
}

bool Writer::EndEedataInfo() {
  if (!SendShort(proto::kStoreEeInfoEnd)) return false;
  Report a;
  return ReceiveReport(a) && CheckAnswer(a) && a[2] == proto::kAnswerOk;
}

bool Writer::ReadRollingStart(const RollRecord& expected) {
  if (!SendShort(proto::kReadRollingStart)) return false;  // checksum 0xEF
  Report a;
  if (!ReceiveReport(a) || !CheckAnswer(a)) return false;
  if (a[1] != 14 || a[2] != proto::kAnswerOk) return false;
  if (a[3] != proto::kRollMark69 || a[4] != proto::kRollMarkA5) return false;
  for (int i = 0; i < 4; ++i) {
    if (a[5 + 2 * i] != Lo(expected.Addresses[i]) || a[6 + 2 * i] != Hi(expected.Addresses[i])) {
      return false;
    }
  }
  return a[13] == expected.Flags;
}

bool Writer::ReadRollingStep(const RollRecord& expected) {
  if (!SendShort(proto::kReadRollingStep)) return false;  // checksum 0xF0
  Report a;
  if (!ReceiveReport(a) || !CheckAnswer(a)) return false;
  if (a[1] != 11 || a[2] != proto::kAnswerOk) return false;
  for (int i = 0; i < 4; ++i) {
    if (a[3 + i] != expected.Codes[i] || a[7 + i] != expected.Steps[i]) return false;
  }
  return true;
}

bool Writer::DownloadProject(const Project& project, std::uint16_t imageSum, std::uint16_t eeSum,
                             bool eedataForOtherModels) {
  const ChipParams& chip = project.Chip;
  const RollRecord roll = MakeRollRecord(project);
  if (!CheckChipType(chip, proto::kChipType)) return false;
  if (!ProgramRom(project, proto::kStoreRom)) return false;
  if (!ProgramConfig(project, proto::kStoreConfig)) return false;
  if (!SendImageSum(imageSum)) return false;
  if (!SendRollingStart(roll)) return false;
  if (!SendRollingStep(roll)) return false;
  // QVM75P82 writers take the stand-alone block with the chip code; kept for them.
  const std::uint8_t blockCode = chip.Name == "QVM75P82" ? proto::kChipType : proto::kStoreChipType;
  if (!CheckChipType(chip, blockCode)) return false;
  ReturnToIdle();
  VerifyResult result;
  VerifyRom(project, result, proto::kStoreReadRom);
  if (result.Status == 1 || !result.Pass) return false;
  VerifyConfig(project, result, proto::kStoreReadConfig);
  if (!result.Pass) return false;
  if (!CheckStoredSum(imageSum)) return false;
  ReturnToIdle();
  const bool carriesEedata = chip.EeFlag == kEeFlagPresent;
  const bool alwaysInfo = chip.Prod == "101E" || chip.Prod == "101F";
  if (alwaysInfo || (eedataForOtherModels && carriesEedata)) {
    if (!SendEedataInfo(chip.EeFlag, eeSum)) return false;
    if (!EndEedataInfo()) return false;
    if (carriesEedata) {
      if (!ProgramEedata(project, proto::kStoreEeProgram)) return false;
      VerifyEedata(project, result, proto::kStoreEeRead);
      if (!result.Pass) return false;
    }
  }
  if (!ReadRollingStart(roll)) return false;
  return ReadRollingStep(roll);
}

}  // namespace lk
