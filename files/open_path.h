// The open dispatcher and New: every path the user opens (Open dialog, recent-file list,
// reopen after Save, `lkwriter-cli show`) goes through OpenPath. It has no user interface
// of its own: messages go through the Host, the Project is updated in place, and the
// result says what the windows must redraw.
#pragma once

#include <filesystem>
#include <string>

#include "core/home.h"
#include "core/host.h"
#include "core/project.h"

namespace lk {

struct OpenResult {
  // The dispatcher ran to its end: the file existed and its reader (if any) accepted it.
  // The image and the checksum below are then current. The texts of the two document
  // windows are not built here: they follow from the image (HexText, EedataHexText),
  // and only a caller that shows them pays for them.
  bool Opened = false;
  // A reader loaded an image (false for unknown endings such as ".txt").
  bool ImageLoaded = false;
  // The reserved-word check refused the program and wiped the image.
  bool ReservedWiped = false;

  std::string ChecksumText;  // "Checksum:XXXX"
  bool RefreshConfig = false;  // the configuration display must be rebuilt
  bool ShowEedata = false;     // the EEDATA view must be redrawn
  bool ShowRollDialog = false;  // a settings file exists beside the project
  std::filesystem::path RollSettingsPath;
  std::string FileModifyStatus;  // status panel 3, also set through the Host
  std::string RollingStatus;     // status panel 1 when there is no settings file
};

// Opens path into project. Reports "File: "…" Not Found!" for a missing file and "Open
// File Error!" for a refused one (the project then keeps its image). The recent-file
// list is written to dat/data.dat of home.
// The path is taken by value: callers pass entries of project.RecentFiles, which the
// dispatcher itself reorders.
OpenResult OpenPath(Host& host, const Home& home, Project& project, std::string path);

// Menu New: a blank program under the caption "New File". Configuration words and EEDATA
// stay as they are.
OpenResult NewFile(Project& project);

// The Open dialog's filter for the selected chip, written "label|patterns" with the
// patterns separated by ";": the product code decides which foreign format is offered
// beside BCT and the project file.
std::string OpenDialogFilter(const ChipParams& chip);
// The Save dialog's filter, in the same form.
inline constexpr const char* kSaveDialogFilter = "lkx(*.lkx)|*.lkx";

// Everything OpenPath redraws, from the current image (hex text, checksum, EEDATA view).
OpenResult DescribeImage(const Project& project);

// The file's last change as local date and time ("2026-11-22 21:56:52"); "" when the
// file cannot be looked at. The status panel and the file watch compare these texts.
std::string FileModifiedText(const std::string& path);

// Text after the last folder separator and before the last ".".
std::string FileTitleOf(const std::string& path);

}  // namespace lk
