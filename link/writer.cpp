#include "link/writer.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <thread>

#include "link/exchange.h"
#include "link/protocol.h"

namespace lk {

const char* FaultText(Fault fault) {
  switch (fault) {
    case Fault::None: return "no fault";
    case Fault::NotOpen: return "the writer is not open";
    case Fault::Timeout: return "no answer within the timeout";
    case Fault::BadFrame: return "an answer with a bad length or checksum";
    case Fault::Refused: return "the writer refused the step";
    case Fault::Unplugged: return "the writer is gone";
    case Fault::StillBusy: return "the writer stayed busy past the deadline";
    case Fault::NotBlank: return "the chip is not blank";
    case Fault::Stopped: return "stopped by the operator";
    case Fault::ChipType: return "the writer refused the chip parameters";
    case Fault::ChipMismatch: return "the chip's type word is not the model's";
    case Fault::TestContent: return "the chip lacks its factory test words";
    case Fault::StoreMismatch: return "the writer's store reads back different";
    case Fault::RollAddress: return "a rolling-code address lies outside the program memory";
  }
  return "unknown fault";
}

Writer::Writer(std::unique_ptr<WriterBus> bus) : bus_(std::move(bus)) {}

Writer::~Writer() { CloseWriter(); }

bool Writer::FindWriter() { return bus_ != nullptr && bus_->Present(); }

bool Writer::OpenWriterHandles() {
  if (bus_ == nullptr) return false;
  transport_ = bus_->Open();
  if (!transport_) {
    (void)Fail(Fault::NotOpen, "CreateFile, ReadHandle: the writer could not be opened");
    return false;
  }
  return true;
}

void Writer::CloseWriter() { transport_.reset(); }

bool Writer::FirstGeneration() const { return proto::IsFirstGeneration(WriterVersion); }

Fault Writer::SendReport() {
  if (!transport_) return Fail(Fault::NotOpen, "SendReport");
  // A stop request never holds back the end of the session: the writer must still be
  // told that the operation failed.
  const std::uint8_t code = OutputReportData[1];
  const bool sessionEnd = code == proto::kEnd || code == proto::kPassed || code == proto::kFailed;
  if (stop_ != nullptr && stop_->load() && !sessionEnd) return Fail(Fault::Stopped, "SendReport");
  Report report{};
  std::copy(OutputReportData.begin(), OutputReportData.begin() + proto::kPacketLength,
            report.begin() + 1);
  if (!transport_->Send(report, receiveTimeoutMs_)) {
    return Fail(Fault::Unplugged, "SendReport: " + transport_->LastError());
  }
  return Fault::None;
}

Fault Writer::ReceiveReport(Report& answer) {
  answer.fill(0);
  if (!transport_) return Fail(Fault::NotOpen, "ReceiveReport");
  if (!transport_->Receive(answer, receiveTimeoutMs_)) {
    answer.fill(0);
    return Fail(Fault::Timeout, "ReceiveReport: " + transport_->LastError());
  }
  return Fault::None;
}

Fault Writer::SendPacket(std::initializer_list<std::uint8_t> bytes) {
  std::copy(bytes.begin(), bytes.end(), OutputReportData.begin());
  return SendReport();
}

Fault Writer::SendPacket(const std::vector<std::uint8_t>& bytes) {
  const std::size_t count = std::min<std::size_t>(bytes.size(), proto::kPacketLength);
  std::copy(bytes.begin(), bytes.begin() + count, OutputReportData.begin());
  return SendReport();
}

Fault Writer::SendShort(std::uint8_t code) {
  return SendPacket({3, code, static_cast<std::uint8_t>(3 + code)});
}

Fault Writer::SendFramed(std::vector<std::uint8_t> body) {
  body.push_back(proto::Checksum(body.data(), static_cast<int>(body.size())));
  return SendPacket(body);
}

Fault Writer::ExpectAnswer(std::uint8_t code, Report& answer) {
  if (Fault f = ReceiveReport(answer); f != Fault::None) return f;
  if (!CheckAnswer(answer)) return Fail(Fault::BadFrame, "answer frame");
  return ExpectCode(code, answer);
}

Fault Writer::ExpectCode(std::uint8_t code, const Report& answer) {
  if (answer[2] != code) {
    char detail[48];
    std::snprintf(detail, sizeof detail, "answer code 0x%02X where 0x%02X was due", answer[2], code);
    return Fail(Fault::Refused, detail);
  }
  return Fault::None;
}

Fault Writer::ExchangeOk(std::vector<std::uint8_t> body) {
  if (Fault f = SendFramed(std::move(body)); f != Fault::None) return f;
  Report answer;
  return ExpectAnswer(proto::kAnswerOk, answer);
}

void Writer::WaitMs(int ms) {
  if (waiter_) {
    waiter_(ms);
  } else if (ms > 0) {
    std::this_thread::sleep_for(std::chrono::milliseconds(ms));
  }
}

void Writer::Diagnostic(const std::string& line) const {
  if (diagnostic_) diagnostic_(line);
}

void Writer::Progress(long value, long maximum) const {
  if (progress_) progress_(value, maximum);
}

void Writer::Notice(Fault fault) const {
  if (notice_) notice_(fault);
}

Fault Writer::Fail(Fault fault, const std::string& detail) {
  lastFault_ = fault;
  lastDetail_ = detail;
  Diagnostic(LastFaultText());
  return fault;
}

std::string Writer::LastFaultText() const {
  std::string text = FaultText(lastFault_);
  if (lastFault_ == Fault::Timeout) {
    text = "no answer within " + std::to_string(receiveTimeoutMs_) + " ms";
  }
  if (!lastDetail_.empty()) text += " (" + lastDetail_ + ")";
  return text;
}

}  // namespace lk
