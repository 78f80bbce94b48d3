// EEDATA: the data EEPROM of the chip (0xB0 program, 0xB1 read) or of the writer's store
// (0xC0, 0xC1), and the 0xB2 that starts a chip's EEDATA write.
#pragma once

#include <cstdint>
#include <vector>

#include "core/chip_params.h"
#include "link/fault.h"
#include "link/memory_commands.h"
#include "link/writer.h"

namespace lk {

// 0xB2; Ok when the answer code is 0xE1.
Fault PrepareEedata(Writer& writer);

// The EEDATA bytes 0..EeSize in packets of up to 48 ([2..3] address, [4] count), each
// answered 0xE1; bytes the image lacks go as 0xFF.
Fault ProgramEedata(Writer& writer, const ChipParams& chip, Target target = Target::Chip);

// EeSize + 1 bytes, 64 a packet from address 0 on.
Result<std::vector<std::uint8_t>> ReadEedata(Writer& writer, const ChipParams& chip,
                                             Target target = Target::Chip);

// Reads the EEDATA and compares it byte by byte ("eedata(i)" at the first difference).
VerifyResult VerifyEedata(Writer& writer, const ChipParams& chip, Target target = Target::Chip);

}  // namespace lk
