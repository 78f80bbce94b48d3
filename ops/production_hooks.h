// What a production line adds around every chip command: a serial store that hands each
// chip its own rolling code across processes and PCs, and a record of every chip. A PC
// without one (Station::production == nullptr) keeps the settings file's "Count" as the
// only store of the next code, and no record is written.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "core/host.h"
#include "rolling/roll_settings.h"

namespace lk::ops {

struct CommandResult;

// One named step of a chip session ("Blank Check", "Erase", "Program", "Verify",
// "EEDATA", "Config", "Verify Config", "Download", ...), timed.
struct StepRecord {
  std::string Name;
  bool Passed = false;
  std::string Fault;  // the link fault's name when the link stopped the step, else empty
  long Ms = 0;        // wall-clock duration
};

class Production {
 public:
  virtual ~Production() = default;

  // Before the first packet of a framed command: can this command's record (and serial)
  // be written? False refuses the command: the message has been shown through the host,
  // nothing was sent, and the result's Verdict is Refused.
  virtual bool Ready(Host& host) = 0;

  // Before the first program packet that carries the code. `settings` holds the settings
  // file's code (Counts); the store may replace Counts (the database is the authority:
  // it moves past committed and voided codes, with a log line or message saying so).
  // False refuses the command before that packet.
  virtual bool ReserveSerial(Host& host, RollSettings& settings) = 0;

  // The run passed: commit the reserved code, before "Count" is rewritten. False when it
  // could not be committed; the command then fails.
  virtual bool CommitSerial(Host& host) = 0;

  // The run wrote its failure line: the reserved code goes to the next chip.
  virtual void ReleaseSerial(Host& host) = 0;

  // After every framed command (refused, without writer, failed or passed): one record.
  // `command` is the command's name as logged in the record ("Auto", "Program", ...).
  virtual void Record(Host& host, const std::string& command, const CommandResult& result) = 0;
};

}  // namespace lk::ops
