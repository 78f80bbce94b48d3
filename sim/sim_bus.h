// The simulated writer behind the same WriterBus/Transport seams as the USB writer.
#pragma once

#include <memory>
#include <string>

#include "core/home.h"
#include "core/host.h"
#include "link/transport.h"

namespace lk::sim {

struct SimConfig {
  std::string chipModel;   // model in the socket ("" = no chip: every chip command fails)
  int version = 3;         // firmware version low byte (below 3 = first generation)
  std::string fault;       // "KIND@N" or ""
  std::string stateFile;   // keeps chip and store between runs when not empty
  bool timing = false;     // 1 ms per report each way plus a programming time per word
};

// Builds the simulated writer. Returns nullptr (with a message through the host)
// when the configuration cannot be understood (unknown fault kind, bad state file).
std::unique_ptr<WriterBus> MakeSimBus(Host& host, const Home& home, const SimConfig& config);

}  // namespace lk::sim
