#include "cli/commands.h"

namespace lk::cli {

void AddLinkCommands(CLI::App&, CliContext*&, int&) {}

}  // namespace lk::cli
