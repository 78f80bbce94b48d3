#include "ops/device.h"

#include "link/hid_bus.h"
#include "link/trace_file.h"
#include "link/trace_transport.h"
#include "ops/station.h"
#include "sim/sim_bus.h"

namespace lk::ops {
namespace {

// Keeps the trace file open for as long as the bus and its transports live.
class TracedBus : public WriterBus {
 public:
  TracedBus(std::unique_ptr<TraceFile> file, std::unique_ptr<WriterBus> inner)
      : file_(std::move(file)), traced_(MakeTraceBus(std::move(inner), file_->Stream())) {}
  bool Present() override { return traced_->Present(); }
  std::unique_ptr<Transport> Open() override { return traced_->Open(); }
  std::string Describe() const override { return traced_->Describe(); }
  bool Denied() const override { return traced_->Denied(); }

 private:
  std::unique_ptr<TraceFile> file_;
  std::unique_ptr<WriterBus> traced_;
};

}  // namespace

bool IsDeviceName(const std::string& device) {
  return device == "usb" || device == "sim" || (device.rfind("usb:", 0) == 0 && device.size() > 4);
}

bool IsSimulated(const DeviceOptions& options) { return options.device == "sim"; }

std::unique_ptr<WriterBus> MakeDeviceBus(Host& host, const Home& home, const DeviceOptions& o,
                                         const std::string& socketModel, std::ostream* trace) {
  std::unique_ptr<WriterBus> bus;
  if (o.device == "usb") {
    bus = MakeHidBus(host);
  } else if (o.device.rfind("usb:", 0) == 0 && o.device.size() > 4) {
    bus = MakeHidBus(host, o.device.substr(4));
  } else if (IsSimulated(o)) {
    sim::SimConfig config;
    config.chipModel = !o.simChip.empty() ? o.simChip : socketModel;
    config.version = o.simVersion;
    config.fault = o.simFault;
    config.stateFile = o.simState;
    config.timing = o.simTiming;
    bus = sim::MakeSimBus(host, home, config);
    if (!bus) return nullptr;  // the simulator has said why
  } else {
    host.Message(Icon::Critical,
                 "unknown device \"" + o.device + "\" (" + std::string(kDeviceNames) + ")",
                 kAppTitle);
    return nullptr;
  }
  if (trace != nullptr) return MakeTraceBus(std::move(bus), *trace);
  if (o.trace.empty()) return bus;
  std::string error;
  std::unique_ptr<TraceFile> file = TraceFile::Open(o.trace, error);
  if (!file) {
    host.Message(Icon::Critical, "cannot write the trace file " + o.trace + ": " + error, kAppTitle);
    return nullptr;
  }
  return std::make_unique<TracedBus>(std::move(file), std::move(bus));
}

std::unique_ptr<Writer> MakeDeviceWriter(Host& host, const Home& home,
                                         const DeviceOptions& options,
                                         const std::string& socketModel, std::ostream* trace) {
  std::unique_ptr<WriterBus> bus = MakeDeviceBus(host, home, options, socketModel, trace);
  if (!bus) return nullptr;
  auto writer = std::make_unique<Writer>(std::move(bus));
  AttachHost(*writer, host);
  if (options.timeoutMs > 0) writer->SetReceiveTimeoutMs(options.timeoutMs);
  return writer;
}

}  // namespace lk::ops
