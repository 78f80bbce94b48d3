#include "core/chip_database.h"

#include <algorithm>
#include <cfloat>
#include <limits>
#include <optional>

#include "core/config_rules.h"
#include "core/model_quirks.h"
#include "core/numeric_text.h"
#include "core/profile.h"

namespace lk {
namespace {

// The writer addresses program words with 16 bits.
constexpr std::int32_t kMaxRomSize = 0xFFFF;

template <typename T>
bool StoreInteger(std::optional<std::int64_t> value, T& field) {
  if (!value || *value < std::numeric_limits<T>::min() || *value > std::numeric_limits<T>::max()) {
    return false;
  }
  field = static_cast<T>(*value);
  return true;
}

template <typename T>
bool StoreHexLong(const std::string& text, T& field) {
  const auto v = ParseHexLong(text);
  return v && StoreInteger<T>(*v, field);
}

template <typename T>
bool StoreHexShort(const std::string& text, T& field) {
  const auto v = ParseHexShort(text);
  return v && StoreInteger<T>(*v, field);
}

template <typename T>
bool StoreDecimal(const std::string& text, T& field) {
  const auto v = ParseDecimal(text);
  if (!v) return false;
  const auto fitted = FitInteger(*v, std::numeric_limits<T>::min(), std::numeric_limits<T>::max());
  return StoreInteger<T>(fitted, field);
}

bool StoreVoltage(const std::string& text, float& field) {
  const auto v = ParseDecimal(text);
  if (!v || *v > FLT_MAX || *v < -FLT_MAX) return false;
  field = static_cast<float>(*v);
  return true;
}

bool StoreProPin(const std::string& text, std::vector<std::uint8_t>& pins) {
  pins.clear();
  if (text.empty()) return true;
  std::size_t start = 0;
  while (true) {
    const std::size_t comma = text.find(',', start);
    std::uint8_t pin = 0;
    if (!StoreDecimal(text.substr(start, comma == std::string::npos ? comma : comma - start),
                      pin)) {
      return false;
    }
    pins.push_back(pin);
    if (comma == std::string::npos) return true;
    start = comma + 1;
  }
}

// Stores one database line; false when the value does not fit its field.
bool StoreKey(const std::string& key, const std::string& value, ChipParams& chip) {
  if (key == "TYPE") return StoreHexLong(value, chip.Type);
  if (key == "PROD") return chip.Prod = value, true;
  if (key == "ARCH") return chip.Arch = value, true;
  if (key == "CRAFTS") return chip.Crafts = value, true;
  if (key == "ROMSIZE") return StoreHexLong(value, chip.RomSize);
  if (key == "CONFIGLENTH") {
    const auto v = ParseHexLong(value);
    if (!v) return false;
    return StoreInteger<std::int16_t>(*v > 3 ? 3 : *v, chip.ConfigLength);
  }
  if (key == "EEDATA") {
    if (!StoreHexLong(value, chip.EeSize) || chip.EeSize < 0) return false;
    chip.EeBytes.assign(static_cast<std::size_t>(chip.EeSize) + 1, 255);
    return true;
  }
  if (key == "HEXMCU") return StoreHexLong(value, chip.HexMcu);
  if (key == "INS") return StoreDecimal(value, chip.Ins);
  if (key == "FST") return StoreDecimal(value, chip.Fst);
  if (key == "VPPMODE") return StoreHexShort(value, chip.VppMode);
  if (key == "VPPPROG") return StoreVoltage(value, chip.VppProg);
  if (key == "VPPERASE") return StoreVoltage(value, chip.VppErase);
  if (key == "VPPREAD") return StoreVoltage(value, chip.VppRead);
  if (key == "VPPKEEP") return StoreVoltage(value, chip.VppKeep);
  if (key == "VPPSEL") return StoreHexShort(value, chip.VppSel);
  if (key == "ERASE0") return StoreDecimal(value, chip.Erase0);
  if (key == "ERASE1") return StoreDecimal(value, chip.Erase1);
  if (key == "ERASEROM") return StoreDecimal(value, chip.EraseRom);
  if (key == "ERASECONFIG") return StoreDecimal(value, chip.EraseConfig);
  if (key == "PROGTIME") return StoreDecimal(value, chip.ProgTime);
  if (key == "SPCADD") return StoreDecimal(value, chip.SpcAdd);
  if (key == "SPCDAT") return StoreHexShort(value, chip.SpcDat);
  if (key == "PROPIN") return StoreProPin(value, chip.ProPin);
  if (key == "BLANKROM") return StoreHexLong(value, chip.BlankRom);
  if (key == "BLANKCONFIG") return StoreHexLong(value, chip.BlankConfig);
  return true;  // unknown keys are ignored
}

void Refuse(Host& host, const std::string& model, const std::string& key,
            const std::string& value) {
  host.Message(Icon::Critical,
               "qvmc.ini: model " + model + " has " + key + "=" + value +
                   ", which is out of range; the model cannot be loaded.",
               kAppTitle);
}

}  // namespace

std::vector<std::string> ListModels(Host& host, const Home& home) {
  const ProfileList keys = GetSectionKeys(host, home.QvmcIni(), "MCULIST");
  std::vector<std::string> models;
  // A key starts with a non-blank (lines are trimmed), so only "=..." lines give "".
  for (std::size_t i = 1; i < keys.size(); ++i) {
    if (!keys[i].empty()) models.push_back(keys[i]);
  }
  return models;
}

ChipParams LoadChipParams(Host& host, const Home& home, const std::string& model) {
  const std::filesystem::path path = home.QvmcIni();
  // The database is read once for the list and the record.
  ReadOutcome outcome;
  const std::optional<ProfileText> database = ProfileText::Load(path, outcome);
  if (!database) {
    // No database is like an unknown model; one that is there but cannot be read is
    // named, or the user would never learn why no model loads.
    if (!outcome.NoFile()) {
      host.FileUnreadable(CannotReadText(path, outcome));
    }
    return {};
  }
  const ProfileList listed = database->SectionKeys("MCULIST");
  if (model.empty() || std::find(listed.begin() + 1, listed.end(), model) == listed.end()) {
    return {};
  }

  ChipParams chip;
  chip.Name = model;
  bool open = false;
  bool found = false;
  bool refused = false;
  database->ForEachLine([&](const ProfileLine& line) {
    if (line.kind == ProfileLineKind::Header) {
      if (open) return false;  // only the first section of the model counts
      open = line.text == model;
      found = found || open;
      return true;
    }
    if (line.kind != ProfileLineKind::Data || !open) return true;
    const std::string key = ProfileKey(line.text);
    const std::string value = ProfileValue(line.text);
    if (!StoreKey(key, value, chip)) {
      Refuse(host, model, key, value);
      refused = true;
      return false;
    }
    return true;
  });
  if (!found || refused) return {};

  if (chip.RomSize < 0 || chip.RomSize > kMaxRomSize) {
    Refuse(host, model, "ROMSIZE", std::to_string(chip.RomSize));
    return {};
  }
  if (chip.ConfigLength < 0) {
    Refuse(host, model, "CONFIGLENTH", std::to_string(chip.ConfigLength));
    return {};
  }
  chip.RomWords.assign(static_cast<std::size_t>(chip.RomSize) + 1, chip.HexMcu);
  chip.ConfigWords.assign(static_cast<std::size_t>(chip.ConfigLength) + 1, chip.HexMcu);
  chip.ConfigWords =
      ApplyConfigRules(host, home, chip.Name, chip.Prod, std::move(chip.ConfigWords));

  // These three chips never have bits 8 and 12 of configuration word 1 set, whatever
  // the rules say.
  if (ClearsBit8(model) && chip.ConfigWords.size() > 1) {
    chip.ConfigWords[1] &= ~0x1100;
  }
  return chip;
}

}  // namespace lk
