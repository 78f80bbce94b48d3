// The writer selected by the global options, shared by every lkwriter-cli command that
// talks to the writer: --device usb | usb:PATH | sim (with the --sim-* options),
// --timeout for every answer, --trace for the packet trace.
#pragma once

#include <memory>

#include "cli/context.h"
#include "link/writer.h"

namespace lk::cli {

// The bus the options select, traced when --trace is given. The simulated writer's
// socket holds --sim-chip, else `socketModel` (the
// model the command works on), else --chip, else the selected chip.
// nullptr (with a message on stderr) when the options cannot be used; the command then
// exits with kExitUsage.
std::unique_ptr<WriterBus> MakeWriterBus(CliContext& context, const std::string& socketModel = "");

// A Writer over that bus with the --timeout applied and its diagnostics and progress
// going to the CLI's host; nullptr as above.
std::unique_ptr<Writer> MakeCliWriter(CliContext& context, const std::string& socketModel = "");

}  // namespace lk::cli
