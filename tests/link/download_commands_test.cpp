#include <gtest/gtest.h>

#include "tests/link/fake_wire.h"

namespace lk::test {
namespace {

using Bytes = std::vector<std::uint8_t>;

// A writer store that keeps what the download sends and answers the read-backs.
struct StoreResponder {
  FakeMemory* memory = nullptr;
  Bytes rollStart, rollStep;
  std::uint16_t storedSum = 0;

  std::optional<Report> operator()(const Report& r) {
    const std::uint8_t code = r[2];
    auto word = [&](int i) { return r[1 + i] | (r[2 + i] << 8); };
    switch (code) {
      case proto::kStoreRom:
      case proto::kStoreConfig:
        for (int k = 0; k < r[1 + 4] / 2; ++k)
          (code == proto::kStoreRom ? memory->rom : memory->config).at(word(2) + k) =
              word(5 + 2 * k);
        return Checked(0xE1);
      case proto::kImageSum:
        storedSum = word(2);
        return Checked(0xE1);
      case proto::kRollingStart:
        rollStart.assign(r.begin() + 5, r.begin() + 14);
        return Checked(0xE1);
      case proto::kRollingStep:
        rollStep.assign(r.begin() + 3, r.begin() + 11);
        return Checked(0xE1);
      case proto::kCheckStoredSum:
        return Checked(0xE1, {static_cast<std::uint8_t>(storedSum), static_cast<std::uint8_t>(storedSum >> 8)});
      case proto::kReadRollingStart: {
        Bytes data = {0x69, 0xA5};
        data.insert(data.end(), rollStart.begin(), rollStart.end());
        return Checked(0xE1, data);
      }
      case proto::kReadRollingStep:
        return Checked(0xE1, rollStep);
      default:
        return memory->Answer(r, false);
    }
  }
};

struct DownloadFixture : WriterFixture {
  StoreResponder store;
  Project project;
  DownloadFixture() {
    store.memory = &memory;
    project.Chip = TestChip(0x3F);
    for (int i = 0; i <= 0x3F; ++i) project.Chip.RomWords[i] = 0x100 + i;
    memory.rom.assign(64, 0x3FFF);
    wire->responder = [this](const Report& r) { return store(r); };
  }
};

TEST(DownloadTest, StepsInOrder) {
  DownloadFixture f;
  ASSERT_TRUE(f.writer.DownloadProject(f.project, 0xBEEF, 0));
  const Bytes expected = {0xF6, 0xF7, 0xF7, 0xF7, 0xFA, 0xF8, 0xEA, 0xEB,
                          0xFE, 0xFB, 0xFB, 0xFC, 0xFD, 0xEC, 0xED};
  EXPECT_EQ(f.wire->Codes(), expected);
  EXPECT_EQ(f.wire->Packet(5), (Bytes{5, 0xF8, 0xEF, 0xBE, 0xAA}));
  EXPECT_EQ(f.wire->Packet(12), (Bytes{3, 0xFD, 0x00}));
  EXPECT_EQ(f.wire->Packet(13), (Bytes{3, 0xEC, 0xEF}));
  EXPECT_EQ(f.wire->Packet(14), (Bytes{3, 0xED, 0xF0}));
  // Rolling code off: both records carry zeros.
  EXPECT_EQ(f.wire->Packet(6), (Bytes{14, 0xEA, 0xA5, 0x69, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x06}));
  EXPECT_EQ(f.wire->Packet(7), (Bytes{11, 0xEB, 0, 0, 0, 0, 0, 0, 0, 0, 0xF6}));
}

TEST(DownloadTest, ModelExceptionsAndEedata) {
  struct Case {
    std::string name;
    std::string prod;
    std::uint8_t eeFlag;
    bool othersEedata;
    std::uint8_t secondBlock;
    std::size_t infoPackets;  // 0xC2 + 0xC3
    std::size_t eePackets;    // 0xC0
  };
  const Case cases[] = {
      {"QVM75P82", "7582", 0xA0, true, 0xF6, 0, 0},
      {"QVM10E", "101E", 0xA0, true, 0xFE, 2, 0},
      {"QVM10F", "101F", 0xA2, false, 0xFE, 2, 1},
      {"QVM50T01", "1234", 0xA2, true, 0xFE, 2, 1},
      {"QVM50T01", "1234", 0xA2, false, 0xFE, 0, 0},
  };
  for (const Case& c : cases) {
    DownloadFixture f;
    f.project.Chip.Name = c.name;
    f.project.Chip.Prod = c.prod;
    f.project.Chip.EeFlag = c.eeFlag;
    f.project.Chip.EeSize = 0x1F;
    f.project.Chip.EeBytes.assign(32, 0x11);
    f.memory.ee = f.project.Chip.EeBytes;
    ASSERT_TRUE(f.writer.DownloadProject(f.project, 0x1234, 0x0220, c.othersEedata)) << c.name;
    const Bytes codes = f.wire->Codes();
    EXPECT_EQ(f.wire->CountCode(0xF6), c.secondBlock == 0xF6 ? 2u : 1u) << c.name;
    EXPECT_EQ(f.wire->CountCode(0xFE), c.secondBlock == 0xFE ? 1u : 0u) << c.name;
    EXPECT_EQ(f.wire->CountCode(0xC2) + f.wire->CountCode(0xC3), c.infoPackets) << c.name;
    EXPECT_EQ(f.wire->CountCode(0xC0), c.eePackets) << c.name;
    if (c.infoPackets > 0) {
      const auto at = std::find(codes.begin(), codes.end(), 0xC2) - codes.begin();
      EXPECT_EQ(f.wire->Packet(at),
                (Bytes{6, 0xC2, c.eeFlag, 0x20, 0x02,
                       static_cast<std::uint8_t>(6 + 0xC2 + c.eeFlag + 0x22)}));
    }
  }
}

TEST(DownloadTest, RollingRecordsAndReadBack) {
  TempDir dir;
  DownloadFixture f;
  f.project.ProjectPath = RollingProject(dir, "World_Lenth=3\r\nAddress=3E 2 1F0\r\n"
                                              "Count=9 8 7\r\nStep=0 0 1\r\n2262mode=1\r\n")
                               .ProjectPath;
  f.project.RollingEnabled = true;
  ASSERT_TRUE(f.writer.DownloadProject(f.project, 0, 0));
  const Bytes start = f.wire->Packet(6);
  EXPECT_EQ(Bytes(start.begin() + 4, start.end() - 1),
            (Bytes{0xF0, 0x01, 0x02, 0x00, 0x3E, 0x00, 0, 0, 0x33}));
  const Bytes step = f.wire->Packet(7);
  EXPECT_EQ(Bytes(step.begin() + 2, step.end() - 1), (Bytes{7, 8, 9, 0, 1, 0, 0, 0}));
  // The store code gets the image as it is: no rolling code placed.
  const Bytes first = f.wire->Packet(1);
  EXPECT_EQ(first[5 + 4] | (first[6 + 4] << 8), 0x102);
}

TEST(DownloadTest, AnyBadStepEndsTheDownload) {
  // One answer spoiled: the stored sum, the rolling marks, the store's content (not kept).
  const std::pair<std::uint8_t, Report> spoiled[] = {
      {proto::kCheckStoredSum, Checked(0xE1, {0, 0})},
      {proto::kReadRollingStart, Checked(0xE1, {0xA5, 0x69, 0, 0, 0, 0, 0, 0, 0, 0, 0})},
      {proto::kStoreRom, Checked(0xE1)},
  };
  for (const auto& [code, answer] : spoiled) {
    DownloadFixture f;
    f.wire->responder = [&f, code = code, answer = answer](const Report& r) {
      return r[2] == code ? std::optional<Report>(answer) : f.store(r);
    };
    EXPECT_FALSE(f.writer.DownloadProject(f.project, 0x4321, 0)) << int(code);
  }
  DownloadFixture f;
  f.wire->unplugAfterSends = 7;
  EXPECT_FALSE(f.writer.DownloadProject(f.project, 0x4321, 0));
}

}  // namespace
}  // namespace lk::test
