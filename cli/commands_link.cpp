// probe and watch: the connection monitor from a shell.
#include <chrono>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <thread>

#include "cli/chip_run.h"
#include "cli/commands.h"
#include "cli/writer_device.h"
#include "files/open_path.h"
#include "ops/connection_monitor.h"
#include "ops/open_document.h"
#include "ops/result_lines.h"

namespace lk::cli {
namespace {

constexpr const char* kNoDevice = ops::kNoDeviceConnected;

int Probe(CliContext& context) {
  std::unique_ptr<Writer> writer = MakeCliWriter(context);
  if (!writer) return kExitUsage;
  CliHost& host = context.Ui();
  ops::MonitorState state;
  ops::WatchedFile none;
  const ops::TickResult tick = ops::MonitorTick(host, *writer, state, none);
  host.Flush();
  if (!tick.Arrived) {
    std::cout << kNoDevice << std::endl;
    return kExitNoWriter;
  }
  if (!tick.Arrived->Version) {
    host.Error("the writer did not give its version: " + writer->LastFaultText());
    return kExitFailed;
  }
  // A bad identity answer has shown "读取错误！" and stopped the monitor.
  return state.Polling ? kExitOk : kExitFailed;
}

// Sleeps up to ms, waking early when Ctrl-C asks to stop.
void Nap(int ms) {
  for (int slept = 0; slept < ms && !StopRequested().load(); slept += 50) {
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
}

int Watch(CliContext& context, bool once, const std::optional<std::string>& file) {
  CliHost& host = context.Ui();
  if (context.RefuseChipOption()) return kExitUsage;
  Project& project = context.CurrentProject();
  ops::WatchedFile watched;
  if (file) {
    if (!ops::OpenDocument(host, context.ProgramHome(), project, *file).Open.Opened) {
      return kExitUsage;
    }
    watched.Path = *file;
    watched.LastSeen = FileModifiedText(*file);
  }
  std::unique_ptr<Writer> writer = MakeCliWriter(context, project.Chip.Name);
  if (!writer) return kExitUsage;
  InstallStopHandler();
  ops::MonitorState state;
  for (;;) {
    // The message list's lines only (on a connection or a disconnection); the status
    // panel's text shows with -v.
    const ops::TickResult tick = ops::MonitorTick(host, *writer, state, watched);
    host.Flush();
    if (tick.Reload) {
      ops::OpenDocument(host, context.ProgramHome(), project, watched.Path);
      host.Flush();
    }
    if (once || !state.Polling || StopRequested().load()) break;
    Nap(1000);
    if (StopRequested().load()) break;
  }
  if (!state.Polling) return kExitFailed;
  return state.WriterConnected ? kExitOk : kExitNoWriter;
}

}  // namespace

void AddLinkCommands(CLI::App& app, CliContext*& context, int& exitCode) {
  CLI::App* probe =
      app.add_subcommand("probe", "find the writer, read its version and identity");
  probe->callback([&] { exitCode = Probe(*context); });

  struct WatchArgs {
    bool once = false;
    std::string file;
  };
  auto args = std::make_shared<WatchArgs>();
  CLI::App* watch = app.add_subcommand(
      "watch", "run the connection monitor every second and print its lines until Ctrl-C");
  watch->add_flag("--once", args->once, "one tick only");
  watch->add_option("FILE", args->file, "a file to watch for changes made by other programs");
  watch->callback([&context, &exitCode, args] {
    const std::optional<std::string> file =
        args->file.empty() ? std::nullopt : std::optional<std::string>(args->file);
    exitCode = Watch(*context, args->once, file);
  });
}

}  // namespace lk::cli
