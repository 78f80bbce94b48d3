// lkwriter-cli: the writer's operations from a shell, for production lines and scripts.
#include <exception>
#include <iostream>
#include <memory>

#include "cli/commands.h"
#include "sim/sim_fault.h"

int main(int argc, char** argv) {
  using namespace lk::cli;
  CLI::App app{"LKMCU Writer command line", "lkwriter-cli"};
  // One line saying what is wrong; --help lists every option with its range. Set before
  // the commands are added: they take it over when they are made.
  app.failure_message([](const CLI::App*, const CLI::Error& e) {
    return std::string("error: ") + e.what() + " (see --help)\n";
  });
  app.require_subcommand(1);

  CliOptions options;
  app.add_option("--home", options.home, "program folder (default $LKWRITER_HOME, else beside the binary)");
  app.add_option("--chip", options.chip, "chip model (default: McuType of dat/data.dat)");
  app.add_option("--device", options.device, "usb | usb:PATH | sim")
      ->check(CLI::Validator(
          [](std::string& text) {
            return lk::ops::IsDeviceName(text)
                       ? std::string()
                       : "unknown device \"" + text + "\" (" + lk::ops::kDeviceNames + ")";
          },
          "DEVICE"))
      ->capture_default_str();
  app.add_option("--sim-state", options.simState, "file keeping the simulated writer's state");
  app.add_option("--sim-chip", options.simChip, "model in the simulated writer's socket");
  app.add_option("--sim-version", options.simVersion, "simulated firmware version (low byte)")
      ->check(CLI::Range(0, kMaxSimVersion))
      ->capture_default_str();
  app.add_option("--sim-fault", options.simFault,
                 "inject a fault: KIND@N, the N-th packet (1.." +
                     std::to_string(lk::sim::kMaxFaultPacket) +
                     "); KIND: " + lk::sim::FaultKindNames())
      ->check(CLI::Validator(
          [](std::string& text) {
            std::string error;
            return lk::sim::ParseFault(text, error) ? std::string() : error;
          },
          "KIND@N"));
  app.add_option("--timeout", options.timeoutMs, "answer timeout in ms")
      ->check(CLI::Range(kMinTimeoutMs, kMaxTimeoutMs))
      ->capture_default_str();
  app.add_option("--trace", options.trace, "write every report out and in to FILE");
  app.add_flag("-q,--quiet", options.quiet, "no progress, no diagnostics");
  app.add_flag("-v,--verbose", options.verbose, "diagnostics on stderr");
  app.add_flag("--json", options.json, "machine-readable output where a command has it");
  app.add_option("--db", options.db,
                 "production database: sqlite:PATH | postgresql://... | none "
                 "(default: sqlite: + production.sqlite in the program folder)");
  app.add_option("--series", options.series,
                 "serial series of the rolling code (default: the project file's name)");

  // Commands build the context only after the options are parsed.
  CliContext* context = nullptr;
  int exitCode = kExitOk;
  AddCoreCommands(app, context, exitCode);
  AddFileCommands(app, context, exitCode);
  AddLinkCommands(app, context, exitCode);
  AddChipCommands(app, context, exitCode);
  AddEedataCommands(app, context, exitCode);
  AddIdentityCommands(app, context, exitCode);
  AddProductionCommands(app, context, exitCode);

  std::unique_ptr<CliContext> owner;
  app.parse_complete_callback([&] {
    owner = std::make_unique<CliContext>(options);
    context = owner.get();
  });

  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& e) {
    const int rc = app.exit(e);
    return rc == 0 ? kExitOk : kExitUsage;
  } catch (const std::exception& e) {
    std::cerr << "error: " << e.what() << std::endl;
    return kExitUsage;
  }
  return owner ? owner->Finish(exitCode) : exitCode;
}
