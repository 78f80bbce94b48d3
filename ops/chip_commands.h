// The four main chip commands of the main window: blank check (or erase), program,
// verify and read. Each runs in the operation frame and writes the result lines of its
// own steps; on success the line comes before the end of the chip session, on failure
// after it.
#pragma once

#include "link/memory_commands.h"
#include "ops/station.h"

namespace lk::ops {

CommandResult BlankCheck(Station& st);
// Program memory (0xF3), then the configuration words (0xF9); the rolling code advances
// after a fully successful run when the project's Enable option is selected.
CommandResult Program(Station& st);
CommandResult Verify(Station& st);
// Reads program memory, configuration words and EEDATA into the project's image.
CommandResult Read(Station& st);

// "Verify Fail!" (appended, or written over the last line) and the three lines of the
// first mismatch.
void LogVerifyFailure(Host& host, const VerifyResult& result, bool overwriteLast);

}  // namespace lk::ops
