// SimWriter: the writer's firmware as a model. It takes command packets, answers them
// as the writer does (both protocol generations), keeps the chip in its socket, its
// own store for stand-alone programming and its identity, injects faults and keeps
// a log of every packet for tests.
#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "core/home.h"
#include "core/host.h"
#include "link/transport.h"
#include "sim/sim_bus.h"
#include "sim/sim_chip.h"
#include "sim/sim_fault.h"

namespace lk::sim {

// The high byte of the version word the simulated writer reports.
inline constexpr std::uint8_t kSimVersionHigh = 1;

// Timing model: every report costs kReportTime each way, every programmed word
// (program and configuration words, EEDATA bytes, chip or store) kWordProgramTime.
// The transport sleeps that long (the answer's time on receipt, the packet's and its
// words' on sending) and makes up its own oversleeping on the next sleep, so an
// exchange costs the writer the bound below and everything beyond it is the host's.
inline constexpr std::chrono::microseconds kReportTime{1000};
inline constexpr std::chrono::microseconds kWordProgramTime{50};

// The time the timing model spends on an exchange of `reports` reports (both
// directions counted) that programs `words` words.
inline std::chrono::microseconds TimingBound(long reports, long words) {
  return reports * kReportTime + words * kWordProgramTime;
}

// One packet as the writer received it, with the answer it queued (after faults).
struct LoggedPacket {
  std::array<std::uint8_t, 64> packet{};
  std::optional<Report> answer;
};

// Everything a state file keeps.
struct SimState {
  std::array<std::uint8_t, 4> id{};
  std::optional<SimChip> chip;
  SimStore store;

  bool operator==(const SimState&) const = default;
};

class SimWriter;

// Builds the writer the configuration describes: the fault parsed, the state file
// loaded when it exists, the chip taken from the chip database when the state does
// not already hold that model. nullptr, with a message through the host, when the
// configuration cannot be understood.
std::shared_ptr<SimWriter> MakeSimWriter(Host& host, const Home& home, const SimConfig& config);

// A bus over an existing writer, so that in-process tests keep the writer to inspect.
std::unique_ptr<WriterBus> MakeSimBusFor(std::shared_ptr<SimWriter> writer);

// How the model behaves where the protocol leaves room:
// - A packet with a bad length byte, a bad checksum, a length its command does not
//   have, or an unknown code is answered with kAnswerRefused (0xE0) and changes
//   nothing; 0xE1/0xE4/0xE5/0xE6 never answer, not even a bad frame.
// - Chip commands need a chip in the socket (no chip: refused; raw reads give 0xFF),
//   but not an earlier 0xF6: the writer does not track sessions.
// - Programming only clears bits, OTP and flash alike; a flash chip is erased by its
//   blank check (0xF1). An OTP chip is blank when nothing was programmed into it since
//   it was made. EEDATA bytes and the store are simply rewritten.
// - Reads past the end of a memory give 0xFFFF words / 0xFF bytes.
// - Faults on packets that have no answer: badsum and badcode change nothing there.
//   On raw reads, badsum spoils the first data byte (raw data has no checksum).
class SimWriter {
 public:
  // host receives diagnostics (a state file that cannot be written); it must outlive
  // the writer.
  SimWriter(Host& host, const SimConfig& config, SimFault fault, SimState state);

  // --- the device side, used by the transport ---

  // False once unplugged (fault "unplug"): from the moment the next packet would be
  // packet N.
  bool Present();

  // True once a packet found the writer unplugged: nothing arrives any more.
  bool Gone() const;

  // Takes one output report (index 0 = report ID). False when the writer is gone. When
  // the writer answers, answer holds the input report; words is the number of words
  // the packet programmed (for the timing model).
  bool Accept(const Report& report, std::optional<Report>& answer, long& words, std::string& error);

  // --- inspection, for tests and benchmarks ---
  // The last kLogCapacity packets, oldest first: a writer that answers "busy" for a
  // minute takes thousands of packets a second, and none of them may pile up.
  static constexpr std::size_t kLogCapacity = 16384;
  std::vector<LoggedPacket> Log() const;
  SimState State() const;
  long PacketCount() const;
  long WordsProgrammed() const;
  // What the timing model charges for everything so far: every packet and every
  // answer one report each, plus the programmed words.
  std::chrono::microseconds TimeCharged() const;
  const SimConfig& Config() const { return config_; }

 private:
  std::optional<Report> Handle(const std::uint8_t* p, long& words, bool& changed);
  std::optional<Report> HandleChipType(const std::uint8_t* p, std::uint8_t code, bool& changed);
  std::optional<Report> HandleBlankCheck(bool& changed);
  std::optional<Report> HandleProgram(const std::uint8_t* p, std::uint8_t code, long& words,
                                      bool& changed);
  Report HandleRead(const std::uint8_t* p, std::uint8_t code);
  std::optional<Report> HandleEeProgram(const std::uint8_t* p, std::uint8_t code, long& words,
                                        bool& changed);
  Report HandleEeRead(const std::uint8_t* p, std::uint8_t code);
  std::uint16_t ChipConfigWord(int index) const;
  bool FrameLengthOk(const std::uint8_t* p) const;
  bool FirstGeneration() const;
  void Save();
  // Into the log (the mutex held).
  void Remember(const LoggedPacket& entry);

  Host& host_;
  SimConfig config_;
  SimFault fault_;
  SimState state_;
  mutable std::mutex mutex_;
  std::deque<LoggedPacket> log_;
  long packets_ = 0;
  long answers_ = 0;  // every answer given, also those gone from the log
  bool saveFailed_ = false;
  bool gone_ = false;
  long wordsProgrammed_ = 0;
  // First generation: the address the next read or program packet works on.
  int counter_ = 0;
  int lastCode_ = -1;
  // 0xF1 answers still busy in this blank check; -1 = none running.
  int busyLeft_ = -1;
  // The answer being built is raw data (no length, no checksum).
  bool answerRaw_ = false;
};

}  // namespace lk::sim
