#include "core/text_codec.h"

#include <iconv.h>

#include <cerrno>
#include <cstdint>

namespace lk {
namespace {

constexpr std::string_view kBom = "\xEF\xBB\xBF";
constexpr std::string_view kReplacement = "\xEF\xBF\xBD";  // U+FFFD

// Length of the UTF-8 sequence at bytes[i], 0 when it is malformed.
std::size_t Utf8SequenceLength(std::string_view bytes, std::size_t i) {
  const auto b = [&](std::size_t k) { return static_cast<std::uint8_t>(bytes[k]); };
  const std::uint8_t lead = b(i);
  if (lead < 0x80) return 1;
  std::size_t len = 0;
  std::uint8_t lo = 0x80, hi = 0xBF;  // allowed range of the second byte
  if (lead >= 0xC2 && lead <= 0xDF) {
    len = 2;
  } else if (lead >= 0xE0 && lead <= 0xEF) {
    len = 3;
    if (lead == 0xE0) lo = 0xA0;  // no overlongs
    if (lead == 0xED) hi = 0x9F;  // no surrogates
  } else if (lead >= 0xF0 && lead <= 0xF4) {
    len = 4;
    if (lead == 0xF0) lo = 0x90;
    if (lead == 0xF4) hi = 0x8F;  // nothing above U+10FFFF
  } else {
    return 0;
  }
  if (i + len > bytes.size()) return 0;
  if (b(i + 1) < lo || b(i + 1) > hi) return 0;
  for (std::size_t k = 2; k < len; ++k) {
    if (b(i + k) < 0x80 || b(i + k) > 0xBF) return 0;
  }
  return len;
}

// Converts with iconv; an input sequence that cannot be converted is replaced by
// `replacement` and stepped over: one byte, or one whole UTF-8 sequence when the input
// is UTF-8 (so that one unencodable character gives one replacement).
std::string Convert(std::string_view in, const char* to, const char* from,
                    std::string_view replacement, bool inputIsUtf8) {
  std::string out;
  iconv_t cd = ::iconv_open(to, from);
  if (cd == reinterpret_cast<iconv_t>(-1)) return std::string(in);  // no converter: keep bytes
  out.reserve(in.size() * 3 / 2 + 16);
  char buffer[4096];
  char* src = const_cast<char*>(in.data());
  std::size_t srcLeft = in.size();
  while (srcLeft > 0) {
    char* dst = buffer;
    std::size_t dstLeft = sizeof buffer;
    const std::size_t rc = ::iconv(cd, &src, &srcLeft, &dst, &dstLeft);
    out.append(buffer, static_cast<std::size_t>(dst - buffer));
    if (rc != static_cast<std::size_t>(-1)) break;
    if (errno == E2BIG) continue;
    // EILSEQ or EINVAL (a truncated sequence at the end): replace and step over it.
    out.append(replacement);
    std::size_t skip = 1;
    if (inputIsUtf8) {
      const std::string_view rest(src, srcLeft);
      skip = Utf8SequenceLength(rest, 0);
      if (skip == 0) skip = 1;
    }
    if (skip > srcLeft) skip = srcLeft;
    src += skip;
    srcLeft -= skip;
    ::iconv(cd, nullptr, nullptr, nullptr, nullptr);  // reset the shift state
  }
  ::iconv_close(cd);
  return out;
}

}  // namespace

bool IsValidUtf8(std::string_view bytes) {
  std::size_t i = 0;
  while (i < bytes.size()) {
    const std::size_t len = Utf8SequenceLength(bytes, i);
    if (len == 0) return false;
    i += len;
  }
  return true;
}

std::string ToValidUtf8(std::string_view text) {
  if (IsValidUtf8(text)) return std::string(text);
  std::string out;
  out.reserve(text.size() + 16);
  std::size_t i = 0;
  while (i < text.size()) {
    const std::size_t len = Utf8SequenceLength(text, i);
    if (len == 0) {
      out.append(kReplacement);
      ++i;
    } else {
      out.append(text.substr(i, len));
      i += len;
    }
  }
  return out;
}

TextEncoding DetectEncoding(std::string_view bytes) {
  if (bytes.substr(0, kBom.size()) == kBom && IsValidUtf8(bytes.substr(kBom.size()))) {
    return TextEncoding::Utf8Bom;
  }
  return IsValidUtf8(bytes) ? TextEncoding::Utf8 : TextEncoding::Gbk;
}

std::string DecodeText(std::string_view bytes, TextEncoding encoding) {
  switch (encoding) {
    case TextEncoding::Utf8:
      return std::string(bytes);
    case TextEncoding::Utf8Bom:
      if (bytes.substr(0, kBom.size()) == kBom) bytes.remove_prefix(kBom.size());
      return std::string(bytes);
    case TextEncoding::Gbk:
      break;
  }
  return Convert(bytes, "UTF-8", "GBK", kReplacement, false);
}

std::string EncodeText(std::string_view utf8, TextEncoding encoding) {
  switch (encoding) {
    case TextEncoding::Utf8:
      return ToValidUtf8(utf8);
    case TextEncoding::Utf8Bom:
      return std::string(kBom) + ToValidUtf8(utf8);
    case TextEncoding::Gbk:
      break;
  }
  return Convert(utf8, "GBK", "UTF-8", "?", true);
}

}  // namespace lk
