#include "sim/sim_state_file.h"

#include <gtest/gtest.h>

#include "tests/sim/sim_rig.h"

namespace lk::sim::test {
namespace {

using namespace lk::proto;

SimState FullState() {
  SimState s;
  s.id = {0xDE, 0xAD, 0x00, 0x01};
  SimChip chip = SimChip::FromParams(MakeParams("QVM75P82", -2, "7582", false, 0x2F, 0x3FFF, 3, 7));
  chip.program[5] = 0x0123;
  chip.eedata[2] = 0x00;
  chip.programmed = true;
  s.chip = chip;
  s.store.paramBlock.assign(64, 0x5A);
  s.store.program = {0x0001, 0xFFFF, 0xBEEF};
  s.store.config = {0x1234};
  s.store.imageSum = 0xA55A;
  s.store.rollStart = {1, 2, 3, 4, 5, 6, 7, 8, 0x31};
  s.store.rollStep = {9, 8, 7, 6, 5, 4, 3, 2};
  s.store.eeFlag = 0xA2;
  s.store.eeSum = 0x0102;
  s.store.eedata = {0x00, 0x7F, 0xFF};
  return s;
}

TEST(SimStateFileTest, FormatAndParseRoundTrip) {
  SimState empty;  // empty socket, nothing stored
  for (const SimState& state : {FullState(), empty}) {
    std::string error;
    auto parsed = ParseState(FormatState(state), error);
    ASSERT_TRUE(parsed.has_value()) << error;
    EXPECT_EQ(*parsed, state);
  }
}

TEST(SimStateFileTest, CorruptTextIsRefusedWithAReason) {
  const std::string good = FormatState(FullState());
  auto replace = [&](const std::string& from, const std::string& to) {
    std::string s = good;
    size_t at = s.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    return at == std::string::npos ? s : s.replace(at, from.size(), to);
  };
  struct Case {
    const char* what;
    std::string text;
  } cases[] = {
      {"empty file", ""},
      {"other format", "[Data]\nx=1\n"},
      {"wrong version", replace("STATE 1", "STATE 2")},
      {"unknown key", good + "extra=1\n"},
      {"line without =", good + "garbage\n"},
      {"duplicate key", good + "store.sum=0000\n"},
      {"missing key", replace("store.eesum=0102\n", "")},
      {"chip lines incomplete", replace("chip.otp=0\n", "")},
      {"bad id", replace("id=DEAD0001", "id=DEAD01")},
      {"bad hex word", replace("chip.program=3FFF", "chip.program=3FGF")},
      {"short word", replace("chip.program=3FFF", "chip.program=3FF")},
      {"config not 16 words", replace("chip.config=3FFF", "chip.config=3FFF 3FFF")},
      {"config length too big", replace("chip.configlength=3", "chip.configlength=16")},
      {"type not decimal", replace("chip.type=-2", "chip.type=x")},
      {"flag not 0/1", replace("chip.programmed=1", "chip.programmed=yes")},
      {"block of 63 bytes", replace("store.block=5A ", "store.block=")},
      {"two blanks", replace("store.program=0001 FFFF", "store.program=0001  FFFF")},
      {"rolling start short", replace("store.rollstart=01 ", "store.rollstart=")},
      {"CR line ends", replace("\nstore.sum", "\r\nstore.sum")},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    std::string error;
    EXPECT_FALSE(ParseState(c.text, error).has_value());
    EXPECT_FALSE(error.empty());
  }
}

}  // namespace
}  // namespace lk::sim::test
