// Rolling-code settings: the file beside the project (project path with ".ini"),
// section "Rolling Code", and the validation of the settings dialog's OK.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "core/host.h"

namespace lk {

struct RollSettings {
  bool Enabled = false;            // "Value" is exactly "True"
  std::int32_t WordLength = 0;     // "World_Lenth"
  std::vector<std::int32_t> Addresses;  // index 0 = address of byte 0
  std::vector<std::int32_t> Counts;     // the current code, index 0 = byte 0
  std::vector<std::int32_t> Steps;
  bool Mode2262 = false;           // "2262mode" is exactly "1"
};

// The project path without its last extension, plus ".ini".
std::filesystem::path RollSettingsPath(const std::string& projectPath);

// Reads the settings (current layout with "Version", or the older one with a single
// start address). Missing list items stay 0; nothing past the lists is read.
RollSettings ReadRollSettings(Host& host, const std::filesystem::path& settingsFile);

// What the dialog's text boxes hold.
struct RollDialogInput {
  bool Enable = false;    // Option1 selected (else Option2)
  std::string Address;    // TextAddress
  std::string Length;     // TextLenth
  std::string Count;      // TextCount
  std::string Step;       // TextStep
  bool Mode2262 = false;  // Check2262
};

// The dialog's fill from an existing settings file (writes "Mode" = "False" back).
RollDialogInput LoadRollDialog(Host& host, const std::filesystem::path& settingsFile);

// The key filters of the three text boxes: whether a typed character is kept,
// given the text before it.
bool AcceptAddressKey(const std::string& before, char key);
bool AcceptCountKey(const std::string& before, char key);
bool AcceptLengthKey(char key);

enum class RollOkResult { Saved, Refused, SilentlyIgnored };

// OK of the dialog: validates (messages through the host, caption "Error"), writes
// the settings when a project is open (settingsFile non-empty), logs the lines and
// sets status panel 1.
RollOkResult ApplyRollDialog(Host& host, const RollDialogInput& input,
                             const std::filesystem::path& settingsFile);

}  // namespace lk
