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

// What the frame needs to know of its command.
struct FrameSpec {
  const char* Command;  // the command's name in the chip record ("Auto", "Program", ...)
  ChipCheck Check = ChipCheck::TypeAndPrepare;
  // The command places the rolling code or leaves its addresses out: an enabled
  // settings file that is there but cannot be read refuses it before the first packet.
  bool UsesRollingCode = false;
};

// Runs the frame around `body`. The body ends the chip session itself (FinishOperation),
// returns true when the command passed and fills the rolling codes of the result when it
// advanced them. The result's fault is the link fault that ended a failed command.
// With a production database the command is refused before its first packet when its
// record cannot be written, a code still reserved at the end is released, and every
// command leaves its record.
CommandResult RunFramed(Station& st, const FrameSpec& spec,
                        const std::function<bool(CommandResult&)>& body);

// Ends the step that began at the previous one (or at the body's start): its name,
// outcome and duration go into the result.
void EndStep(CommandResult& result, const char* name, bool passed, Fault fault = Fault::None);

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

// Before the program step: the production database reserves this chip's code and may
// move it (roll's Counts change). False: refused, nothing of the program was sent.
bool ReserveRolling(Station& st, std::optional<RollSettings>& roll);

// The run passed: the reserved code is committed before the chip session ends. False
// (the message has been shown) fails the run.
bool CommitRolling(Station& st, const std::optional<RollSettings>& roll);

// After a fully successful program: advances the rolling code from the code the chip was
// given when the project's Enable option is selected, and records the codes in the
// result. False when the next code could not be stored: the run is not a pass.
bool AdvanceRolling(Station& st, CommandResult& result, const std::optional<RollSettings>& roll);

}  // namespace lk::ops
