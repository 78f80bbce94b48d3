// The packet trace (--trace FILE): every report sent and received, one line each,
// "> " for out and "< " for in, followed by the 65 bytes in lower-case hex separated by
// single spaces. Reports that failed to arrive are not written.
#pragma once

#include <memory>
#include <ostream>
#include <string>

#include "link/transport.h"

namespace lk {

// One trace line for a report (no line break).
std::string TraceLine(bool outgoing, const Report& report);

// Wraps a bus so that every transport it opens writes to `out`. The stream must outlive
// the bus and its transports.
std::unique_ptr<WriterBus> MakeTraceBus(std::unique_ptr<WriterBus> inner, std::ostream& out);

}  // namespace lk
