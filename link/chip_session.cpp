#include "link/chip_session.h"

#include <cmath>

#include "core/model_quirks.h"
#include "core/numeric_text.h"
#include "link/exchange.h"
#include "link/protocol.h"

namespace lk {
namespace {

void Put16(std::array<std::uint8_t, 65>& buffer, int index, std::int32_t value) {
  buffer[index] = proto::Lo(value);
  buffer[index + 1] = proto::Hi(value);
}

}  // namespace

Fault CheckChipType(Writer& writer, const ChipParams& chip, Target target) {
  auto& b = writer.OutputReportData;
  b[0] = 64;
  b[1] = target == Target::Chip ? proto::kChipType : proto::kStoreChipType;
  Put16(b, 2, chip.Type);
  // Program memory size in pages of 256 words, rounded half to even like the writer's
  // configuration tool always did (0x3FF -> 4, 0x17F -> 2, 0x27F -> 2).
  Put16(b, 4, static_cast<std::int32_t>(std::nearbyint((chip.RomSize + 1) / 256.0)));
  Put16(b, 6, chip.ConfigLength);
  Put16(b, 8, chip.EeSize);
  Put16(b, 10, chip.HexMcu);
  Put16(b, 12, chip.VppSel);
  b[14] = (chip.VppMode & 0x80) != 0 ? 1 : 0;
  b[15] = 12;
  b[16] = 0;
  b[17] = 10;
  b[18] = 20;
  b[19] = 20;
  b[20] = 20;
  // Byte 21 is left alone: it keeps what the previous command put there, and the
  // writer's firmware has always received it that way.
  Put16(b, 22, chip.Erase0);
  Put16(b, 24, chip.Erase1);
  Put16(b, 26, chip.EraseRom);
  Put16(b, 28, chip.EraseConfig);
  Put16(b, 30, chip.ProgTime);
  b[32] = chip.VppMode;
  b[33] = proto::Lo(chip.SpcAdd);
  Put16(b, 34, chip.SpcDat);
  for (int i = 0; i < 12; ++i) {
    b[36 + i] = i < static_cast<int>(chip.Name.size()) ? static_cast<std::uint8_t>(chip.Name[i]) : 0;
  }
  Put16(b, 48, chip.BlankRom + 1);
  b[50] = proto::Lo(chip.BlankConfig);
  for (int i = 51; i <= 62; ++i) b[i] = 0;
  b[63] = proto::Checksum(b.data(), 63);

  Fault f = writer.SendReport();
  if (f == Fault::None) {
    Report answer;
    f = writer.ExpectAnswer(proto::kAnswerOk, answer);
  }
  if (f == Fault::None) return f;
  // Every refused parameter block is shown to the user at once, whoever sent it.
  writer.Notice(Fault::ChipType);
  return writer.Fail(Fault::ChipType, FaultText(f));
}

Result<ChipInfo> PrepareChip(Writer& writer, const ChipParams& chip) {
  if (Is32A3(chip)) {
    // These chips have no readable type word; nothing is read.
    ReturnToIdle(writer);
    return ChipInfo{};
  }
  const auto words = ReadWords(writer, 15, proto::kReadConfig);
  if (!words) {
    ReturnToIdle(writer);
    return words.Why();
  }
  const auto& w = *words;
  if (w[TypeWordIndex(chip)] != (chip.Type & 0xFFFF)) {
    ReturnToIdle(writer);
    return writer.Fail(Fault::ChipMismatch, "type word " + Hex4(w[TypeWordIndex(chip)]));
  }
  ChipInfo info{Hex2(w[9]) + Hex2(w[8]), Hex2(w[12]) + Hex2(w[11])};
  ReturnToIdle(writer);
  return info;
}

}  // namespace lk
