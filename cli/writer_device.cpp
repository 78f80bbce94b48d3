#include "cli/writer_device.h"

#include "link/hid_bus.h"
#include "ops/station.h"
#include "link/trace_transport.h"
#include "sim/sim_bus.h"

namespace lk::cli {

std::unique_ptr<WriterBus> MakeWriterBus(CliContext& context, const std::string& socketModel) {
  const CliOptions& o = context.Options();
  Host& host = context.Ui();
  std::unique_ptr<WriterBus> bus;
  if (o.device == "usb") {
    bus = MakeHidBus(host);
  } else if (o.device.rfind("usb:", 0) == 0 && o.device.size() > 4) {
    bus = MakeHidBus(host, o.device.substr(4));
  } else if (o.device == "sim") {
    sim::SimConfig config;
    // The socket holds the chip the command works on unless another is named.
    config.chipModel = !o.simChip.empty()     ? o.simChip
                       : !socketModel.empty() ? socketModel
                       : o.chip               ? *o.chip
                                              : context.CurrentProject().Chip.Name;
    config.version = o.simVersion;
    config.fault = o.simFault;
    config.stateFile = o.simState;
    bus = sim::MakeSimBus(host, context.ProgramHome(), config);
    if (!bus) return nullptr;  // the simulator has said why
  } else {
    host.Message(Icon::Critical, "unknown device \"" + o.device + "\" (usb, usb:PATH or sim)",
                 kAppTitle);
    return nullptr;
  }
  if (o.trace.empty()) return bus;
  // The context keeps the file beyond the bus and checks it when the run ends.
  std::ostream* trace = context.TraceStream();
  if (trace == nullptr) return nullptr;
  return MakeTraceBus(std::move(bus), *trace);
}

std::unique_ptr<Writer> MakeCliWriter(CliContext& context, const std::string& socketModel) {
  std::unique_ptr<WriterBus> bus = MakeWriterBus(context, socketModel);
  if (!bus) return nullptr;
  auto writer = std::make_unique<Writer>(std::move(bus));
  ops::AttachHost(*writer, context.Ui());
  if (context.Options().timeoutMs > 0) writer->SetReceiveTimeoutMs(context.Options().timeoutMs);
  return writer;
}

}  // namespace lk::cli
