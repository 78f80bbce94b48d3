// The simulated writer's state file: the chip in the socket, the writer's store and
// its identity, so that separate runs of the program see the same writer.
//
// A text file of our own, one "key=value" line each, LF line ends, after the first
// line "LKWRITER-SIM-STATE 1". Numbers are upper-case hexadecimal unless noted; word
// lists are 4-digit words and byte lists 2-digit bytes, separated by one blank.
//
//   id=XXXXXXXX            the four ID bytes in order (byte 0 first)
//   chip=NAME              the model in the socket; this and every chip.* line are
//                          absent when the socket is empty
//   chip.type=N            Type, decimal (may be negative)
//   chip.prod=TEXT         product code text
//   chip.otp=0|1
//   chip.blank=XXXX        the blank word (HexMcu)
//   chip.configlength=N    decimal, 0..15
//   chip.programmed=0|1
//   chip.program=words     program words 0..RomSize
//   chip.config=words      exactly 16 words of the configuration area
//   chip.eedata=bytes      EEDATA (empty value: none)
//   store.block=bytes      the stored parameter block: 64 bytes or empty
//   store.program=words    store.config=words
//   store.sum=XXXX         the stored image checksum
//   store.rollstart=bytes  9 bytes: four addresses, then the flags
//   store.rollstep=bytes   8 bytes
//   store.eeflag=XX        store.eesum=XXXX
//   store.eedata=bytes
//
// Every key must appear exactly once (the chip keys only with a chip); anything else
// makes the file corrupt.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "sim/sim_writer.h"

namespace lk::sim {

std::string FormatState(const SimState& state);

// Nothing, with a reason in error, when the text is not a valid state.
std::optional<SimState> ParseState(const std::string& text, std::string& error);

enum class StateFileResult { Loaded, Absent, Refused };

// Reads the state kept in path into state. Absent (state untouched) when there is no
// file yet: the writer starts fresh. Refused (state untouched, the reason in error) when
// path is not a regular file within the data-file limit, cannot be read or does not
// hold a valid state.
StateFileResult LoadStateFile(const std::filesystem::path& path, SimState& state,
                              std::string& error);

// Written atomically; false with a reason on failure.
bool SaveStateFile(const std::filesystem::path& path, const SimState& state, std::string& error);

}  // namespace lk::sim
