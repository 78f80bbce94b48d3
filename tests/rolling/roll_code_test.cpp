#include "rolling/roll_code.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <random>

#include "core/profile.h"
#include "tests/support/recording_host.h"
#include "tests/support/temp_dir.h"

namespace lk {
namespace {

using Code = std::vector<std::int32_t>;  // index 0 = byte 0

// Bytes 3..0 as one number, the order in which codes must increase.
std::uint32_t Pack(const Code& c) {
  return (static_cast<std::uint32_t>(c[3]) << 24) | (static_cast<std::uint32_t>(c[2]) << 16) |
         (static_cast<std::uint32_t>(c[1]) << 8) | static_cast<std::uint32_t>(c[0]);
}
Code Unpack(std::uint32_t v) {
  return {static_cast<std::int32_t>(v & 0xFF), static_cast<std::int32_t>((v >> 8) & 0xFF),
          static_cast<std::int32_t>((v >> 16) & 0xFF), static_cast<std::int32_t>(v >> 24)};
}

// The code rules restated independently on the packed value, for the brute-force
// search of the next legal code.
bool Legal(std::uint32_t v) {
  const std::uint32_t b[4] = {v & 0xFF, (v >> 8) & 0xFF, (v >> 16) & 0xFF, v >> 24};
  for (int i = 0; i < 4; ++i) {
    if (b[i] == 0 || b[i] == 0xFF) return false;
    for (int j = i + 1; j < 4; ++j) {
      if (b[i] == b[j]) return false;
    }
  }
  if ((b[0] >= 0x50 && b[0] <= 0x5F) || (b[0] >= 0xA0 && b[0] <= 0xAF)) return false;
  return v != 0x42494E44 && v != 0x444E4942;
}

struct CheckCase {
  Code code;
  const char* message;  // nullptr: accepted (or silently refused when short)
  bool accepted;
};

TEST(CheckRollCode, RulesApplyInOrderWithTheirMessages) {
  const CheckCase cases[] = {
      {{4, 3, 2, 1}, nullptr, true},
      {{3, 3, 0x55, 0}, "不能有相等的数据", false},  // equality is checked first
      {{0x50, 1, 2, 3}, "byte0不能为 0x50-0x5F 及 0xA0-0xAF 之间的数", false},
      {{0xAF, 1, 2, 3}, "byte0不能为 0x50-0x5F 及 0xA0-0xAF 之间的数", false},
      {{0x4F, 0x50, 0xA0, 0xAF}, nullptr, true},  // only byte 0 has that rule
      {{0xFF, 1, 2, 3}, "所有数据不能是 0x00 或 0xFF", false},
      {{4, 3, 0, 1}, "所有数据不能是 0x00 或 0xFF", false},
      {{0x44, 0x4E, 0x49, 0x42}, "数据不能等 于0x42494e44 或 0x44494e42 ", false},  // BIND
      {{0x42, 0x49, 0x4E, 0x44}, "数据不能等 于0x42494e44 或 0x44494e42 ", false},  // DNIB
      {{0x42, 0x4E, 0x49, 0x44}, nullptr, true},
      {{3, 2, 1}, nullptr, false},
      {{5, 4, 3, 2, 1}, nullptr, false},
      {{}, nullptr, false},
  };
  for (const auto& c : cases) {
    test::RecordingHost host;
    EXPECT_EQ(CheckRollCode(host, c.code), c.accepted) << RollCodeText(c.code);
    if (c.message) {
      ASSERT_EQ(host.messages.size(), 1u) << RollCodeText(c.code);
      EXPECT_EQ(host.messages[0].text, c.message);
      EXPECT_EQ(host.messages[0].caption, kRollErrorTitle);
      EXPECT_EQ(host.messages[0].icon, Icon::Information);
    } else {
      EXPECT_TRUE(host.messages.empty()) << RollCodeText(c.code);
    }
  }
}

TEST(NextRollCode, KnownSuccessors) {
  const struct {
    Code from, to;
  } cases[] = {
      {{4, 3, 2, 1}, {5, 3, 2, 1}},                          // "1 2 3 4" -> "1 2 3 5"
      {{0x4F, 3, 2, 1}, {0x60, 3, 2, 1}},                    // 0x50..0x5F skipped
      {{0x9F, 3, 2, 1}, {0xB0, 3, 2, 1}},                    // 0xA0..0xAF skipped
      {{0xFE, 1, 2, 3}, {1, 4, 2, 3}},                       // wrap, carry, carry clashes twice
      {{0x01, 2, 3, 4}, {5, 2, 3, 4}},                       // clashes with bytes 1..3 skipped
      {{0x43, 0x4E, 0x49, 0x42}, {0x45, 0x4E, 0x49, 0x42}},  // never lands on BIND
      {{0xFE, 0xFE, 0xFE, 1}, {4, 3, 1, 2}},                 // carries through every byte
  };
  for (const auto& c : cases) {
    Code code = c.from;
    EXPECT_TRUE(NextRollCode(code)) << RollCodeText(c.from);
    EXPECT_EQ(code, c.to) << RollCodeText(c.from) << " -> " << RollCodeText(code);
  }
}

TEST(NextRollCode, RefusesWhatItCannotAdvance) {
  const Code cases[] = {
      {0xFB, 0xFC, 0xFD, 0xFE},  // the last legal code: byte 3 would pass 0xFE
      {3, 2, 1},                 // three bytes are never advanced
      {4, 3, 2, 1, 9},
      {300, 3, 2, 1},  // not a byte
      {4, -1, 2, 1},
      {2147483647, 3, 2, 1},
  };
  for (const Code& c : cases) {
    Code code = c;
    EXPECT_FALSE(NextRollCode(code)) << RollCodeText(c);
    EXPECT_EQ(code, c);
  }
}

// Over many random legal codes, the successor is exactly the next legal code in the
// order byte 3, 2, 1, 0 (so it is accepted and larger), or there is none at all.
TEST(NextRollCode, YieldsTheNextLegalCode) {
  std::mt19937 rng(20240611);
  int checked = 0;
  while (checked < 3000) {
    const std::uint32_t v = rng();
    if (!Legal(v)) continue;
    Code code = Unpack(v);
    test::RecordingHost host;
    ASSERT_TRUE(CheckRollCode(host, code));
    std::uint64_t expect = v + std::uint64_t{1};
    while (expect <= 0xFFFFFFFFu && !Legal(static_cast<std::uint32_t>(expect))) ++expect;

    const bool advanced = NextRollCode(code);
    if (expect > 0xFFFFFFFFu) {
      EXPECT_FALSE(advanced);
      EXPECT_EQ(Pack(code), v);
    } else {
      ASSERT_TRUE(advanced) << std::hex << v;
      EXPECT_EQ(Pack(code), expect) << std::hex << v;
      EXPECT_TRUE(CheckRollCode(host, code));
      EXPECT_TRUE(host.messages.empty());
    }
    ++checked;
  }
  // The largest legal codes, where exhaustion happens, are rare at random.
  for (std::uint32_t v = 0xFEFDFC00; v <= 0xFEFDFCFF; ++v) {
    if (!Legal(v)) continue;
    Code code = Unpack(v);
    const bool last = v == 0xFEFDFCFB;
    EXPECT_EQ(NextRollCode(code), !last) << std::hex << v;
  }
}

TEST(Adjust2262, TurnsEveryGroupTenIntoEleven) {
  Code code = {0x02, 0xAA, 0x01, 0x88, 0x03, 0x26};
  Adjust2262(code);
  EXPECT_EQ(code, (Code{0x03, 0xFF, 0x01, 0xCC, 0x03, 0x37}));
}

TEST(PlaceRollCode, LowBytesAtTheAddressesOrNothingWhenOneIsOutside) {
  RollSettings s;
  s.WordLength = 3;
  s.Addresses = {5, 0, 7};
  s.Counts = {0x11, 0x22, 0x1FF};
  std::vector<std::int32_t> words(8, 0x3FFF);
  ASSERT_TRUE(PlaceRollCode(s, words));
  EXPECT_EQ(words, (std::vector<std::int32_t>{0x3F22, 0x3FFF, 0x3FFF, 0x3FFF, 0x3FFF, 0x3F11,
                                              0x3FFF, 0x3FFF}));
  for (std::int32_t bad : {8, -1, 0x7FFFFFFF}) {
    s.Addresses = {1, bad, 2};
    const auto before = words;
    EXPECT_FALSE(PlaceRollCode(s, words)) << bad;
    EXPECT_EQ(words, before);  // nothing placed, not even the good address
    EXPECT_EQ(RollAddressOutside(s, words.size()), bad);
  }
  EXPECT_EQ(RollAddressOutsideText(0x800), "Rolling Code Address 800H is outside the program memory!");
}

// The advance after a full program, with its log lines and the successor stored in the
// settings file beside the project, is the ops tests'; here the roads where nothing is
// advanced, and the 2262 adjustment after the successor.
TEST(AdvanceRollCode, StoresOnlyALegalSuccessor) {
  const struct {
    const char *count, *mode2262, *length;
    bool enabled, advanced;
    const char* stored;
    std::vector<std::string> messages;
    std::vector<std::string> log;
  } cases[] = {
      {"1 3 5 7", "1", "4", true, true, "1 3 5 12", {},  // 7 + 1 = 0b1000 -> 0b1100
       {"Rolling Code:1 3 5 7", "Next Rolling Code:1 3 5 12"}},
      {"1 2 3 4", "0", "4", false, true, "1 2 3 4", {}, {}},  // the feature is off: nothing
      {"254 253 252 251", "0", "4", true, false, "254 253 252 251",
       {"Rolling Code 254 253 252 251 has no successor: the code space is exhausted!"},
       {"Rolling Code:254 253 252 251"}},
      // Another length is never advanced: stored and logged as it is.
      {"1 2 3", "0", "3", true, true, "1 2 3", {}, {"Rolling Code:1 2 3", "Next Rolling Code:1 2 3"}},
  };
  for (const auto& c : cases) {
    test::TempDir dir;
    test::RecordingHost host;
    const auto p = dir.Write("board.ini", std::string("[Rolling Code]\r\nAddress=0010 0011 0012 0013") +
                                              "\r\nWorld_Lenth=" + c.length + "\r\nCount=" + c.count +
                                              "\r\nStep=1 1 1 1\r\nValue=True\r\n2262mode=" +
                                              c.mode2262 + "\r\nVersion=1.0\r\n");
    EXPECT_EQ(AdvanceRollCode(host, c.enabled, p), c.advanced) << c.count;
    EXPECT_EQ(GetValue(host, p, "Rolling Code", "Count"), c.stored);
    EXPECT_EQ(host.MessageTexts(), c.messages) << c.count;
    EXPECT_EQ(host.log, c.log) << c.count;
  }
  // A missing settings file: a message per key read (seven) and the one of the refused
  // write; the file is not created and no next code is claimed.
  test::TempDir dir;
  test::RecordingHost host;
  EXPECT_FALSE(AdvanceRollCode(host, true, dir / "none.ini"));
  EXPECT_EQ(host.messages.size(), 7u + 1u);
  EXPECT_EQ(host.log, std::vector<std::string>{"Rolling Code:"});
  EXPECT_FALSE(std::filesystem::exists(dir / "none.ini"));
}

}  // namespace
}  // namespace lk
