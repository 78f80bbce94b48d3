#include "core/numeric_text.h"

#include <charconv>
#include <cmath>
#include <string>

namespace lk {
namespace {

// The host ignores blanks, tabs and line feeds anywhere in a number.
std::string WithoutBlanks(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  for (char c : text) {
    if (c != ' ' && c != '\t' && c != '\n') out.push_back(c);
  }
  return out;
}

int HexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

}  // namespace

std::optional<std::uint32_t> ParseHexUnsigned(std::string_view text) {
  std::uint64_t value = 0;
  for (char c : WithoutBlanks(text)) {
    const int d = HexDigit(c);
    if (d < 0) break;
    value = value * 16 + static_cast<std::uint64_t>(d);
    if (value > 0xFFFFFFFFull) return std::nullopt;
  }
  return static_cast<std::uint32_t>(value);
}

std::optional<std::int32_t> ParseHexLong(std::string_view text) {
  const auto value = ParseHexUnsigned(text);
  if (!value) return std::nullopt;
  return static_cast<std::int32_t>(*value);
}

std::optional<std::int32_t> ParseHexShort(std::string_view text) {
  const auto value = ParseHexUnsigned(text);
  if (!value) return std::nullopt;
  if (*value <= 0xFFFF) return static_cast<std::int16_t>(static_cast<std::uint16_t>(*value));
  return static_cast<std::int32_t>(*value);
}

std::optional<double> ParseDecimal(std::string_view text) {
  const std::string s = WithoutBlanks(text);
  std::size_t i = 0;
  std::string number;
  if (i < s.size() && (s[i] == '+' || s[i] == '-')) number.push_back(s[i++]);
  bool digits = false;
  while (i < s.size() && s[i] >= '0' && s[i] <= '9') {
    number.push_back(s[i++]);
    digits = true;
  }
  if (i < s.size() && s[i] == '.') {
    number.push_back(s[i++]);
    while (i < s.size() && s[i] >= '0' && s[i] <= '9') {
      number.push_back(s[i++]);
      digits = true;
    }
  }
  if (!digits) return 0.0;
  // An exponent counts only when digits follow it ("1E" is 1).
  if (i < s.size() && (s[i] == 'e' || s[i] == 'E' || s[i] == 'd' || s[i] == 'D')) {
    std::size_t j = i + 1;
    std::string exponent = "e";
    if (j < s.size() && (s[j] == '+' || s[j] == '-')) exponent.push_back(s[j++]);
    bool expDigits = false;
    while (j < s.size() && s[j] >= '0' && s[j] <= '9') {
      exponent.push_back(s[j++]);
      expDigits = true;
    }
    if (expDigits) number += exponent;
  }
  const double value = std::strtod(number.c_str(), nullptr);
  if (!std::isfinite(value)) return std::nullopt;
  return value;
}

std::optional<std::int64_t> FitInteger(double value, std::int64_t min, std::int64_t max) {
  if (!std::isfinite(value)) return std::nullopt;
  const double rounded = std::nearbyint(value);  // default rounding: half to even
  if (rounded < static_cast<double>(min) || rounded > static_cast<double>(max)) {
    return std::nullopt;
  }
  return static_cast<std::int64_t>(rounded);
}

std::string FloatText(float value) {
  char buffer[32];
  const auto [end, ec] = std::to_chars(buffer, buffer + sizeof buffer, value);
  return ec == std::errc() ? std::string(buffer, end) : "0";
}

namespace {
constexpr char kHexDigits[] = "0123456789ABCDEF";
}  // namespace

std::string Hex2(std::int32_t value) {
  const auto v = static_cast<std::uint32_t>(value);
  return {kHexDigits[(v >> 4) & 0xF], kHexDigits[v & 0xF]};
}

std::string Hex4(std::int32_t word) {
  const auto w = static_cast<std::uint32_t>(word);
  return {kHexDigits[(w >> 12) & 0xF], kHexDigits[(w >> 8) & 0xF], kHexDigits[(w >> 4) & 0xF],
          kHexDigits[w & 0xF]};
}

std::string UpperHex(std::int64_t value) {
  std::string digits;
  auto v = static_cast<std::uint64_t>(value < 0 ? -value : value);
  do {
    digits.insert(digits.begin(), kHexDigits[v & 0xF]);
    v >>= 4;
  } while (v != 0);
  return value < 0 ? "-" + digits : digits;
}

}  // namespace lk
