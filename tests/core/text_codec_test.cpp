#include "core/text_codec.h"

#include <gtest/gtest.h>

namespace lk {
namespace {

// "中文" in GBK and in UTF-8.
const std::string kGbk = "\xD6\xD0\xCE\xC4";
const std::string kUtf8 = "\xE4\xB8\xAD\xE6\x96\x87";

TEST(TextCodecTest, DetectsEncoding) {
  struct Case {
    std::string bytes;
    TextEncoding expected;
  } cases[] = {
      {"plain ASCII\r\n", TextEncoding::Utf8},
      {kUtf8, TextEncoding::Utf8},
      {"\xEF\xBB\xBF" + kUtf8, TextEncoding::Utf8Bom},
      {kGbk, TextEncoding::Gbk},
      {"\xC0\xAF", TextEncoding::Gbk},          // overlong '/'
      {"\xED\xA0\x80", TextEncoding::Gbk},      // surrogate
      {"\xF4\x90\x80\x80", TextEncoding::Gbk},  // above U+10FFFF
      {"\xE4\xB8", TextEncoding::Gbk},          // truncated sequence
  };
  for (const auto& c : cases) {
    EXPECT_EQ(DetectEncoding(c.bytes), c.expected) << c.bytes;
  }
}

TEST(TextCodecTest, GbkRoundTrip) {
  EXPECT_EQ(DecodeText("A" + kGbk + "=1", TextEncoding::Gbk), "A" + kUtf8 + "=1");
  EXPECT_EQ(EncodeText("A" + kUtf8 + "=1", TextEncoding::Gbk), "A" + kGbk + "=1");
}

TEST(TextCodecTest, BomDroppedOnReadAndRestoredOnWrite) {
  EXPECT_EQ(DecodeText("\xEF\xBB\xBFx", TextEncoding::Utf8Bom), "x");
  EXPECT_EQ(EncodeText("x", TextEncoding::Utf8Bom), "\xEF\xBB\xBFx");
}

TEST(TextCodecTest, GarbageNeverStopsDecoding) {
  // 0x80 and 0xFF are not GBK lead bytes; a lone lead byte at the end is truncated.
  const std::string decoded = DecodeText(std::string("a\x80"
                                                     "b\xFF"
                                                     "c\xD6",
                                                     6),
                                         TextEncoding::Gbk);
  EXPECT_EQ(decoded.front(), 'a');
  EXPECT_NE(decoded.find('b'), std::string::npos);
  EXPECT_NE(decoded.find('c'), std::string::npos);
  EXPECT_TRUE(IsValidUtf8(decoded));
}

// Whatever the text holds, what is written is valid in the file's encoding: a character
// GBK lacks becomes "?", and bytes that are no UTF-8 at all (a file name from the
// system) become U+FFFD or "?" rather than making the file undecodable.
TEST(TextCodecTest, EncodedTextIsAlwaysValidInItsEncoding) {
  const std::string emoji = "\xF0\x9F\x98\x80";  // U+1F600 has no GBK form
  const std::string replacement = "\xEF\xBF\xBD";
  struct Case {
    std::string text;
    TextEncoding encoding;
    std::string expected;
  } cases[] = {
      {kUtf8 + emoji + "b", TextEncoding::Gbk, kGbk + "?b"},
      {"a\xFF" + kUtf8, TextEncoding::Gbk, "a?" + kGbk},
      {"a\xFF" + kUtf8, TextEncoding::Utf8, "a" + replacement + kUtf8},
      {"\xE4\xB8" + kUtf8, TextEncoding::Utf8Bom, "\xEF\xBB\xBF" + replacement + replacement + kUtf8},
      {kUtf8 + emoji, TextEncoding::Utf8, kUtf8 + emoji},  // valid text is left alone
  };
  for (const auto& c : cases) {
    const std::string encoded = EncodeText(c.text, c.encoding);
    EXPECT_EQ(encoded, c.expected) << c.text;
    EXPECT_EQ(DetectEncoding(encoded), c.encoding) << c.text;
  }
}

}  // namespace
}  // namespace lk
