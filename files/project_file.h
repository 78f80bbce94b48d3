// The project file (".lkx"): the program's own container for one chip's programming data.
//
//   0..15    model name, terminated by "!" (a 16-character name may go without it)
//   128      EEDATA flag: 0xA2 when EEDATA bytes follow the program words
//   160      configuration word i at 160 + 2i, low byte first
//   256      program word i at 256 + 2i, low byte first
//   then     EeSize + 1 EEDATA bytes when byte 128 is 0xA2
// Every other header byte is 0. The size is the only validity test. QVM50P49C and
// QVM50P79C store the program area rotated by one word (image word 2047 first).
#pragma once

#include <filesystem>
#include <string>

#include "core/chip_params.h"
#include "core/home.h"
#include "core/host.h"
#include "core/project.h"
#include "files/open_path.h"

namespace lk {

// Replaces chip (model record included) with the file's image; false and chip untouched
// on any refusal.
bool ReadProjectFile(Host& host, const Home& home, ChipParams& chip,
                     const std::filesystem::path& path);

// The bytes of a project file for chip. Program words come from hexText, the hex
// document's text (eight 4-digit fields a line at columns 9, 14, ... 44, CR LF between
// lines), not from the word array: what is saved is what the document shows.
std::string BuildProjectBytes(const ChipParams& chip, const std::string& hexText);

// The name Save writes to: ".lkx" is appended unless the name already ends in ".lkx"
// (any case), so an explicit OUT.lkx is not doubled. Empty for an empty name.
std::string ProjectSavePath(const std::string& chosenName);

// Writes the project file for chip at path, the program words taken from hexText (see
// BuildProjectBytes). Atomic: a failed write shows "Save File Error! ..." and the old file
// survives. True when the file was written.
bool WriteProjectFile(Host& host, const ChipParams& chip, const std::string& path,
                      const std::string& hexText);

struct SaveResult {
  bool Saved = false;   // the file was written
  std::string Path;     // the path written
  OpenResult Reopened;  // the reopen through OpenPath
};

// Writes the project file (atomically: a failed write shows a message and the old file
// survives), then reopens it through OpenPath so that what is shown is what the file
// holds. An empty name writes nothing.
SaveResult SaveProject(Host& host, const Home& home, Project& project,
                       const std::string& chosenName);

}  // namespace lk
