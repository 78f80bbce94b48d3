#include "sim/sim_state_file.h"

#include <charconv>
#include <map>
#include <sstream>

#include "core/atomic_file.h"
#include "core/bounded_read.h"

namespace lk::sim {
namespace {

constexpr const char* kMagic = "LKWRITER-SIM-STATE 1";
constexpr size_t kMaxWords = 0x10000;
constexpr size_t kMaxBytes = 0x10000;

const char* const kChipKeys[] = {
    "chip",        "chip.type",         "chip.prod",       "chip.otp",
    "chip.blank",  "chip.configlength", "chip.programmed", "chip.program",
    "chip.config", "chip.eedata"};
const char* const kOtherKeys[] = {
    "id",          "store.block",     "store.program",  "store.config",
    "store.sum",   "store.rollstart", "store.rollstep", "store.eeflag",
    "store.eesum", "store.eedata"};

std::string Hex(unsigned value, int digits) {
  static const char kDigits[] = "0123456789ABCDEF";
  std::string s(static_cast<size_t>(digits), '0');
  for (int i = digits - 1; i >= 0; --i, value >>= 4) s[i] = kDigits[value & 0xF];
  return s;
}

template <typename Seq>
std::string List(const Seq& values, int digits) {
  std::string out;
  for (auto v : values) {
    if (!out.empty()) out += ' ';
    out += Hex(v, digits);
  }
  return out;
}

bool ParseHex(std::string_view text, int digits, unsigned& value) {
  if (static_cast<int>(text.size()) != digits) return false;
  for (char c : text) {
    bool ok = (c >= '0' && c <= '9') || (c >= 'A' && c <= 'F') || (c >= 'a' && c <= 'f');
    if (!ok) return false;
  }
  auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value, 16);
  return ec == std::errc() && end == text.data() + text.size();
}

// A list of fixed-width hexadecimal values separated by single blanks.
template <typename T>
bool ParseList(const std::string& text, int digits, size_t limit, std::vector<T>& out) {
  out.clear();
  if (text.empty()) return true;
  size_t pos = 0;
  while (true) {
    size_t blank = text.find(' ', pos);
    std::string_view token(text.data() + pos,
                           (blank == std::string::npos ? text.size() : blank) - pos);
    unsigned v = 0;
    if (!ParseHex(token, digits, v) || out.size() >= limit) return false;
    out.push_back(static_cast<T>(v));
    if (blank == std::string::npos) return true;
    pos = blank + 1;
  }
}

bool ParseDecimal(const std::string& text, long long low, long long high, long long& value) {
  auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
  return !text.empty() && ec == std::errc() && end == text.data() + text.size() && value >= low &&
         value <= high;
}

bool ParseFlag(const std::string& text, bool& value) {
  if (text != "0" && text != "1") return false;
  value = text == "1";
  return true;
}

}  // namespace

std::string FormatState(const SimState& state) {
  std::ostringstream out;
  out << kMagic << '\n';
  out << "id=" << Hex(state.id[0], 2) << Hex(state.id[1], 2) << Hex(state.id[2], 2)
      << Hex(state.id[3], 2) << '\n';
  if (state.chip) {
    const SimChip& c = *state.chip;
    out << "chip=" << c.name << '\n';
    out << "chip.type=" << c.type << '\n';
    out << "chip.prod=" << c.prod << '\n';
    out << "chip.otp=" << (c.otp ? 1 : 0) << '\n';
    out << "chip.blank=" << Hex(c.blank, 4) << '\n';
    out << "chip.configlength=" << c.configLength << '\n';
    out << "chip.programmed=" << (c.programmed ? 1 : 0) << '\n';
    out << "chip.program=" << List(c.program, 4) << '\n';
    out << "chip.config=" << List(c.config, 4) << '\n';
    out << "chip.eedata=" << List(c.eedata, 2) << '\n';
  }
  const SimStore& s = state.store;
  out << "store.block=" << List(s.paramBlock, 2) << '\n';
  out << "store.program=" << List(s.program, 4) << '\n';
  out << "store.config=" << List(s.config, 4) << '\n';
  out << "store.sum=" << Hex(s.imageSum, 4) << '\n';
  out << "store.rollstart=" << List(s.rollStart, 2) << '\n';
  out << "store.rollstep=" << List(s.rollStep, 2) << '\n';
  out << "store.eeflag=" << Hex(s.eeFlag, 2) << '\n';
  out << "store.eesum=" << Hex(s.eeSum, 4) << '\n';
  out << "store.eedata=" << List(s.eedata, 2) << '\n';
  return out.str();
}

std::optional<SimState> ParseState(const std::string& text, std::string& error) {
  std::map<std::string, std::string> values;
  std::istringstream in(text);
  std::string line;
  if (!std::getline(in, line) || line != kMagic) {
    error = "not a simulated writer state file (first line is not \"" + std::string(kMagic) + "\")";
    return std::nullopt;
  }
  int lineNumber = 1;
  while (std::getline(in, line)) {
    ++lineNumber;
    size_t eq = line.find('=');
    std::string key = line.substr(0, eq);
    bool known = false;
    for (const char* k : kChipKeys) known = known || key == k;
    for (const char* k : kOtherKeys) known = known || key == k;
    if (eq == std::string::npos || !known || values.count(key) != 0) {
      error = "line " + std::to_string(lineNumber) + " is not understood";
      return std::nullopt;
    }
    values[key] = line.substr(eq + 1);
  }
  for (const char* k : kOtherKeys) {
    if (values.count(k) == 0) {
      error = std::string("the line \"") + k + "=\" is missing";
      return std::nullopt;
    }
  }
  bool hasChip = values.count("chip") != 0;
  for (const char* k : kChipKeys) {
    if ((values.count(k) != 0) != hasChip) {
      error = std::string("the chip lines are incomplete (\"") + k + "=\")";
      return std::nullopt;
    }
  }

  auto bad = [&](const std::string& key) {
    error = "the value of \"" + key + "\" is not valid";
    return std::nullopt;
  };
  SimState state;
  unsigned v = 0;
  const std::string& id = values["id"];
  for (int i = 0; i < 4; ++i) {
    if (id.size() != 8 || !ParseHex(std::string_view(id).substr(2 * i, 2), 2, v)) return bad("id");
    state.id[i] = static_cast<std::uint8_t>(v);
  }
  if (hasChip) {
    SimChip c;
    c.name = values["chip"];
    long long n = 0;
    if (!ParseDecimal(values["chip.type"], INT32_MIN, INT32_MAX, n)) return bad("chip.type");
    c.type = static_cast<std::int32_t>(n);
    c.prod = values["chip.prod"];
    if (!ParseFlag(values["chip.otp"], c.otp)) return bad("chip.otp");
    if (!ParseHex(values["chip.blank"], 4, v)) return bad("chip.blank");
    c.blank = static_cast<std::uint16_t>(v);
    if (!ParseDecimal(values["chip.configlength"], 0, kConfigAreaWords - 1, n)) {
      return bad("chip.configlength");
    }
    c.configLength = static_cast<int>(n);
    if (!ParseFlag(values["chip.programmed"], c.programmed)) return bad("chip.programmed");
    if (!ParseList(values["chip.program"], 4, kMaxWords, c.program)) return bad("chip.program");
    std::vector<std::uint16_t> config;
    if (!ParseList(values["chip.config"], 4, kMaxWords, config) ||
        config.size() != c.config.size()) {
      return bad("chip.config");
    }
    std::copy(config.begin(), config.end(), c.config.begin());
    if (!ParseList(values["chip.eedata"], 2, kMaxBytes, c.eedata)) return bad("chip.eedata");
    state.chip = std::move(c);
  }
  SimStore& s = state.store;
  if (!ParseList(values["store.block"], 2, kMaxBytes, s.paramBlock) ||
      (!s.paramBlock.empty() && s.paramBlock.size() != 64)) {
    return bad("store.block");
  }
  if (!ParseList(values["store.program"], 4, kMaxWords, s.program)) return bad("store.program");
  if (!ParseList(values["store.config"], 4, kMaxWords, s.config)) return bad("store.config");
  if (!ParseHex(values["store.sum"], 4, v)) return bad("store.sum");
  s.imageSum = static_cast<std::uint16_t>(v);
  std::vector<std::uint8_t> bytes;
  if (!ParseList(values["store.rollstart"], 2, kMaxBytes, bytes) ||
      bytes.size() != s.rollStart.size()) {
    return bad("store.rollstart");
  }
  std::copy(bytes.begin(), bytes.end(), s.rollStart.begin());
  if (!ParseList(values["store.rollstep"], 2, kMaxBytes, bytes) ||
      bytes.size() != s.rollStep.size()) {
    return bad("store.rollstep");
  }
  std::copy(bytes.begin(), bytes.end(), s.rollStep.begin());
  if (!ParseHex(values["store.eeflag"], 2, v)) return bad("store.eeflag");
  s.eeFlag = static_cast<std::uint8_t>(v);
  if (!ParseHex(values["store.eesum"], 4, v)) return bad("store.eesum");
  s.eeSum = static_cast<std::uint16_t>(v);
  if (!ParseList(values["store.eedata"], 2, kMaxBytes, s.eedata)) return bad("store.eedata");
  return state;
}

StateFileResult LoadStateFile(const std::filesystem::path& path, SimState& state,
                              std::string& error) {
  std::string text;
  const ReadOutcome read = ReadRegularFile(path, kMaxDataFileBytes, text);
  if (read.problem == ReadProblem::Missing) {
    return StateFileResult::Absent;
  }
  if (!read.Ok()) {
    error = CannotReadText(path, read);
    return StateFileResult::Refused;
  }
  std::optional<SimState> loaded = ParseState(text, error);
  if (!loaded) {
    error = "The simulated writer state file " + path.string() + " is corrupt: " + error;
    return StateFileResult::Refused;
  }
  state = std::move(*loaded);
  return StateFileResult::Loaded;
}

bool SaveStateFile(const std::filesystem::path& path, const SimState& state, std::string& error) {
  return WriteFileAtomically(path, FormatState(state), error);
}

}  // namespace lk::sim
