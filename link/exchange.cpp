#include "link/exchange.h"

#include <algorithm>
#include <chrono>

#include "link/protocol.h"

namespace lk {

bool CheckAnswer(const Report& answer) {
  const int n = answer[1];
  if (n > proto::kPacketLength || n < 3) return false;
  return proto::Checksum(&answer[1], n - 1) == answer[n];
}

Fault GetWriterVersion(Writer& writer) {
  if (Fault f = writer.SendPacket({3, proto::kGetVersion, 0xA3}); f != Fault::None) return f;
  Report answer;
  if (Fault f = writer.ExpectAnswer(proto::kGetVersion, answer); f != Fault::None) return f;
  writer.WriterVersion = answer[3] + 256u * answer[4];
  return Fault::None;
}

void FinishOperation(Writer& writer, bool passed) {
  // No answer is read: the writer only switches its lamps and ends the session. A send
  // that fails has nothing left to end.
  if (writer.SendShort(passed ? proto::kPassed : proto::kFailed) != Fault::None) return;
  writer.WaitMs(100);
  (void)writer.SendShort(proto::kEnd);
}

void ReturnToIdle(Writer& writer) {
  if (!writer.FirstGeneration()) return;
  (void)writer.SendShort(proto::kIdle);
  writer.WaitMs(50);
}

void NextStep(Writer& writer) {
  writer.WaitMs(50);
  ReturnToIdle(writer);
}

Fault WaitWriterReady(Writer& writer) {
  using Clock = std::chrono::steady_clock;
  const auto deadline = Clock::now() + std::chrono::milliseconds(writer.ReadyDeadlineMs());
  for (;;) {
    if (Fault f = writer.SendShort(proto::kReady); f != Fault::None) return f;
    Report answer;
    if (Fault f = writer.ReceiveReport(answer); f != Fault::None) return f;
    // The checksum is not looked at here: only the answer code counts.
    if (answer[2] == proto::kAnswerOk) return Fault::None;
    if (answer[2] == proto::kAnswerNotBlank) return writer.Fail(Fault::NotBlank, "blank check");
    if (answer[2] != proto::kAnswerBusy) return writer.Fail(Fault::Refused, "blank check");
    if (Clock::now() >= deadline) {
      return writer.Fail(Fault::StillBusy, "still busy after " +
                                               std::to_string(writer.ReadyDeadlineMs()) + " ms");
    }
  }
}

Result<std::vector<std::uint16_t>> ReadWords(Writer& writer, int lastIndex, std::uint8_t code,
                                             bool progress) {
  std::vector<std::uint16_t> words;
  if (lastIndex < 0) return words;
  words.reserve(lastIndex + 1);
  const bool first = writer.FirstGeneration();
  for (int address = 0; address <= lastIndex; address += proto::kWordsPerReadPacket) {
    const int count = std::min(proto::kWordsPerReadPacket, lastIndex + 1 - address);
    // The first generation counts addresses itself and always answers 32 words.
    const Fault sent = first ? writer.SendShort(code)
                             : writer.SendFramed({6, code, proto::Lo(address), proto::Hi(address),
                                                  static_cast<std::uint8_t>(2 * count)});
    if (sent != Fault::None) return sent;
    Report answer;
    if (Fault f = writer.ReceiveReport(answer); f != Fault::None) return f;
    // Raw answer: word k at indices 2k+1 (low) and 2k+2 (high).
    for (int k = 0; k < count; ++k) {
      words.push_back(static_cast<std::uint16_t>(answer[2 * k + 1] | (answer[2 * k + 2] << 8)));
    }
    if (progress) writer.Progress(std::min(address + count, lastIndex), lastIndex);
  }
  return words;
}

}  // namespace lk
