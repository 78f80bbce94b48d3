#include "files/read_support.h"

#include <array>

#include "core/bounded_read.h"

namespace lk::files {

bool ReadImageFile(Host& host, const std::filesystem::path& path, std::uintmax_t maxBytes,
                   std::string& bytes) {
  const ReadOutcome read = ReadRegularFile(path, maxBytes, bytes);
  if (!read.Ok()) host.Diagnostic(CannotReadText(path, read));
  return read.Ok();
}

std::string_view Mid(std::string_view text, std::size_t start, std::size_t length) {
  if (start == 0 || start > text.size()) return {};
  return text.substr(start - 1, length);
}

namespace {

// 0..15 for a hexadecimal digit, 0xFF for anything else.
constexpr std::array<std::uint8_t, 256> MakeHexTable() {
  std::array<std::uint8_t, 256> table{};
  for (auto& v : table) v = 0xFF;
  for (int c = '0'; c <= '9'; ++c) table[c] = static_cast<std::uint8_t>(c - '0');
  for (int c = 'A'; c <= 'F'; ++c) table[c] = static_cast<std::uint8_t>(c - 'A' + 10);
  for (int c = 'a'; c <= 'f'; ++c) table[c] = static_cast<std::uint8_t>(c - 'a' + 10);
  return table;
}
constexpr std::array<std::uint8_t, 256> kHexDigit = MakeHexTable();

}  // namespace

bool ParseHexField(std::string_view field, std::uint32_t& value) {
  if (field.size() > 8) return false;
  std::uint32_t v = 0;
  for (char c : field) {
    const std::uint8_t digit = kHexDigit[static_cast<unsigned char>(c)];
    if (digit == 0xFF) return false;
    v = (v << 4) | digit;
  }
  value = v;
  return true;
}

std::uint32_t HalveRoundHalfEven(std::uint32_t value) {
  const std::uint32_t half = value >> 1;
  if ((value & 1u) == 0) return half;
  return (half & 1u) ? half + 1 : half;
}

void CopyWords(const std::string& bytes, std::size_t offset, std::size_t count,
               std::vector<std::int32_t>& words) {
  for (std::size_t i = 0; i < count && i < words.size(); ++i) {
    if (offset + 2 * i + 1 >= bytes.size()) break;
    words[i] = WordAt(bytes, offset + 2 * i);
  }
}

}  // namespace lk::files
