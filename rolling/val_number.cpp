#include "rolling/val_number.h"

#include <cmath>
#include <limits>

namespace lk {
namespace {

constexpr std::int64_t kSaturated = std::int64_t{1} << 62;

int HexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

std::string_view SkipBlanks(std::string_view text) {
  while (!text.empty() && (text.front() == ' ' || text.front() == '\t' || text.front() == '\r' ||
                           text.front() == '\n')) {
    text.remove_prefix(1);
  }
  return text;
}

// Digits of the given radix at the start of text; low 32 bits kept in `low`,
// the saturated full value in the return.
std::int64_t ReadRadix(std::string_view text, int radix, std::uint32_t& low) {
  std::int64_t wide = 0;
  low = 0;
  for (char c : text) {
    int d = HexDigit(c);
    if (d < 0 || d >= radix) break;
    low = low * static_cast<std::uint32_t>(radix) + static_cast<std::uint32_t>(d);
    wide = wide >= kSaturated / radix ? kSaturated : wide * radix + d;
  }
  return wide;
}

std::int32_t ClampToInt32(double value) {
  if (std::isnan(value)) return 0;
  value = std::nearbyint(value);  // default rounding mode: half to even
  if (value >= static_cast<double>(std::numeric_limits<std::int32_t>::max())) {
    return std::numeric_limits<std::int32_t>::max();
  }
  if (value <= static_cast<double>(std::numeric_limits<std::int32_t>::min())) {
    return std::numeric_limits<std::int32_t>::min();
  }
  return static_cast<std::int32_t>(value);
}

}  // namespace

std::int32_t ValHex32(std::string_view text) {
  std::uint32_t low = 0;
  ReadRadix(SkipBlanks(text), 16, low);
  return static_cast<std::int32_t>(low);
}

std::int64_t ValHexWide(std::string_view text) {
  std::uint32_t low = 0;
  return ReadRadix(SkipBlanks(text), 16, low);
}

std::int32_t ValInt32(std::string_view text) {
  text = SkipBlanks(text);
  if (text.size() >= 2 && text[0] == '&') {
    char kind = text[1];
    if (kind == 'h' || kind == 'H' || kind == 'o' || kind == 'O') {
      std::uint32_t low = 0;
      ReadRadix(text.substr(2), (kind == 'h' || kind == 'H') ? 16 : 8, low);
      return static_cast<std::int32_t>(low);
    }
  }
  std::size_t i = 0;
  bool negative = false;
  if (i < text.size() && (text[i] == '+' || text[i] == '-')) {
    negative = text[i] == '-';
    ++i;
  }
  double value = 0;
  bool anyDigit = false;
  for (; i < text.size() && text[i] >= '0' && text[i] <= '9'; ++i) {
    value = value * 10 + (text[i] - '0');
    anyDigit = true;
  }
  if (i < text.size() && text[i] == '.') {
    double scale = 0.1;
    for (++i; i < text.size() && text[i] >= '0' && text[i] <= '9'; ++i) {
      value += (text[i] - '0') * scale;
      scale /= 10;
      anyDigit = true;
    }
  }
  if (!anyDigit) return 0;
  // An exponent only counts when digits follow it ("1e" is 1).
  if (i + 1 < text.size() &&
      (text[i] == 'e' || text[i] == 'E' || text[i] == 'd' || text[i] == 'D')) {
    std::size_t j = i + 1;
    bool negativeExponent = false;
    if (j < text.size() && (text[j] == '+' || text[j] == '-')) {
      negativeExponent = text[j] == '-';
      ++j;
    }
    int exponent = 0;
    bool exponentDigits = false;
    for (; j < text.size() && text[j] >= '0' && text[j] <= '9'; ++j) {
      if (exponent < 1000) exponent = exponent * 10 + (text[j] - '0');
      exponentDigits = true;
    }
    if (exponentDigits) value *= std::pow(10.0, negativeExponent ? -exponent : exponent);
  }
  return ClampToInt32(negative ? -value : value);
}

}  // namespace lk
