#include "link/eedata_commands.h"

#include <gtest/gtest.h>

#include "tests/link/fake_wire.h"

namespace lk::test {
namespace {

using Bytes = std::vector<std::uint8_t>;

ChipParams EeChip(int eeSize) {
  ChipParams c = TestChip();
  c.EeSize = static_cast<std::int16_t>(eeSize);
  c.EeBytes.resize(std::max(eeSize + 1, 0));
  for (int i = 0; i <= eeSize; ++i) c.EeBytes[i] = static_cast<std::uint8_t>(i * 3);
  return c;
}

TEST(EedataCommandsTest, ProgramPacketsCarryAddressCountAndData) {
  WriterFixture f;
  ASSERT_EQ(ProgramEedata(f.writer, EeChip(99), Target::Store), Fault::None);  // 48 + 48 + 4
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

TEST(EedataCommandsTest, ReadCoversTheWholeEedataAndVerifyNamesTheByte) {
  WriterFixture f;
  const ChipParams chip = EeChip(0xFF);
  f.memory.ee = chip.EeBytes;
  const auto bytes = ReadEedata(f.writer, chip);
  ASSERT_TRUE(bytes);
  EXPECT_EQ(*bytes, chip.EeBytes);
  ASSERT_EQ(f.wire->sent.size(), 4u);  // 0..255 in four packets of 64
  EXPECT_EQ(f.wire->Packet(3), (Bytes{5, 0xB1, 0xC0, 0, 0x76}));

  f.memory.ee[0x45] = 0x01;
  const VerifyResult result = VerifyEedata(f.writer, chip, Target::Store);
  EXPECT_EQ(f.wire->Codes().back(), 0xC1);
  EXPECT_FALSE(result.Pass);
  EXPECT_EQ(result.Address, "eedata(69)");
  EXPECT_EQ(result.FileData, "00CF");
  EXPECT_EQ(result.ChipData, "0001");

  // Reads go out while the address is below EeSize: for 64 one packet, and byte 64 is 0.
  WriterFixture g;
  g.memory.ee.assign(65, 0x5A);
  const auto edge = ReadEedata(g.writer, EeChip(64));
  ASSERT_TRUE(edge);
  EXPECT_EQ(g.wire->sent.size(), 1u);
  ASSERT_EQ(edge->size(), 65u);
  EXPECT_EQ((*edge)[63], 0x5A);
  EXPECT_EQ((*edge)[64], 0);
}

TEST(EedataCommandsTest, PrepareLooksAtTheAnswerCodeOnly) {
  Report badSum = Checked(0xE1);
  badSum[3] ^= 0xFF;
  const std::pair<std::optional<Report>, Fault> answers[] = {
      {badSum, Fault::None}, {Checked(0xE2), Fault::Refused}, {std::nullopt, Fault::Timeout}};
  for (const auto& [answer, fault] : answers) {
    WriterFixture f;
    f.wire->script = {answer};
    EXPECT_EQ(PrepareEedata(f.writer), fault);
    EXPECT_EQ(f.wire->Packet(0), (Bytes{3, 0xB2, 0xB5}));
  }
}

}  // namespace
}  // namespace lk::test
