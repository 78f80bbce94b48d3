// The command line of the desktop program: the program folder, the writer and an
// optional file to open, with the options lkwriter-cli has for them.
#pragma once

#include <QStringList>
#include <optional>
#include <string>

#include "ops/device.h"

namespace lk::ui {

struct StartOptions {
  std::optional<std::string> home;  // --home DIR
  ops::DeviceOptions device;
  std::string file;  // opened after start-up when given
  std::optional<std::string> db;  // --db URL (else the one stored in dat/data.dat)
  std::string series;             // --series NAME
};

// Parses the arguments (program name first). On a usage error or --help, returns
// nothing after printing the reason or the help; *exitCode is then the exit status.
std::optional<StartOptions> ParseStartOptions(const QStringList& arguments, int* exitCode);

}  // namespace lk::ui
