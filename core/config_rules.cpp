#include "core/config_rules.h"

#include <optional>

#include "core/config_defs.h"
#include "core/numeric_text.h"
#include "core/profile.h"

namespace lk {
namespace {

enum class RuleOp { Condition, Or, And };

struct RuleLine {
  std::size_t word = 0;
  RuleOp op = RuleOp::Or;
  std::int32_t value = 0;
};

// "W" + word index + operator + 1..8 hex digits (read as "&h" + digits + "&").
std::optional<RuleLine> ParseRule(std::string_view line) {
  if (line.size() < 5 || (line[0] != 'W' && line[0] != 'w')) return std::nullopt;
  std::size_t i = 1;
  std::size_t word = 0;
  bool digits = false;
  while (i < line.size() && line[i] >= '0' && line[i] <= '9' && word < 100) {
    word = word * 10 + static_cast<std::size_t>(line[i++] - '0');
    digits = true;
  }
  if (!digits || i + 2 > line.size()) return std::nullopt;
  RuleLine rule;
  rule.word = word;
  const std::string_view op = line.substr(i, 2);
  if (op == "==") {
    rule.op = RuleOp::Condition;
  } else if (op == "|=") {
    rule.op = RuleOp::Or;
  } else if (op == "&=") {
    rule.op = RuleOp::And;
  } else {
    return std::nullopt;
  }
  const std::string_view hex = line.substr(i + 2);
  if (hex.empty() || hex.size() > 8 ||
      hex.find_first_not_of("0123456789ABCDEFabcdef") != std::string::npos) {
    return std::nullopt;
  }
  const auto value = ParseHexLong(hex);
  if (!value) return std::nullopt;
  rule.value = *value;
  return rule;
}

void ApplyFileRules(Host& host, const Home& home, const std::string& name, const std::string& prod,
                    std::vector<std::int32_t>& words) {
  ReadOutcome outcome;
  const std::optional<ProfileText> rules = ProfileText::Load(home.CfgIni(), outcome);
  if (!rules) {
    // The rules are optional; a file that is there but cannot be read is a broken
    // installation and is named.
    if (outcome.NoFile()) {
      host.Diagnostic("configuration rules " + home.CfgIni().string() + " not found");
    } else {
      host.FileUnreadable(CannotReadText(home.CfgIni(), outcome));
    }
    return;
  }
  bool open = false;
  bool conditionHolds = true;
  rules->ForEachLine([&](const ProfileLine& line) {
    if (line.kind == ProfileLineKind::Header) {
      const std::string_view section = line.text;
      open = !section.empty() && (section == name || section == prod);
      conditionHolds = true;  // a condition never reaches past its section
      return true;
    }
    if (line.kind != ProfileLineKind::Data || !open) return true;
    const auto rule = ParseRule(line.text);
    if (!rule || rule->word >= words.size()) {
      host.Diagnostic("cfg.ini: line ignored: " + std::string(line.text));
      return true;
    }
    std::int32_t& word = words[rule->word];
    switch (rule->op) {
      case RuleOp::Condition:
        conditionHolds = (word & 0xFFFF) == (rule->value & 0xFFFF);
        break;
      case RuleOp::Or:
        if (conditionHolds) word |= rule->value;
        break;
      case RuleOp::And:
        if (conditionHolds) word &= rule->value;
        break;
    }
    return true;
  });
}

bool OptionIs(const std::vector<ConfigOptionRow>& rows, const std::string& option,
              const std::string& choice) {
  for (const ConfigOptionRow& row : rows) {
    if (row.Option == option) return row.Value == choice;
  }
  return false;
}

}  // namespace

std::vector<std::int32_t> ApplyConfigRules(Host& host, const Home& home, const std::string& name,
                                           const std::string& prod,
                                           std::vector<std::int32_t> words) {
  ApplyFileRules(host, home, name, prod, words);

  // 30D1: bits 2..0 of word 1 select the oscillator trim step. A fresh part must start
  // at the middle step 100b, so that the user can trim in both directions.
  if (prod == "30D1" && words.size() > 1) {
    words[1] = (words[1] & ~0x0007) | 0x0004;
  }
  // 2023: the internal voltage reference (kept trimmed in the last two program words)
  // is switched on by bit 13 of word 0 = 0; it must default to on, or the trim words
  // that the writer leaves untouched would have no effect.
  if (prod == "2023" && !words.empty()) {
    words[0] &= ~0x2000;
  }
  return words;
}

std::vector<std::int32_t> DefaultConfigWords(Host& host, const Home& home, const ChipParams& chip) {
  return ApplyConfigRules(host, home, chip.Name, chip.Prod,
                          std::vector<std::int32_t>(chip.ConfigWords.size(), chip.HexMcu));
}

bool CheckConfigCombination(Host& host, const Home& home, const ChipParams& chip) {
  std::string voltage;
  if (chip.Name == "LK3PW89" || chip.Name == "LK3PS89") {
    voltage = "2.8V";
  } else if (chip.Name == "LK3P7674") {
    voltage = "2.6V";
  } else {
    return true;
  }
  const std::vector<ConfigOptionRow> rows = ShowConfigOptions(host, home, chip);
  if (OptionIs(rows, "CONFIG OSCD", "2 oscillator periods") &&
      !OptionIs(rows, "CONFIG LVDT", voltage)) {
    host.Message(
        Icon::Exclamation,
        "在CONFIG OSCD选项选择2 oscillator periods时，CONFIG LVDT选项必须选择" + voltage + "。",
        kAppTitle);
    return false;
  }
  return true;
}

}  // namespace lk
