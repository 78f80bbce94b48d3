// The link and the command frame: reports, answers, pacing, version, end of operation.
#include "link/writer.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <thread>

#include "link/protocol.h"

namespace lk {

std::string Hex2(std::int32_t value) {
  char text[3];
  std::snprintf(text, sizeof text, "%02X", static_cast<unsigned>(value) & 0xFFu);
  return text;
}

bool CheckAnswer(const Report& answer) {
  const int n = answer[1];
  if (n > proto::kPacketLength || n < 3) return false;
  return proto::Checksum(&answer[1], n - 1) == answer[n];
}

Writer::Writer(Host& host, std::unique_ptr<WriterBus> bus) : host_(host), bus_(std::move(bus)) {}

Writer::~Writer() { CloseWriter(); }

bool Writer::FindWriter() { return bus_ != nullptr && bus_->Present(); }

bool Writer::OpenWriterHandles() {
  if (bus_ == nullptr) return false;
  transport_ = bus_->Open();
  if (!transport_) {
    host_.Diagnostic("CreateFile, ReadHandle: the writer could not be opened");
    return false;
  }
  return true;
}

void Writer::CloseWriter() { transport_.reset(); }

bool Writer::SendReport() {
  if (!transport_) {
    host_.Diagnostic("SendReport: the writer is not open");
    return false;
  }
  Report report{};
  report[0] = 0;
  std::copy(OutputReportData.begin(), OutputReportData.begin() + proto::kPacketLength,
            report.begin() + 1);
  if (!transport_->Send(report, receiveTimeoutMs_)) {
    LogApiResult("SendReport");
    return false;
  }
  return true;
}

bool Writer::ReceiveReport(Report& answer) {
  answer.fill(0);
  if (!transport_) {
    host_.Diagnostic("ReceiveReport: the writer is not open");
    return false;
  }
  if (!transport_->Receive(answer, receiveTimeoutMs_)) {
    LogApiResult("ReceiveReport");
    answer.fill(0);
    return false;
  }
  return true;
}

void Writer::LogApiResult(const std::string& caption) {
  const std::string error = transport_ ? transport_->LastError() : std::string("not open");
  host_.Diagnostic(caption + ": " + error);
}

bool Writer::FirstGeneration() const { return proto::IsFirstGeneration(WriterVersion); }

void Writer::WaitMs(int ms) {
  if (waiter_) {
    waiter_(ms);
  } else if (ms > 0) {
    std::this_thread::sleep_for(std::chrono::milliseconds(ms));
  }
}

bool Writer::SendPacket(std::initializer_list<std::uint8_t> bytes) {
  std::copy(bytes.begin(), bytes.end(), OutputReportData.begin());
  return SendReport();
}

bool Writer::SendPacket(const std::vector<std::uint8_t>& bytes) {
  const std::size_t count = std::min<std::size_t>(bytes.size(), proto::kPacketLength);
  std::copy(bytes.begin(), bytes.begin() + count, OutputReportData.begin());
  return SendReport();
}

bool Writer::SendShort(std::uint8_t code) {
  // Byte arithmetic: for 0xFD the sum 0x100 wraps to 0.
  return SendPacket({3, code, static_cast<std::uint8_t>(3 + code)});
}

std::vector<std::uint8_t> Writer::Framed(std::vector<std::uint8_t> body) {
  body.push_back(proto::Checksum(body.data(), static_cast<int>(body.size())));
  return body;
}

bool Writer::ExchangeOk(const std::vector<std::uint8_t>& packet) {
  if (!SendPacket(packet)) return false;
  Report answer;
  if (!ReceiveReport(answer)) return false;
  return CheckAnswer(answer) && answer[2] == proto::kAnswerOk;
}

bool Writer::GetWriterVersion() {
  // The checksum 0xA3 is sent as a literal.
  if (!SendPacket({3, proto::kGetVersion, 0xA3})) return false;
  Report answer;
  if (!ReceiveReport(answer)) return false;
  if (!CheckAnswer(answer) || answer[2] != proto::kGetVersion) return false;
  WriterVersion = answer[3] + 256u * answer[4];
  return true;
}

void Writer::FinishOperation(bool passed) {
  // No answer is read: the writer only switches its lamps and ends the session.
  SendShort(passed ? proto::kPassed : proto::kFailed);
  WaitMs(100);
  SendShort(proto::kEnd);
}

void Writer::ReturnToIdle() {
  if (!FirstGeneration()) return;
  SendShort(proto::kIdle);
  WaitMs(50);
}

bool Writer::WaitWriterReady() {
  using Clock = std::chrono::steady_clock;
  const auto deadline = Clock::now() + std::chrono::milliseconds(readyDeadlineMs_);
  for (;;) {
    if (!SendShort(proto::kReady)) return false;
    Report answer;
    if (!ReceiveReport(answer)) return false;
    // The checksum is not looked at here: only the answer code counts.
    if (answer[2] == proto::kAnswerOk) return true;
    if (answer[2] != proto::kAnswerBusy) return false;
    if (Clock::now() >= deadline) {
      host_.Diagnostic("WaitWriterReady: still busy after " + std::to_string(readyDeadlineMs_) +
                       " ms");
      return false;
    }
  }
}

std::optional<std::vector<std::uint16_t>> Writer::ReadWords(int lastIndex, std::uint8_t code,
                                                            bool progress) {
  std::vector<std::uint16_t> words;
  if (lastIndex < 0) return words;
  words.reserve(lastIndex + 1);
  const bool first = FirstGeneration();
  for (int address = 0; address <= lastIndex; address += proto::kWordsPerReadPacket) {
    const int count = std::min(proto::kWordsPerReadPacket, lastIndex + 1 - address);
    bool sent;
    if (first) {
      // The writer counts the addresses itself and always answers 32 words.
      sent = SendShort(code);
    } else {
      sent = SendPacket(Framed({6, code, proto::Lo(address), proto::Hi(address),
                                static_cast<std::uint8_t>(2 * count)}));
    }
    if (!sent) return std::nullopt;
    Report answer;
    if (!ReceiveReport(answer)) return std::nullopt;
    // Raw answer: word k at indices 2k+1 (low) and 2k+2 (high).
    for (int k = 0; k < count; ++k) {
      words.push_back(static_cast<std::uint16_t>(answer[2 * k + 1] | (answer[2 * k + 2] << 8)));
    }
    if (progress) host_.Progress(std::min(address + count, lastIndex), lastIndex);
  }
  return words;
}

bool Writer::SetWriterId(const std::array<std::uint8_t, 4>& id) {
  if (!SendPacket(Framed({7, proto::kSetId, id[0], id[1], id[2], id[3]}))) return false;
  // The answer is read but not judged.
  Report answer;
  return ReceiveReport(answer);
}

std::vector<std::uint8_t> Writer::GetWriterId() {
  if (!SendPacket({3, proto::kGetId, 0xA5})) return {};
  Report answer;
  if (!ReceiveReport(answer)) return {};
  const int n = std::min<int>(answer[1], proto::kPacketLength);
  if (n < 1) return {};
  return std::vector<std::uint8_t>(answer.begin() + 1, answer.begin() + 1 + n);
}

}  // namespace lk
