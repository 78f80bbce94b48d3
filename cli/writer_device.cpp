#include "cli/writer_device.h"

#include "ops/device.h"

namespace lk::cli {

std::unique_ptr<Writer> MakeCliWriter(CliContext& context, const std::string& socketModel) {
  const CliOptions& o = context.Options();
  ops::DeviceOptions device;
  device.device = o.device;
  device.simState = o.simState;
  device.simChip = o.simChip;
  device.simVersion = o.simVersion;
  device.simFault = o.simFault;
  device.timeoutMs = o.timeoutMs;
  device.trace = o.trace;
  // The context keeps the trace file beyond the bus and checks it when the run ends.
  std::ostream* trace = nullptr;
  if (!o.trace.empty() && (trace = context.TraceStream()) == nullptr) return nullptr;
  // The socket holds the chip the command works on unless another is named.
  const std::string model = !socketModel.empty() ? socketModel
                            : o.chip             ? *o.chip
                                                 : context.CurrentProject().Chip.Name;
  return ops::MakeDeviceWriter(context.Ui(), context.ProgramHome(), device, model, trace);
}

}  // namespace lk::cli
