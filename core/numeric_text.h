// Numbers in the data files, read the way the original host's numeric conversion of a
// prefix text reads them: blanks are ignored, parsing stops at the first character that
// does not fit, and no digits at all give 0. Where the host would raise an overflow
// error we return nullopt, so that callers can refuse the value instead.
// Also the two ways numbers are written back as text.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace lk {

// "&h" + text + "&": hexadecimal forced to a 32-bit signed value ("FFFF" -> 65535,
// "FFFFFFFF" -> -1). More than 32 bits of digits overflow.
std::optional<std::int32_t> ParseHexLong(std::string_view text);

// The leading hexadecimal digits as an unsigned value; nullopt past 32 bits.
std::optional<std::uint32_t> ParseHexUnsigned(std::string_view text);

// "&H" + text: a value that fits in 16 bits is a 16-bit signed quantity ("FFFF" -> -1,
// "8000" -> -32768); larger values up to 32 bits are 32-bit signed.
std::optional<std::int32_t> ParseHexShort(std::string_view text);

// A decimal number with optional sign, fraction and exponent ("12.5V" -> 12.5).
// Infinite results overflow.
std::optional<double> ParseDecimal(std::string_view text);

// Assigns a parsed number to an integer field: rounds half to even, then checks the
// field's range; nullopt when it does not fit.
std::optional<std::int64_t> FitInteger(double value, std::int64_t min, std::int64_t max);

// A single-precision number as text: the shortest form that reads back the same.
std::string FloatText(float value);

// The low 8 bits of a value as two upper-case hexadecimal digits ("0A").
std::string Hex2(std::int32_t value);

// The low 16 bits of a word as four upper-case hexadecimal digits ("3FFF").
std::string Hex4(std::int32_t word);

// A value in upper-case hexadecimal without leading zeros ("7FE"; "-10" below zero).
std::string UpperHex(std::int64_t value);

}  // namespace lk
