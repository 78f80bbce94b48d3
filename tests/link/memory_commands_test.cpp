#include "link/memory_commands.h"

#include <gtest/gtest.h>

#include "tests/link/fake_wire.h"

namespace lk::test {
namespace {

using Bytes = std::vector<std::uint8_t>;

// Sent reports with the given command code, as packets.
std::vector<Bytes> PacketsOf(const FakeWire& wire, std::uint8_t code) {
  std::vector<Bytes> out;
  for (std::size_t i = 0; i < wire.sent.size(); ++i) {
    if (wire.sent[i][2] == code) out.push_back(wire.Packet(i));
  }
  return out;
}

TEST(ProgramRomTest, PacketLengthsAndAddressesByGeneration) {
  struct Case {
    std::uint32_t version;
    int romSize;
    std::size_t packets;
    int lastWords;
  };
  // 100 words = 4 x 24 + 4; 48 words = 2 x 24 exactly.
  const Case cases[] = {{3, 99, 5, 4}, {2, 99, 5, 4}, {3, 47, 2, 24}, {2, 47, 2, 24}};
  for (const Case& c : cases) {
    WriterFixture f(c.version);
    ChipParams chip = TestChip(c.romSize);
    for (int i = 0; i <= c.romSize; ++i) chip.RomWords[i] = 0x1000 + i;
    ASSERT_EQ(ProgramRom(f.writer, chip, nullptr), Fault::None);
    const auto packets = PacketsOf(*f.wire, 0xF3);
    ASSERT_EQ(packets.size(), c.packets);
    const bool second = c.version >= 3;
    const int head = second ? 5 : 2;
    for (std::size_t k = 0; k < packets.size(); ++k) {
      const Bytes& p = packets[k];
      const int words = k + 1 == packets.size() ? c.lastWords : 24;
      ASSERT_EQ(p.size(), static_cast<std::size_t>(head + 2 * words + 1));
      EXPECT_EQ(p[0], p.size());
      if (second) {
        EXPECT_EQ(p[2] | (p[3] << 8), static_cast<int>(24 * k));
        EXPECT_EQ(p[4], 2 * words);
      }
      const int first = 24 * static_cast<int>(k);
      EXPECT_EQ(p[head] | (p[head + 1] << 8), 0x1000 + first);
      EXPECT_EQ(p.back(), proto::Checksum(p.data(), static_cast<int>(p.size()) - 1));
    }
    EXPECT_EQ(f.host.progressMaximum, c.romSize);
    EXPECT_EQ(f.host.lastProgress, c.romSize);
  }
}

TEST(ProgramRomTest, StopsAtTheFirstRefusedPacket) {
  Report corrupt = Checked(0xE1);
  corrupt[3] = 0;
  const std::pair<std::optional<Report>, Fault> refusals[] = {
      {Checked(0xE2), Fault::Refused}, {corrupt, Fault::BadFrame}, {std::nullopt, Fault::Timeout}};
  for (const auto& [refusal, fault] : refusals) {
    WriterFixture f;
    f.wire->script = {Checked(0xE1), refusal};
    EXPECT_EQ(ProgramRom(f.writer, TestChip(99), nullptr), fault);
    EXPECT_EQ(f.wire->sent.size(), 2u);
  }
}

TEST(ProgramRomTest, TestWordsOfTheFactory) {
  struct Case {
    std::string name;
    std::string prod;
    int romSize;
    std::uint16_t word7;
    int at;  // where word 7 goes; -1 = refused
    bool blockRefused;  // the writer refuses the parameter block sent again
    std::vector<Fault> notices;  // shown to the user as they happen, in this order
  };
  const Case cases[] = {
      {"QVM50F96B", "5096", 0xFFF, 0x3412, 4093, false, {}},
      {"QVM50F98B", "5098", 0xFFF, 0x3400, 4093, false, {}},
      {"QVM50F96B", "5096", 0xFFF, 0x1512, -1, false, {Fault::TestContent}},
      {"QVM50P99", "5099", 0x7FF, 0x1577, 2045, false, {}},
      {"QVM50P99", "5099", 0x7FF, 0x3477, -1, true, {Fault::TestContent, Fault::ChipType}},
      {"QVM20A23", "2023", 0x3FF, 0x0ABC, 0x3FE, false, {}},
      {"QVM34A4", "34A4", 0x7FF, 0x1234, 0x7FE, false, {}},
      // A refused block after the voltage-reference words is shown; programming goes on.
      {"LK467", "4670", 0x3FF, 0x0001, 0x3FE, true, {Fault::ChipType}},
  };
  for (const Case& c : cases) {
    WriterFixture f;
    ChipParams chip = TestChip(c.romSize);
    chip.Name = c.name;
    chip.Prod = c.prod;
    f.memory.config[7] = c.word7;
    if (c.blockRefused) {
      f.wire->responder = [&f](const Report& r) -> std::optional<Report> {
        if (r[2] == proto::kChipType) return Checked(0xEE);
        return f.memory.Answer(r, false);
      };
    }
    const Fault fault = ProgramRom(f.writer, chip, nullptr);
    const auto program = PacketsOf(*f.wire, 0xF3);
    EXPECT_EQ(f.notices, c.notices) << c.name;
    if (c.at < 0) {
      EXPECT_EQ(fault, Fault::TestContent) << c.name;
      EXPECT_TRUE(program.empty());
      EXPECT_EQ(f.wire->Codes().back(), 0xF6);  // the block is sent again
      continue;
    }
    ASSERT_EQ(fault, Fault::None) << c.name;
    EXPECT_EQ(f.wire->Packet(0), (Bytes{6, 0xF5, 0, 0, 16, 0x0B}));
    const Bytes& p = program[c.at / 24];
    const int i = 5 + 2 * (c.at % 24);
    EXPECT_EQ(p[i] | (p[i + 1] << 8), c.word7) << c.name;
    EXPECT_EQ(p[i + 2] | (p[i + 3] << 8), c.word7 ^ 0x3FFF) << c.name;
  }
}

TEST(ProgramRomTest, ModelRulesAndStoreCode) {
  {
    // 32A3 keeps its four factory words at 0x3FC..0x3FF, for the chip and the store.
    for (Target target : {Target::Chip, Target::Store}) {
      WriterFixture f;
      ChipParams chip = TestChip(0x3FF);
      chip.Prod = "32A3";
      for (auto& w : chip.RomWords) w = 0x0123;
      ASSERT_EQ(ProgramRom(f.writer, chip, nullptr, target), Fault::None);
      const auto packets = PacketsOf(*f.wire, target == Target::Chip ? 0xF3 : 0xF7);
      const Bytes& last = packets.back();  // words 1008..1023
      EXPECT_EQ(last[5 + 2 * 11] | (last[6 + 2 * 11] << 8), 0x0123);  // 1019
      for (int a = 1020; a <= 1023; ++a) {
        EXPECT_EQ(last[5 + 2 * (a - 1008)] | (last[6 + 2 * (a - 1008)] << 8), 0xFFFF) << a;
      }
    }
  }
  {
    // The store gets no test words: nothing is read from the chip area.
    WriterFixture f;
    ChipParams chip = TestChip(0xFFF);
    chip.Name = "QVM50F96B";
    ASSERT_EQ(ProgramRom(f.writer, chip, nullptr, Target::Store), Fault::None);
    EXPECT_EQ(f.wire->CountCode(0xF5), 0u);
  }
}

// The code on the chip's outgoing copy, the image keeping its words, is the ops tests'
// (Program with a settings file); here the store, and an address beyond the chip.
TEST(ProgramRomTest, RollingCodeNeverForTheStoreNorOutsideTheChip) {
  const RollSettings roll = Rolling({0x0A}, {171});
  ChipParams chip = TestChip(63);
  for (auto& w : chip.RomWords) w = 0x2F00;
  WriterFixture g;
  ASSERT_EQ(ProgramRom(g.writer, chip, &roll, Target::Store), Fault::None);
  const Bytes p = PacketsOf(*g.wire, 0xF7)[0];
  EXPECT_EQ(p[5 + 20] | (p[6 + 20] << 8), 0x2F00);

  // An address beyond the chip refuses the program before anything is sent.
  const RollSettings outside = Rolling({0x40}, {1});
  WriterFixture h;
  EXPECT_EQ(ProgramRom(h.writer, chip, &outside), Fault::RollAddress);
  EXPECT_TRUE(h.wire->sent.empty());
}

TEST(ProgramConfigTest, WordsBelowConfigLengthWithForcedBits) {
  struct Case {
    std::string prod;
    std::uint16_t word0;
    std::uint16_t word1;
  };
  const Case cases[] = {
      {"1234", 0x3FFF, 0x3FFF},
      {"30D1", (0x3FFF & 0x17DF) | 11, (0x3FFF & 0x1FFC) | 3},
      {"30D2", (0x3FFF & 0x17EF) | 96, (0x3FFF & 0x1FFA) | 10},
      {"30D3", (0x3FFF & 0x1F5A) | 90, 0x3FFF | 0x1E3F},
      {"30D4", (0x3FFF & 0x1FDF) | 31, 0x3FFF | 0x1FFF},
  };
  for (const Case& c : cases) {
    WriterFixture f;
    ChipParams chip = TestChip();
    chip.Prod = c.prod;
    chip.ConfigLength = 2;  // words 0 and 1 are sent, word 2 is not
    chip.ConfigWords = {0x3FFF, 0x3FFF, 0x1234};
    ASSERT_EQ(ProgramConfig(f.writer, chip), Fault::None);
    const Bytes p = f.wire->Packet(0);
    ASSERT_EQ(p.size(), 10u) << c.prod;
    EXPECT_EQ(p[0], 10);
    EXPECT_EQ(p[4], 4);
    EXPECT_EQ(p[5] | (p[6] << 8), c.word0) << c.prod;
    EXPECT_EQ(p[7] | (p[8] << 8), c.word1) << c.prod;
  }
}

TEST(VerifyRomTest, FirstDifferenceFillsTheResult) {
  WriterFixture f;
  const ChipParams chip = TestChip(0x3F);
  f.memory.rom.assign(64, 0x3FFF);
  EXPECT_TRUE(VerifyRom(f.writer, chip, nullptr).Pass);
  f.memory.rom[0x2A] = 0x0123;
  f.memory.rom[0x30] = 0x0000;
  VerifyResult result = VerifyRom(f.writer, chip, nullptr);
  EXPECT_FALSE(result.Pass);
  EXPECT_FALSE(result.Stopped());
  EXPECT_EQ(result.Address, "002A");
  EXPECT_EQ(result.FileData, "3FFF");
  EXPECT_EQ(result.ChipData, "0123");
  f.wire->script = {std::nullopt};
  result = VerifyRom(f.writer, chip, nullptr);
  EXPECT_FALSE(result.Pass);
  EXPECT_TRUE(result.Stopped());
  EXPECT_EQ(result.Why, Fault::Timeout);
  // The words of a read that failed cannot be taken by mistake.
  f.wire->script = {std::nullopt};
  const auto words = ReadRom(f.writer, chip);
  ASSERT_FALSE(words.Ok());
  EXPECT_THROW((void)*words, std::logic_error);
}

TEST(VerifyRomTest, FeffToleranceOfTheDModels) {
  struct Case {
    std::string name;
    Target target;
    int address;
    bool pass;
  };
  const Case cases[] = {
      {"QVM50F96D", Target::Chip, 4093, true}, {"QVM50F98D", Target::Chip, 4094, true},
      {"QVM50F98D", Target::Store, 4094, false}, {"QVM50F96D", Target::Chip, 4092, false},
      {"QVM50F96E", Target::Chip, 4093, false},
  };
  for (const Case& c : cases) {
    WriterFixture f;
    ChipParams chip = TestChip(0xFFF);
    chip.Name = c.name;
    f.memory.rom.assign(4096, 0x3FFF);
    f.memory.rom[c.address] = 0xFEFF;
    EXPECT_EQ(VerifyRom(f.writer, chip, nullptr, c.target).Pass, c.pass) << c.name << " " << c.address;
  }
}

TEST(VerifyRomTest, RollingAddressesAreLeftOut) {
  const RollSettings roll = Rolling({5}, {7});
  const ChipParams chip = TestChip(63);
  WriterFixture f;
  f.memory.rom.assign(64, 0x3FFF);
  f.memory.rom[5] = 0x3F06;  // the previous chip's code
  EXPECT_TRUE(VerifyRom(f.writer, chip, &roll).Pass);
  f.memory.rom[6] = 0;
  EXPECT_EQ(VerifyRom(f.writer, chip, &roll).Address, "0006");
}

TEST(VerifyConfigTest, MasksOfTheSpecialCodes) {
  struct Case {
    std::string prod;
    std::uint16_t file1;
    std::uint16_t chip1;
    bool pass;
  };
  const Case cases[] = {
      {"1234", 0x0FFF, 0x0FFF, true},
      {"1234", 0x0FFF, 0xEFFF, false},
      {"32A3", 0x0FFF, 0xEFFF, true},   // bits 13-15 read as 1
      {"32A3", 0x0FFF, 0x0FFF, false},
      {"30D4", 0x0000, 0xFFFF, true},   // forced to 0x1FFF, upper bits ignored
      {"30D4", 0x0000, 0x1FFE, false},
  };
  for (const Case& c : cases) {
    WriterFixture f;
    ChipParams chip = TestChip();
    chip.Prod = c.prod;
    chip.ConfigLength = 2;
    chip.ConfigWords = {0x001F, c.file1, 0};
    f.memory.config[0] = 0x001F;
    f.memory.config[1] = c.chip1;
    const VerifyResult result = VerifyConfig(f.writer, chip);
    EXPECT_EQ(result.Pass, c.pass) << c.prod << " " << c.chip1;
    if (!c.pass) {
      EXPECT_EQ(result.Address, "Config(1)");
    }
  }
}

}  // namespace
}  // namespace lk::test
