// The EEDATA window's logic: loading an EEDATA HEX file, taking the edited hex text into
// the image (with the project's EEDATA flag), the caret's address, the read and write
// buttons with their status texts, and the 500 ms watch that writes the chip each time a
// data file changes.
#pragma once

#include <string>

#include "core/chip_params.h"
#include "core/host.h"
#include "ops/eedata_operations.h"
#include "ops/station.h"

namespace lk::ops {

enum class EedataLoad {
  Loaded,    // the records up to the end of the file (or to the first one past EeSize)
  NotFound,  // "未找到文件路径！"
  Invalid,   // "不是有效的EEDATA文件！": nothing was taken
};

// Reads an EEDATA HEX file into chip.EeBytes. Only type "00" records count; byte count
// and address are halved (each EEDATA byte sits in the low byte of a 16-bit word), and
// an address outside 0x2100..0x43F0 refuses the whole file. A record past EeSize ends
// the load quietly, keeping what came before it.
EedataLoad LoadEedataHex(Host& host, ChipParams& chip, const std::string& path);

// CmdOk: nothing for a chip without EEDATA; with `autoProgram` (Check1) unticked only
// the flag becomes 0xA0; ticked, the flag becomes 0xA2 and the text's lines are read
// back into the bytes, 16 a line at columns 7, 10, ... 52.
void TakeEedataText(ChipParams& chip, const std::string& text, bool autoProgram);

// The status text while the caret moves: "Address:" + four hex digits + "H" for the
// byte under the caret at 0-based `line` and `column` of the hex text.
std::string EedataCaretText(int line, int column);

// The two buttons: the status texts around the operation of the same name.
CommandResult ReadEedataButton(Station& st, const EedataReport& status);
CommandResult WriteEedataButton(Station& st, const EedataReport& status);

struct EedataWatch {
  bool On = false;        // Check2 ticked and Timer1 running
  std::string Path;       // Text1
  std::string LastSeen;   // empty when the window opens: the first tick writes once
};

// Ticking Check2: the watch starts only for an existing file ("未找到数据EEDATA文件！"
// otherwise, and Check2 is unticked). Starting does not take the file's time.
bool StartEedataWatch(Host& host, EedataWatch& watch, const std::string& path);

enum class WatchStep { Idle, Wrote, Stopped };

// One Timer1 tick: a vanished file stops the watch ("数据EEDATA文件异常！"); a new
// modification time writes the chip once and is remembered.
WatchStep EedataWatchTick(Station& st, EedataWatch& watch, const EedataReport& status);

}  // namespace lk::ops
