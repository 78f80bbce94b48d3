#include "core/config_defs.h"

#include <charconv>
#include <optional>
#include <string_view>
#include <unordered_map>

#include "core/numeric_text.h"
#include "core/profile.h"

namespace lk {
namespace {

struct BitItem {
  std::size_t word = 0;
  int bit = 0;
  long value = 0;
};

std::vector<std::string> Split(const std::string& text, char separator) {
  std::vector<std::string> parts;
  std::size_t start = 0;
  while (true) {
    const std::size_t pos = text.find(separator, start);
    parts.push_back(text.substr(start, pos == std::string::npos ? pos : pos - start));
    if (pos == std::string::npos) return parts;
    start = pos + 1;
  }
}

// A whole decimal integer, blanks around it allowed; nullopt for anything else.
std::optional<long> ParseWhole(const std::string& text) {
  const std::size_t b = text.find_first_not_of(' ');
  if (b == std::string::npos) return std::nullopt;
  const std::size_t e = text.find_last_not_of(' ') + 1;
  long value = 0;
  const char* first = text.data() + b;
  const char* last = text.data() + e;
  if (*first == '+') ++first;
  const auto [ptr, ec] = std::from_chars(first, last, value);
  if (ec != std::errc() || ptr != last) return std::nullopt;
  return value;
}

// Parses "w,b,v:w,b,v" (withValue) or "w,b:w,b"; nullopt when any number does not
// parse, a word index is outside `wordCount`, or a bit is outside 0..15.
std::optional<std::vector<BitItem>> ParseItems(const std::string& text, bool withValue,
                                               std::size_t wordCount) {
  std::vector<BitItem> items;
  for (const std::string& part : Split(text, ':')) {
    const std::vector<std::string> numbers = Split(part, ',');
    if (numbers.size() != (withValue ? 3u : 2u)) return std::nullopt;
    const auto w = ParseWhole(numbers[0]);
    const auto b = ParseWhole(numbers[1]);
    const auto v = withValue ? ParseWhole(numbers[2]) : std::optional<long>(0);
    if (!w || !b || !v || *w < 0 || static_cast<std::size_t>(*w) >= wordCount || *b < 0 ||
        *b > 15) {
      return std::nullopt;
    }
    items.push_back({static_cast<std::size_t>(*w), static_cast<int>(*b), *v});
  }
  return items;
}

// An option from its data lines (the LENTH line first).
ConfigOption MakeOption(std::string_view name, const std::vector<std::string_view>& data) {
  ConfigOption option;
  option.Name = std::string(name);
  option.Lines.reserve(data.size() + 1);
  option.Lines.emplace_back();
  option.Lines.insert(option.Lines.end(), data.begin(), data.end());
  const auto width = ParseDecimal(ProfileValue(data[0]));
  option.Choice = width && *width == 1.0;
  for (std::size_t i = 1; i < data.size(); ++i) {
    const std::string key = ProfileKey(data[i]);
    if (option.Choice) {
      option.Labels.push_back(key);
    } else if (key == "DAT" && option.Dat.empty()) {
      option.Dat = ProfileValue(data[i]);
    } else if (key == "NAME") {
      option.FieldName = ProfileValue(data[i]);
    } else if (key == "LABEL") {
      option.FieldLabel = ProfileValue(data[i]);
    } else if (key == "DISP1") {
      option.Disp1 = ProfileValue(data[i]);
    } else if (key == "DISP2") {
      option.Disp2 = ProfileValue(data[i]);
    }
  }
  return option;
}

}  // namespace

std::string CurrentChoice(const ProfileList& lines, const std::vector<std::int32_t>& words) {
  std::string current;
  for (std::size_t i = 2; i < lines.size(); ++i) {
    // A choice with no items at all matches every word (its condition holds vacuously).
    const std::string itemText = ProfileValue(lines[i]);
    const auto items = itemText.empty() ? std::optional<std::vector<BitItem>>(std::in_place)
                                        : ParseItems(itemText, true, words.size());
    if (!items) continue;
    bool match = true;
    for (const BitItem& item : *items) {
      // word AND 2^b = 2^b * value: only the values 0 and 1 can ever match, so they are
      // compared as such rather than multiplied (a huge value would overflow).
      const std::int64_t mask = std::int64_t{1} << item.bit;
      const bool set = (words[item.word] & mask) == mask;
      match = match && ((item.value == 1 && set) || (item.value == 0 && !set));
    }
    if (match) current = ProfileKey(lines[i]);  // the last matching line wins
  }
  return current;
}

std::string FieldBinary(const std::string& datItems, const std::vector<std::int32_t>& words) {
  const auto items = ParseItems(datItems, false, words.size());
  if (!items) return "";
  std::string bits;
  for (auto it = items->rbegin(); it != items->rend(); ++it) {
    bits.push_back((words[it->word] >> it->bit) & 1 ? '1' : '0');
  }
  return bits;
}

std::vector<ConfigOption> ReadConfigOptions(Host& host, const std::filesystem::path& file) {
  std::vector<ConfigOption> options;
  const std::optional<ProfileText> definitions = ProfileText::Read(host, file);
  if (!definitions) return options;

  // One walk gathers the data lines of every section, a section split over the file
  // from each of its parts, as GetSectionLines would give them; asking the file once
  // per option instead would read it as many times as it has options.
  struct Section {
    std::string_view name;
    std::vector<std::string_view> data;
  };
  std::vector<Section> sections;     // one per name, in order of first appearance
  std::vector<std::size_t> headers;  // per header in file order: its entry in `sections`
  std::unordered_map<std::string_view, std::size_t> byName;
  definitions->ForEachLine([&](const ProfileLine& line) {
    if (line.kind == ProfileLineKind::Header) {
      const auto [it, added] = byName.try_emplace(line.text, sections.size());
      if (added) sections.push_back({line.text, {}});
      headers.push_back(it->second);
    } else if (line.kind == ProfileLineKind::Data && !headers.empty()) {
      sections[headers.back()].data.push_back(line.text);
    }
    return true;
  });

  // An option depends on its name only: a name that comes back is built once.
  std::vector<std::optional<ConfigOption>> built(sections.size());
  for (const std::size_t index : headers) {
    const Section& section = sections[index];
    if (section.data.size() < 2) break;  // fewer than two data lines ends the definitions
    if (!built[index]) built[index] = MakeOption(section.name, section.data);
    options.push_back(*built[index]);
  }
  return options;
}

std::string OptionValue(const ConfigOption& option, const std::vector<std::int32_t>& words) {
  return option.Choice ? CurrentChoice(option.Lines, words) : FieldBinary(option.Dat, words);
}

std::vector<ConfigOptionRow> DecodeConfigOptions(Host& host, const std::filesystem::path& file,
                                                 const std::vector<std::int32_t>& words) {
  std::vector<ConfigOptionRow> rows;
  for (const ConfigOption& option : ReadConfigOptions(host, file)) {
    rows.push_back({option.Name, OptionValue(option, words)});
  }
  return rows;
}

std::vector<ConfigOptionRow> ShowConfigOptions(Host& host, const Home& home,
                                               const ChipParams& chip) {
  return DecodeConfigOptions(host, home.ConfigDefinitions(chip.Name), chip.ConfigWords);
}

bool ApplyChoiceItems(const std::string& items, std::vector<std::int32_t>& words) {
  const auto parsed = ParseItems(items, true, words.size());
  if (!parsed) return false;
  for (const BitItem& item : *parsed) {
    const std::int32_t mask = std::int32_t{1} << item.bit;
    if (item.value == 1) {
      words[item.word] |= mask;
    } else {
      words[item.word] &= mask ^ 0xFFFF;
    }
  }
  return true;
}

bool ApplyFieldBinary(const std::string& datItems, const std::string& binary,
                      std::vector<std::int32_t>& words) {
  const auto items = ParseItems(datItems, false, words.size());
  if (!items || binary.empty() || binary.size() > items->size()) return false;
  if (binary.find_first_not_of("01") != std::string::npos) return false;
  // The last digit is item 0, the least significant bit.
  for (std::size_t k = 0; k < items->size(); ++k) {
    const bool set = k < binary.size() && binary[binary.size() - 1 - k] == '1';
    const BitItem& item = (*items)[k];
    const std::int32_t mask = std::int32_t{1} << item.bit;
    words[item.word] = set ? (words[item.word] | mask) : (words[item.word] & ~mask);
  }
  return true;
}

bool ApplyConfigChoice(Host& host, const std::filesystem::path& file, const std::string& option,
                       const std::string& label, std::vector<std::int32_t>& words) {
  return ApplyChoiceItems(GetValue(host, file, option, label), words);
}

}  // namespace lk
