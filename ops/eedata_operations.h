// The EEDATA window's two whole operations (also the main menu's EEDATA read and write):
// their own find, chip check and result reports, which go to the EEDATA window's status
// rather than the message log.
#pragma once

#include <functional>
#include <string>

#include "ops/station.h"

namespace lk::ops {

// Where the operations report: the EEDATA window's status panel (a line on stdout for
// the command line). Only "该芯片没有内部Eedata！" is a message box.
using EedataReport = std::function<void(const std::string& line)>;

// Writes the project's EEDATA into the chip (0xB2, 0xB0) and verifies it (0xB1):
// "Write Eedata OK!" or "Write Eedata Error!".
CommandResult WriteEedataToChip(Station& st, const EedataReport& report);

// Reads the chip's EEDATA into the project and refreshes the EEDATA view:
// "Read Eedata OK!", also when the writer stops answering during the read (the read is
// not checked; the project's bytes are then left as they were).
CommandResult ReadEedataFromChip(Station& st, const EedataReport& report);

}  // namespace lk::ops
