// The frame every chip command of the main window runs in: freeze the window, clear the
// log, find the writer, check the chip, run the command's own steps, give the window
// back. Written once; the commands (chip_commands.h, auto_sequence.h, config_commands.h,
// download.h) are its bodies.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "link/fault.h"
#include "ops/station.h"
#include "rolling/roll_settings.h"

namespace lk::ops {

// How much of the chip check the frame does before the body runs.
enum class ChipCheck {
  TypeAndPrepare,  // CheckChipType (0xF6), then PrepareChip: "MCU Type Error!" on failure
  None,            // the body opens the session itself (download)
};

// Runs the frame around `body`. The body ends the chip session itself (FinishOperation),
// returns true when the command passed and fills the rolling codes of the result when it
// advanced them. The result's fault is the link fault that ended a failed command.
CommandResult RunFramed(Station& st, ChipCheck check,
                        const std::function<bool(CommandResult&)>& body);

// The line of a missing writer: with the model in double quotes for the frame
// (The Writer for "QVM75P82" not Found!), without them for the EEDATA window's operations.
std::string WriterNotFoundLine(const std::string& model, bool quoted);

// CheckChipType (0xF6), a pause, PrepareChip; the chip's information texts go into the
// project's record. False when either fails (the refused chip has shown its message).
bool CheckAndPrepareChip(Station& st);

// The window's state around a chip session: monitor paused, window disabled, progress
// at 0, and the writer's last fault cleared; and back.
void HoldWindow(Station& st);
void ReleaseWindow(Station& st);

// CheckChipType; a refusal shows its message box through the writer's notice.
bool ChipTypeAccepted(Station& st, Target target);

// The message box a failed program or verify step still owes the user, if any: a
// rolling-code address outside the program (the refused chip and the missing factory
// test words were shown as the writer's notices when they happened).
void ShowStepMessage(Station& st, Fault fault);

// The rolling-code settings the program and verify steps place, when the project's
// Enable option is selected; nothing otherwise.
std::optional<RollSettings> RollingSettingsFor(Station& st);

// After a fully successful program: advances the rolling code when the project's Enable
// option is selected, and records the codes in the result.
void AdvanceRolling(Station& st, CommandResult& result);

}  // namespace lk::ops
