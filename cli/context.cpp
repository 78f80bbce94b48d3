#include "cli/context.h"

#include "prod/database.h"

#include "link/trace_file.h"
#include "core/session.h"

namespace lk::cli {

CliContext::CliContext(const CliOptions& options)
    : options_(options),
      host_(options.quiet, options.verbose),
      home_(Home::Resolve(host_, options.home)) {}

CliContext::~CliContext() = default;

std::string CliContext::ProductionUrl() const {
  return options_.db.empty() ? prod::DefaultDatabaseUrl(home_.SessionRoot()) : options_.db;
}

prod::Database* CliContext::ProductionDatabase(std::string& error) {
  if (db_ || options_.db == "none") return db_.get();
  auto db = prod::OpenDatabase(ProductionUrl());
  if (!db) {
    error = db.ErrorText();
    return nullptr;
  }
  db_ = std::move(*db);
  return db_.get();
}

Project& CliContext::CurrentProject() {
  if (!project_) {
    Project project;
    const std::string model = options_.chip ? *options_.chip : ReadMcuType(host_, home_);
    project.Chip = LoadStartupChip(host_, home_, model);
    project.RecentFiles = ReadRecentFiles(host_, home_);
    project_ = std::move(project);
  }
  return *project_;
}

bool CliContext::RefuseChipOption() {
  if (!options_.chip || CurrentProject().Chip.Name == *options_.chip) return false;
  host_.Error("unknown chip model \"" + *options_.chip + "\" (lkwriter-cli chips lists them)");
  return true;
}

std::ostream* CliContext::TraceStream() {
  if (!trace_) {
    std::string error;
    trace_ = TraceFile::Open(options_.trace, error);
    if (!trace_) {
      host_.Message(Icon::Critical, error, kAppTitle);
      return nullptr;
    }
  }
  return &trace_->Stream();
}

int CliContext::Finish(int exitCode) {
  bool failed = host_.SawUnreadableFile();
  const std::string failure = trace_ ? trace_->Failure() : std::string();
  if (!failure.empty()) {
    host_.Message(Icon::Critical,
                  "The trace file \"" + options_.trace + "\" could not be written (" + failure +
                      "); the trace is incomplete.",
                  kAppTitle);
    failed = true;
  }
  return failed && exitCode == kExitOk ? kExitUsage : exitCode;
}

}  // namespace lk::cli
