#include "cli/context.h"

#include "core/session.h"

namespace lk::cli {

CliContext::CliContext(const CliOptions& options)
    : options_(options),
      host_(options.quiet, options.verbose),
      home_(Home::Resolve(host_, options.home)) {}

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

}  // namespace lk::cli
