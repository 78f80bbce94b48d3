// The simulated writer behind the same WriterBus/Transport seams as the USB writer.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>

#include "core/home.h"
#include "core/host.h"
#include "link/transport.h"

namespace lk::sim {

struct SimConfig {
  // Model in the socket ("" = no chip: every chip command fails). With a state file
  // that already holds a chip, "" keeps that chip and the same model keeps it too
  // (with everything programmed into it); another model puts a fresh blank chip of
  // that model into the socket.
  std::string chipModel = {};
  int version = 3;             // firmware version low byte (below 3 = first generation)
  std::string fault = {};      // "KIND@N" or ""
  std::string stateFile = {};  // keeps chip and store between runs when not empty
  bool timing = false;         // 1 ms per report each way plus a programming time per word

  // How many times 0xF1 answers 0xE3 (busy) before it gives the blank-check result.
  int busyAnswers = 3;
  // The identity the writer starts with when no state file holds one
  // (0x0001E240 = 123456 read as a little-endian number).
  std::array<std::uint8_t, 4> id = {0x40, 0xE2, 0x01, 0x00};
  // The writer type byte and marker of the identity answer; a type below 6 or a marker
  // other than '#' simulates a dedicated QVM50F96B/98B writer.
  std::uint8_t writerType = 6;
  std::uint8_t marker = '#';
};

// Builds the simulated writer. Returns nullptr (with a message through the host)
// when the configuration cannot be understood (unknown fault kind, bad state file).
std::unique_ptr<WriterBus> MakeSimBus(Host& host, const Home& home, const SimConfig& config);

}  // namespace lk::sim
