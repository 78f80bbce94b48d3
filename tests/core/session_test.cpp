#include "core/session.h"

#include <gtest/gtest.h>

#include "tests/support/recording_host.h"
#include "tests/support/temp_dir.h"

namespace lk {
namespace {

using test::RecordingHost;
using test::TempDir;
using Recent = std::array<std::string, 5>;

TEST(PushRecentFileTest, MovesLikeTheOpenDispatcher) {
  const Recent start{"a", "b", "c", "d", "e"};
  struct Case {
    const char* path;
    Recent expected;
  } cases[] = {
      {"a", {"a", "b", "c", "d", "e"}},  // already first: nothing moves
      {"b", {"b", "a", "c", "d", "e"}},
      {"c", {"c", "a", "b", "d", "e"}},
      {"d", {"d", "a", "b", "c", "e"}},
      {"e", {"e", "a", "b", "c", "d"}},  // entry 4 is the dropped one: nothing lost
      {"x", {"x", "a", "b", "c", "d"}},
  };
  for (const auto& c : cases) {
    Recent files = start;
    PushRecentFile(files, c.path);
    EXPECT_EQ(files, c.expected) << c.path;
  }
  Recent empty{};
  PushRecentFile(empty, "p");
  PushRecentFile(empty, "q");
  EXPECT_EQ(empty, (Recent{"q", "p", "", "", ""}));
}

class SessionFilesTest : public ::testing::Test {
 protected:
  void SetUp() override {
    dir.Write("dat/frm.dat", "[FrmMain]\r\nLeft=120\r\nTop=90.5\r\nWidth=x\r\n");
    dir.Write("dat/data.dat",
              "[Data]\r\nMcuType=B\r\n[RecentFile]\r\nFile0=/p/one.hex\r\nFile1=\r\n"
              "File2=/p/中.lkx\r\n[Setting]\r\nID=7\r\n");
    dir.Write("dat/qvmc.ini",
              "[MCULIST]\r\nA=1\r\nB=1\r\nQVM50F96B=1\r\n"
              "[A]\r\nROMSIZE=3\r\nHEXMCU=3FFF\r\n"
              "[B]\r\nROMSIZE=7\r\nHEXMCU=3FFF\r\n"
              "[QVM50F96B]\r\nROMSIZE=3\r\nHEXMCU=FFFF\r\nCONFIGLENTH=1\r\n");
  }
  TempDir dir;
  RecordingHost host;
  Home home{dir.Path()};
};

// What the window writes at close and reads at the next start (geometry, columns, model)
// is the main window's Qt test, on the real files; here the values as they are read.
TEST_F(SessionFilesTest, ReadsSessionValues) {
  const WindowGeometry g = ReadGeometry(host, home, "FrmMain");
  EXPECT_FLOAT_EQ(g.Left, 120);
  EXPECT_FLOAT_EQ(g.Top, 90.5f);
  EXPECT_FLOAT_EQ(g.Width, 0);
  EXPECT_FLOAT_EQ(g.Height, 0);
  EXPECT_EQ(ReadRecentFiles(host, home), (Recent{"/p/one.hex", "", "/p/中.lkx", "", ""}));
  EXPECT_EQ(ReadMcuType(host, home), "B");
  EXPECT_TRUE(host.messages.empty());
}

// A recent file whose name holds bytes that are no text must not change how data.dat is
// read: the names already in it stay as they are, and opening the same file again moves
// nothing.
TEST_F(SessionFilesTest, ANameThatIsNoTextLeavesTheOtherNamesReadable) {
  const std::string odd = "/p/bad\xFF.hex";
  Recent files = ReadRecentFiles(host, home);
  PushRecentFile(files, odd);
  ASSERT_TRUE(WriteRecentFiles(host, home, files));
  const Recent expected{"/p/bad\xEF\xBF\xBD.hex", "/p/one.hex", "", "/p/中.lkx", ""};
  files = ReadRecentFiles(host, home);
  EXPECT_EQ(files, expected);
  PushRecentFile(files, odd);
  EXPECT_EQ(files, expected);
  EXPECT_TRUE(host.messages.empty());
}

TEST_F(SessionFilesTest, StartupChip) {
  EXPECT_EQ(LoadStartupChip(host, home, "B").RomWords.size(), 8u);
  // Unknown model: the first listed one.
  EXPECT_EQ(LoadStartupChip(host, home, "NOPE").Name, "A");
  EXPECT_EQ(LoadStartupChip(host, home, "").Name, "A");
  // The start-up adjustment clears bit 8 of every word.
  const ChipParams f96 = LoadStartupChip(host, home, "QVM50F96B");
  EXPECT_EQ(f96.RomWords, (std::vector<std::int32_t>(4, 0xFEFF)));
  EXPECT_EQ(f96.ConfigWords, (std::vector<std::int32_t>{0xFEFF, 0xEEFF}));
  EXPECT_TRUE(host.messages.empty());
}

TEST(SessionMissingFilesTest, MessagesAndDefaults) {
  TempDir dir;
  RecordingHost host;
  const Home home(dir.Path());
  EXPECT_EQ(ReadMcuType(host, home), "");
  EXPECT_EQ(ReadRecentFiles(host, home), Recent{});
  EXPECT_EQ(ReadGeometry(host, home, "FrmMain").Width, 0);
  // One message per value, as if each were read on its own: 1 + 5 + 4.
  EXPECT_EQ(host.messages.size(), 10u);
  host.messages.clear();
  EXPECT_FALSE(WriteMcuType(host, home, "A"));
  ASSERT_EQ(host.messages.size(), 1u);
  EXPECT_EQ(host.messages[0].text, home.DataDat().string() + " not found.");
  EXPECT_EQ(host.messages[0].caption, "File Not Found");
  EXPECT_FALSE(WriteRecentFiles(host, home, Recent{}));
  EXPECT_EQ(host.messages.size(), 1u + 5u);
  EXPECT_FALSE(std::filesystem::exists(home.DataDat()));
  // No database at all: the empty record.
  EXPECT_FALSE(LoadStartupChip(host, home, "A").Loaded());
}

}  // namespace
}  // namespace lk
