#include "rolling/roll_settings.h"

#include <algorithm>
#include <cstdio>

#include "core/atomic_file.h"
#include "core/profile.h"
#include "rolling/roll_code.h"
#include "rolling/val_number.h"

namespace lk {
namespace {


// Splits at every single space the way the settings were always split: "" has no
// items, "1  2" has an empty middle item, a trailing space gives an empty last item.
std::vector<std::string> SplitAtSpaces(const std::string& text) {
  std::vector<std::string> items;
  if (text.empty()) return items;
  std::size_t start = 0;
  for (;;) {
    std::size_t space = text.find(' ', start);
    if (space == std::string::npos) {
      items.push_back(text.substr(start));
      return items;
    }
    items.push_back(text.substr(start, space - start));
    start = space + 1;
  }
}

// Fills out[k] from the k-th item counted from the end, for as many items as both
// the list and out have; the rest of out stays 0.
template <typename Parse>
void FillFromEnd(const std::string& text, std::vector<std::int32_t>& out, Parse parse) {
  const std::vector<std::string> items = SplitAtSpaces(text);
  const std::size_t n = std::min(items.size(), out.size());
  for (std::size_t k = 0; k < n; ++k) out[k] = parse(items[items.size() - 1 - k]);
}

bool FileExists(const std::filesystem::path& path) {
  std::error_code ec;
  return std::filesystem::is_regular_file(path, ec);
}

// The old layout's start address: an optional "0X" (any case) before hex digits.
std::string WithoutHexPrefix(const std::string& text) {
  if (text.size() >= 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X')) {
    return text.substr(2);
  }
  return text;
}

std::string FourHexDigits(std::int32_t value) {
  char text[16];
  std::snprintf(text, sizeof text, "%08X", static_cast<unsigned>(value));
  return std::string(text + 4);  // the last four digits, as the dialog always showed
}

bool IsHexDigit(char c) {
  return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'F') || (c >= 'a' && c <= 'f');
}

bool AcceptSeparator(const std::string& before) {
  return !before.empty() && before.back() != ' ';
}

// A byte is usable by the 2262 encoder when none of its 2-bit groups is "10".
bool Valid2262(std::int32_t v) {
  return (v & 0xC0) != 0x80 && (v & 0x30) != 0x20 && (v & 0x0C) != 0x08 && (v & 0x03) != 0x02;
}

// The profile writer only updates existing files; a project saved before the
// rolling code was ever set up has none yet, so an empty one is created first.
bool EnsureSettingsFile(Host& host, const std::filesystem::path& file) {
  if (FileExists(file)) return true;
  std::string error;
  if (WriteFileAtomically(file, "", error)) return true;
  host.Message(Icon::Critical, error, kAppTitle);
  return false;
}

}  // namespace

std::filesystem::path RollSettingsPath(const std::string& projectPath) {
  return std::filesystem::path(projectPath).replace_extension(".ini");
}

namespace {

RollSettings SettingsFrom(const ProfileText& file) {
  RollSettings s;
  auto value = [&](const char* key) { return file.Value(kRollSection, key); };

  s.WordLength = std::clamp(ValInt32(value("World_Lenth")), 0, kMaxRollWordLength);
  const auto length = static_cast<std::size_t>(s.WordLength);
  s.Addresses.assign(length, 0);
  s.Counts.assign(length, 0);
  s.Steps.assign(length, 0);

  const std::string address = value("Address");
  if (!value("Version").empty()) {
    FillFromEnd(address, s.Addresses, [](const std::string& t) { return ValHex32(t); });
  } else {
    // Older files hold one start address; the code bytes sit in consecutive words.
    const auto start = static_cast<std::uint32_t>(ValHex32(WithoutHexPrefix(address)));
    for (std::size_t k = 0; k < length; ++k) {
      s.Addresses[k] = static_cast<std::int32_t>(start + static_cast<std::uint32_t>(k));
    }
  }
  auto decimal = [](const std::string& t) { return ValInt32(t); };
  FillFromEnd(value("Count"), s.Counts, decimal);
  FillFromEnd(value("Step"), s.Steps, decimal);
  s.Mode2262 = value("2262mode") == "1";
  s.Enabled = value("Value") == "True";
  return s;
}

}  // namespace

RollSettings ReadRollSettings(Host& host, const std::filesystem::path& settingsFile) {
  // Read once for all seven keys; a missing file is still reported once per key.
  const std::optional<ProfileText> file = ProfileText::Read(host, settingsFile, 7);
  return file ? SettingsFrom(*file) : RollSettings{};
}

RollDialogInput LoadRollDialog(Host& host, const std::filesystem::path& settingsFile) {
  RollDialogInput in;
  if (!FileExists(settingsFile)) return in;
  const std::optional<ProfileText> file = ProfileText::Read(host, settingsFile);
  if (!file) return in;
  auto value = [&](const char* key) { return file->Value(kRollSection, key); };

  in.Length = value("World_Lenth");
  if (!value("Version").empty()) {
    in.Address = value("Address");
    in.Count = value("Count");
    in.Step = value("Step");
  } else {
    // Show an older file in today's form: one address per byte, highest byte first.
    const RollSettings s = SettingsFrom(*file);
    for (std::size_t k = s.Addresses.size(); k-- > 0;) {
      if (!in.Address.empty()) in.Address += ' ';
      in.Address += FourHexDigits(s.Addresses[k]);
    }
    in.Count = RollCodeText(s.Counts);
    in.Step = RollCodeText(s.Steps);
  }
  WriteValue(host, settingsFile, kRollSection, "Mode", "False");
  in.Mode2262 = value("2262mode") == "1";
  // Looser than ReadRollSettings on purpose: only an explicit "False" disables.
  in.Enable = value("Value") != "False";
  return in;
}

bool AcceptAddressKey(const std::string& before, char key) {
  if (key == '\b' || IsHexDigit(key)) return true;
  return key == ' ' && AcceptSeparator(before);
}

bool AcceptCountKey(const std::string& before, char key) {
  if (key == '\b' || (key >= '0' && key <= '9')) return true;
  return key == ' ' && AcceptSeparator(before);
}

bool AcceptLengthKey(char key) {
  return key == '\b' || (key >= '1' && key <= '4');
}

RollOkResult ApplyRollDialog(Host& host, const RollDialogInput& input,
                             const std::filesystem::path& settingsFile) {
  auto refuse = [&host](const std::string& text) {
    host.Message(Icon::Information, text, kRollErrorTitle);
    return RollOkResult::Refused;
  };

  if (!input.Enable) {
    // Only the switch is written: the stored code and addresses stay as they were, so
    // enabling again later continues the same sequence. A project without a settings
    // file is already disabled; no file is created for it.
    if (!settingsFile.empty() && FileExists(settingsFile) &&
        !WriteValue(host, settingsFile, kRollSection, "Value", "False")) {
      return RollOkResult::Refused;
    }
    host.Log("Disable Rolling Code!");
    host.Status(1, "Rolling Code:Disable");
    return RollOkResult::Saved;
  }

  const std::int32_t length = ValInt32(input.Length);
  const std::vector<std::string> addresses = SplitAtSpaces(input.Address);
  if (static_cast<std::int64_t>(addresses.size()) != length) {
    return refuse("地址字节数与长度不匹配！");
  }
  for (const std::string& item : addresses) {
    // The bound is 7FFH although the message has always said 3FFH.
    if (ValHexWide(item) > 0x7FF) return refuse("地址溢出，地址必须小于3FFH！");
  }
  const std::vector<std::string> counts = SplitAtSpaces(input.Count);
  if (static_cast<std::int64_t>(counts.size()) != length) {
    return refuse("数据字节数与长度不匹配！");
  }
  for (const std::string& item : counts) {
    // 255 passes here (the code rules refuse 0xFF later); a negative value can only
    // come from a script, never from the key filter, and is no byte either.
    const std::int32_t v = ValInt32(item);
    if (v > 255 || v < 0) return refuse("数据字节溢出，数据必须小于255！");
  }

  std::vector<std::int32_t> bytes(counts.size());
  for (std::size_t k = 0; k < counts.size(); ++k) {
    bytes[k] = ValInt32(counts[counts.size() - 1 - k]);  // byte 0 is the last item typed
  }
  if (bytes.size() != static_cast<std::size_t>(kRollCodeLength)) {
    return RollOkResult::SilentlyIgnored;  // lengths 1-3 can be typed, never saved
  }
  if (!CheckRollCode(host, bytes)) return RollOkResult::Refused;
  if (input.Mode2262) {
    for (std::size_t k = 0; k < bytes.size(); ++k) {
      if (!Valid2262(bytes[k])) {
        return refuse("数据 \"" + counts[counts.size() - 1 - k] + "\" 不能用于2262模式！");
      }
    }
  }

  if (!settingsFile.empty()) {
    if (!EnsureSettingsFile(host, settingsFile)) return RollOkResult::Refused;
    const std::string version = std::to_string(kVersionMajor) + "." + std::to_string(kVersionMinor);
    // One atomic rewrite: the file never holds half of a new setting.
    if (!WriteValues(host, settingsFile, kRollSection,
                     {{"Address", input.Address},
                      {"World_Lenth", input.Length},
                      {"Mode", "False"},
                      {"Count", input.Count},
                      {"Step", input.Step},
                      {"Value", "True"},
                      {"2262mode", input.Mode2262 ? "1" : "0"},
                      {"Version", version}})) {
      return RollOkResult::Refused;
    }
  }
  host.Log("Enable Rolling Code!");
  host.Log("Address:" + input.Address);
  host.Log("Count:" + input.Count);
  host.Log("Step:" + input.Step);
  if (input.Mode2262) host.Log("Work as 2262 Mode!");
  host.Status(1, "Rolling Code:Enable");
  return RollOkResult::Saved;
}

}  // namespace lk
