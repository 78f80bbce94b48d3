#include "ui/options.h"

#include <QCommandLineParser>
#include <cstdio>

namespace lk::ui {

std::optional<StartOptions> ParseStartOptions(const QStringList& arguments, int* exitCode) {
  QCommandLineParser parser;
  parser.setApplicationDescription("LKMCU Writer, the desktop program of the LKMCU writer");
  parser.addHelpOption();
  const QCommandLineOption home("home", "program folder (dat/, cfg/, doc/)", "DIR");
  const QCommandLineOption device("device", "usb, usb:PATH or sim", "DEVICE", "usb");
  const QCommandLineOption simState("sim-state", "file keeping the simulated writer's state",
                                    "FILE");
  const QCommandLineOption simChip("sim-chip", "model in the simulated writer's socket "
                                               "(default: the selected model)",
                                   "MODEL");
  const QCommandLineOption simVersion("sim-version",
                                      "simulated firmware version (low byte, 0..255)", "N", "3");
  const QCommandLineOption simFault("sim-fault", "inject a fault: KIND@N", "KIND@N");
  const QCommandLineOption simTiming("sim-timing", "the simulated writer takes its real time");
  const QCommandLineOption timeout("timeout", "receive timeout of every answer (1..60000 ms)",
                                   "MS", "3000");
  const QCommandLineOption trace("trace", "write every report as a hex line to FILE", "FILE");
  const QCommandLineOption db("db",
                              "production database: sqlite:PATH, postgresql://... or none "
                              "(default: the one set under Settings, else production.sqlite "
                              "in the program folder)",
                              "URL");
  const QCommandLineOption series("series",
                                  "serial series of the rolling code (default: the project "
                                  "file's name)",
                                  "NAME");
  parser.addOptions({home, device, simState, simChip, simVersion, simFault, simTiming, timeout,
                     trace, db, series});
  parser.addPositionalArgument("file", "a program image or project to open", "[FILE]");

  *exitCode = 0;
  if (!parser.parse(arguments)) {
    std::fprintf(stderr, "%s\n", qPrintable(parser.errorText()));
    *exitCode = 2;
    return std::nullopt;
  }
  if (parser.isSet("help")) {
    // Read before any application object exists, the parser does not know the name.
    QString help = parser.helpText();
    help.replace("<executable_name>", "lkwriter");
    std::printf("%s", qPrintable(help));
    return std::nullopt;
  }
  StartOptions o;
  if (parser.isSet(home)) o.home = parser.value(home).toStdString();
  if (parser.isSet(db)) o.db = parser.value(db).toStdString();
  o.series = parser.value(series).toStdString();
  o.device.device = parser.value(device).toStdString();
  o.device.simState = parser.value(simState).toStdString();
  o.device.simChip = parser.value(simChip).toStdString();
  o.device.simFault = parser.value(simFault).toStdString();
  o.device.simTiming = parser.isSet(simTiming);
  o.device.trace = parser.value(trace).toStdString();
  bool versionOk = false;
  bool timeoutOk = false;
  o.device.simVersion = parser.value(simVersion).toInt(&versionOk);
  const int ms = parser.value(timeout).toInt(&timeoutOk);
  if (!ops::IsDeviceName(o.device.device)) {
    std::fprintf(stderr, "error: --device: unknown device \"%s\" (%s)\n", o.device.device.c_str(),
                 ops::kDeviceNames);
    *exitCode = 2;
    return std::nullopt;
  }
  if (!versionOk || o.device.simVersion < 0 || o.device.simVersion > ops::kMaxSimVersion) {
    std::fprintf(stderr, "error: --sim-version: a number 0..%d\n", ops::kMaxSimVersion);
    *exitCode = 2;
    return std::nullopt;
  }
  if (!timeoutOk || ms < ops::kMinTimeoutMs || ms > ops::kMaxTimeoutMs) {
    std::fprintf(stderr, "error: --timeout: milliseconds %d..%d\n", ops::kMinTimeoutMs,
                 ops::kMaxTimeoutMs);
    *exitCode = 2;
    return std::nullopt;
  }
  o.device.timeoutMs = ms;
  const QStringList files = parser.positionalArguments();
  if (files.size() > 1) {
    std::fprintf(stderr, "one file at most\n");
    *exitCode = 2;
    return std::nullopt;
  }
  if (!files.isEmpty()) o.file = files.front().toStdString();
  return o;
}

}  // namespace lk::ui
