#include "sim/sim_fault.h"

#include <charconv>
#include <utility>

namespace lk::sim {
namespace {

constexpr std::pair<const char*, FaultKind> kKinds[] = {
    {"noanswer", FaultKind::NoAnswer}, {"badsum", FaultKind::BadSum},
    {"badcode", FaultKind::BadCode},   {"unplug", FaultKind::Unplug},
    {"busy", FaultKind::Busy},         {"wrongchip", FaultKind::WrongChip},
};

}  // namespace

std::string FaultKindNames() {
  std::string names;
  for (const auto& [name, kind] : kKinds) names += (names.empty() ? "" : ", ") + std::string(name);
  return names;
}

std::optional<SimFault> ParseFault(const std::string& text, std::string& error) {
  if (text.empty()) return SimFault{};
  size_t at = text.find('@');
  std::string kindText = text.substr(0, at);
  SimFault fault;
  for (const auto& [name, kind] : kKinds) {
    if (kindText == name) fault.kind = kind;
  }
  if (fault.kind == FaultKind::None) {
    error = "Unknown simulated writer fault \"" + kindText + "\" (known: " + FaultKindNames() + ")";
    return std::nullopt;
  }
  fault.packet = 1;
  if (at != std::string::npos) {
    std::string number = text.substr(at + 1);
    long n = 0;
    auto [end, ec] = std::from_chars(number.data(), number.data() + number.size(), n);
    if (number.empty() || ec != std::errc() || end != number.data() + number.size() || n < 1 ||
        n > kMaxFaultPacket) {
      error = "Bad packet number in simulated writer fault \"" + text +
              "\" (expected KIND@N with N = 1.." + std::to_string(kMaxFaultPacket) + ")";
      return std::nullopt;
    }
    fault.packet = n;
  }
  return fault;
}

}  // namespace lk::sim
