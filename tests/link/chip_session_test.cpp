#include "link/chip_session.h"

#include <gtest/gtest.h>

#include "link/memory_commands.h"

#include "tests/link/fake_wire.h"

namespace lk::test {
namespace {

using Bytes = std::vector<std::uint8_t>;

ChipParams BlockChip() {
  ChipParams c = TestChip(0x7FF);
  c.Name = "QVM50F96B";
  c.Type = 0x12345;  // only the low 16 bits go out
  c.ConfigLength = 3;
  c.EeSize = 0xFF;
  c.HexMcu = 0x3FFF;
  c.VppSel = 0x10203;
  c.VppMode = 0x85;
  c.Erase0 = 0x1111;
  c.Erase1 = 0x2222;
  c.EraseRom = 0x3333;
  c.EraseConfig = 0x4444;
  c.ProgTime = 0x0550;
  c.SpcAdd = 0x1A7;
  c.SpcDat = 0x3A5B;
  c.BlankRom = 0x0FFF;
  c.BlankConfig = 0x1C3;
  return c;
}

TEST(CheckChipTypeTest, ParameterBlockFieldByField) {
  WriterFixture f;
  const ChipParams chip = BlockChip();
  ASSERT_EQ(CheckChipType(f.writer, chip), Fault::None);
  Bytes expected = {
      64,   0xF6, 0x45, 0x23,  // length, code, type (low 16 bits)
      8,    0,    3,    0,    0xFF, 0, 0xFF, 0x3F, 0x03, 0x02,  // pages, config, EE, mask, VppSel
      1,    12,   0,    10,   20,   20,   20,   0,     // VppMode bit 7, fixed bytes, byte 21
      0x11, 0x11, 0x22, 0x22, 0x33, 0x33, 0x44, 0x44, 0x50, 0x05,  // erase times, program time
      0x85, 0xA7, 0x5B, 0x3A,                          // VppMode, SpcAdd low, SpcDat
      'Q',  'V',  'M',  '5',  '0',  'F',  '9',  '6',  'B',  0, 0, 0,  // name, 12 bytes
      0x00, 0x10, 0xC3, 0,    0,    0,    0,    0,    0,    0, 0, 0, 0, 0, 0};  // BlankRom+1, ..
  expected.push_back(proto::Checksum(expected.data(), 63));
  EXPECT_EQ(f.wire->Packet(0), expected);
}

TEST(CheckChipTypeTest, PagesNameAndVppBit) {
  struct Case {
    int romSize;
    int pages;
    std::string name;
    std::string sent;  // bytes 36..47
    std::uint8_t vppMode;
    int vppBit;
  };
  const std::string z(1, '\0');
  const Case cases[] = {
      {0x3FF, 4, "QVM50F96B", "QVM50F96B" + z + z + z, 0x05, 0},
      {0x7FF, 8, "ABCDEFGHIJKL", "ABCDEFGHIJKL", 0x80, 1},
      {0xFFF, 16, "ABCDEFGHIJKLMN", "ABCDEFGHIJKL", 0x7F, 0},
      {0x1FF, 2, "A", "A" + std::string(11, '\0'), 0xFF, 1},
  };
  for (const Case& c : cases) {
    WriterFixture f;
    ChipParams chip = TestChip(c.romSize);
    chip.Name = c.name;
    chip.VppMode = c.vppMode;
    ASSERT_EQ(CheckChipType(f.writer, chip, Target::Store), Fault::None);
    const Report& r = f.wire->sent.at(0);
    EXPECT_EQ(r[2], 0xFE);
    EXPECT_EQ(r[1 + 4] | (r[1 + 5] << 8), c.pages) << c.romSize;
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(&r[1 + 36]), 12), c.sent) << c.name;
    EXPECT_EQ(r[1 + 14], c.vppBit);
  }
}

TEST(CheckChipTypeTest, ByteTwentyOneKeepsWhatTheLastCommandLeft) {
  WriterFixture f;
  ChipParams chip = TestChip(23);
  chip.RomWords[8] = 0x1ABC;  // program packet byte 21 = word 8 low byte (gen 2)
  // Program the first packet, then send the block: byte 21 still holds 0xBC.
  ASSERT_EQ(ProgramRom(f.writer, chip, nullptr), Fault::None);
  ASSERT_EQ(CheckChipType(f.writer, chip), Fault::None);
  EXPECT_EQ(f.wire->sent.back()[1 + 21], 0xBC);
  f.writer.OutputReportData[21] = 0x5D;
  ASSERT_EQ(CheckChipType(f.writer, chip), Fault::None);
  EXPECT_EQ(f.wire->sent.back()[1 + 21], 0x5D);
  EXPECT_EQ(f.wire->sent.back()[1 + 63], proto::Checksum(&f.wire->sent.back()[1], 63));
}

TEST(CheckChipTypeTest, AnyBadAnswerIsARefusedChip) {
  Report corrupt = Checked(0xE1);
  corrupt[3] ^= 0x10;
  const std::optional<Report> answers[] = {Checked(0xE2), corrupt, std::nullopt};
  for (const auto& answer : answers) {
    WriterFixture f;
    f.wire->script.push_back(answer);
    EXPECT_EQ(CheckChipType(f.writer, TestChip()), Fault::ChipType);
    EXPECT_TRUE(f.host.messages.empty());  // the operation shows the message
  }
}

TEST(PrepareChipTest, TypeWordAndInfoTexts) {
  struct Case {
    std::string prod;
    int typeIndex;
    std::uint32_t version;
    bool match;
  };
  const Case cases[] = {
      {"1234", 13, 3, true}, {"1234", 13, 3, false}, {"16E1", 3, 3, true},
      {"16E1", 3, 2, false}, {"1234", 13, 2, true},
  };
  for (const Case& c : cases) {
    WriterFixture f(c.version);
    ChipParams chip = TestChip();
    chip.Prod = c.prod;
    chip.Type = 0x7A5C3;  // compared as 0xA5C3
    f.memory.config.assign(16, 0);
    f.memory.config[c.typeIndex] = c.match ? 0xA5C3 : 0xA5C4;
    f.memory.config[c.typeIndex == 13 ? 3 : 13] = c.match ? 0xA5C4 : 0xA5C3;  // decoy
    f.memory.config[8] = 0x0107;
    f.memory.config[9] = 0x02F0;
    f.memory.config[11] = 0x000C;
    f.memory.config[12] = 0x0A55;
    const auto info = PrepareChip(f.writer, chip);
    EXPECT_EQ(info.Why(), c.match ? Fault::None : Fault::ChipMismatch) << c.prod;
    const std::vector<std::uint8_t> read =
        c.version < 3 ? Bytes{3, 0xF5, 0xF8} : Bytes{6, 0xF5, 0, 0, 32, 0x1B};
    EXPECT_EQ(f.wire->Packet(0), read);
    // First generation: back to idle afterwards, whatever the outcome.
    EXPECT_EQ(f.wire->sent.size(), c.version < 3 ? 2u : 1u);
    if (c.match) {
      EXPECT_EQ(info->Info1, "F007");
      EXPECT_EQ(info->Info2, "550C");
    }
  }
}

TEST(PrepareChipTest, Code32A3ReadsNothingAndASilentWriterFails) {
  WriterFixture f(3);
  ChipParams chip = TestChip();
  chip.Prod = "32A3";
  const auto info = PrepareChip(f.writer, chip);
  ASSERT_TRUE(info);
  EXPECT_TRUE(f.wire->sent.empty());
  EXPECT_EQ(info->Info2, "");

  WriterFixture g(3);
  g.wire->script.push_back(std::nullopt);
  EXPECT_EQ(PrepareChip(g.writer, TestChip()).Why(), Fault::Timeout);
}

}  // namespace
}  // namespace lk::test
