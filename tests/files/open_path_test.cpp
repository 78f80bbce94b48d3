#include "files/open_path.h"

#include <gtest/gtest.h>

#include "core/image.h"
#include "core/profile.h"
#include "files/image_writers.h"
#include "files/project_file.h"
#include "tests/files/files_fixture.h"

namespace lk::test {
namespace {

class OpenPathTest : public FilesTest {
 protected:
  OpenResult Open(Project& project, const std::string& name) {
    return OpenPath(host, home, project, PathOf(name));
  }
};

TEST_F(OpenPathTest, MissingFileChangesNothing) {
  Project project = ProjectOf("T16");
  project.RecentFiles[0] = "old";
  const OpenResult result = OpenPath(host, home, project, PathOf("none.hex"));
  EXPECT_FALSE(result.Opened);
  EXPECT_EQ(host.MessageTexts(),
            std::vector<std::string>{"File: \"" + PathOf("none.hex") + "\" Not Found!"});
  EXPECT_EQ(host.messages[0].caption, kAppTitle);
  EXPECT_EQ(project.ProjectPath, "");
  EXPECT_EQ(project.RecentFiles[0], "old");
  EXPECT_EQ(host.status[3], "");
}

TEST_F(OpenPathTest, StateStatusAndRecentFiles) {
  Project project = ProjectOf("T16");
  dir.Write("my.board.HeX", MakeIntelHex(Pattern(16)));
  const OpenResult result = Open(project, "my.board.HeX");
  ASSERT_TRUE(result.Opened);
  EXPECT_TRUE(result.ImageLoaded) << "the ending is compared in upper case";
  EXPECT_EQ(project.Chip.RomWords, Pattern(16));
  EXPECT_EQ(project.FileTitle, "my.board");
  EXPECT_EQ(project.ProjectPath, PathOf("my.board.HeX"));
  EXPECT_EQ(project.DocCaption, PathOf("my.board.HeX"));
  EXPECT_EQ(host.status[3].rfind("File Modify:20", 0), 0u) << host.status[3];
  EXPECT_EQ(host.status[1], "Rolling Code:Disable");
  EXPECT_FALSE(result.ShowRollDialog);
  EXPECT_EQ(GetValue(host, home.DataDat(), "RecentFile", "File0"), PathOf("my.board.HeX"));
  EXPECT_EQ(GetValue(host, home.DataDat(), "RecentFile", "File1"), "");
}

// How the list moves is PushRecentFile's (core tests); here: every open moves it and all
// five entries reach the session file.
TEST_F(OpenPathTest, RecentListMovesAndIsSaved) {
  Project project = ProjectOf("T16");
  for (const char* name : {"a.txt", "b.txt", "c.txt", "d.txt", "e.txt", "a.txt"}) {
    dir.Write(name, "");
    ASSERT_TRUE(Open(project, name).Opened);
  }
  const char* expected[] = {"a.txt", "e.txt", "d.txt", "c.txt", "b.txt"};
  for (std::size_t i = 0; i < 5; ++i) {
    EXPECT_EQ(project.RecentFiles[i], PathOf(expected[i])) << i;
    EXPECT_EQ(GetValue(host, home.DataDat(), "RecentFile", "File" + std::to_string(i)),
              PathOf(expected[i]));
  }
  // The recent-file menu opens an entry of the very list the open reorders.
  ASSERT_TRUE(OpenPath(host, home, project, project.RecentFiles[3]).Opened);
  EXPECT_EQ(project.ProjectPath, PathOf("c.txt"));
  EXPECT_EQ(project.RecentFiles[0], PathOf("c.txt"));
  EXPECT_EQ(project.RecentFiles[4], PathOf("b.txt"));
}

TEST_F(OpenPathTest, RefusedFileKeepsTheImageButEntersTheRecentList) {
  Project project = ProjectOf("T16");
  project.Chip.RomWords[0] = 0x0777;
  dir.Write("bad.lkx", std::string(300, '\0'));
  const OpenResult result = Open(project, "bad.lkx");
  EXPECT_FALSE(result.Opened);
  EXPECT_EQ(host.MessageTexts(), std::vector<std::string>{"Open File Error!"});
  EXPECT_EQ(host.messages[0].icon, Icon::Information);
  EXPECT_EQ(host.messages[0].caption, kAppTitle);
  EXPECT_EQ(project.Chip.Name, "T16");
  EXPECT_EQ(project.Chip.RomWords[0], 0x0777);
  EXPECT_EQ(project.RecentFiles[0], PathOf("bad.lkx"));
}

TEST_F(OpenPathTest, ReservedWordsOfComparatorChips) {
  const std::string kF96B =
      "检测到程序中 0FFDH 或 0FFEH 地址中有数据，这2个地址目前作为保存同步比较器失调电压值使用，"
      "请阅读\"电磁炉芯片同步比较器调零功能使用说明\"，并修改程序！";
  const std::string kP99 =
      "检测到程序中 07FDH 或 07FEH 地址中有数据，这2个地址目前作为保存同步比较器失调电压值使用，"
      "请阅读\"电磁炉芯片同步比较器调零功能使用说明\",并修改程序！";

  // A fresh QVM50F96B program (bit 8 cleared by New) is accepted silently.
  Project f96b = ProjectOf("QVM50F96B");
  NewFile(f96b);
  dir.Write("blank.txt", "");
  OpenResult result = Open(f96b, "blank.txt");
  EXPECT_TRUE(result.Opened);
  EXPECT_FALSE(result.ImageLoaded);
  EXPECT_FALSE(result.ReservedWiped);
  EXPECT_TRUE(host.messages.empty());
  EXPECT_EQ(f96b.Chip.RomWords[0], 0xFEFF);

  // Data in word 0x0FFE: message, everything 0xFEFF, caption cleared, still recent.
  f96b.Chip.RomWords[0x0FFE] = 0x1234;
  f96b.Chip.RomWords[7] = 0x0001;
  result = Open(f96b, "blank.txt");
  EXPECT_TRUE(result.ReservedWiped);
  EXPECT_EQ(host.MessageTexts(), std::vector<std::string>{kF96B});
  EXPECT_EQ(f96b.Chip.RomWords[7], 0xFEFF);
  EXPECT_EQ(f96b.Chip.RomWords[0x0FFE], 0xFEFF);
  for (auto w : f96b.Chip.ConfigWords) EXPECT_EQ(w, 0xFEFF);
  EXPECT_EQ(f96b.DocCaption, "");
  EXPECT_EQ(f96b.RecentFiles[0], PathOf("blank.txt"));

  host.messages.clear();
  Project p99 = ProjectOf("QVM50P99");
  auto words = Pattern(2048, 0x3FFF);
  std::fill(words.begin(), words.end(), 0x3FFF);
  // QVM50P99 HEX files are rotated: file word i lands on i + 1, so data in file word
  // 0x7FE is not in the reserved words, data in 0x7FC is.
  words[0x07FE] = 0;
  dir.Write("p99.hex", MakeIntelHex(words));
  result = Open(p99, "p99.hex");
  EXPECT_FALSE(result.ReservedWiped);
  EXPECT_EQ(p99.Chip.RomWords[0x07FF], 0);
  words[0x07FE] = 0x3FFF;
  words[0x07FC] = 0;
  dir.Write("p99.hex", MakeIntelHex(words));
  result = Open(p99, "p99.hex");
  EXPECT_TRUE(result.ReservedWiped);
  EXPECT_EQ(host.MessageTexts(), std::vector<std::string>{kP99});
  EXPECT_EQ(p99.Chip.RomWords[0x07FD], 0x3FFF);
}

TEST_F(OpenPathTest, ReservedReferenceWordsOfProductLK467) {
  Project project = ProjectOf("LKR467");
  auto words = Pattern(1024);
  words[1022] = words[1023] = 0x3FFF;
  dir.Write("ok.bin", MakeBinImage(words));
  EXPECT_FALSE(Open(project, "ok.bin").ReservedWiped);
  EXPECT_EQ(project.Chip.RomWords[5], 0x105);

  words[1023] = 0x0000;
  dir.Write("bad.bin", MakeBinImage(words));
  EXPECT_TRUE(Open(project, "bad.bin").ReservedWiped);
  EXPECT_EQ(host.MessageTexts(),
            std::vector<std::string>{"检测到程序中 3FEH 或 3FFH 地址中有数据，"
                                     "这2个地址作为内部电压基准使用，请保持数据为空！"});
  EXPECT_EQ(project.Chip.RomWords[5], 0x3FFF);
}

TEST_F(OpenPathTest, RollingSettingsBesideTheProject) {
  Project project = ProjectOf("T16");
  dir.Write("board.hex", MakeIntelHex(Pattern(16)));
  dir.Write("board.ini", "[Rolling Code]\nValue=True\n");
  const OpenResult result = Open(project, "board.hex");
  EXPECT_TRUE(result.ShowRollDialog);
  EXPECT_EQ(result.RollSettingsPath, dir / "board.ini");
  EXPECT_EQ(host.status[1], "") << "the dialog sets the panel itself";
}

TEST_F(OpenPathTest, EedataViewOnlyWithTheFlag) {
  Project project = ProjectOf("T16");
  project.Chip.EeFlag = kEeFlagPresent;
  ASSERT_TRUE(SaveProject(host, home, project, PathOf("ee")).Saved);
  dir.Write("plain.txt", "");
  OpenResult result = Open(project, "ee.lkx");
  EXPECT_TRUE(result.ShowEedata);
  EXPECT_EQ(EedataHexText(project.Chip).substr(0, 8), "0000: FF");
  project.Chip.EeFlag = kEeFlagAbsent;
  EXPECT_FALSE(Open(project, "plain.txt").ShowEedata);
}

TEST_F(OpenPathTest, NewFileBlanksTheProgramOnly) {
  Project project = ProjectOf("QVM50F96B");
  project.Chip.RomWords[9] = 0x1234;
  project.Chip.ConfigWords[0] = 0xFFFF;
  NewFile(project);  // its caption and text: the main window's Qt test
  EXPECT_EQ(project.Chip.RomWords[9], 0xFEFF);
  EXPECT_EQ(project.Chip.ConfigWords[0], 0xFEFF);

  Project t16 = ProjectOf("T16");
  t16.Chip.ConfigWords[0] = 0x1111;
  t16.Chip.RomWords[1] = 0;
  NewFile(t16);
  EXPECT_EQ(t16.Chip.RomWords[1], 0x3FFF);
  EXPECT_EQ(t16.Chip.ConfigWords[0], 0x1111);
}

}  // namespace
}  // namespace lk::test
