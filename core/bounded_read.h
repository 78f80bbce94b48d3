// Reading a whole file without trusting what its path names. Every file the program
// reads goes through here: the path must lead (after links) to a regular file no larger
// than a limit fitting its kind. A FIFO would block the reader forever, a device such as
// /dev/zero never ends, and a huge file would take memory without bound.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

namespace lk {

// Profile files (chip database, configuration rules and definitions, session files,
// rolling-code settings) and the simulated writer's state. The largest real one, the
// state of a writer holding the largest chip, stays under 1.5 MiB.
inline constexpr std::uintmax_t kMaxDataFileBytes = 4u << 20;

enum class ReadProblem {
  None,
  Missing,     // nothing of that name (or a link leading nowhere)
  Folder,      // a folder of that name
  NotRegular,  // a FIFO, a device or a socket
  TooLarge,    // beyond the limit of its kind
  Unreadable,  // the system refused (permissions, I/O error)
};

struct ReadOutcome {
  ReadProblem problem = ReadProblem::None;
  std::string reason;  // for a message: "it is a FIFO, not a regular file"

  bool Ok() const { return problem == ReadProblem::None; }
  // No file of that name: what the readers report as "File: "…" Not Found!".
  bool NoFile() const { return problem == ReadProblem::Missing || problem == ReadProblem::Folder; }
};

// Reads the whole file into bytes (left alone on failure). Nothing larger than maxBytes
// is ever allocated, and a file that grows while it is read is refused, not followed.
ReadOutcome ReadRegularFile(const std::filesystem::path& path, std::uintmax_t maxBytes,
                            std::string& bytes);

// "Cannot read "PATH": REASON." for a failed read.
std::string CannotReadText(const std::filesystem::path& path, const ReadOutcome& outcome);

}  // namespace lk
