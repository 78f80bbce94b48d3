// The production database behind a chip command: this chip's serial from the series'
// ledger and its record in the chain. One ProductionRun a command run, on a database
// connection that lives as long as the program.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "core/project.h"
#include "link/writer.h"
#include "ops/production_hooks.h"
#include "ops/station.h"
#include "prod/database.h"
#include "prod/serial_ledger.h"

namespace lk::ops {

// The series a project's codes come from: `option` (--series) when given, else the
// project file's name without folder and extension.
std::string SeriesName(const Project& project, const std::string& option);

class ProductionRun final : public Production {
 public:
  ProductionRun(prod::Database& db, const Project& project, const Writer& writer,
                std::string seriesOption);

  bool Ready(Host& host) override;
  bool ReserveSerial(Host& host, RollSettings& settings) override;
  bool CommitSerial(Host& host) override;
  void ReleaseSerial(Host& host) override;
  void Record(Host& host, const std::string& command, const CommandResult& result) override;

  // The record as written (one line of JSON); `exit` is the command line's status.
  std::string RecordJson(const std::string& command, const CommandResult& result) const;
  const std::string& Series() const { return series_; }
  // The writer's firmware version word when the caller knows it before the command.
  void SetWriterVersion(std::uint32_t version);
  // Whether the last Record reached the database.
  bool Recorded() const { return recorded_; }

 private:
  void Refuse(Host& host, const std::string& text) const;

  prod::Database& db_;
  const Project& project_;
  const Writer& writer_;
  std::string series_;
  std::optional<prod::Reservation> open_;
  std::vector<std::vector<std::int32_t>> voided_;
  bool recorded_ = false;
  std::string version_;
};

// The commands whose records are no chip passed or failed (the EEDATA window's reads
// and writes, the writer's ID): the counters and the stats leave them out.
inline const std::vector<std::string> kUncountedCommands = {"EEDATA Read", "EEDATA Write",
                                                             "Writer ID Set", "Writer ID Read"};

// A firmware version word as the records and --json show it ("3.1": low byte first).
std::string WriterVersionText(std::uint32_t version);

// The exit status of a command line for an outcome (0 passed, 1 failed, 2 refused,
// 3 no writer), as the record keeps it.
int ExitStatusFor(Outcome outcome);

}  // namespace lk::ops
