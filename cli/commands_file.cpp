#include "cli/commands.h"

namespace lk::cli {

void AddFileCommands(CLI::App&, CliContext*&, int&) {}

}  // namespace lk::cli
