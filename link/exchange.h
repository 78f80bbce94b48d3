// The command exchange shared by every command: the answer check, the version query,
// the end of a chip session, the pause between steps, the ready poll and the block read.
#pragma once

#include <cstdint>
#include <vector>

#include "link/fault.h"
#include "link/writer.h"

namespace lk {

// A checked answer: length byte 3..64 and the checksum of indices 1..n-1 at index n.
// The answer code is the caller's to judge.
bool CheckAnswer(const Report& answer);

// Sends 0xA0 (checksum 0xA3 as a literal) and stores WriterVersion from answer bytes 3
// (low) and 4 (high). A bad answer leaves WriterVersion as it was.
Fault GetWriterVersion(Writer& writer);

// Ends the chip session: 0xE5 when passed, else 0xE6; 100 ms; 0xE4. No answer is read.
void FinishOperation(Writer& writer, bool passed);

// First-generation writers only: 0xE1 and 50 ms between two kinds of step.
void ReturnToIdle(Writer& writer);

// The pause and the return to idle that separate two steps of an operation.
void NextStep(Writer& writer);

// Polls 0xF1 while the writer answers 0xE3 (busy); Ok on 0xE1. Only the answer code is
// looked at. Busy past the Writer's ready deadline fails with StillBusy.
Fault WaitWriterReady(Writer& writer);

// Words 0..lastIndex read with `code` (0xF2, 0xF5, 0xFB, 0xFC), 32 a packet; raw answers
// are not checked. With `progress` the session's progress follows the address.
Result<std::vector<std::uint16_t>> ReadWords(Writer& writer, int lastIndex, std::uint8_t code,
                                             bool progress = false);

}  // namespace lk
