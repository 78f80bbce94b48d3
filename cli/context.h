// What every lkwriter-cli command shares: the global options, the CLI's Host, the
// program folder and the selected chip.
#pragma once

#include <memory>
#include <optional>
#include <ostream>
#include <string>

#include "cli/cli_host.h"
#include "core/home.h"
#include "core/project.h"
#include "ops/device.h"

namespace lk {
class TraceFile;
}  // namespace lk
namespace lk::prod {
class Database;
}  // namespace lk::prod

namespace lk::cli {

// Exit status of lkwriter-cli.
inline constexpr int kExitOk = 0;
inline constexpr int kExitFailed = 1;      // the command reported failure
inline constexpr int kExitUsage = 2;       // usage or file error
inline constexpr int kExitNoWriter = 3;    // writer not found

// The ranges of the numeric options (shared with the desktop program) are in ops/device.h.
using ops::kMaxSimVersion;
using ops::kMaxTimeoutMs;
using ops::kMinTimeoutMs;

struct CliOptions {
  std::optional<std::string> home;
  std::optional<std::string> chip;
  std::string device = "usb";       // usb | usb:PATH | sim
  std::string simState;             // file keeping the simulated writer's state
  std::string simChip;              // model in the simulated socket
  int simVersion = 3;               // firmware version low byte of the simulated writer
  std::string simFault;             // KIND@N
  int timeoutMs = 3000;
  std::string trace;                // file receiving every report as a hex line
  bool quiet = false;
  bool verbose = false;
  bool json = false;
  std::string db;      // production database URL; empty: the program folder's SQLite file
  std::string series;  // serial series; empty: the project file's name
};

class CliContext {
 public:
  explicit CliContext(const CliOptions& options);
  ~CliContext();

  const CliOptions& Options() const { return options_; }
  CliHost& Ui() { return host_; }
  const Home& ProgramHome() const { return home_; }

  // The project with the selected chip loaded as start-up does: --chip, else
  // "McuType" of data.dat, falling back to the first listed model. Loaded once.
  Project& CurrentProject();
  // True, with an error line, when --chip names a model the database does not hold.
  // The fallback to the first listed model is for a stale "McuType", never for a model
  // the user typed: every command that uses the chip refuses it (exit 2).
  bool RefuseChipOption();

  // The --trace file, opened on first use and kept until the run ends; nullptr (with a
  // message) when it cannot be opened.
  std::ostream* TraceStream();

  // The production database (--db), opened on first use; nullptr with --db none. When
  // it cannot be used, nullptr and `error` holds the reason (the command is refused).
  prod::Database* ProductionDatabase(std::string& error);
  // The URL in use (--db, else the default), for messages.
  std::string ProductionUrl() const;

  // The exit status of the run once its command has given exitCode: a data file that is
  // there but could not be read, or a trace that could not be written (reported here),
  // turns a success into kExitUsage.
  int Finish(int exitCode);

 private:
  CliOptions options_;
  CliHost host_;
  Home home_;
  std::optional<Project> project_;
  std::unique_ptr<TraceFile> trace_;
  std::unique_ptr<prod::Database> db_;
};

}  // namespace lk::cli
