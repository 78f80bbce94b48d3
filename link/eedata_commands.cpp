#include "link/eedata_commands.h"

#include <algorithm>

#include "core/numeric_text.h"
#include "link/exchange.h"
#include "link/protocol.h"

namespace lk {
namespace {

std::vector<std::uint8_t> EeImage(const ChipParams& chip) {
  std::vector<std::uint8_t> bytes = chip.EeBytes;
  bytes.resize(std::max<int>(chip.EeSize + 1, 0), 0xFF);
  return bytes;
}

}  // namespace

Fault PrepareEedata(Writer& writer) {
  if (Fault f = writer.SendShort(proto::kEePrepare); f != Fault::None) return f;
  Report answer;
  if (Fault f = writer.ReceiveReport(answer); f != Fault::None) return f;
  // Only the answer code counts here; the writer's checksum is not looked at.
  return writer.ExpectCode(proto::kAnswerOk, answer);
}

Fault ProgramEedata(Writer& writer, const ChipParams& chip, Target target) {
  const std::uint8_t code = target == Target::Chip ? proto::kEeProgram : proto::kStoreEeProgram;
  const std::vector<std::uint8_t> bytes = EeImage(chip);
  const int total = static_cast<int>(bytes.size());
  writer.Progress(0, chip.EeSize);
  for (int address = 0; address < total; address += proto::kEeBytesPerProgramPacket) {
    const int k = std::min(proto::kEeBytesPerProgramPacket, total - address);
    std::vector<std::uint8_t> packet = {static_cast<std::uint8_t>(6 + k), code,
                                        proto::Lo(address), proto::Hi(address),
                                        static_cast<std::uint8_t>(k)};
    packet.insert(packet.end(), bytes.begin() + address, bytes.begin() + address + k);
    if (Fault f = writer.ExchangeOk(std::move(packet)); f != Fault::None) return f;
    writer.Progress(std::min(address + k, total - 1), total - 1);
  }
  return Fault::None;
}

Result<std::vector<std::uint8_t>> ReadEedata(Writer& writer, const ChipParams& chip,
                                             Target target) {
  const std::uint8_t code = target == Target::Chip ? proto::kEeRead : proto::kStoreEeRead;
  const int total = std::max<int>(chip.EeSize + 1, 0);
  std::vector<std::uint8_t> bytes;
  bytes.reserve(total);
  // Packets go out while the address is below EeSize: when EeSize is a multiple of 64,
  // the last byte (index EeSize) is never asked for and reads as 0.
  for (int address = 0; address < chip.EeSize; address += proto::kEeBytesPerReadPacket) {
    if (Fault f = writer.SendFramed({5, code, proto::Lo(address), proto::Hi(address)});
        f != Fault::None) {
      return f;
    }
    Report answer;
    if (Fault f = writer.ReceiveReport(answer); f != Fault::None) return f;
    const int k = std::min(proto::kEeBytesPerReadPacket, total - address);
    bytes.insert(bytes.end(), answer.begin() + 1, answer.begin() + 1 + k);
  }
  bytes.resize(total, 0);
  return bytes;
}

VerifyResult VerifyEedata(Writer& writer, const ChipParams& chip, Target target) {
  VerifyResult result;
  const std::vector<std::uint8_t> expected = EeImage(chip);
  const auto read = ReadEedata(writer, chip, target);
  if (!read) {
    result.Why = read.Why();
    return result;
  }
  for (std::size_t i = 0; i < expected.size(); ++i) {
    if (expected[i] == (*read)[i]) continue;
    result.Address = "eedata(" + std::to_string(i) + ")";
    result.FileData = Hex4(expected[i]);
    result.ChipData = Hex4((*read)[i]);
    return result;
  }
  result.Pass = true;
  return result;
}

}  // namespace lk
