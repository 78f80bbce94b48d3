#include "core/session.h"

#include "core/chip_database.h"
#include "core/model_quirks.h"
#include "core/numeric_text.h"
#include "core/profile.h"
#include "core/text_codec.h"

namespace lk {
namespace {

// A window-unit number of frm.dat; 0 when it is empty or does not fit a float.
float NumberOf(const std::optional<ProfileText>& frm, const std::string& window, const char* key) {
  if (!frm) return 0;
  const auto v = ParseDecimal(frm->Value(window, key));
  if (!v || *v > 3.4e38 || *v < -3.4e38) return 0;
  return static_cast<float>(*v);
}

}  // namespace

WindowGeometry ReadGeometry(Host& host, const Home& home, const std::string& window) {
  const std::optional<ProfileText> frm = ProfileText::Read(host, home.FrmDat(), 4);
  return {NumberOf(frm, window, "Left"), NumberOf(frm, window, "Top"),
          NumberOf(frm, window, "Width"), NumberOf(frm, window, "Height")};
}

bool WriteGeometry(Host& host, const Home& home, const std::string& window,
                   const WindowGeometry& geometry) {
  return WriteValues(host, home.FrmDat(), window,
                     {{"Left", FloatText(geometry.Left)},
                      {"Top", FloatText(geometry.Top)},
                      {"Width", FloatText(geometry.Width)},
                      {"Height", FloatText(geometry.Height)}});
}

ColumnWidths ReadConfigColumns(Host& host, const Home& home) {
  const std::optional<ProfileText> frm = ProfileText::Read(host, home.FrmDat(), 2);
  return {NumberOf(frm, "FrmConfigDisp", "CHeader1"), NumberOf(frm, "FrmConfigDisp", "CHeader2")};
}

bool WriteConfigColumns(Host& host, const Home& home, const ColumnWidths& widths) {
  return WriteValues(host, home.FrmDat(), "FrmConfigDisp",
                     {{"CHeader1", FloatText(widths.First)}, {"CHeader2", FloatText(widths.Second)}});
}

std::array<std::string, 5> ReadRecentFiles(Host& host, const Home& home) {
  std::array<std::string, 5> files;
  const std::optional<ProfileText> data =
      ProfileText::Read(host, home.DataDat(), static_cast<int>(files.size()));
  if (!data) return files;
  for (std::size_t i = 0; i < files.size(); ++i) {
    files[i] = data->Value("RecentFile", "File" + std::to_string(i));
  }
  return files;
}

bool WriteRecentFiles(Host& host, const Home& home, const std::array<std::string, 5>& files) {
  std::vector<std::pair<std::string, std::string>> entries;
  for (std::size_t i = 0; i < files.size(); ++i) {
    entries.emplace_back("File" + std::to_string(i), files[i]);
  }
  return WriteValues(host, home.DataDat(), "RecentFile", entries);
}

std::string ReadMcuType(Host& host, const Home& home) {
  return GetValue(host, home.DataDat(), "Data", "McuType");
}

bool WriteMcuType(Host& host, const Home& home, const std::string& model) {
  return WriteValue(host, home.DataDat(), "Data", "McuType", model);
}

ChipParams LoadStartupChip(Host& host, const Home& home, const std::string& model) {
  ChipParams chip = LoadChipParams(host, home, model);
  if (!chip.Loaded()) {
    const ProfileList models = GetSectionKeys(host, home.QvmcIni(), "MCULIST");
    if (models.size() > 1) chip = LoadChipParams(host, home, models[1]);
  }
  // Bit 8 is always clear on these chips; the start-up image must say so.
  if (ClearsBit8(chip.Name)) ClearBit8(chip);
  return chip;
}

void PushRecentFile(std::array<std::string, 5>& files, const std::string& path) {
  // The list holds what data.dat can keep: a name with bytes that are no text is kept
  // with U+FFFD in their place, so that opening it again finds it at the front rather
  // than adding it once more.
  const std::string entry = ToValidUtf8(path);
  if (files[0] == entry) return;
  std::size_t from = files.size() - 1;  // not in 1..3: everything moves, entry 4 drops
  for (std::size_t i = 1; i <= 3; ++i) {
    if (files[i] == entry) {
      from = i;
      break;
    }
  }
  for (std::size_t i = from; i > 0; --i) files[i] = files[i - 1];
  files[0] = entry;
}

}  // namespace lk
