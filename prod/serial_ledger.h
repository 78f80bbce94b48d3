// The serial ledger: every rolling code a series hands out, so that no code is given to
// two chips, whichever process, thread or station asks, and whatever dies on the way.
// A code goes RESERVED (before the program packet that carries it) -> COMMITTED (the
// chip passed) | RELEASED (the run failed: the next chip gets it) | VOID (its process
// died with it open: the chip may carry it, so it is never given again).
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "prod/database.h"
#include "rolling/roll_settings.h"

namespace lk::prod {

// The rolling-code layout a series was created with.
struct SeriesLayout {
  std::vector<std::int32_t> Addresses;  // index 0 = byte 0
  std::int32_t WordLength = 0;
  std::vector<std::int32_t> Steps;
  bool Mode2262 = false;
  bool operator==(const SeriesLayout&) const = default;
};

SeriesLayout LayoutOf(const RollSettings& settings);
// "addresses 07F3 07F2 07F1 07F0, length 4, steps 0 0 0 1, 2262 mode off" (highest byte
// first, as the settings dialog shows them).
std::string LayoutText(const SeriesLayout& layout);

struct Reservation {
  std::int64_t Id = 0;
  std::vector<std::int32_t> Code;                 // index 0 = byte 0, as RollSettings::Counts
  std::vector<std::vector<std::int32_t>> Voided;  // open codes of dead processes, voided now
  std::optional<std::vector<std::int32_t>> MovedFrom;  // the wanted code, when it was taken
};

struct SerialCounts {
  std::int64_t Reserved = 0, Committed = 0, Released = 0, Void = 0;
};

class SerialLedger {
 public:
  explicit SerialLedger(Database& db) : db_(db) {}

  // Creates the series with this layout, or refuses a layout other than its own (the
  // text names both).
  Status UseSeries(const std::string& series, const SeriesLayout& layout);

  // Voids the series' open reservations whose process is gone, then reserves the first
  // code at or after `wanted`, in the order the codes advance, that no reserved,
  // committed or void row holds. Four-byte codes only.
  Result<Reservation> Reserve(const std::string& series, const std::vector<std::int32_t>& wanted,
                              bool mode2262);
  Status Commit(std::int64_t id);
  Status Release(std::int64_t id);

  Result<SerialCounts> Counts(const std::string& series);
  // Every series' name.
  Result<std::vector<std::string>> SeriesNames();

 private:
  Status Close(std::int64_t id, const char* state);
  Database& db_;
};

// A four-byte code as the number the ledger orders by (byte 3 highest).
std::int64_t CodeNumber(const std::vector<std::int32_t>& code);

}  // namespace lk::prod
