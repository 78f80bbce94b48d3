// The writer selected by the global options, shared by every lkwriter-cli command that
// talks to the writer: --device usb | usb:PATH | sim (with the --sim-* options),
// --timeout for every answer, --trace for the packet trace (kept by the context).
#pragma once

#include <memory>
#include <string>

#include "cli/context.h"
#include "link/writer.h"

namespace lk::cli {

// A Writer over the bus the options select, with the --timeout applied and its
// diagnostics and progress going to the CLI's host. The simulated writer's socket holds
// --sim-chip, else `socketModel` (the model the command works on), else --chip, else the
// selected chip. nullptr (with a message on stderr) when the options cannot be used; the
// command then exits with kExitUsage.
std::unique_ptr<Writer> MakeCliWriter(CliContext& context, const std::string& socketModel = "");

}  // namespace lk::cli
