// Rolling-code settings: the file beside the project (project path with ".ini"),
// section "Rolling Code", and the validation of the settings dialog's OK.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "core/host.h"

namespace lk {

// The caption of every message of the settings dialog's checks (the code rules too).
inline constexpr const char* kRollErrorTitle = "Error";

// The section of the settings file that holds every key.
inline constexpr const char* kRollSection = "Rolling Code";

// Longest "World_Lenth" honoured when reading. Real codes are four bytes; the cap
// keeps a hand-edited or damaged file ("World_Lenth=99999999") from allocating
// without bound. Negative lengths read as 0.
inline constexpr std::int32_t kMaxRollWordLength = 64;

struct RollSettings {
  bool Enabled = false;                 // "Value" is exactly "True"
  std::int32_t WordLength = 0;          // "World_Lenth"
  std::vector<std::int32_t> Addresses;  // index 0 = address of byte 0
  std::vector<std::int32_t> Counts;     // the current code, index 0 = byte 0
  std::vector<std::int32_t> Steps;
  bool Mode2262 = false;  // "2262mode" is exactly "1"
};

// The project path without its last extension, plus ".ini".
std::filesystem::path RollSettingsPath(const std::string& projectPath);

// Reads the settings (current layout with "Version", or the older one with a single
// start address). The three lists have WordLength entries; missing list items stay
// 0; nothing past the lists is read. A missing file shows the file-not-found message
// once and gives the default (disabled, empty) settings.
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
// Older files are shown in today's form (four-digit hex addresses and decimal counts,
// highest byte first). TextStep is filled like TextCount. A missing file gives the
// empty, disabled dialog and writes nothing.
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
//  - Enable: a project without a settings file yet gets an empty one first (created
//    atomically), since the profile writer never creates files.
//  - Disable: only "Value" = "False" is written, and only into an existing file; the
//    stored code, addresses and steps are kept so that enabling again continues the
//    same sequence. Nothing typed is validated.
//  - The 2262 check reports the first unusable byte counting from byte 0 (the last
//    item typed), naming the item as typed.
//  - A count item below 0 (possible only from scripts, never through the key filter)
//    is refused like one above 255.
//  - A write failure (already reported by the writer) gives Refused.
RollOkResult ApplyRollDialog(Host& host, const RollDialogInput& input,
                             const std::filesystem::path& settingsFile);

}  // namespace lk
