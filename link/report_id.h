// hidapi and the writer's unnumbered reports: hid_write takes the report ID as its first
// byte, but hid_read hands back an unnumbered input report without it. These two small
// functions keep the rest of the program on one layout: index 0 = report ID (0),
// index 1 = first byte of the packet or answer.
#pragma once

#include <cstddef>
#include <cstdint>

#include "link/transport.h"

namespace lk {

// The bytes hid_write must get for a report: the report itself, ID 0 first. A report
// whose ID byte is not 0 is corrected, because the writer has no numbered reports.
Report OutputReportBytes(const Report& report);

// Builds the input report from what hid_read returned (`got` bytes at `data`): the
// writer's 64 bytes go to indices 1..64, and index 0 becomes the report ID 0. False for
// anything that is not a whole 64-byte report (an error, a timeout, a short report).
bool InputReportFromRead(const std::uint8_t* data, int got, Report& report);

}  // namespace lk
