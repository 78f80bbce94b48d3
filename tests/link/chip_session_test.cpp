#include <gtest/gtest.h>

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
  ASSERT_TRUE(f.writer.CheckChipType(chip, 0xF6));
  const Report& r = f.wire->sent.at(0);
  auto at = [&](int i) { return r[1 + i]; };  // packet byte i
  auto word = [&](int i) { return at(i) | (at(i + 1) << 8); };
  EXPECT_EQ(at(0), 64);
  EXPECT_EQ(at(1), 0xF6);
  EXPECT_EQ(word(2), 0x2345);
  EXPECT_EQ(word(4), 8);  // 0x800 words = 8 pages
  EXPECT_EQ(word(6), 3);
  EXPECT_EQ(word(8), 0xFF);
  EXPECT_EQ(word(10), 0x3FFF);
  EXPECT_EQ(word(12), 0x0203);
  EXPECT_EQ(at(14), 1);  // bit 7 of VppMode
  EXPECT_EQ((Bytes{at(15), at(16), at(17), at(18), at(19), at(20)}), (Bytes{12, 0, 10, 20, 20, 20}));
  EXPECT_EQ(word(22), 0x1111);
  EXPECT_EQ(word(24), 0x2222);
  EXPECT_EQ(word(26), 0x3333);
  EXPECT_EQ(word(28), 0x4444);
  EXPECT_EQ(word(30), 0x0550);
  EXPECT_EQ(at(32), 0x85);
  EXPECT_EQ(at(33), 0xA7);
  EXPECT_EQ(word(34), 0x3A5B);
  EXPECT_EQ(std::string(reinterpret_cast<const char*>(&r[1 + 36]), 9), "QVM50F96B");
  EXPECT_EQ((Bytes{at(45), at(46), at(47)}), (Bytes{0, 0, 0}));
  EXPECT_EQ(word(48), 0x1000);
  EXPECT_EQ(at(50), 0xC3);
  for (int i = 51; i <= 62; ++i) EXPECT_EQ(at(i), 0) << i;
  EXPECT_EQ(at(63), proto::Checksum(&r[1], 63));
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
    ASSERT_TRUE(f.writer.CheckChipType(chip, 0xFE));
    const Report& r = f.wire->sent.at(0);
    EXPECT_EQ(r[2], 0xFE);
    EXPECT_EQ(r[1 + 4] | (r[1 + 5] << 8), c.pages) << c.romSize;
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(&r[1 + 36]), 12), c.sent) << c.name;
    EXPECT_EQ(r[1 + 14], c.vppBit);
  }
}

TEST(CheckChipTypeTest, ByteTwentyOneKeepsWhatTheLastCommandLeft) {
  WriterFixture f;
  Project project;
  project.Chip = TestChip(0x3FF);
  project.Chip.RomWords[8] = 0x1ABC;  // program packet byte 21 = word 8 low byte (gen 2)
  f.memory.rom.assign(0x400, 0x3FFF);
  // Program the first packet, then send the block: byte 21 still holds 0xBC.
  project.Chip.RomSize = 23;
  ASSERT_TRUE(f.writer.ProgramRom(project, 0xF3));
  ASSERT_TRUE(f.writer.CheckChipType(project.Chip, 0xF6));
  EXPECT_EQ(f.wire->sent.back()[1 + 21], 0xBC);
  f.writer.OutputReportData[21] = 0x5D;
  ASSERT_TRUE(f.writer.CheckChipType(project.Chip, 0xF6));
  EXPECT_EQ(f.wire->sent.back()[1 + 21], 0x5D);
  EXPECT_EQ(f.wire->sent.back()[1 + 63], proto::Checksum(&f.wire->sent.back()[1], 63));
}

TEST(CheckChipTypeTest, RefusedOrMissingAnswerShowsTheTypeMessage) {
  Report corrupt = Checked(0xE1);
  corrupt[3] ^= 0x10;
  const std::optional<Report> answers[] = {Checked(0xE2), corrupt, std::nullopt};
  for (const auto& answer : answers) {
    WriterFixture f;
    f.wire->script.push_back(answer);
    EXPECT_FALSE(f.writer.CheckChipType(TestChip(), 0xF6));
    ASSERT_EQ(f.host.messages.size(), 1u);
    EXPECT_EQ(f.host.messages[0].text, "芯片型号错误！");
    EXPECT_EQ(f.host.messages[0].icon, Icon::Information);
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
    EXPECT_EQ(f.writer.PrepareChip(chip), c.match) << c.prod;
    const std::vector<std::uint8_t> read =
        c.version < 3 ? Bytes{3, 0xF5, 0xF8} : Bytes{6, 0xF5, 0, 0, 32, 0x1B};
    EXPECT_EQ(f.wire->Packet(0), read);
    // First generation: back to idle afterwards, whatever the outcome.
    EXPECT_EQ(f.wire->sent.size(), c.version < 3 ? 2u : 1u);
    if (c.match) {
      EXPECT_EQ(chip.ChipInfo1, "F007");
      EXPECT_EQ(chip.ChipInfo2, "550C");
    }
  }
}

TEST(PrepareChipTest, Code32A3ReadsNothing) {
  WriterFixture f(3);
  ChipParams chip = TestChip();
  chip.Prod = "32A3";
  chip.ChipInfo2 = "old";
  EXPECT_TRUE(f.writer.PrepareChip(chip));
  EXPECT_TRUE(f.wire->sent.empty());
  EXPECT_EQ(chip.ChipInfo2, "");
}

TEST(PrepareChipTest, SilentWriterFails) {
  WriterFixture f(3);
  f.wire->script.push_back(std::nullopt);
  ChipParams chip = TestChip();
  EXPECT_FALSE(f.writer.PrepareChip(chip));
}

}  // namespace
}  // namespace lk::test
