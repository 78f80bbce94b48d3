// Session files beside the program: window geometry (dat/frm.dat) and the session
// values of dat/data.dat ("Data", "RecentFile", "Setting"), and the start-up choice
// of the chip model.
#pragma once

#include <array>
#include <string>

#include "core/chip_params.h"
#include "core/home.h"
#include "core/host.h"

namespace lk {

struct WindowGeometry {
  float Left = 0, Top = 0, Width = 0, Height = 0;
};

// Windows with a section in frm.dat: "FrmMain", "FrmDoc", "FrmConfigDisp", "FrmMessage".
WindowGeometry ReadGeometry(Host& host, const Home& home, const std::string& window);
bool WriteGeometry(Host& host, const Home& home, const std::string& window,
                   const WindowGeometry& geometry);

// Widths of the two columns of the configuration display: "CHeader1" and "CHeader2"
// under "FrmConfigDisp" in frm.dat.
struct ColumnWidths {
  float First = 0, Second = 0;
};
ColumnWidths ReadConfigColumns(Host& host, const Home& home);
bool WriteConfigColumns(Host& host, const Home& home, const ColumnWidths& widths);

std::array<std::string, 5> ReadRecentFiles(Host& host, const Home& home);
bool WriteRecentFiles(Host& host, const Home& home, const std::array<std::string, 5>& files);

std::string ReadMcuType(Host& host, const Home& home);
bool WriteMcuType(Host& host, const Home& home, const std::string& model);

// The chip chosen at start-up: LoadChipParams(model), falling back to the first
// "[MCULIST]" model, then the start-up adjustment (every program and configuration
// word AND 0xFEFF) for QVM50F96A, QVM50F96B and QVM50F98B.
ChipParams LoadStartupChip(Host& host, const Home& home, const std::string& model);

// Moves path to the front of the recent-file list the way the open dispatcher does.
void PushRecentFile(std::array<std::string, 5>& files, const std::string& path);

}  // namespace lk
