#include "rolling/val_number.h"

#include <cmath>
#include <limits>

#include "core/numeric_text.h"

namespace lk {
namespace {

std::string_view SkipBlanks(std::string_view text) {
  while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
  return text;
}

}  // namespace

std::int32_t ValHex32(std::string_view text) { return ParseHexLong(text).value_or(-1); }

std::int64_t ValHexWide(std::string_view text) {
  const auto value = ParseHexUnsigned(text);
  return value ? std::int64_t{*value} : std::numeric_limits<std::int64_t>::max();
}

std::int32_t ValInt32(std::string_view text) {
  text = SkipBlanks(text);
  if (text.size() >= 2 && text[0] == '&' && (text[1] == 'h' || text[1] == 'H')) {
    return ParseHexLong(text.substr(2)).value_or(0);
  }
  constexpr auto kMin = std::numeric_limits<std::int32_t>::min();
  constexpr auto kMax = std::numeric_limits<std::int32_t>::max();
  const auto value = ParseDecimal(text);
  if (!value) return !text.empty() && text.front() == '-' ? kMin : kMax;  // beyond any double
  const double rounded = std::nearbyint(*value);  // default rounding: half to even
  if (rounded <= kMin) return kMin;
  if (rounded >= kMax) return kMax;
  return static_cast<std::int32_t>(rounded);
}

}  // namespace lk
