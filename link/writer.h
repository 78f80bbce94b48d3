// The writer as the command layer sees it: the open link, the firmware version and the
// 65-byte command buffer, with every command sequence of the protocol (link/protocol.h).
//
// Nothing here throws and nothing blocks without a bound: every answer is awaited for at
// most the receive timeout, WaitWriterReady has an overall deadline, and an answer that is
// missing, late, short or corrupt ends the step with false. Only two routines show a
// message themselves (CheckChipType and the test-content check of program/verify); the
// callers write the result lines.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "core/host.h"
#include "core/project.h"
#include "link/transport.h"

namespace lk {

// What a verify leaves for the result lines: "Data Address:", "File Data:", "MCU Data:".
struct VerifyResult {
  bool Pass = false;
  // 1 = the verify stopped before anything could be compared (no answer from the writer,
  // test content missing, rolling address refused); 0 otherwise.
  int Status = 0;
  std::string Address;   // "0000" form, "Config(i)" or "eedata(i)"
  std::string FileData;  // "0000" form
  std::string ChipData;  // "0000" form
};

// The rolling-code records of the download (0xEA / 0xEB), as sent and as read back.
struct RollRecord {
  std::array<std::uint16_t, 4> Addresses{};  // word addresses of code bytes 0..3
  std::uint8_t Flags = 0;                    // bit 0 on, bit 1 2262 mode, bits 4-7 length
  std::array<std::uint8_t, 4> Codes{};       // code bytes 0..3
  std::array<std::uint8_t, 4> Steps{};       // steps of bytes 0..3 (low byte each)
};

// The low 8 bits of a value as two upper-case hexadecimal digits.
std::string Hex2(std::int32_t value);

// A checked answer: length byte 3..64 and the checksum of indices 1..n-1 at index n.
bool CheckAnswer(const Report& answer);

class Writer {
 public:
  static constexpr int kDefaultReceiveTimeoutMs = 3000;
  static constexpr int kDefaultReadyDeadlineMs = 60000;

  Writer(Host& host, std::unique_ptr<WriterBus> bus);
  ~Writer();
  Writer(const Writer&) = delete;
  Writer& operator=(const Writer&) = delete;

  // --- link (discovery and reports) ---------------------------------------------------
  // True when the writer is on the bus.
  bool FindWriter();
  // Opens the writer found by FindWriter; false when it vanished meanwhile.
  bool OpenWriterHandles();
  // Releases the open link; harmless when nothing is open.
  void CloseWriter();
  bool IsOpen() const { return transport_ != nullptr; }
  // Sends the whole command buffer as one report (report ID 0 first).
  bool SendReport();
  // Reads one input report (index 0 report ID, index 1 first answer byte) within the
  // receive timeout. False when none came; the reason goes to the diagnostic log.
  bool ReceiveReport(Report& answer);
  // Writes the last link failure to the diagnostic log under a caption.
  void LogApiResult(const std::string& caption);

  void SetReceiveTimeoutMs(int ms) { receiveTimeoutMs_ = ms; }
  int ReceiveTimeoutMs() const { return receiveTimeoutMs_; }
  void SetReadyDeadlineMs(int ms) { readyDeadlineMs_ = ms; }
  // Replaces the plain sleep of WaitMs (tests run without delays, benchmarks scale them).
  void SetWaiter(std::function<void(int ms)> waiter) { waiter_ = std::move(waiter); }

  // --- command frame ------------------------------------------------------------------
  // The command buffer: it lives as long as the Writer and is never cleared, so bytes a
  // command does not write keep what an earlier command left (byte 21 of 0xF6 relies on it).
  std::array<std::uint8_t, 65> OutputReportData{};
  std::uint32_t WriterVersion = 0;
  bool FirstGeneration() const;

  void WaitMs(int ms);
  bool GetWriterVersion();
  void FinishOperation(bool passed);
  void ReturnToIdle();
  bool WaitWriterReady();
  // Words 0..lastIndex read with `code` (0xF2/0xF5/0xFB/0xFC), 32 a packet. With
  // `progress` the host's progress bar follows the address.
  std::optional<std::vector<std::uint16_t>> ReadWords(int lastIndex, std::uint8_t code,
                                                      bool progress = false);

  // --- chip session -------------------------------------------------------------------
  bool CheckChipType(const ChipParams& chip, std::uint8_t code);
  bool PrepareChip(ChipParams& chip);

  // --- program memory and configuration -------------------------------------------------
  bool ProgramRom(const Project& project, std::uint8_t code);
  bool ReadRom(Project& project);
  bool ProgramConfig(const Project& project, std::uint8_t code);
  void VerifyRom(const Project& project, VerifyResult& result, std::uint8_t code);
  void VerifyConfig(const Project& project, VerifyResult& result, std::uint8_t code);

  // --- EEDATA -------------------------------------------------------------------------
  bool PrepareEedata();
  bool ProgramEedata(const Project& project, std::uint8_t code);
  void VerifyEedata(const Project& project, VerifyResult& result, std::uint8_t code);
  std::optional<std::vector<std::uint8_t>> ReadEedata(const ChipParams& chip, std::uint8_t code);
  // The EEDATA window's two whole operations: find, open, check the chip, transfer,
  // finish. Result lines through Host::Log; true when the operation passed.
  bool WriteEedataToChip(Project& project);
  bool ReadEedataFromChip(Project& project);

  // --- identity and download ----------------------------------------------------------
  bool SetWriterId(const std::array<std::uint8_t, 4>& id);
  // The answer from its length byte to its checksum; empty when none came.
  std::vector<std::uint8_t> GetWriterId();

  bool SendImageSum(std::uint16_t imageSum);
  bool SendRollingStart(const RollRecord& record);
  bool SendRollingStep(const RollRecord& record);
  bool CheckStoredSum(std::uint16_t imageSum);
  bool SendEedataInfo(std::uint8_t eeFlag, std::uint16_t eeSum);
  bool EndEedataInfo();
  bool ReadRollingStart(const RollRecord& expected);
  bool ReadRollingStep(const RollRecord& expected);

  // The rolling-code records for the project: zero when its rolling code is off.
  RollRecord MakeRollRecord(const Project& project);

  // Stores the project in the writer for stand-alone use, from the first parameter block
  // to the rolling-code read-back. The writer must be open; the caller writes the result
  // line and ends with FinishOperation. `imageSum` is the program checksum shown in the
  // status bar (low 16 bits), `eeSum` the EEDATA checksum. Models "101E"/"101F" always
  // send the EEDATA information; other models only when `eedataForOtherModels` is set
  // and the project carries EEDATA.
  bool DownloadProject(const Project& project, std::uint16_t imageSum, std::uint16_t eeSum,
                       bool eedataForOtherModels = true);

 private:
  // Puts `bytes` at the start of the command buffer and sends it.
  bool SendPacket(std::initializer_list<std::uint8_t> bytes);
  bool SendPacket(const std::vector<std::uint8_t>& bytes);
  // A three-byte command: n = 3, the code, and 3 + code in byte arithmetic.
  bool SendShort(std::uint8_t code);
  // Sends and expects a checked answer whose code is 0xE1.
  bool ExchangeOk(const std::vector<std::uint8_t>& packet);
  // Sends a packet with its checksum appended (the length byte must already count it).
  static std::vector<std::uint8_t> Framed(std::vector<std::uint8_t> body);
  // Words in packets of 24 (program / configuration), answer 0xE1 each.
  bool SendWords(const std::vector<std::int32_t>& words, int count, std::uint8_t code,
                 bool progress);
  // The outgoing program words with the model rules and the rolling code applied, and
  // the addresses a verify leaves out. nullopt when the step must stop.
  struct ExpectedRom {
    std::vector<std::int32_t> Words;
    std::vector<std::int32_t> RollAddresses;
  };
  std::optional<ExpectedRom> BuildRomWords(const Project& project, std::uint8_t code);
  std::optional<std::vector<std::uint16_t>> ReadTestWords();
  bool OpenForEedata(Project& project);

  Host& host_;
  std::unique_ptr<WriterBus> bus_;
  std::unique_ptr<Transport> transport_;
  int receiveTimeoutMs_ = kDefaultReceiveTimeoutMs;
  int readyDeadlineMs_ = kDefaultReadyDeadlineMs;
  std::function<void(int)> waiter_;
};

// The configuration words as the 30D1..30D4 chips need them before programming (other
// models unchanged).
std::vector<std::int32_t> ForcedConfigWords(const ChipParams& chip);

}  // namespace lk
