// Opening a file the way both programs do: the open dispatcher, then, for a project
// with a rolling-code settings file, the fill of the rolling-code dialog, which selects
// the project's Enable option.
#pragma once

#include <optional>
#include <string>

#include "core/home.h"
#include "core/host.h"
#include "core/project.h"
#include "files/open_path.h"
#include "rolling/roll_settings.h"

namespace lk::ops {

struct OpenedDocument {
  OpenResult Open;
  // The dialog as filled from the settings file, when one exists beside the project;
  // the desktop program shows it.
  std::optional<RollDialogInput> RollDialog;
};

// OpenPath, then the Enable option: selected when a settings file exists and its
// "Value" is not "False" (deliberately looser than the reader, which counts only
// "True"), cleared when the project has no settings file.
OpenedDocument OpenDocument(Host& host, const Home& home, Project& project, std::string path);

// Why a chip command must not send the opened image, or "" when it may: the file did not
// open, the reserved-word check wiped it, or no reader took it (an unknown ending).
std::string RefusalToSend(const OpenResult& open, const std::string& path);

}  // namespace lk::ops
