#include <gtest/gtest.h>

#include "tests/link/fake_wire.h"

namespace lk::test {
namespace {

using Bytes = std::vector<std::uint8_t>;

Project EeProject(int eeSize) {
  Project p;
  p.Chip = TestChip();
  p.Chip.EeSize = static_cast<std::int16_t>(eeSize);
  p.Chip.EeBytes.resize(std::max(eeSize + 1, 0));
  for (int i = 0; i <= eeSize; ++i) p.Chip.EeBytes[i] = static_cast<std::uint8_t>(i * 3);
  return p;
}

TEST(EedataTest, ProgramPacketsCarryAddressCountAndData) {
  WriterFixture f;
  const Project p = EeProject(99);  // 100 bytes: 48 + 48 + 4
  ASSERT_TRUE(f.writer.ProgramEedata(p, 0xC0));
  ASSERT_EQ(f.wire->sent.size(), 3u);
  const int counts[] = {48, 48, 4};
  for (int k = 0; k < 3; ++k) {
    const Bytes b = f.wire->Packet(k);
    ASSERT_EQ(b.size(), static_cast<std::size_t>(6 + counts[k])) << k;
    EXPECT_EQ(b[1], 0xC0);
    EXPECT_EQ(b[2] | (b[3] << 8), 48 * k);
    EXPECT_EQ(b[4], counts[k]);
    EXPECT_EQ(b[5], static_cast<std::uint8_t>(48 * k * 3));
    EXPECT_EQ(b.back(), proto::Checksum(b.data(), static_cast<int>(b.size()) - 1));
  }
}

TEST(EedataTest, ReadCoversTheWholeEedataIn64BytePackets) {
  WriterFixture f;
  Project p = EeProject(0xFF);
  f.memory.ee = p.Chip.EeBytes;
  const auto bytes = f.writer.ReadEedata(p.Chip, 0xB1);
  ASSERT_TRUE(bytes);
  EXPECT_EQ(*bytes, p.Chip.EeBytes);
  ASSERT_EQ(f.wire->sent.size(), 4u);
  EXPECT_EQ(f.wire->Packet(3), (Bytes{5, 0xB1, 0xC0, 0, 0x76}));
}

TEST(EedataTest, VerifyNamesTheByte) {
  WriterFixture f;
  Project p = EeProject(0x7F);
  f.memory.ee = p.Chip.EeBytes;
  f.memory.ee[0x45] = 0x01;
  VerifyResult result;
  f.writer.VerifyEedata(p, result, 0xC1);
  EXPECT_FALSE(result.Pass);
  EXPECT_EQ(result.Address, "eedata(69)");
  EXPECT_EQ(result.FileData, "00CF");
  EXPECT_EQ(result.ChipData, "0001");
}

TEST(EedataTest, WindowOperations) {
  {
    WriterFixture f;
    Project p = EeProject(0x3F);
    f.memory.config[13] = p.Chip.Type & 0xFFFF;
    f.memory.ee = p.Chip.EeBytes;  // what the chip keeps after the write
    EXPECT_TRUE(f.writer.WriteEedataToChip(p));
    EXPECT_EQ(f.host.log, (std::vector<std::string>{"Write Eedata OK!"}));
    EXPECT_EQ(f.wire->Codes().front(), 0xF6);
    EXPECT_EQ(f.wire->CountCode(0xB2), 1u);
    EXPECT_EQ(f.wire->CountCode(0xB0), 2u);
    EXPECT_EQ(f.wire->CountCode(0xE5), 1u);
    EXPECT_FALSE(f.writer.IsOpen());
  }
  {
    // The chip keeps something else: the verify fails the write.
    WriterFixture f;
    Project p = EeProject(0x3F);
    f.memory.config[13] = p.Chip.Type & 0xFFFF;
    EXPECT_FALSE(f.writer.WriteEedataToChip(p));
    EXPECT_EQ(f.host.log, (std::vector<std::string>{"Write Eedata Error!"}));
    EXPECT_EQ(f.wire->CountCode(0xE6), 1u);
  }
  {
    WriterFixture f;
    Project p = EeProject(0x3F);
    f.memory.config[13] = p.Chip.Type & 0xFFFF;
    f.memory.ee.assign(64, 0x5A);
    EXPECT_TRUE(f.writer.ReadEedataFromChip(p));
    EXPECT_EQ(p.Chip.EeBytes, Bytes(64, 0x5A));
    EXPECT_EQ(f.host.log, (std::vector<std::string>{"Read Eedata OK!"}));
  }
  {
    // No EEDATA: the message box, and no EEDATA command goes out.
    WriterFixture f;
    Project p = EeProject(0);
    f.memory.config[13] = p.Chip.Type & 0xFFFF;
    EXPECT_FALSE(f.writer.ReadEedataFromChip(p));
    EXPECT_EQ(f.host.MessageTexts(), (std::vector<std::string>{"该芯片没有内部Eedata！"}));
    EXPECT_EQ(f.wire->CountCode(0xB1) + f.wire->CountCode(0xB2), 0u);
    EXPECT_EQ(f.wire->CountCode(0xE6), 1u);
  }
  {
    // Wrong chip in the socket.
    WriterFixture f;
    Project p = EeProject(0x3F);
    EXPECT_FALSE(f.writer.WriteEedataToChip(p));
    EXPECT_EQ(f.host.log, (std::vector<std::string>{"MCU Type Error!"}));
  }
  {
    WriterFixture f;
    f.wire->present = false;
    Project p = EeProject(0x3F);
    EXPECT_FALSE(f.writer.ReadEedataFromChip(p));
    EXPECT_EQ(f.host.log, (std::vector<std::string>{"The Writer for QVM50T01 not Found!"}));
  }
}

}  // namespace
}  // namespace lk::test
