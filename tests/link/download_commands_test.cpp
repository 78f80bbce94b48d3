#include "link/download_commands.h"

#include <gtest/gtest.h>

#include <functional>

#include "tests/link/fake_wire.h"

namespace lk::test {
namespace {

using Bytes = std::vector<std::uint8_t>;

TEST(DownloadCommandsTest, RollingRecordsAsSentAndReadBack) {
  const RollSettings roll = Rolling({0x1F0, 2, 0x3E}, {7, 8, 9}, {1, 0, 0}, true);
  const RollRecord record = MakeRollRecord(&roll);
  WriterFixture f;
  // The store answers what it keeps: the marks, then the record bytes.
  f.wire->script = {Checked(0xE1), Checked(0xE1),
                    Checked(0xE1, {0x69, 0xA5, 0xF0, 0x01, 0x02, 0x00, 0x3E, 0x00, 0, 0, 0x33}),
                    Checked(0xE1, {7, 8, 9, 0, 1, 0, 0, 0})};
  ASSERT_EQ(SendRollingStart(f.writer, record), Fault::None);
  ASSERT_EQ(SendRollingStep(f.writer, record), Fault::None);
  EXPECT_EQ(f.wire->Packet(0), (Bytes{14, 0xEA, 0xA5, 0x69, 0xF0, 0x01, 0x02, 0x00, 0x3E, 0x00,
                                      0, 0, 0x33, 0x6A}));
  EXPECT_EQ(f.wire->Packet(1), (Bytes{11, 0xEB, 7, 8, 9, 0, 1, 0, 0, 0, 0x0F}));
  EXPECT_EQ(ReadRollingStart(f.writer, record), Fault::None);
  EXPECT_EQ(ReadRollingStep(f.writer, record), Fault::None);
  EXPECT_EQ(f.wire->Packet(2), (Bytes{3, 0xEC, 0xEF}));
  EXPECT_EQ(f.wire->Packet(3), (Bytes{3, 0xED, 0xF0}));

  // Rolling code off: both records are zeros.
  const RollRecord off = MakeRollRecord(nullptr);
  WriterFixture g;
  ASSERT_EQ(SendRollingStart(g.writer, off), Fault::None);
  EXPECT_EQ(g.wire->Packet(0), (Bytes{14, 0xEA, 0xA5, 0x69, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x06}));
}

TEST(DownloadCommandsTest, ReadBacksThatDifferFailTheStep) {
  const RollRecord record = MakeRollRecord(nullptr);
  struct Case {
    const char* what;
    Report answer;
    std::function<Fault(Writer&)> step;
  };
  const Case cases[] = {
      {"stored checksum differs", Checked(0xE1, {0, 0}),
       [](Writer& w) { return CheckStoredSum(w, 0x4321); }},
      {"marks swapped", Checked(0xE1, {0xA5, 0x69, 0, 0, 0, 0, 0, 0, 0, 0, 0}),
       [&record](Writer& w) { return ReadRollingStart(w, record); }},
      {"step differs", Checked(0xE1, {0, 0, 0, 0, 0, 0, 0, 1}),
       [&record](Writer& w) { return ReadRollingStep(w, record); }},
  };
  for (const Case& c : cases) {
    WriterFixture f;
    f.wire->script = {c.answer};
    EXPECT_EQ(c.step(f.writer), Fault::StoreMismatch) << c.what;
  }
  WriterFixture f;
  EXPECT_EQ(SendImageSum(f.writer, 0xBEEF), Fault::None);
  EXPECT_EQ(CheckStoredSum(f.writer, 0xBEEF), Fault::StoreMismatch);  // answered without a sum
  EXPECT_EQ(f.wire->Packet(0), (Bytes{5, 0xF8, 0xEF, 0xBE, 0xAA}));
  EXPECT_EQ(f.wire->Packet(1), (Bytes{3, 0xFD, 0x00}));
}

}  // namespace
}  // namespace lk::test
