// Each group of lkwriter-cli commands registers itself here. A command's callback
// stores its exit status in `exitCode`.
#pragma once

#include <CLI/CLI.hpp>

#include <string>

#include "cli/context.h"

namespace lk::cli {

// The configuration words as printed by chip and show: four hex digits each, separated
// by spaces ("3FFF 0010").
std::string ConfigWordsText(const ChipParams& chip);

// chips, chip [MODEL], options [FILE]
void AddCoreCommands(CLI::App& app, CliContext*& context, int& exitCode);
// show FILE, convert IN OUT.lkx
void AddFileCommands(CLI::App& app, CliContext*& context, int& exitCode);
// probe, watch
void AddLinkCommands(CLI::App& app, CliContext*& context, int& exitCode);
// blank, program, verify, read, auto, config-write, config-read, download
void AddChipCommands(CLI::App& app, CliContext*& context, int& exitCode);
// eedata-read, eedata-write
void AddEedataCommands(CLI::App& app, CliContext*& context, int& exitCode);
// id-set, id-get
void AddIdentityCommands(CLI::App& app, CliContext*& context, int& exitCode);
// log verify, log export, stats
void AddProductionCommands(CLI::App& app, CliContext*& context, int& exitCode);

}  // namespace lk::cli
