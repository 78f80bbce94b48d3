#include "cli/commands.h"

namespace lk::cli {

void AddCoreCommands(CLI::App&, CliContext*&, int&) {}

}  // namespace lk::cli
