// Who writes to the production database: the station (host name), this process and
// the time, as the records and the ledger keep them.
#pragma once

#include <string>

namespace lk::prod {

// The host name of this PC.
std::string StationName();

// UTC now, ISO 8601 with milliseconds ("2026-11-24T16:45:31.123Z").
std::string UtcNow();

// This process as "PID:START" (START = its start time in clock ticks after boot), so that
// a later process with the same PID is not taken for it.
std::string ProcessIdentity();

// Whether the process a ProcessIdentity names still runs on this station.
bool ProcessAlive(const std::string& identity);

}  // namespace lk::prod
