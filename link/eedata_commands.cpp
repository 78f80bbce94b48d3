// EEDATA: the data EEPROM of the chip (0xB0/0xB1) or of the writer's store (0xC0/0xC1),
// and the EEDATA window's write and read operations.
#include <algorithm>

#include "core/numeric_text.h"
#include "link/protocol.h"
#include "link/writer.h"

namespace lk {
namespace {

std::vector<std::uint8_t> EeImage(const ChipParams& chip) {
  std::vector<std::uint8_t> bytes = chip.EeBytes;
  bytes.resize(std::max<int>(chip.EeSize + 1, 0), 0xFF);
  return bytes;
}

}  // namespace

bool Writer::PrepareEedata() {
  if (!SendShort(proto::kEePrepare)) return false;
  Report answer;
  if (!ReceiveReport(answer)) return false;
  return CheckAnswer(answer) && answer[2] == proto::kAnswerOk;
}

bool Writer::ProgramEedata(const Project& project, std::uint8_t code) {
  const std::vector<std::uint8_t> bytes = EeImage(project.Chip);
  const int total = static_cast<int>(bytes.size());
  host_.Progress(0, project.Chip.EeSize);
  for (int address = 0; address < total; address += proto::kEeBytesPerProgramPacket) {
    const int k = std::min(proto::kEeBytesPerProgramPacket, total - address);
    std::vector<std::uint8_t> packet = {static_cast<std::uint8_t>(6 + k), code,
                                        proto::Lo(address), proto::Hi(address),
                                        static_cast<std::uint8_t>(k)};
    packet.insert(packet.end(), bytes.begin() + address, bytes.begin() + address + k);
    if (!ExchangeOk(Framed(std::move(packet)))) return false;
    host_.Progress(std::min(address + k, total - 1), total - 1);
  }
  return true;
}

std::optional<std::vector<std::uint8_t>> Writer::ReadEedata(const ChipParams& chip,
                                                            std::uint8_t code) {
  const int total = std::max<int>(chip.EeSize + 1, 0);
  std::vector<std::uint8_t> bytes;
  bytes.reserve(total);
  for (int address = 0; address < total; address += proto::kEeBytesPerReadPacket) {
    if (!SendPacket(Framed({5, code, proto::Lo(address), proto::Hi(address)}))) {
      return std::nullopt;
    }
    Report answer;
    if (!ReceiveReport(answer)) return std::nullopt;
    const int k = std::min(proto::kEeBytesPerReadPacket, total - address);
    bytes.insert(bytes.end(), answer.begin() + 1, answer.begin() + 1 + k);
  }
  return bytes;
}

void Writer::VerifyEedata(const Project& project, VerifyResult& result, std::uint8_t code) {
  result = VerifyResult{};
  const std::vector<std::uint8_t> expected = EeImage(project.Chip);
  const auto read = ReadEedata(project.Chip, code);
  if (!read) {
    result.Status = 1;
    return;
  }
  for (std::size_t i = 0; i < expected.size(); ++i) {
    if (expected[i] == (*read)[i]) continue;
    result.Address = "eedata(" + std::to_string(i) + ")";
    result.FileData = Hex4(expected[i]);
    result.ChipData = Hex4((*read)[i]);
    return;
  }
  result.Pass = true;
}

// Steps shared by the EEDATA window's two operations, up to the check that the chip has
// EEDATA at all. False when the operation has already ended (and said why).
bool Writer::OpenForEedata(Project& project) {
  ChipParams& chip = project.Chip;
  if (!FindWriter() || !OpenWriterHandles()) {
    host_.Log("The Writer for " + chip.Name + " not Found!");
    return false;
  }
  WaitMs(50);
  bool typeOk = CheckChipType(chip, proto::kChipType);
  if (typeOk) {
    WaitMs(50);
    typeOk = PrepareChip(chip);
  }
  if (!typeOk) {
    host_.Log("MCU Type Error!");
    FinishOperation(false);
    CloseWriter();
    return false;
  }
  WaitMs(50);
  if (chip.EeSize < 1) {
    host_.Message(Icon::Information, "该芯片没有内部Eedata！", kAppTitle);
    FinishOperation(false);
    CloseWriter();
    return false;
  }
  return true;
}

bool Writer::WriteEedataToChip(Project& project) {
  if (!OpenForEedata(project)) return false;
  bool ok = PrepareEedata();
  if (ok) {
    WaitMs(50);
    ReturnToIdle();
    WaitMs(50);
    ok = ProgramEedata(project, proto::kEeProgram);
  }
  if (ok) {
    WaitMs(50);
    ReturnToIdle();
    WaitMs(50);
    VerifyResult result;
    VerifyEedata(project, result, proto::kEeRead);
    ok = result.Pass;
  }
  if (ok) {
    host_.Log("Write Eedata OK!");
    WaitMs(50);
    FinishOperation(true);
  } else {
    host_.Log("Write Eedata Error!");
    FinishOperation(false);
  }
  CloseWriter();
  return ok;
}

bool Writer::ReadEedataFromChip(Project& project) {
  if (!OpenForEedata(project)) return false;
  const auto bytes = ReadEedata(project.Chip, proto::kEeRead);
  if (!bytes) {
    // The writer stopped answering: the image is left as it was.
    host_.Log("Read Eedata Error!");
    FinishOperation(false);
    CloseWriter();
    return false;
  }
  project.Chip.EeBytes = *bytes;
  host_.Log("Read Eedata OK!");
  FinishOperation(true);
  CloseWriter();
  return true;
}

}  // namespace lk
