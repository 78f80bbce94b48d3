#include "sim/sim_writer.h"

#include <gtest/gtest.h>

#include "tests/sim/sim_rig.h"

namespace lk::sim::test {
namespace {

using namespace lk::proto;

ChipParams Otp() {
  return MakeParams("QVM55P47", 0x5547, "5547", true, 0x3FF, 0x3FFF, 1, 0);
}
ChipParams Flash() {
  return MakeParams("QVM75P82", 0x7582, "7582", false, 0x7FF, 0x3FFF, 2, 0x3F);
}

TEST(SimWriterTest, SessionCodesAreNeverAnswered) {
  SimRig rig(Otp());
  for (std::uint8_t code : {kIdle, kEnd, kPassed, kFailed}) {
    ASSERT_TRUE(rig.link->Send(Packet(code), 100));
    Report r{};
    EXPECT_FALSE(rig.link->Receive(r, 100)) << std::hex << int(code);
  }
  // Even a broken frame of those codes stays unanswered (its checksum is spoiled).
  Report broken = Packet(kEnd);
  broken[3] ^= 1;
  ASSERT_TRUE(rig.link->Send(broken, 100));
  Report r{};
  EXPECT_FALSE(rig.link->Receive(r, 100));
}

TEST(SimWriterTest, BadFramesAreRefusedWithoutEffect) {
  auto withSum = [](Report r, int delta) {
    r[r[1]] = static_cast<std::uint8_t>(r[r[1]] + delta);
    return r;
  };
  Report lengthTwo = Packet(kGetVersion);
  lengthTwo[1] = 2;
  Report length65 = Packet(kGetVersion);
  length65[1] = 65;
  Report countMismatch = ProgramAt(kProgramRom, 0, {0x0000});
  countMismatch[5] = 4;  // says two words, carries one
  countMismatch[countMismatch[1]] = Checksum(&countMismatch[1], countMismatch[1] - 1);
  Report oddCount = Packet(kProgramRom, {0, 0, 3, 0, 0, 0});
  Report shortBlock = Packet(kChipType, std::vector<std::uint8_t>(40, 0));
  struct Case {
    const char* what;
    Report packet;
  } cases[] = {
      {"wrong checksum", withSum(ProgramAt(kProgramRom, 0, {0x0000}), 1)},
      {"length 2", lengthTwo},
      {"length 65", length65},
      {"version with an argument", Packet(kGetVersion, {0})},
      {"unknown code", Packet(0x77)},
      {"program count mismatch", countMismatch},
      {"odd byte count", oddCount},
      {"short parameter block", shortBlock},
      {"first-generation read layout", Packet(kReadRom)},
      {"EEDATA read of wrong length", Packet(kEeRead, {0})},
  };
  SimRig rig(Otp());
  SimState before = rig.writer->State();
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_EQ(rig.Code(c.packet), kAnswerRefused);
  }
  EXPECT_EQ(rig.writer->State(), before);
}

TEST(SimWriterTest, SecondGenerationAddressesEveryPacket) {
  SimRig rig(Otp());
  std::vector<std::uint16_t> first(24), second(6);
  for (int i = 0; i < 24; ++i) first[i] = static_cast<std::uint16_t>(0x1000 + i);
  for (int i = 0; i < 6; ++i) second[i] = static_cast<std::uint16_t>(0x2000 + i);
  // Out of order on purpose: addresses say where the words go.
  EXPECT_EQ(rig.Code(ProgramAt(kProgramRom, 100, second)), kAnswerOk);
  EXPECT_EQ(rig.Code(ProgramAt(kProgramRom, 0, first)), kAnswerOk);
  auto a = rig.Exchange(ReadAt(kReadRom, 96));
  ASSERT_TRUE(a);
  auto words = RawWords(*a);
  EXPECT_EQ(words[3], 0x3FFF);
  EXPECT_EQ(words[4], 0x2000 & 0x3FFF);
  EXPECT_EQ(words[9], 0x2005 & 0x3FFF);
  EXPECT_EQ(rig.Chip().program[23], 0x1017);
  // The last block of a memory is read with a shorter count; nothing follows it.
  a = rig.Exchange(ReadAt(kReadRom, 0x3F0, 32));
  ASSERT_TRUE(a);
  EXPECT_EQ(RawWords(*a, 16), std::vector<std::uint16_t>(16, 0x3FFF));
  EXPECT_EQ((*a)[33], 0);
  EXPECT_EQ(rig.writer->WordsProgrammed(), 30);
}

TEST(SimWriterTest, FirstGenerationCountsAddressesItself) {
  SimConfig config;
  config.version = 2;
  SimRig rig(Otp(), config);
  auto program = [&](std::uint16_t base, int count) {
    std::vector<std::uint16_t> w;
    for (int i = 0; i < count; ++i) w.push_back(static_cast<std::uint16_t>(base + i));
    return Packet(kProgramRom, WordBytes(w));
  };
  EXPECT_EQ(rig.Code(program(0x100, 24)), kAnswerOk);
  EXPECT_EQ(rig.Code(program(0x200, 24)), kAnswerOk);
  EXPECT_EQ(rig.Code(program(0x300, 5)), kAnswerOk);
  SimChip chip = rig.Chip();
  EXPECT_EQ(chip.program[0], 0x100);
  EXPECT_EQ(chip.program[24], 0x200);
  EXPECT_EQ(chip.program[48], 0x300);
  EXPECT_EQ(chip.program[52], 0x304);
  EXPECT_EQ(chip.program[53], 0x3FFF);

  // Reads continue block after block until the command changes or 0xE1 comes.
  auto read = [&](std::uint8_t code) { return RawWords(*rig.Exchange(Packet(code))); };
  EXPECT_EQ(read(kReadRom)[0], 0x100);
  EXPECT_EQ(read(kReadRom)[0], 0x208);  // word 32
  ASSERT_TRUE(rig.link->Send(Packet(kIdle), 100));
  EXPECT_EQ(read(kReadRom)[0], 0x100);
  EXPECT_EQ(read(kReadConfig)[13], 0x5547);  // another code: configuration from word 0
  EXPECT_EQ(read(kReadRom)[0], 0x100);       // and back: program memory from word 0
  EXPECT_EQ(read(kReadRom)[0], 0x208);
  ASSERT_EQ(rig.Code(ParamBlock(kChipType, 0x5547, "QVM55P47")), kAnswerOk);
  EXPECT_EQ(read(kReadRom)[0], 0x100);

  // A first-generation writer does not understand addressed packets.
  EXPECT_EQ(rig.Code(ProgramAt(kProgramRom, 0, {0})), kAnswerRefused);
  EXPECT_EQ(rig.Code(ReadAt(kReadRom, 0)), kAnswerRefused);
}

TEST(SimWriterTest, ProgrammingOnlyClearsBits) {
  struct Case {
    std::uint16_t first, second, expected;
  } cases[] = {
      {0x1234, 0x0F0F, 0x0204},
      {0xFFFF, 0xFFFF, 0x3FFF},  // nothing beyond the word width appears
      {0x0000, 0x3FFF, 0x0000},  // a cleared bit never comes back
      {0x2AAA, 0x2AAA, 0x2AAA},
  };
  for (const auto& params : {Otp(), Flash()}) {
    SimRig rig(params);
    std::uint16_t address = 0;
    for (const auto& c : cases) {
      ASSERT_EQ(rig.Code(ProgramAt(kProgramRom, address, {c.first})), kAnswerOk);
      ASSERT_EQ(rig.Code(ProgramAt(kProgramRom, address, {c.second})), kAnswerOk);
      EXPECT_EQ(rig.Chip().program[address], c.expected) << params.Name << " " << address;
      ++address;
    }
    ASSERT_EQ(rig.Code(ProgramAt(kProgramConfig, 0, {0x3F00, 0x00FF})), kAnswerOk);
    ASSERT_EQ(rig.Code(ProgramAt(kProgramConfig, 0, {0x0FF0, 0x3FFF})), kAnswerOk);
    EXPECT_EQ(rig.Chip().config[0], 0x0F00);
    EXPECT_EQ(rig.Chip().config[1], 0x00FF);
  }
}

TEST(SimWriterTest, ProgramOutsideTheChipIsRefused) {
  SimRig rig(Otp());  // words 0..0x3FF, configuration area 16 words
  EXPECT_EQ(rig.Code(ProgramAt(kProgramRom, 0x3F0, std::vector<std::uint16_t>(16, 0))), kAnswerOk);
  EXPECT_EQ(rig.Code(ProgramAt(kProgramRom, 0x3F0, std::vector<std::uint16_t>(17, 0))),
            kAnswerRefused);
  EXPECT_EQ(rig.Code(ProgramAt(kProgramConfig, 15, {0, 0})), kAnswerRefused);
  SimRig empty(std::nullopt);
  EXPECT_EQ(empty.Code(ProgramAt(kProgramRom, 0, {0})), kAnswerRefused);
  EXPECT_EQ(empty.Code(Packet(kReady)), kAnswerRefused);
  EXPECT_EQ(empty.Code(ParamBlock(kChipType, 0x5547, "QVM55P47")), kAnswerRefused);
}

// The blank check answers busy a configurable number of times before its result.
TEST(SimWriterTest, BlankCheckAnswersBusyThenTheResult) {
  for (int busy : {0, 3, 5}) {
    SCOPED_TRACE(busy);
    SimConfig config;
    config.busyAnswers = busy;
    SimRig rig(Otp(), config);
    auto run = [&] {
      std::vector<int> codes;
      for (int i = 0; i < 20; ++i) {
        codes.push_back(rig.Code(Packet(kReady)));
        if (codes.back() != kAnswerBusy) break;
      }
      return codes;
    };
    std::vector<int> expected(static_cast<size_t>(busy), kAnswerBusy);
    expected.push_back(kAnswerOk);
    EXPECT_EQ(run(), expected);
    ASSERT_EQ(rig.Code(ProgramAt(kProgramRom, 7, {0x3FFE})), kAnswerOk);
    expected.back() = kAnswerNotBlank;
    EXPECT_EQ(run(), expected);
    EXPECT_EQ(run(), expected) << "every blank check starts busy again";
  }
  // Programming blank words leaves no bit cleared, yet the chip went through programming.
  SimRig rig(Otp(), SimConfig{.busyAnswers = 0});
  ASSERT_EQ(rig.Code(ProgramAt(kProgramRom, 0, {0x3FFF})), kAnswerOk);
  EXPECT_EQ(rig.Code(Packet(kReady)), kAnswerNotBlank);
}

TEST(SimWriterTest, FlashBlankCheckErasesTheChip) {
  SimConfig config;
  config.busyAnswers = 1;
  SimRig rig(Flash(), config);
  SimChip fresh = rig.Chip();
  ASSERT_EQ(rig.Code(ProgramAt(kProgramRom, 0x7F0, {0x0123, 0x0456})), kAnswerOk);
  ASSERT_EQ(rig.Code(ProgramAt(kProgramConfig, 0, {0x0001, 0x0002, 0x0003})), kAnswerOk);
  EXPECT_EQ(rig.Code(Packet(kReady)), kAnswerBusy);
  EXPECT_EQ(rig.Code(Packet(kReady)), kAnswerOk);
  SimChip erased = rig.Chip();
  EXPECT_EQ(erased, fresh) << "program and configuration words blank, factory words kept";
  EXPECT_EQ(erased.config[13], 0x7582);
  EXPECT_NE(erased.config[8], 0);
}

TEST(SimWriterTest, ParameterBlockMustNameTheChipInTheSocket) {
  struct Case {
    const char* what;
    ChipParams chip;
    std::uint16_t type;
    std::string name;
    int expected;
  } cases[] = {
      {"same chip", Otp(), 0x5547, "QVM55P47", kAnswerOk},
      {"other type", Otp(), 0x5548, "QVM55P47", kAnswerRefused},
      {"other name", Otp(), 0x5547, "QVM55P49", kAnswerRefused},
      {"name cut at 12", MakeParams("QVM50F5759XYZ", 0x5759, "5759", true), 0x5759, "QVM50F5759XY",
       kAnswerOk},
      {"only low 16 bits of the type", MakeParams("LK467", 0x12467, "0467", true), 0x2467, "LK467",
       kAnswerOk},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    SimRig rig(c.chip);
    EXPECT_EQ(rig.Code(ParamBlock(kChipType, c.type, c.name)), c.expected);
    // The store takes any block: it is not about the chip in the socket.
    EXPECT_EQ(rig.Code(ParamBlock(kStoreChipType, c.type, c.name)), kAnswerOk);
  }
}

TEST(SimWriterTest, ConfigurationAreaCarriesTypeInfoAndTestWords) {
  struct Case {
    ChipParams chip;
    int typeIndex;
    int testHighByte;  // -1: word 7 carries no test content
  } cases[] = {
      {MakeParams("QVM50F96B", 0x5096, "5096", true, 0xFFF), 13, 0x34},
      {MakeParams("QVM50F98B", 0x5098, "5098", true, 0xFFF), 13, 0x34},
      {MakeParams("QVM50P99", 0x5099, "5099", true, 0x7FF), 13, 0x15},
      {MakeParams("QVM53P45", 0x2023, "2023", true), 13, kTestWordLast >> 8},
      {MakeParams("QVM53P74", 0x34A4, "34A4", true), 13, kTestWordLast >> 8},
      {MakeParams("LK467", 0x0467, "0467", true), 13, kTestWordLast >> 8},
      {MakeParams("QVM55P21", 0x16E1, "16E1", true, 0x3FF, 0x3FFF, 2), 3, -1},
      {Otp(), 13, -1},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.chip.Name);
    SimRig rig(c.chip);
    auto a = rig.Exchange(ReadAt(kReadConfig, 0, 32));
    ASSERT_TRUE(a);
    auto w = RawWords(*a, 16);
    EXPECT_EQ(w[c.typeIndex], c.chip.Type & 0xFFFF);
    for (int i : {8, 9, 11, 12}) EXPECT_NE(w[i], 0) << "info word " << i;
    for (int i = 0; i <= c.chip.ConfigLength; ++i) {
      if (i != c.typeIndex) {
        EXPECT_EQ(w[i], 0x3FFF) << "configuration word " << i;
      }
    }
    if (c.testHighByte < 0) {
      EXPECT_EQ(w[7], 0);
    } else {
      EXPECT_EQ(w[7] >> 8, c.testHighByte);
    }
  }
}

TEST(SimWriterTest, EedataOfChipAndStore) {
  SimRig rig(Flash());  // EEDATA 0..0x3F
  auto program = [](std::uint8_t code, std::uint16_t address, std::vector<std::uint8_t> bytes) {
    std::vector<std::uint8_t> args = {static_cast<std::uint8_t>(address & 0xFF),
                                      static_cast<std::uint8_t>(address >> 8),
                                      static_cast<std::uint8_t>(bytes.size())};
    args.insert(args.end(), bytes.begin(), bytes.end());
    return Packet(code, args);
  };
  auto read = [&](std::uint8_t code, std::uint16_t address) {
    auto a = rig.Exchange(Packet(code, {static_cast<std::uint8_t>(address & 0xFF),
                                        static_cast<std::uint8_t>(address >> 8)}));
    return std::vector<std::uint8_t>(a->begin() + 1, a->end());
  };
  EXPECT_EQ(rig.Code(Packet(kEePrepare)), kAnswerOk);
  EXPECT_EQ(rig.Code(program(kEeProgram, 0x3E, {0x12, 0x34})), kAnswerOk);
  EXPECT_EQ(rig.Code(program(kEeProgram, 0x3E, {0x00, 0xFF})), kAnswerOk);  // rewritten, not ANDed
  EXPECT_EQ(rig.Code(program(kEeProgram, 0x3F, {1, 2})), kAnswerRefused);   // past the end
  auto bytes = read(kEeRead, 0x20);
  EXPECT_EQ(bytes[0x1E], 0x00);
  EXPECT_EQ(bytes[0x1F], 0xFF);
  EXPECT_EQ(bytes[0x20], 0xFF);  // past the end reads 0xFF

  EXPECT_EQ(rig.Code(program(kStoreEeProgram, 0x100, std::vector<std::uint8_t>(48, 0x5A))),
            kAnswerOk);
  EXPECT_EQ(read(kStoreEeRead, 0x100)[47], 0x5A);
  EXPECT_EQ(read(kStoreEeRead, 0x100)[48], 0xFF);
  EXPECT_EQ(read(kEeRead, 0)[0], 0xFF) << "the store write leaves the chip alone";
  EXPECT_EQ(rig.Code(Packet(kStoreEeInfo, {0xA2, 0xCD, 0xAB})), kAnswerOk);
  SimStore store = rig.writer->State().store;
  EXPECT_EQ(store.eeFlag, 0xA2);
  EXPECT_EQ(store.eeSum, 0xABCD);

  SimRig noEe(Otp());
  EXPECT_EQ(noEe.Code(Packet(kEePrepare)), kAnswerRefused);
  EXPECT_EQ(noEe.Code(program(kEeProgram, 0, {1})), kAnswerRefused);
}

}  // namespace
}  // namespace lk::sim::test
