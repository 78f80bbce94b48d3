#include "ops/eedata_window.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>

#include "core/image.h"
#include "link/protocol.h"
#include "tests/ops/ops_rig.h"

namespace lk::test {
namespace {

using Bytes = std::vector<std::uint8_t>;

// An EEDATA HEX record at EEDATA word address `address` carrying `bytes` (each the low
// byte of a 16-bit word, high byte 00). The record checksum is not looked at.
std::string Record(int address, const Bytes& bytes) {
  char head[16];
  std::snprintf(head, sizeof head, ":%02X%04X00", static_cast<unsigned>(2 * bytes.size()),
                static_cast<unsigned>(2 * address));
  std::string line = head;
  for (std::uint8_t b : bytes) {
    char word[8];
    std::snprintf(word, sizeof word, "%02X00", b);
    line += word;
  }
  return line + "FF\r\n";
}

TEST(EedataWindowTest, HexFileLoad) {
  OpsRig rig("QVM50F77B");  // EEDATA 0..0x3F
  ChipParams& chip = rig.project.Chip;
  const Bytes blank = chip.EeBytes;
  struct Case {
    const char* what;
    std::string text;
    ops::EedataLoad result;
    std::function<void(const Bytes&)> check;
  };
  const Case cases[] = {
      {"two records, others skipped",
       ":020000040000FA\r\n" + Record(0x2100, {0x11, 0x22}) + Record(0x2110, {0x33}) +
           ":00000001FF\r\n",
       ops::EedataLoad::Loaded,
       [](const Bytes& b) {
         EXPECT_EQ(b[0], 0x11);
         EXPECT_EQ(b[1], 0x22);
         EXPECT_EQ(b[0x10], 0x33);
       }},
      {"a record past EeSize ends the load, keeping the bytes before it",
       Record(0x2100, {0x44}) + Record(0x2140, {0x55}) + Record(0x2101, {0x66}),
       ops::EedataLoad::Loaded,
       [](const Bytes& b) {
         EXPECT_EQ(b[0], 0x44);
         EXPECT_EQ(b[1], 0xFF);
       }},
      {"below the window: refused as a whole", Record(0x2100, {0x77}) + Record(0x20FF, {1}),
       ops::EedataLoad::Invalid, [&](const Bytes& b) { EXPECT_EQ(b, blank); }},
      {"at the odd upper bound", Record(0x43F1, {1}), ops::EedataLoad::Invalid,
       [&](const Bytes& b) { EXPECT_EQ(b, blank); }},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    chip.EeBytes = blank;
    rig.host.messages.clear();
    const std::string path = rig.dir.Write("ee.hex", c.text).string();
    EXPECT_EQ(ops::LoadEedataHex(rig.host, chip, path), c.result);
    c.check(chip.EeBytes);
    EXPECT_EQ(rig.host.MessageTexts(), c.result == ops::EedataLoad::Invalid
                                           ? Lines{"不是有效的EEDATA文件！"}
                                           : Lines{});
  }
  EXPECT_EQ(ops::LoadEedataHex(rig.host, chip, (rig.dir / "none.hex").string()),
            ops::EedataLoad::NotFound);
  EXPECT_EQ(rig.host.messages.back().text, "未找到文件路径！");
}

TEST(EedataWindowTest, TakingTheTextAndTheFlag) {
  OpsRig rig("QVM50F77B");
  ChipParams& chip = rig.project.Chip;
  for (std::size_t i = 0; i < chip.EeBytes.size(); ++i) chip.EeBytes[i] = static_cast<std::uint8_t>(i);
  std::string text = EedataHexText(chip);
  text.replace(6, 2, "A5");        // byte 0
  text.replace(text.find("\r\n") + 2 + 6 + 3, 2, "5A");  // byte 0x11
  const Bytes before = chip.EeBytes;

  ops::TakeEedataText(chip, text, false);  // Check1 unticked: only the flag, bytes stay
  EXPECT_EQ(chip.EeFlag, kEeFlagAbsent);
  EXPECT_EQ(chip.EeBytes, before);
  ops::TakeEedataText(chip, text, true);
  EXPECT_EQ(chip.EeFlag, kEeFlagPresent);
  EXPECT_EQ(chip.EeBytes[0], 0xA5);
  EXPECT_EQ(chip.EeBytes[0x11], 0x5A);
  EXPECT_EQ(chip.EeBytes[0x3F], 0x3F);

  OpsRig none("QVM75P89");  // no EEDATA: nothing changes
  none.project.Chip.EeFlag = kEeFlagPresent;
  ops::TakeEedataText(none.project.Chip, text, false);
  EXPECT_EQ(none.project.Chip.EeFlag, kEeFlagPresent);

  EXPECT_EQ(ops::EedataCaretText(0, 0), "Address:0000H");
  EXPECT_EQ(ops::EedataCaretText(1, 9), "Address:0011H");
  EXPECT_EQ(ops::EedataCaretText(3, 60), "Address:003FH");
}

TEST(EedataWindowTest, TheWatchWritesTheChipOncePerChangeOfTheFile) {
  OpsRig rig("QVM50F77B");
  rig.Connect();
  rig.FillImage();
  Lines status;
  const ops::EedataReport report = [&status](const std::string& s) { status.push_back(s); };
  ops::EedataWatch watch;
  EXPECT_FALSE(ops::StartEedataWatch(rig.host, watch, (rig.dir / "data.bin").string()));
  EXPECT_EQ(rig.host.MessageTexts(), (Lines{"未找到数据EEDATA文件！"}));

  const auto file = rig.dir.Write("data.bin", "1");
  ASSERT_TRUE(ops::StartEedataWatch(rig.host, watch, file.string()));
  auto writes = [&rig] {
    const auto codes = rig.Codes();
    return std::count(codes.begin(), codes.end(), proto::kEePrepare);
  };
  EXPECT_EQ(ops::EedataWatchTick(rig.st(), watch, report), ops::WatchStep::Wrote);  // first tick
  EXPECT_EQ(ops::EedataWatchTick(rig.st(), watch, report), ops::WatchStep::Idle);
  EXPECT_EQ(writes(), 1);
  EXPECT_EQ(status, (Lines{"烧录EEDATA中...", "Write Eedata OK!", "烧录完成"}));
  std::filesystem::last_write_time(file, std::filesystem::last_write_time(file) + std::chrono::seconds(5));
  EXPECT_EQ(ops::EedataWatchTick(rig.st(), watch, report), ops::WatchStep::Wrote);
  EXPECT_EQ(writes(), 2);

  std::filesystem::remove(file);
  EXPECT_EQ(ops::EedataWatchTick(rig.st(), watch, report), ops::WatchStep::Stopped);
  EXPECT_FALSE(watch.On);
  EXPECT_EQ(rig.host.messages.back().text, "数据EEDATA文件异常！");
}

}  // namespace
}  // namespace lk::test
