// Faults the simulated writer injects on demand, written "KIND@N" where N is the
// 1-based number of the packet (counted over the writer's whole life) at which the
// fault strikes.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace lk::sim {

enum class FaultKind {
  None,
  NoAnswer,   // packet N is swallowed: no state change, no answer (Receive times out)
  BadSum,     // packet N is handled, its answer carries a wrong checksum
  BadCode,    // packet N is refused with answer code 0xEE (no state change)
  Unplug,     // from packet N on the writer is gone: Send/Receive fail, Present() false
  Busy,       // from packet N on, 0xF1 answers 0xE3 forever
  WrongChip,  // from packet N on, the socket holds a chip whose type differs
};

inline constexpr std::uint8_t kFaultAnswerCode = 0xEE;

// The largest N accepted. A command on the largest chip exchanges some ten thousand
// packets; a fault set beyond any run's reach would silently never strike.
inline constexpr long kMaxFaultPacket = 1000000;

struct SimFault {
  FaultKind kind = FaultKind::None;
  long packet = 0;  // N, 1-based

  // True for packet number `count` (1-based) when the fault strikes exactly there.
  bool At(FaultKind k, long count) const { return kind == k && count == packet; }
  // True for packet number `count` when the fault is active from N on.
  bool From(FaultKind k, long count) const { return kind == k && count >= packet; }
};

// "noanswer, badsum, ...": every KIND, for messages and help.
std::string FaultKindNames();

// Parses "" (no fault), "KIND@N" or "KIND" (= "KIND@1"), N = 1 .. kMaxFaultPacket. On
// error returns nothing and sets error to a message for the user.
std::optional<SimFault> ParseFault(const std::string& text, std::string& error);

}  // namespace lk::sim
