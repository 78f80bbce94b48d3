#include "link/memory_commands.h"

#include <algorithm>
#include <optional>

#include "core/model_quirks.h"
#include "core/numeric_text.h"
#include "link/chip_session.h"
#include "link/exchange.h"
#include "link/protocol.h"
#include "rolling/roll_code.h"

namespace lk {
namespace {

// How many configuration words are programmed and verified: those below ConfigLength
// (the writer handles the last one itself), as far as the words go.
int ConfigWordCount(const ChipParams& chip, const std::vector<std::int32_t>& words) {
  return std::max(std::min<int>(chip.ConfigLength, static_cast<int>(words.size())), 0);
}

// The outgoing program words and the addresses a verify leaves out.
struct OutgoingRom {
  std::vector<std::int32_t> Words;
  std::vector<std::int32_t> RollAddresses;
};

// The words ProgramRom sends, with the model rules and the rolling code applied.
Result<OutgoingRom> BuildRomWords(Writer& writer, const ChipParams& chip, const RollSettings* roll,
                                  Target target) {
  OutgoingRom out;
  std::vector<std::int32_t>& p = out.Words;
  p = chip.RomWords;
  p.resize(std::max(chip.RomSize + 1, 0), chip.HexMcu);
  const int last = chip.RomSize;

  // Factory words the chips carry and that must never be overwritten.
  if (Is32A3(chip) && last >= 1023) {
    for (int i = 1020; i <= 1023; ++i) p[i] = 0xFFFF;
  }
  if (target == Target::Chip) {
    const auto testWords = FactoryTestWordsOf(chip);
    if (testWords || KeepsVoltageReference(chip)) {
      const auto words = ReadWords(writer, 7, proto::kReadConfig);
      if (!words) return words.Why();
      const std::uint16_t w7 = (*words)[7];
      if (testWords) {
        if ((w7 >> 8) != testWords->mark) {
          // The message first, then the parameter block again, and nothing is programmed.
          writer.Notice(Fault::TestContent);
          (void)CheckChipType(writer, chip);
          return writer.Fail(Fault::TestContent, "configuration word 7 is " + Hex4(w7));
        }
        if (last >= testWords->address + 1) {
          p[testWords->address] = w7;
          p[testWords->address + 1] = w7 ^ chip.HexMcu;
        }
      } else {
        if (last >= 1) {
          p[last - 1] = w7;
          p[last] = w7 ^ chip.HexMcu;
        }
        // The parameter block again; a refusal is shown (a notice) but does not stop the
        // program: the packets that follow meet the writer's own answer.
        (void)CheckChipType(writer, chip);
      }
    }
    // The rolling code goes into the outgoing copy only; the image keeps its words.
    if (roll != nullptr) {
      if (!PlaceRollCode(*roll, p)) return writer.Fail(Fault::RollAddress, "rolling code");
      out.RollAddresses = RollCodeAddresses(*roll);
    }
  }
  return out;
}

// Words in packets of 24 (program / configuration), answer 0xE1 each.
Fault SendWords(Writer& writer, const std::vector<std::int32_t>& words, int count,
                std::uint8_t code, bool progress) {
  const bool first = writer.FirstGeneration();
  for (int address = 0; address < count; address += proto::kWordsPerProgramPacket) {
    const int n = std::min(proto::kWordsPerProgramPacket, count - address);
    std::vector<std::uint8_t> packet;
    if (first) {
      // No address: the writer counts the words itself, so packets go strictly in order.
      packet = {static_cast<std::uint8_t>(3 + 2 * n), code};
    } else {
      packet = {static_cast<std::uint8_t>(6 + 2 * n), code, proto::Lo(address),
                proto::Hi(address), static_cast<std::uint8_t>(2 * n)};
    }
    for (int i = 0; i < n; ++i) {
      const std::int32_t word = words[address + i];
      packet.push_back(proto::Lo(word));
      packet.push_back(proto::Hi(word));
    }
    if (Fault f = writer.ExchangeOk(std::move(packet)); f != Fault::None) return f;
    if (progress) writer.Progress(std::min(address + n, count - 1), count - 1);
  }
  return Fault::None;
}

VerifyResult Stopped(Fault why) {
  VerifyResult result;
  result.Why = why;
  return result;
}

}  // namespace

Fault ProgramRom(Writer& writer, const ChipParams& chip, const RollSettings* roll, Target target,
                 std::vector<std::int32_t>* sent) {
  const auto rom = BuildRomWords(writer, chip, roll, target);
  if (!rom) return rom.Why();
  if (sent != nullptr) *sent = rom->Words;
  writer.Progress(0, chip.RomSize);
  const std::uint8_t code = target == Target::Chip ? proto::kProgramRom : proto::kStoreRom;
  return SendWords(writer, rom->Words, chip.RomSize + 1, code, true);
}

Result<std::vector<std::int32_t>> ReadRom(Writer& writer, const ChipParams& chip) {
  writer.Progress(0, chip.RomSize);
  const auto words = ReadWords(writer, chip.RomSize, proto::kReadRom, true);
  if (!words) return words.Why();
  return std::vector<std::int32_t>(words->begin(), words->end());
}

Fault ProgramConfig(Writer& writer, const ChipParams& chip, Target target) {
  const std::vector<std::int32_t> words = ForcedConfigWords(chip);
  const std::uint8_t code = target == Target::Chip ? proto::kProgramConfig : proto::kStoreConfig;
  return SendWords(writer, words, ConfigWordCount(chip, words), code, false);
}

VerifyResult VerifyRom(Writer& writer, const ChipParams& chip, const RollSettings* roll,
                       Target target) {
  const auto expected = BuildRomWords(writer, chip, roll, target);
  if (!expected) return Stopped(expected.Why());
  writer.Progress(0, chip.RomSize);
  const std::uint8_t code = target == Target::Chip ? proto::kReadRom : proto::kStoreReadRom;
  const auto read = ReadWords(writer, chip.RomSize, code, true);
  if (!read) return Stopped(read.Why());
  // The D versions of these chips may read their two test words as 0xFEFF.
  const bool feffTolerance = ToleratesFeffTestWords(chip) && target == Target::Chip;
  const auto& skip = expected->RollAddresses;
  VerifyResult result;
  for (int i = 0; i <= chip.RomSize; ++i) {
    if (std::find(skip.begin(), skip.end(), i) != skip.end()) continue;
    const std::uint16_t want = static_cast<std::uint16_t>(expected->Words[i] & 0xFFFF);
    const std::uint16_t got = (*read)[i];
    if (want == got) continue;
    if (feffTolerance && (i == 4093 || i == 4094) && got == 0xFEFF) continue;
    result.Address = Hex4(i);
    result.FileData = Hex4(want);
    result.ChipData = Hex4(got);
    return result;
  }
  result.Pass = true;
  return result;
}

VerifyResult VerifyConfig(Writer& writer, const ChipParams& chip, Target target) {
  const std::vector<std::int32_t> expected = ForcedConfigWords(chip);
  const int count = ConfigWordCount(chip, expected);
  const std::uint8_t code = target == Target::Chip ? proto::kReadConfig : proto::kStoreReadConfig;
  const auto read = ReadWords(writer, count - 1, code);
  if (!read) return Stopped(read.Why());
  VerifyResult result;
  for (int i = 0; i < count; ++i) {
    const std::int32_t want = ExpectedConfigWord(chip, i, expected[i]);
    const std::int32_t got = ComparedConfigBits(chip, (*read)[i]);
    if (want == got) continue;
    result.Address = "Config(" + std::to_string(i) + ")";
    result.FileData = Hex4(want);
    result.ChipData = Hex4(got);
    return result;
  }
  result.Pass = true;
  return result;
}

}  // namespace lk
