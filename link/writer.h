// The writer session: the open link, the firmware version, the 65-byte command buffer,
// the pacing between steps and the last fault. The command groups (exchange.h,
// chip_session.h, memory_commands.h, eedata_commands.h, identity_commands.h,
// download_commands.h) are functions over it.
//
// Nothing here shows anything to the user and nothing blocks without a bound: every
// answer is awaited for at most the receive timeout, and a missing, late, short or
// corrupt answer ends the step with a Fault. Diagnostics and progress go to the sinks
// the caller sets.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

#include "link/fault.h"
#include "link/transport.h"

namespace lk {

class Writer {
 public:
  static constexpr int kDefaultReceiveTimeoutMs = 3000;
  static constexpr int kDefaultReadyDeadlineMs = 60000;

  using LineSink = std::function<void(const std::string&)>;
  using ProgressSink = std::function<void(long value, long maximum)>;
  using NoticeSink = std::function<void(Fault)>;
  using Waiter = std::function<void(int ms)>;

  explicit Writer(std::unique_ptr<WriterBus> bus);
  ~Writer();
  Writer(const Writer&) = delete;
  Writer& operator=(const Writer&) = delete;

  // --- the link -----------------------------------------------------------------------
  // True when the writer is on the bus.
  bool FindWriter();
  // Which writer this is ("usb:PATH", "sim", ...), for the records.
  std::string BusName() const { return bus_ != nullptr ? bus_->Describe() : std::string(); }
  // Opens the writer FindWriter found; false when it vanished or cannot be opened.
  bool OpenWriterHandles();
  // The writer is attached but this user may not open it (its bus has said so).
  bool WriterDenied() const { return bus_ != nullptr && bus_->Denied(); }
  // Releases the open link; harmless when nothing is open.
  void CloseWriter();
  bool IsOpen() const { return transport_ != nullptr; }
  // Sends the whole command buffer as one report, report ID 0 first.
  Fault SendReport();
  // Reads one input report (index 0 report ID, index 1 first answer byte) within the
  // receive timeout; zeros on failure.
  Fault ReceiveReport(Report& answer);

  // --- the command buffer and the firmware version ------------------------------------
  // Lives as long as the Writer and is never cleared, so bytes a command does not write
  // keep what an earlier command left (byte 21 of the chip parameter block relies on it).
  std::array<std::uint8_t, 65> OutputReportData{};
  // Set by GetWriterVersion; its low byte picks the protocol generation. 0 until read.
  std::uint32_t WriterVersion = 0;
  bool FirstGeneration() const;

  // --- packets --------------------------------------------------------------------------
  // Puts `bytes` at the start of the command buffer and sends it.
  Fault SendPacket(std::initializer_list<std::uint8_t> bytes);
  Fault SendPacket(const std::vector<std::uint8_t>& bytes);
  // A three-byte command: n = 3, the code, and 3 + code in byte arithmetic (0xFD -> 0).
  Fault SendShort(std::uint8_t code);
  // `body` with its checksum appended (its length byte must already count it).
  Fault SendFramed(std::vector<std::uint8_t> body);
  // Reads an answer and expects it checked (length and checksum) with code `code`.
  Fault ExpectAnswer(std::uint8_t code, Report& answer);
  // Refused unless the answer's code is `code`; its frame is not looked at.
  Fault ExpectCode(std::uint8_t code, const Report& answer);
  // SendFramed(body), then a checked answer with code 0xE1.
  Fault ExchangeOk(std::vector<std::uint8_t> body);

  // --- pacing ---------------------------------------------------------------------------
  // The pause between steps: a plain sleep unless a waiter replaces it (tests run
  // without delays, the desktop program keeps its window painted meanwhile).
  void WaitMs(int ms);
  void SetWaiter(Waiter waiter) { waiter_ = std::move(waiter); }
  void SetReceiveTimeoutMs(int ms) { receiveTimeoutMs_ = ms; }
  int ReceiveTimeoutMs() const { return receiveTimeoutMs_; }
  void SetReadyDeadlineMs(int ms) { readyDeadlineMs_ = ms; }
  int ReadyDeadlineMs() const { return readyDeadlineMs_; }

  // A stop request (the operator's Stop button, Ctrl-C): once the flag is set, the next
  // report is not sent and the step fails with Fault::Stopped. The flag must outlive
  // the Writer or be unset with nullptr.
  void SetStopFlag(const std::atomic<bool>* stop) { stop_ = stop; }

  // --- what the session tells its owner ------------------------------------------------
  void SetDiagnosticSink(LineSink sink) { diagnostic_ = std::move(sink); }
  void SetProgressSink(ProgressSink sink) { progress_ = std::move(sink); }
  // A notice is a fault the user is told about the moment it happens, in the middle of
  // a step that may go on (the writer refused the chip parameter block: Fault::ChipType;
  // the chip lacks its factory test words: Fault::TestContent). The owner shows it.
  void SetNoticeSink(NoticeSink sink) { notice_ = std::move(sink); }
  void Diagnostic(const std::string& line) const;
  void Progress(long value, long maximum) const;
  void Notice(Fault fault) const;

  // Records a fault of the step that just failed (with a detail for the diagnostic log)
  // and returns it, so that `return Fail(...)` ends a step.
  Fault Fail(Fault fault, const std::string& detail);
  Fault LastFault() const { return lastFault_; }
  void ClearFault() {
    lastFault_ = Fault::None;
    lastDetail_.clear();
  }
  // "no answer within 3000 ms (ReceiveReport: ...)": the fault and its detail.
  std::string LastFaultText() const;

 private:
  std::unique_ptr<WriterBus> bus_;
  std::unique_ptr<Transport> transport_;
  int receiveTimeoutMs_ = kDefaultReceiveTimeoutMs;
  int readyDeadlineMs_ = kDefaultReadyDeadlineMs;
  Waiter waiter_;
  const std::atomic<bool>* stop_ = nullptr;
  LineSink diagnostic_;
  ProgressSink progress_;
  NoticeSink notice_;
  Fault lastFault_ = Fault::None;
  std::string lastDetail_;
};

// The codes a command group sends to the chip in the socket or to the writer's own store
// (download): one routine serves both.
enum class Target : std::uint8_t { Chip, Store };

}  // namespace lk
