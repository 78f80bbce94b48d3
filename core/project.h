// The open project: the current chip record (whose arrays are the project image),
// the file it came from and the recent-file list.
#pragma once

#include <array>
#include <string>

#include "core/chip_params.h"

namespace lk {

struct Project {
  ChipParams Chip;
  std::string ProjectPath;  // full path of the file last opened; empty for none
  std::string FileTitle;    // file name without folder and last extension
  std::string DocCaption;   // caption of the hex document window
  std::array<std::string, 5> RecentFiles;  // index 0 is the newest
  // The rolling-code dialog's Enable option: every run starts with it off until a
  // project's settings turn it on.
  bool RollingEnabled = false;
};

}  // namespace lk
