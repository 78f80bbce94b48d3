#include "rolling/roll_settings.h"

#include <gtest/gtest.h>

#include "core/profile.h"
#include "tests/support/recording_host.h"
#include "tests/support/temp_dir.h"

namespace lk {
namespace {

using Words = std::vector<std::int32_t>;

class RollSettingsTest : public ::testing::Test {
 protected:
  std::filesystem::path File(const std::string& body) {
    return dir.Write("board.ini", "[Rolling Code]\r\n" + body);
  }
  std::string Value(const std::string& key) {
    return GetValue(host, dir / "board.ini", "Rolling Code", key);
  }
  test::TempDir dir;
  test::RecordingHost host;
};

TEST(RollSettingsPath, ReplacesTheLastExtension) {
  EXPECT_EQ(RollSettingsPath("/p/board.lkx"), "/p/board.ini");
  EXPECT_EQ(RollSettingsPath("/p/a.b.lkx"), "/p/a.b.ini");
  EXPECT_EQ(RollSettingsPath("/p.d/board"), "/p.d/board.ini");
}

// Lists are read from their end: item i from the right is byte i.
TEST_F(RollSettingsTest, ListsOfEveryLengthAndOddNumbers) {
  const struct {
    const char* body;
    Words addresses, counts, steps;
  } cases[] = {
      {"Address=0010 0020 7ff\r\nWorld_Lenth=3\r\nCount=1 2 3\r\nStep=4 5 6\r\nVersion=1.0\r\n",
       {0x7FF, 0x20, 0x10},
       {3, 2, 1},
       {6, 5, 4}},
      // fewer items than the length: the missing high bytes stay 0
      {"Address=12\r\nWorld_Lenth=4\r\nCount=7 8\r\nVersion=1\r\n",
       {0x12, 0, 0, 0},
       {8, 7, 0, 0},
       {0, 0, 0, 0}},
      // more items than the length: only the last ones count
      {"Address=1 2 3\r\nWorld_Lenth=2\r\nCount=1 2 3\r\nVersion=1\r\n", {3, 2}, {3, 2}, {0, 0}},
      // empty items, garbage and numeric prefixes read as the host's Val does
      {"Address=xx  1fz\r\nWorld_Lenth=3\r\nCount=12abc  -3\r\nVersion=1\r\n",
       {0x1F, 0, 0},
       {-3, 0, 12},
       {0, 0, 0}},
      {"Address=FFFFFFFF\r\nWorld_Lenth=1.5\r\nCount=2.5 1e2\r\nVersion=1\r\n",
       {-1, 0},
       {100, 2},
       {0, 0}},
      // old layout: one start address, "0x"/"0X" optional, consecutive words
      {"Address=0x10\r\nWorld_Lenth=4\r\nCount=1 2 3 4\r\n",
       {0x10, 0x11, 0x12, 0x13},
       {4, 3, 2, 1},
       {0, 0, 0, 0}},
      {"Address=0X1f\r\nWorld_Lenth=2\r\n", {0x1F, 0x20}, {0, 0}, {0, 0}},
      {"Address=7FE\r\nWorld_Lenth=2\r\n", {0x7FE, 0x7FF}, {0, 0}, {0, 0}},
      // absurd lengths never allocate without bound
      {"Address=1 2\r\nWorld_Lenth=-5\r\nCount=1 2\r\nVersion=1\r\n", {}, {}, {}},
  };
  for (const auto& c : cases) {
    const RollSettings s = ReadRollSettings(host, File(c.body));
    EXPECT_EQ(s.Addresses, c.addresses) << c.body;
    EXPECT_EQ(s.Counts, c.counts) << c.body;
    EXPECT_EQ(s.Steps, c.steps) << c.body;
    EXPECT_EQ(s.WordLength, static_cast<std::int32_t>(c.addresses.size())) << c.body;
  }
  const RollSettings huge =
      ReadRollSettings(host, File("Address=0\r\nWorld_Lenth=99999999999\r\n"));
  EXPECT_EQ(huge.WordLength, kMaxRollWordLength);
  EXPECT_EQ(huge.Addresses.size(), static_cast<std::size_t>(kMaxRollWordLength));
  EXPECT_TRUE(host.messages.empty());
}

TEST_F(RollSettingsTest, OnlyExactTextsSwitchOn) {
  const struct {
    const char *value, *mode;
    bool enabled, mode2262;
  } cases[] = {{"True", "1", true, true},
               {"true", "01", false, false},
               {"TRUE", "1.0", false, false},
               {"", "", false, false}};
  for (const auto& c : cases) {
    const auto p = File(std::string("Value=") + c.value + "\r\n2262mode=" + c.mode + "\r\n");
    const RollSettings s = ReadRollSettings(host, p);
    EXPECT_EQ(s.Enabled, c.enabled) << c.value;
    EXPECT_EQ(s.Mode2262, c.mode2262) << c.mode;
  }
}

TEST_F(RollSettingsTest, MissingFileIsAMessagePerKeyAndDefaults) {
  const RollSettings s = ReadRollSettings(host, dir / "none.ini");
  EXPECT_FALSE(s.Enabled);
  EXPECT_TRUE(s.Counts.empty());
  EXPECT_EQ(host.messages.size(), 7u);
}

// The dialog shows the current layout as stored and an old file in today's form; its
// Enable is looser than the reader's on purpose; "Mode" is written back at once.
TEST_F(RollSettingsTest, DialogInput) {
  const struct {
    const char *body, *address, *length, *count, *step;
    bool enable, mode2262;
  } cases[] = {
      {"Address=0010 0020\r\nWorld_Lenth=2\r\nCount=1  2\r\nStep=3 4\r\nValue=True\r\n"
       "2262mode=1\r\nMode=True\r\nVersion=1.0\r\n",
       "0010 0020", "2", "1  2", "3 4", true, true},
      {"Address=0x10\r\nWorld_Lenth=4\r\nCount=1 2 3 4\r\nStep=1\r\nValue=False\r\n",
       "0013 0012 0011 0010", "4", "1 2 3 4", "0 0 0 1", false, false},
      {"Value=true\r\n", "", "", "", "", true, false},
      {"Value=\r\n", "", "", "", "", true, false},
      {"Value=0\r\n", "", "", "", "", true, false},
      {"Value=FALSE\r\n", "", "", "", "", true, false},
  };
  for (const auto& c : cases) {
    File(c.body);
    const RollDialogInput in = LoadRollDialog(host, dir / "board.ini");
    EXPECT_EQ(in.Address, c.address) << c.body;
    EXPECT_EQ(in.Length, c.length) << c.body;
    EXPECT_EQ(in.Count, c.count) << c.body;
    EXPECT_EQ(in.Step, c.step) << c.body;
    EXPECT_EQ(in.Enable, c.enable) << c.body;
    EXPECT_EQ(in.Mode2262, c.mode2262) << c.body;
    EXPECT_EQ(Value("Mode"), "False") << c.body;
  }
  // No file: empty dialog, nothing shown, nothing created.
  const RollDialogInput none = LoadRollDialog(host, dir / "none.ini");
  EXPECT_TRUE(none.Address.empty());
  EXPECT_FALSE(std::filesystem::exists(dir / "none.ini"));
  EXPECT_TRUE(host.messages.empty());
}

struct OkCase {
  const char *address, *length, *count;
  bool mode2262;
  RollOkResult result;
  const char* message;  // the one message shown, or nullptr
};

TEST_F(RollSettingsTest, OkChecksInOrder) {
  const OkCase cases[] = {
      {"1 2 3", "4", "1 2 3 4", false, RollOkResult::Refused, "地址字节数与长度不匹配！"},
      {"7FF 1 2 3", "4", "1 2 3 4", false, RollOkResult::Saved, nullptr},
      {"800 1 2 3", "4", "1 2 3 4", false, RollOkResult::Refused, "地址溢出，地址必须小于3FFH！"},
      {"1000000000007 1 2 3", "4", "1 2 3 4", false, RollOkResult::Refused,
       "地址溢出，地址必须小于3FFH！"},
      {"0 1 2 3", "4", "1 2 3", false, RollOkResult::Refused, "数据字节数与长度不匹配！"},
      {"0 1 2 3", "4", "256 2 3 4", false, RollOkResult::Refused,
       "数据字节溢出，数据必须小于255！"},
      // 255 passes the range check and is then refused by the code rules
      {"0 1 2 3", "4", "255 2 3 4", false, RollOkResult::Refused, "所有数据不能是 0x00 或 0xFF"},
      {"0 1 2", "3", "1 2 3", false, RollOkResult::SilentlyIgnored, nullptr},
      {"0 1 2 3", "4", "1 3 5 2", true, RollOkResult::Refused, "数据 \"2\" 不能用于2262模式！"},
      {"0 1 2 3", "4", "6 3 5 002", true, RollOkResult::Refused,  // byte 0 first, as typed
       "数据 \"002\" 不能用于2262模式！"},
      {"0 1 2 3", "4", "1 3 5 2", false, RollOkResult::Saved, nullptr},
      {"0 1 2 3", "4", "01 3 5 7", true, RollOkResult::Saved, nullptr},
  };
  for (const auto& c : cases) {
    test::RecordingHost h;
    const RollDialogInput in{true, c.address, c.length, c.count, "1 1 1 1", c.mode2262};
    const auto file = dir / "ok.ini";
    std::filesystem::remove(file);
    EXPECT_EQ(ApplyRollDialog(h, in, file), c.result) << c.address << " / " << c.count;
    if (c.message) {
      ASSERT_EQ(h.messages.size(), 1u) << c.count;
      EXPECT_EQ(h.messages[0].text, c.message);
      EXPECT_EQ(h.messages[0].icon, Icon::Information);
      EXPECT_EQ(h.messages[0].caption, "Error");  // the code rules' messages too
    } else {
      EXPECT_TRUE(h.messages.empty()) << c.count;
    }
    // Nothing is written until every check passes.
    EXPECT_EQ(std::filesystem::exists(file), c.result == RollOkResult::Saved) << c.count;
    EXPECT_EQ(h.status[1], c.result == RollOkResult::Saved ? "Rolling Code:Enable" : "");
    if (c.result == RollOkResult::Saved) {
      EXPECT_EQ(GetValue(h, file, "Rolling Code", "2262mode"), c.mode2262 ? "1" : "0");
      EXPECT_EQ(h.log.back(), c.mode2262 ? "Work as 2262 Mode!" : std::string("Step:1 1 1 1"));
    }
  }
}

TEST_F(RollSettingsTest, OkSavesEveryKeyInOrderAndLogs) {
  const RollDialogInput in{true, "0010 0011 0012 0013", "4", "1 2 3 4", "1 1 1 1", false};
  ASSERT_EQ(ApplyRollDialog(host, in, dir / "board.ini"), RollOkResult::Saved)
      << (host.messages.empty() ? "" : host.messages[0].text);
  // The file did not exist: it is created and holds exactly the keys, in order.
  const ProfileList lines = GetSectionLines(host, dir / "board.ini", "Rolling Code");
  EXPECT_EQ(lines, (ProfileList{"", "Address=0010 0011 0012 0013", "World_Lenth=4", "Mode=False",
                                "Count=1 2 3 4", "Step=1 1 1 1", "Value=True", "2262mode=0",
                                "Version=1.0"}));
  EXPECT_EQ(dir.Read("board.ini").rfind("[Rolling Code]", 0), 0u) << dir.Read("board.ini");
  EXPECT_EQ(host.log,
            (std::vector<std::string>{"Enable Rolling Code!", "Address:0010 0011 0012 0013",
                                      "Count:1 2 3 4", "Step:1 1 1 1"}));
  EXPECT_EQ(host.status[1], "Rolling Code:Enable");
}

TEST_F(RollSettingsTest, DisableKeepsTheStoredCode) {
  File(
      "Address=0010 0011 0012 0013\r\nWorld_Lenth=4\r\nCount=1 2 3 9\r\nValue=True\r\n"
      "Version=1.0\r\n");
  const RollDialogInput in{false, "garbage", "9", "x", "", false};
  ASSERT_EQ(ApplyRollDialog(host, in, dir / "board.ini"), RollOkResult::Saved);
  EXPECT_EQ(Value("Value"), "False");
  EXPECT_EQ(Value("Count"), "1 2 3 9");
  EXPECT_EQ(Value("Address"), "0010 0011 0012 0013");
  EXPECT_EQ(host.log, std::vector<std::string>{"Disable Rolling Code!"});
  EXPECT_EQ(host.status[1], "Rolling Code:Disable");

  // Without a settings file nothing is created.
  EXPECT_EQ(ApplyRollDialog(host, in, dir / "other.ini"), RollOkResult::Saved);
  EXPECT_FALSE(std::filesystem::exists(dir / "other.ini"));
}

TEST_F(RollSettingsTest, NoProjectValidatesAndLogsWithoutWriting) {
  const RollDialogInput in{true, "0 1 2 3", "4", "1 2 3 4", "1", false};
  EXPECT_EQ(ApplyRollDialog(host, in, {}), RollOkResult::Saved);
  EXPECT_EQ(host.log.size(), 4u);
  EXPECT_TRUE(host.messages.empty());
}

}  // namespace
}  // namespace lk
