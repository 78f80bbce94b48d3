#include "rolling/roll_code.h"

#include <algorithm>

#include "core/numeric_text.h"
#include "core/profile.h"

namespace lk {
namespace {

bool IsFourBytes(const std::vector<std::int32_t>& bytes) {
  return bytes.size() == static_cast<std::size_t>(kRollCodeLength);
}

bool IsBindOrDnib(const std::vector<std::int32_t>& b) {
  // Bytes 3, 2, 1, 0 spelling "BIND" or "DNIB": the writer's download store uses
  // these words as markers, so a code must never look like one.
  return (b[3] == 0x42 && b[2] == 0x49 && b[1] == 0x4E && b[0] == 0x44) ||
         (b[3] == 0x44 && b[2] == 0x4E && b[1] == 0x49 && b[0] == 0x42);
}

bool IsZeroOrFF(std::int32_t v) {
  return v == 0x00 || v == 0xFF;
}

// The code bytes that go into the program: one per listed byte, as far as both the
// address and the count lists reach.
std::size_t PlacedByteCount(const RollSettings& settings) {
  return std::min({static_cast<std::size_t>(std::max(settings.WordLength, 0)),
                   settings.Addresses.size(), settings.Counts.size()});
}

}  // namespace

bool CheckRollCode(Host& host, const std::vector<std::int32_t>& bytes) {
  if (!IsFourBytes(bytes)) return false;
  // Only the settings dialog checks codes: its messages carry its title.
  auto refuse = [&host](const char* text) {
    host.Message(Icon::Information, text, kRollErrorTitle);
    return false;
  };
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    for (std::size_t j = i + 1; j < bytes.size(); ++j) {
      if (bytes[i] == bytes[j]) return refuse("不能有相等的数据");
    }
  }
  if ((bytes[0] >= 0x50 && bytes[0] <= 0x5F) || (bytes[0] >= 0xA0 && bytes[0] <= 0xAF)) {
    return refuse("byte0不能为 0x50-0x5F 及 0xA0-0xAF 之间的数");
  }
  if (std::any_of(bytes.begin(), bytes.end(), IsZeroOrFF)) {
    return refuse("所有数据不能是 0x00 或 0xFF");
  }
  // The message names 0x44494e42 although 0x444E4942 is what is checked; the text
  // is kept as users know it.
  if (IsBindOrDnib(bytes)) return refuse("数据不能等 于0x42494e44 或 0x44494e42 ");
  return true;
}

bool NextRollCode(std::vector<std::int32_t>& bytes) {
  if (!IsFourBytes(bytes)) return false;
  for (std::int32_t v : bytes) {
    if (v < 0 || v > 0xFF) return false;  // not a code the dialog could have stored
  }
  std::vector<std::int32_t> b = bytes;
  b[0] += 1;
  // Each change moves the code up in the order byte 3, 2, 1, 0 and every byte stays
  // below 0x100, so the passes end; the bound only guards against a logic slip.
  for (int pass = 0; pass < 100000; ++pass) {
    const std::vector<std::int32_t> before = b;
    if (b[0] == b[1] || b[0] == b[2] || b[0] == b[3]) b[0] += 1;
    if (IsZeroOrFF(b[0])) {
      b[0] = 1;
      b[1] += 1;
    }
    if (b[0] >= 0x50 && b[0] <= 0x5F) b[0] = 0x60;
    if (b[0] >= 0xA0 && b[0] <= 0xAF) b[0] = 0xB0;
    if (b[1] == b[2] || b[1] == b[3]) b[1] += 1;
    if (IsZeroOrFF(b[1])) {
      b[1] = 1;
      b[2] += 1;
    }
    if (b[2] == b[3]) b[2] += 1;
    if (IsZeroOrFF(b[2])) {
      if (b[3] + 1 > 0xFE) return false;  // byte 3 would pass 0xFE: no code is left
      b[2] = 1;
      b[3] += 1;
    }
    if (IsZeroOrFF(b[3])) b[3] = 1;
    // The steps above never look at the whole word, so "BIND"/"DNIB" would slip
    // through; skip them like any other illegal value.
    if (IsBindOrDnib(b)) b[0] += 1;
    if (b == before) {
      bytes = b;
      return true;
    }
  }
  return false;
}

void Adjust2262(std::vector<std::int32_t>& bytes) {
  for (std::int32_t& v : bytes) {
    if ((v & 0x03) == 0x02) v += 1;
    if ((v & 0x0C) == 0x08) v += 4;
    if ((v & 0x30) == 0x20) v += 16;
    if ((v & 0xC0) == 0x80) v += 64;
  }
}

std::string RollCodeText(const std::vector<std::int32_t>& bytes) {
  std::string text;
  for (std::size_t i = bytes.size(); i-- > 0;) {
    if (!text.empty()) text += ' ';
    text += std::to_string(bytes[i]);
  }
  return text;
}

std::optional<std::int32_t> RollAddressOutside(const RollSettings& settings,
                                               std::size_t wordCount) {
  for (std::size_t i = 0; i < PlacedByteCount(settings); ++i) {
    const std::int32_t address = settings.Addresses[i];
    if (address < 0 || static_cast<std::size_t>(address) >= wordCount) return address;
  }
  return std::nullopt;
}

std::string RollAddressOutsideText(std::int32_t address) {
  return "Rolling Code Address " + UpperHex(address) + "H is outside the program memory!";
}

bool PlaceRollCode(const RollSettings& settings, std::vector<std::int32_t>& words) {
  // Check every address first so that a refusal leaves the words as they were.
  if (RollAddressOutside(settings, words.size())) return false;
  for (std::size_t i = 0; i < PlacedByteCount(settings); ++i) {
    std::int32_t& word = words[static_cast<std::size_t>(settings.Addresses[i])];
    // Only the low eight bits carry the code byte, whatever a hand-edited file says.
    word = (word & 0xFF00) | (settings.Counts[i] & 0xFF);
  }
  return true;
}

std::vector<std::int32_t> RollCodeAddresses(const RollSettings& settings) {
  return std::vector<std::int32_t>(settings.Addresses.begin(),
                                   settings.Addresses.begin() + PlacedByteCount(settings));
}

bool AdvanceRollCode(Host& host, bool enabled, const std::filesystem::path& settingsFile,
                     RollAdvance* advance, const std::vector<std::int32_t>* used) {
  if (!enabled) return true;
  const RollSettings settings = ReadRollSettings(host, settingsFile);
  std::vector<std::int32_t> code = used != nullptr ? *used : settings.Counts;
  host.Log("Rolling Code:" + RollCodeText(code));
  if (advance != nullptr) advance->Used = RollCodeText(code);
  // A code of another length than four is left as it is, and still stored and logged.
  if (IsFourBytes(code) && !NextRollCode(code)) {
    const bool inRange =
        std::all_of(code.begin(), code.end(), [](std::int32_t v) { return v >= 0 && v <= 0xFF; });
    host.Message(Icon::Information,
                 inRange ? "Rolling Code " + RollCodeText(code) +
                               " has no successor: the code space is exhausted!"
                         : "Rolling Code " + RollCodeText(code) + " is not a valid code!",
                 kAppTitle);
    return false;
  }
  if (settings.Mode2262) Adjust2262(code);
  const std::string text = RollCodeText(code);
  if (!WriteValue(host, settingsFile, kRollSection, "Count", text)) return false;
  host.Log("Next Rolling Code:" + text);
  if (advance != nullptr) advance->Next = text;
  return true;
}

}  // namespace lk
