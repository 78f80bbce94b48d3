// A simulated writer with a transport open on it, and packet builders written from
// the protocol layouts, for the simulator's tests.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "core/chip_params.h"
#include "link/protocol.h"
#include "sim/sim_writer.h"
#include "tests/support/recording_host.h"

namespace lk::sim::test {

inline ChipParams MakeParams(const std::string& name, std::int32_t type, const std::string& prod,
                             bool otp, int romSize = 0x3FF, std::int32_t hexMcu = 0x3FFF,
                             int configLength = 1, int eeSize = 0) {
  ChipParams p;
  p.Name = name;
  p.Type = type;
  p.Prod = prod;
  p.Crafts = otp ? "OTP" : "FLASH";
  p.RomSize = romSize;
  p.HexMcu = hexMcu;
  p.ConfigLength = static_cast<std::int16_t>(configLength);
  p.EeSize = static_cast<std::int16_t>(eeSize);
  return p;
}

// A command packet as a report: [1] n, [2] code, arguments, checksum.
inline Report Packet(std::uint8_t code, const std::vector<std::uint8_t>& args = {}) {
  Report r{};
  int n = 3 + static_cast<int>(args.size());
  r[1] = static_cast<std::uint8_t>(n);
  r[2] = code;
  for (size_t i = 0; i < args.size(); ++i) r[3 + i] = args[i];
  r[n] = proto::Checksum(&r[1], n - 1);
  return r;
}

// The 64-byte parameter block with the fields the writer checks.
inline Report ParamBlock(std::uint8_t code, std::uint16_t type, const std::string& name) {
  std::vector<std::uint8_t> args(61, 0);
  args[0] = static_cast<std::uint8_t>(type & 0xFF);  // packet bytes 2-3
  args[1] = static_cast<std::uint8_t>(type >> 8);
  for (size_t i = 0; i < name.size() && i < 12; ++i) args[34 + i] = name[i];  // bytes 36-47
  return Packet(code, args);
}

inline std::vector<std::uint8_t> WordBytes(const std::vector<std::uint16_t>& words) {
  std::vector<std::uint8_t> out;
  for (auto w : words) {
    out.push_back(static_cast<std::uint8_t>(w & 0xFF));
    out.push_back(static_cast<std::uint8_t>(w >> 8));
  }
  return out;
}

// Second-generation program packet: address, byte count, words.
inline Report ProgramAt(std::uint8_t code, std::uint16_t address,
                        const std::vector<std::uint16_t>& words) {
  std::vector<std::uint8_t> args = {static_cast<std::uint8_t>(address & 0xFF),
                                    static_cast<std::uint8_t>(address >> 8),
                                    static_cast<std::uint8_t>(2 * words.size())};
  auto data = WordBytes(words);
  args.insert(args.end(), data.begin(), data.end());
  return Packet(code, args);
}

// Second-generation read packet.
inline Report ReadAt(std::uint8_t code, std::uint16_t address, std::uint8_t bytes = 64) {
  return Packet(code, {static_cast<std::uint8_t>(address & 0xFF),
                       static_cast<std::uint8_t>(address >> 8), bytes});
}

// Words k = 0.. of a raw answer: index 2k+1 low, 2k+2 high.
inline std::vector<std::uint16_t> RawWords(const Report& r, int count = 32) {
  std::vector<std::uint16_t> out;
  for (int k = 0; k < count; ++k)
    out.push_back(static_cast<std::uint16_t>(r[2 * k + 1] | (r[2 * k + 2] << 8)));
  return out;
}

// A checked answer is well formed: length 3..64 and the checksum over [1..n-1].
inline bool GoodFrame(const Report& r) {
  int n = r[1];
  return n >= 3 && n <= 64 && r[n] == proto::Checksum(&r[1], n - 1);
}

struct SimRig {
  explicit SimRig(std::optional<ChipParams> chip, SimConfig config = {}, SimFault fault = {}) {
    SimState state;
    state.id = config.id;
    if (chip) state.chip = SimChip::FromParams(*chip);
    writer = std::make_shared<SimWriter>(host, config, fault, std::move(state));
    bus = MakeSimBusFor(writer);
    link = bus->Open();
  }

  // Sends a report; the answer when one comes back.
  std::optional<Report> Exchange(const Report& packet) {
    if (!link->Send(packet, 100)) return std::nullopt;
    Report answer{};
    if (!link->Receive(answer, 100)) return std::nullopt;
    return answer;
  }

  // The answer code of a checked answer, -1 when none came or the frame is bad.
  int Code(const Report& packet) {
    auto a = Exchange(packet);
    if (!a || !GoodFrame(*a)) return -1;
    return (*a)[2];
  }

  SimChip Chip() const { return *writer->State().chip; }

  lk::test::RecordingHost host;
  std::shared_ptr<SimWriter> writer;
  std::unique_ptr<WriterBus> bus;
  std::unique_ptr<Transport> link;
};

}  // namespace lk::sim::test
