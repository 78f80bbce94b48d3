// The record of every chip command: one JSON text a row of table chip_record, chained
// (hash = SHA-256 over the previous row's hash and this record) so that a record edited,
// deleted, reordered or cut off the end is found.
#pragma once

#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

#include "prod/database.h"

namespace lk::prod {

// The hash before the first record.
inline const std::string kChainStart(64, '0');

struct ChainCheck {
  bool Ok = true;
  std::int64_t Records = 0;
  std::int64_t FirstBadId = 0;  // 0 when the chain holds
  std::string Why;
};

struct StatsRow {
  std::string Group;  // "series", "day" or "writer"
  std::string Key;
  std::int64_t Passed = 0, Failed = 0, Total = 0;
};

struct RecordRow {
  std::int64_t Id = 0;
  std::string Record;  // the JSON text
};

class ChipRecords {
 public:
  explicit ChipRecords(Database& db) : db_(db) {}

  // Appends one record (a JSON object on one line); its id.
  Result<std::int64_t> Append(const std::string& recordJson);
  Result<ChainCheck> Verify();
  // Every record: CSV with a header line, or one JSON object a line.
  Status ExportCsv(std::ostream& out);
  Status ExportJsonl(std::ostream& out);
  // Passed, failed and total chip commands per series, per UTC day and per writer (its
  // ID, else its path); only the series `series` when it is not empty. Records of the
  // commands named in `uncounted` are left out.
  Result<std::vector<StatsRow>> Stats(const std::string& series,
                                      const std::vector<std::string>& uncounted = {});
  // The last `count` records, newest first, whose text holds `filter` (all when empty).
  Result<std::vector<RecordRow>> Last(int count, const std::string& filter);
  // Passed and failed chip commands of one station, but those named in `uncounted`.
  Result<std::pair<std::int64_t, std::int64_t>> Counts(const std::string& station,
                                                       const std::vector<std::string>& uncounted = {});

 private:
  Database& db_;
};

}  // namespace lk::prod
