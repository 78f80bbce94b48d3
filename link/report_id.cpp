#include "link/report_id.h"

#include <algorithm>

#include "link/protocol.h"

namespace lk {

Report OutputReportBytes(const Report& report) {
  Report out = report;
  out[0] = 0;
  return out;
}

bool InputReportFromRead(const std::uint8_t* data, int got, Report& report) {
  if (data == nullptr || got != proto::kPacketLength) return false;
  report[0] = 0;
  std::copy(data, data + proto::kPacketLength, report.begin() + 1);
  return true;
}

}  // namespace lk
