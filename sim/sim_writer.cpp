#include "sim/sim_writer.h"

#include <algorithm>
#include <initializer_list>

#include "link/protocol.h"
#include "sim/sim_state_file.h"

namespace lk::sim {
namespace {

namespace proto = lk::proto;
using proto::Hi;
using proto::Lo;

// Store sizes: addresses on the wire are 16 bits; the configuration store is small.
constexpr size_t kStoreProgramWords = 0x10000;
constexpr size_t kStoreConfigWords = 256;
constexpr size_t kStoreEeBytes = 0x10000;

// The type word a chip of another type would carry (fault "wrongchip").
constexpr std::uint16_t kWrongTypeXor = 0x5A5A;

Report Checked(std::uint8_t code, std::initializer_list<std::uint8_t> data = {}) {
  Report r{};
  int n = 3 + static_cast<int>(data.size());
  r[1] = static_cast<std::uint8_t>(n);
  r[2] = code;
  int i = 3;
  for (std::uint8_t b : data) r[i++] = b;
  r[n] = proto::Checksum(&r[1], n - 1);
  return r;
}

Report Refused() {
  return Checked(proto::kAnswerRefused);
}
Report Ok() {
  return Checked(proto::kAnswerOk);
}

std::uint16_t Word(const std::uint8_t* p) {
  return static_cast<std::uint16_t>(p[0] | (p[1] << 8));
}

bool AnswersNothing(std::uint8_t code) {
  return code == proto::kIdle || code == proto::kEnd || code == proto::kPassed ||
         code == proto::kFailed;
}

// Writes words into a store array that grows on demand (never-written words read
// 0xFFFF). False when the words would pass the store's size.
bool StoreWords(std::vector<std::uint16_t>& store, size_t limit, size_t address,
                const std::uint8_t* data, int words) {
  if (address + static_cast<size_t>(words) > limit) return false;
  if (store.size() < address + words) store.resize(address + words, 0xFFFF);
  for (int k = 0; k < words; ++k) store[address + k] = Word(data + 2 * k);
  return true;
}

std::uint16_t WordAt(const std::vector<std::uint16_t>& words, size_t index) {
  return index < words.size() ? words[index] : 0xFFFF;
}

}  // namespace

SimWriter::SimWriter(Host& host, const SimConfig& config, SimFault fault, SimState state)
    : host_(host), config_(config), fault_(fault), state_(std::move(state)) {}

bool SimWriter::Present() {
  std::lock_guard lock(mutex_);
  // Unplugged from packet N on: the writer vanishes once N-1 packets went through.
  return !(fault_.kind == FaultKind::Unplug && packets_ + 1 >= fault_.packet);
}

bool SimWriter::Gone() const {
  std::lock_guard lock(mutex_);
  return gone_;
}

bool SimWriter::Accept(const Report& report, std::optional<Report>& answer, long& words,
                       std::string& error) {
  std::lock_guard lock(mutex_);
  answer.reset();
  words = 0;
  long number = packets_ + 1;
  if (fault_.From(FaultKind::Unplug, number)) {
    gone_ = true;
    error = "the simulated writer is unplugged";
    return false;
  }
  packets_ = number;
  LoggedPacket entry;
  std::copy(report.begin() + 1, report.end(), entry.packet.begin());
  const std::uint8_t* p = entry.packet.data();

  if (fault_.At(FaultKind::NoAnswer, number)) {
    Remember(entry);
    return true;
  }
  if (fault_.At(FaultKind::BadCode, number)) {
    if (!AnswersNothing(p[1])) answer = Checked(kFaultAnswerCode);
    entry.answer = answer;
    Remember(entry);
    return true;
  }

  bool changed = false;
  answer = Handle(p, words, changed);
  if (answer && fault_.At(FaultKind::BadSum, number)) {
    Report& r = *answer;
    if (answerRaw_) {
      r[1] ^= 0xFF;  // raw data carries no checksum: its first byte is spoiled instead
    } else {
      r[r[1]] = static_cast<std::uint8_t>(r[r[1]] + 1);
    }
  }
  entry.answer = answer;
  Remember(entry);
  wordsProgrammed_ += words;
  if (changed && !config_.stateFile.empty()) Save();
  return true;
}

bool SimWriter::FirstGeneration() const {
  return proto::IsFirstGeneration(config_.version);
}

bool SimWriter::FrameLengthOk(const std::uint8_t* p) const {
  int n = p[0];
  std::uint8_t code = p[1];
  switch (code) {
    case proto::kGetVersion:
    case proto::kGetId:
    case proto::kEePrepare:
    case proto::kStoreEeInfoEnd:
    case proto::kIdle:
    case proto::kEnd:
    case proto::kPassed:
    case proto::kFailed:
    case proto::kReadRollingStart:
    case proto::kReadRollingStep:
    case proto::kReady:
    case proto::kCheckStoredSum:
      return n == 3;
    case proto::kSetId:
      return n == 7;
    case proto::kStoreEeInfo:
      return n == 6;
    case proto::kImageSum:
      return n == 5;
    case proto::kRollingStart:
      return n == 14;
    case proto::kRollingStep:
      return n == 11;
    case proto::kChipType:
    case proto::kStoreChipType:
      return n == 64;
    case proto::kEeProgram:
    case proto::kStoreEeProgram:
      return n >= 7 && p[4] >= 1 && p[4] <= proto::kEeBytesPerProgramPacket && n == 6 + p[4];
    case proto::kEeRead:
    case proto::kStoreEeRead:
      return n == 5;
    case proto::kReadRom:
    case proto::kReadConfig:
    case proto::kStoreReadRom:
    case proto::kStoreReadConfig:
      return FirstGeneration() ? n == 3 : (n == 6 && p[4] <= proto::kEeBytesPerReadPacket);
    case proto::kProgramRom:
    case proto::kProgramConfig:
    case proto::kStoreRom:
    case proto::kStoreConfig:
      if (FirstGeneration()) {
        return n >= 5 && (n - 3) % 2 == 0 && (n - 3) / 2 <= proto::kWordsPerProgramPacket;
      }
      return n >= 8 && p[4] == n - 6 && p[4] % 2 == 0 && p[4] <= 2 * proto::kWordsPerProgramPacket;
    default:
      return false;
  }
}

std::optional<Report> SimWriter::Handle(const std::uint8_t* p, long& words, bool& changed) {
  std::uint8_t code = p[1];
  int n = p[0];
  answerRaw_ = false;
  bool frameOk = n >= 3 && n <= proto::kPacketLength && p[n - 1] == proto::Checksum(p, n - 1) &&
                 FrameLengthOk(p);
  if (!frameOk) return AnswersNothing(code) ? std::nullopt : std::optional<Report>(Refused());

  // The first generation's address counter starts again whenever the command changes.
  if (code != lastCode_) counter_ = 0;
  lastCode_ = code;

  SimStore& store = state_.store;
  switch (code) {
    case proto::kGetVersion:
      return Checked(proto::kGetVersion, {Lo(config_.version), kSimVersionHigh});
    case proto::kSetId:
      std::copy(p + 2, p + 6, state_.id.begin());
      changed = true;
      return Ok();
    case proto::kGetId: {
      const auto& id = state_.id;
      return Checked(proto::kIdStatus,
                     {id[0], id[1], id[2], id[3], config_.writerType, config_.marker});
    }
    case proto::kEePrepare:
      if (!state_.chip || state_.chip->eedata.empty()) return Refused();
      return Ok();
    case proto::kEeProgram:
    case proto::kStoreEeProgram:
      return HandleEeProgram(p, code, words, changed);
    case proto::kEeRead:
    case proto::kStoreEeRead:
      answerRaw_ = true;
      return HandleEeRead(p, code);
    case proto::kStoreEeInfo:
      store.eeFlag = p[2];
      store.eeSum = Word(p + 3);
      changed = true;
      return Ok();
    case proto::kStoreEeInfoEnd:
      return Ok();
    case proto::kIdle:
      counter_ = 0;
      return std::nullopt;
    case proto::kEnd:
      // End of the operation: a blank check left half-way is forgotten.
      busyLeft_ = -1;
      counter_ = 0;
      return std::nullopt;
    case proto::kPassed:
    case proto::kFailed:
      return std::nullopt;
    case proto::kRollingStart:
      if (p[2] != proto::kRollMarkA5 || p[3] != proto::kRollMark69) return Refused();
      std::copy(p + 4, p + 13, store.rollStart.begin());
      changed = true;
      return Ok();
    case proto::kRollingStep:
      std::copy(p + 2, p + 10, store.rollStep.begin());
      changed = true;
      return Ok();
    case proto::kReadRollingStart: {
      const auto& s = store.rollStart;
      return Checked(proto::kAnswerOk, {proto::kRollMark69, proto::kRollMarkA5, s[0], s[1], s[2],
                                        s[3], s[4], s[5], s[6], s[7], s[8]});
    }
    case proto::kReadRollingStep: {
      const auto& s = store.rollStep;
      return Checked(proto::kAnswerOk, {s[0], s[1], s[2], s[3], s[4], s[5], s[6], s[7]});
    }
    case proto::kReady:
      return HandleBlankCheck(changed);
    case proto::kReadRom:
    case proto::kReadConfig:
    case proto::kStoreReadRom:
    case proto::kStoreReadConfig:
      answerRaw_ = true;
      return HandleRead(p, code);
    case proto::kProgramRom:
    case proto::kProgramConfig:
    case proto::kStoreRom:
    case proto::kStoreConfig:
      return HandleProgram(p, code, words, changed);
    case proto::kChipType:
    case proto::kStoreChipType:
      return HandleChipType(p, code, changed);
    case proto::kImageSum:
      store.imageSum = Word(p + 2);
      changed = true;
      return Ok();
    case proto::kCheckStoredSum:
      return Checked(proto::kAnswerOk, {Lo(store.imageSum), Hi(store.imageSum)});
    default:
      return Refused();
  }
}

std::optional<Report> SimWriter::HandleChipType(const std::uint8_t* p, std::uint8_t code,
                                                bool& changed) {
  counter_ = 0;
  busyLeft_ = -1;
  if (code == proto::kStoreChipType) {
    state_.store.paramBlock.assign(p, p + proto::kPacketLength);
    changed = true;
    return Ok();
  }
  if (!state_.chip) return Refused();
  const SimChip& chip = *state_.chip;
  std::uint16_t socketType = static_cast<std::uint16_t>(chip.type & 0xFFFF);
  if (fault_.From(FaultKind::WrongChip, packets_)) socketType ^= kWrongTypeXor;
  std::string blockName;
  for (int i = 36; i < 48 && p[i] != 0; ++i) blockName += static_cast<char>(p[i]);
  if (Word(p + 2) != socketType || blockName != chip.name.substr(0, 12)) return Refused();
  return Ok();
}

std::optional<Report> SimWriter::HandleBlankCheck(bool& changed) {
  if (!state_.chip) {
    busyLeft_ = -1;
    return Refused();
  }
  if (fault_.From(FaultKind::Busy, packets_)) return Checked(proto::kAnswerBusy);
  if (busyLeft_ < 0) busyLeft_ = std::max(0, config_.busyAnswers);
  if (busyLeft_ > 0) {
    --busyLeft_;
    return Checked(proto::kAnswerBusy);
  }
  busyLeft_ = -1;
  SimChip& chip = *state_.chip;
  if (chip.otp) return Checked(chip.IsBlank() ? proto::kAnswerOk : proto::kAnswerNotBlank);
  chip.Erase();
  changed = true;
  return Ok();
}

std::optional<Report> SimWriter::HandleProgram(const std::uint8_t* p, std::uint8_t code,
                                               long& words, bool& changed) {
  size_t address;
  int count;
  const std::uint8_t* data;
  if (FirstGeneration()) {
    count = (p[0] - 3) / 2;
    data = p + 2;
    address = static_cast<size_t>(counter_);
    counter_ += count;
  } else {
    count = p[4] / 2;
    data = p + 5;
    address = Word(p + 2);
  }
  SimStore& store = state_.store;
  switch (code) {
    case proto::kStoreRom:
      if (!StoreWords(store.program, kStoreProgramWords, address, data, count)) return Refused();
      break;
    case proto::kStoreConfig:
      if (!StoreWords(store.config, kStoreConfigWords, address, data, count)) return Refused();
      break;
    default: {
      if (!state_.chip) return Refused();
      SimChip& chip = *state_.chip;
      // Programming only clears bits (OTP cells, and flash cells until erased).
      if (code == proto::kProgramRom) {
        if (address + count > chip.program.size()) return Refused();
        for (int k = 0; k < count; ++k) chip.program[address + k] &= Word(data + 2 * k);
      } else {
        if (address + count > chip.config.size()) return Refused();
        for (int k = 0; k < count; ++k) chip.config[address + k] &= Word(data + 2 * k);
      }
      chip.programmed = true;
    }
  }
  words = count;
  changed = true;
  return Ok();
}

std::uint16_t SimWriter::ChipConfigWord(int index) const {
  if (!state_.chip || index < 0 || index >= kConfigAreaWords) return 0xFFFF;
  std::uint16_t w = state_.chip->config[index];
  if (index == state_.chip->TypeWordIndex() && fault_.From(FaultKind::WrongChip, packets_)) {
    w ^= kWrongTypeXor;
  }
  return w;
}

Report SimWriter::HandleRead(const std::uint8_t* p, std::uint8_t code) {
  size_t address;
  int bytes;
  if (FirstGeneration()) {
    address = static_cast<size_t>(counter_);
    bytes = proto::kEeBytesPerReadPacket;
    counter_ += proto::kWordsPerReadPacket;
  } else {
    address = Word(p + 2);
    bytes = p[4];
  }
  Report r{};
  for (int i = 0; i < bytes; ++i) {
    size_t index = address + static_cast<size_t>(i / 2);
    std::uint16_t w = 0xFFFF;
    switch (code) {
      case proto::kReadRom:
        if (state_.chip) w = WordAt(state_.chip->program, index);
        break;
      case proto::kReadConfig:
        w = ChipConfigWord(static_cast<int>(std::min<size_t>(index, 0xFFFF)));
        break;
      case proto::kStoreReadRom:
        w = WordAt(state_.store.program, index);
        break;
      default:
        w = WordAt(state_.store.config, index);
    }
    r[1 + i] = (i % 2 == 0) ? Lo(w) : Hi(w);
  }
  return r;
}

std::optional<Report> SimWriter::HandleEeProgram(const std::uint8_t* p, std::uint8_t code,
                                                 long& words, bool& changed) {
  size_t address = Word(p + 2);
  int count = p[4];
  std::vector<std::uint8_t>* target;
  if (code == proto::kEeProgram) {
    if (!state_.chip || address + count > state_.chip->eedata.size()) return Refused();
    target = &state_.chip->eedata;
  } else {
    if (address + count > kStoreEeBytes) return Refused();
    target = &state_.store.eedata;
    if (target->size() < address + count) target->resize(address + count, 0xFF);
  }
  // EEDATA cells are rewritten byte by byte: no erase needed.
  std::copy(p + 5, p + 5 + count, target->begin() + static_cast<std::ptrdiff_t>(address));
  words = count;
  changed = true;
  return Ok();
}

Report SimWriter::HandleEeRead(const std::uint8_t* p, std::uint8_t code) {
  size_t address = Word(p + 2);
  static const std::vector<std::uint8_t> kNone;
  const std::vector<std::uint8_t>& source =
      code == proto::kEeRead ? (state_.chip ? state_.chip->eedata : kNone) : state_.store.eedata;
  Report r{};
  for (int i = 0; i < proto::kEeBytesPerReadPacket; ++i) {
    size_t index = address + static_cast<size_t>(i);
    r[1 + i] = index < source.size() ? source[index] : 0xFF;
  }
  return r;
}

void SimWriter::Save() {
  std::string error;
  if (!SaveStateFile(config_.stateFile, state_, error)) {
    host_.Diagnostic("simulated writer: cannot save " + config_.stateFile + ": " + error);
    // Once: every packet that changes the chip tries again.
    if (!saveFailed_) {
      saveFailed_ = true;
      host_.FileUnwritable("The simulated writer's state could not be saved to \"" +
                           config_.stateFile + "\": " + error + ".");
    }
  }
}

void SimWriter::Remember(const LoggedPacket& entry) {
  if (entry.answer) ++answers_;
  if (log_.size() == kLogCapacity) log_.pop_front();
  log_.push_back(entry);
}

std::vector<LoggedPacket> SimWriter::Log() const {
  std::lock_guard lock(mutex_);
  return std::vector<LoggedPacket>(log_.begin(), log_.end());
}

SimState SimWriter::State() const {
  std::lock_guard lock(mutex_);
  return state_;
}

long SimWriter::PacketCount() const {
  std::lock_guard lock(mutex_);
  return packets_;
}

long SimWriter::WordsProgrammed() const {
  std::lock_guard lock(mutex_);
  return wordsProgrammed_;
}

std::chrono::microseconds SimWriter::TimeCharged() const {
  // One lock for all three counts, so that a packet in between cannot split them.
  std::lock_guard lock(mutex_);
  return TimingBound(packets_ + answers_, wordsProgrammed_);
}

}  // namespace lk::sim
