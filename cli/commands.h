// Each group of lkwriter-cli commands registers itself here. A command's callback
// stores its exit status in `exitCode`.
#pragma once

#include <CLI/CLI.hpp>

#include "cli/context.h"

namespace lk::cli {

// chips, chip [MODEL], options [FILE]
void AddCoreCommands(CLI::App& app, CliContext*& context, int& exitCode);
// show FILE, convert IN OUT.lkx
void AddFileCommands(CLI::App& app, CliContext*& context, int& exitCode);
// probe and the writer commands
void AddLinkCommands(CLI::App& app, CliContext*& context, int& exitCode);

}  // namespace lk::cli
