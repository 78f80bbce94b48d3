// The run of one chip command from a shell, shared by every command that talks to the
// writer: the file opened as the desktop program opens it, the writer built from the
// options, its version asked first (the connection monitor does that in the desktop
// program), Ctrl-C turned into a stop at the next packet, the exit status, and the
// --json record.
#pragma once

#include <atomic>
#include <functional>
#include <optional>
#include <string>
#include <utility>

#include "cli/context.h"
#include "ops/station.h"

namespace lk::cli {

struct ChipRunRequest {
  explicit ChipRunRequest(std::string name, std::optional<std::string> path = std::nullopt)
      : Command(std::move(name)), File(std::move(path)) {}

  std::string Command;              // the subcommand's name, for the JSON record
  std::optional<std::string> File;  // FILE, opened through the open dispatcher
  std::string Output;               // -o OUT.lkx: the project saved after a passed run
};

// What the command does once the project is ready and the writer is on hand: runs the
// operation, returns its result. `loader` (optional) loads FILE itself instead of the
// open dispatcher and returns an exit status (kExitOk to go on).
using ChipCommand = std::function<ops::CommandResult(ops::Station&)>;
using FileLoader = std::function<int(CliContext&, Project&, const std::string& file)>;

int RunChipCommand(CliContext& ctx, const ChipRunRequest& request, const ChipCommand& command,
                   const FileLoader& loader = nullptr);

// The exit status of an operation's outcome: 0 passed, 1 failed, 3 no writer.
int ExitStatusOf(ops::Outcome outcome);

// The stop flag that Ctrl-C sets while a command runs (a second Ctrl-C ends the
// program at once).
const std::atomic<bool>& StopRequested();
void InstallStopHandler();

}  // namespace lk::cli
