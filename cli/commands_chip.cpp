// The chip commands of the main window from a shell: blank, program, verify, read, auto,
// config-write, config-read and download. Each prints the message-log lines the desktop
// program's log would hold.
#include <memory>
#include <string>

#include "cli/chip_run.h"
#include "cli/commands.h"
#include "ops/auto_sequence.h"
#include "ops/chip_commands.h"
#include "ops/config_commands.h"
#include "ops/download.h"

namespace lk::cli {
namespace {

struct Args {
  std::string file;
  std::string output;
  bool blank = false;
  bool noBlank = false;
};

// A command with FILE (opened through the open dispatcher) or without.
void AddChipCommand(CLI::App& app, CliContext*& context, int& exitCode, const std::string& name,
                    const std::string& help, bool withFile, ops::CommandResult (*run)(ops::Station&)) {
  auto args = std::make_shared<Args>();
  CLI::App* sub = app.add_subcommand(name, help);
  if (withFile) {
    sub->add_option("FILE", args->file, "program image or project (.hex .bin .lkx ...)")->required();
  }
  sub->callback([&context, &exitCode, args, name, withFile, run] {
    ChipRunRequest request(name);
    if (withFile) request.File = args->file;
    exitCode = RunChipCommand(*context, request, run);
  });
}

}  // namespace

void AddChipCommands(CLI::App& app, CliContext*& context, int& exitCode) {
  AddChipCommand(app, context, exitCode, "blank", "blank check (OTP) or erase (flash) the chip",
                 false, ops::BlankCheck);
  AddChipCommand(app, context, exitCode, "program",
                 "program FILE's memory and configuration words into the chip", true,
                 ops::Program);
  AddChipCommand(app, context, exitCode, "verify", "compare the chip with FILE", true,
                 ops::Verify);
  AddChipCommand(app, context, exitCode, "config-write",
                 "write FILE's configuration words into the chip and check them", true,
                 ops::ConfigWrite);
  AddChipCommand(app, context, exitCode, "config-read", "read the chip's configuration words",
                 false, ops::ConfigRead);
  AddChipCommand(app, context, exitCode, "download",
                 "store FILE in the writer for stand-alone programming", true, ops::Download);

  auto readArgs = std::make_shared<Args>();
  CLI::App* read = app.add_subcommand("read", "read the chip into the image");
  read->add_option("-o,--output", readArgs->output, "save what was read as the project OUT.lkx");
  read->callback([&context, &exitCode, readArgs] {
    ChipRunRequest request("read");
    request.Output = readArgs->output;
    exitCode = RunChipCommand(*context, request, ops::Read);
  });

  auto autoArgs = std::make_shared<Args>();
  CLI::App* autoRun = app.add_subcommand(
      "auto", "blank check, program, verify, EEDATA, configuration and verify in one run");
  autoRun->add_option("FILE", autoArgs->file, "program image or project")->required();
  CLI::Option* withBlank =
      autoRun->add_flag("--blank", autoArgs->blank, "start with the blank check (default)");
  autoRun->add_flag("--no-blank", autoArgs->noBlank, "leave the blank check out")
      ->excludes(withBlank);
  autoRun->callback([&context, &exitCode, autoArgs] {
    ChipRunRequest request("auto", autoArgs->file);
    const bool blank = !autoArgs->noBlank;
    exitCode = RunChipCommand(*context, request,
                              [blank](ops::Station& st) { return ops::Auto(st, blank); });
  });
}

}  // namespace lk::cli
