// The writer a front-end talks to, chosen by the device options both programs share:
// --device usb | usb:PATH | sim (with the --sim-* options), --timeout for every answer,
// --trace for the packet trace.
#pragma once

#include <memory>
#include <ostream>
#include <string>

#include "core/home.h"
#include "core/host.h"
#include "link/transport.h"
#include "link/writer.h"

namespace lk::ops {

// The ranges of the numeric device options, refused outside them before anything runs.
// An answer that takes longer than a minute is no answer: the real writer replies within
// milliseconds, and a longer wait only hides a dead link.
inline constexpr int kMinTimeoutMs = 1;
inline constexpr int kMaxTimeoutMs = 60000;
// The simulated firmware version is the low byte of the version word.
inline constexpr int kMaxSimVersion = 255;

struct DeviceOptions {
  std::string device = "usb";  // usb | usb:PATH | sim
  std::string simState;        // file keeping the simulated writer's state
  std::string simChip;         // model in the simulated socket ("" = the socket model given)
  int simVersion = 3;          // firmware version low byte of the simulated writer
  std::string simFault;        // KIND@N
  bool simTiming = false;      // the simulator's timing model (benchmarks)
  int timeoutMs = 0;           // receive timeout; 0 keeps the writer's default
  std::string trace;           // file receiving every report as a hex line
};

// True when `device` names a writer both programs know: usb, usb:PATH or sim. Checked
// when the options are read, so a misspelt device fails every command, not only those
// that reach for the writer.
bool IsDeviceName(const std::string& device);
inline constexpr const char* kDeviceNames = "usb, usb:PATH or sim";

// True when the options select the simulated writer.
bool IsSimulated(const DeviceOptions& options);

// The bus the options select, traced when a trace file is given. The simulated socket
// holds simChip, else socketModel. The trace goes to `trace` when the caller keeps the
// file itself (and checks it at the end); otherwise the bus opens the options' file and
// keeps it. nullptr, with a message through the host, when the options cannot be used.
std::unique_ptr<WriterBus> MakeDeviceBus(Host& host, const Home& home, const DeviceOptions& options,
                                         const std::string& socketModel,
                                         std::ostream* trace = nullptr);

// A Writer over that bus, the timeout applied, its diagnostics and progress going to the
// host; nullptr as above.
std::unique_ptr<Writer> MakeDeviceWriter(Host& host, const Home& home,
                                         const DeviceOptions& options,
                                         const std::string& socketModel,
                                         std::ostream* trace = nullptr);

}  // namespace lk::ops
