#include "files/project_file.h"

#include <gtest/gtest.h>

#include "core/image.h"
#include "tests/files/files_fixture.h"

namespace lk::test {
namespace {

class ProjectFileTest : public FilesTest {
 protected:
  std::string Build(const ChipParams& chip) { return BuildProjectBytes(chip, HexText(chip)); }
  bool ReadBytes(ChipParams& chip, const std::string& bytes) {
    return ReadProjectFile(host, home, chip, dir.Write("p.lkx", bytes));
  }
};

TEST_F(ProjectFileTest, LayoutOfTheWrittenFile) {
  ChipParams chip = Load("T16");
  chip.ConfigWords = {0x1234, 0x0567};
  chip.RomWords = Pattern(16, 0x2A00);
  chip.EeFlag = kEeFlagPresent;
  chip.EeBytes.assign(16, 0x5A);
  const std::string bytes = Build(chip);
  ASSERT_EQ(bytes.size(), 256u + 32u + 16u);
  EXPECT_EQ(bytes.substr(0, 4), "T16!");
  EXPECT_EQ(bytes.substr(4, 124), std::string(124, '\0'));
  EXPECT_EQ(static_cast<std::uint8_t>(bytes[128]), 0xA2);
  EXPECT_EQ(bytes.substr(160, 4), "\x34\x12\x67\x05");
  EXPECT_EQ(bytes.substr(164, 92), std::string(92, '\0'));
  EXPECT_EQ(bytes.substr(256, 4), std::string("\x00\x2A\x01\x2A", 4));
  EXPECT_EQ(bytes.substr(288), std::string(16, '\x5A'));

  chip.EeFlag = kEeFlagAbsent;
  EXPECT_EQ(Build(chip).size(), 256u + 32u) << "no EEDATA tail without the flag";
  EXPECT_EQ(static_cast<std::uint8_t>(Build(chip)[128]), 0xA0);
  // An image that never had a flag (a fresh record, a HEX file opened into it) says 0.
  EXPECT_EQ(Build(Load("T16"))[128], '\0');
}

TEST_F(ProjectFileTest, SaveAndReadReturnTheSameImage) {
  for (const char* model : {"T16", "QVM50P49C", "ABCDEFGHIJKLMN16", "NOEE", "LK51A1"}) {
    ChipParams chip = Load(model);
    chip.RomWords = Pattern(chip.RomWords.size(), 0x1000);
    if (chip.Prod == "51A1") std::fill(chip.RomWords.begin() + 1536, chip.RomWords.end(), 0);
    for (auto& w : chip.ConfigWords) w = 0x2345;
    if (chip.EeSize >= 1) {
      chip.EeFlag = kEeFlagPresent;
      for (std::size_t i = 0; i < chip.EeBytes.size(); ++i) chip.EeBytes[i] = std::uint8_t(i);
    }
    const std::string bytes = Build(chip);
    ChipParams read = Load("T16");
    ASSERT_TRUE(ReadBytes(read, bytes)) << model;
    EXPECT_EQ(read.Name, model);
    EXPECT_EQ(read.RomWords, chip.RomWords) << model;
    EXPECT_EQ(read.ConfigWords, chip.ConfigWords) << model;
    EXPECT_EQ(read.EeBytes, chip.EeBytes) << model;
    EXPECT_EQ(Build(read), bytes) << model << ": load and save give the same bytes";
  }
}

TEST_F(ProjectFileTest, RotatedModelsStoreWord2047First) {
  ChipParams chip = Load("QVM50P49C");
  chip.RomWords = Pattern(2048, 0x1000);
  const std::string bytes = Build(chip);
  EXPECT_EQ(bytes.substr(256, 2), "\xFF\x17") << "image word 2047 (0x17FF) comes first";
  EXPECT_EQ(bytes.substr(258, 2), std::string("\x00\x10", 2));
  ChipParams read = Load("T16");
  ASSERT_TRUE(ReadBytes(read, bytes));
  EXPECT_EQ(read.RomWords[0], 0x1000);
  EXPECT_EQ(read.RomWords[2047], 0x17FF);
}

TEST_F(ProjectFileTest, SizeIsTheValidityTest) {
  ChipParams t16 = Load("T16");
  t16.EeFlag = kEeFlagPresent;
  const std::string good = Build(t16);
  ChipParams chip = Load("NOEE");
  chip.RomWords[0] = 0x0123;
  for (const std::string& bad : {good + '\0', good.substr(0, good.size() - 1),
                                 good.substr(0, good.size() - 16), std::string(), good.substr(0, 100)}) {
    EXPECT_FALSE(ReadBytes(chip, bad)) << bad.size();
    EXPECT_EQ(chip.Name, "NOEE") << "a refused file leaves the previous image";
    EXPECT_EQ(chip.RomWords[0], 0x0123);
  }

  // A flag other than 0xA2 means no EEDATA: the file must end after the program.
  std::string noTail = good.substr(0, good.size() - 16);
  noTail[128] = '\xA1';
  ASSERT_TRUE(ReadBytes(chip, noTail));
  EXPECT_EQ(chip.EeFlag, kEeFlagAbsent);
  std::string withTail = good;
  withTail[128] = '\xA1';
  EXPECT_FALSE(ReadBytes(chip, withTail));
}

TEST_F(ProjectFileTest, Model51A1AcceptsTheShortFormAndClearsTheTopWords) {
  ChipParams chip = Load("LK51A1");
  chip.RomWords = Pattern(2048, 0x0800);  // words 1536.. hold data in the file
  const std::string full = BuildProjectBytes(chip, HexText(chip));
  const std::string shortForm = full.substr(0, full.size() - 1024);
  for (const std::string& bytes : {full, shortForm}) {
    ChipParams read = Load("T16");
    ASSERT_TRUE(ReadBytes(read, bytes)) << bytes.size();
    EXPECT_EQ(read.RomWords[1535], (0x0800 + 1535) & 0x3FFF);
    EXPECT_EQ(read.RomWords[1536], 0);
    EXPECT_EQ(read.RomWords[2047], 0);
  }
  ChipParams read = Load("T16");
  EXPECT_FALSE(ReadBytes(read, full.substr(0, full.size() - 1023)));
}

TEST_F(ProjectFileTest, ModelNameRules) {
  ChipParams named = Load("ABCDEFGHIJKLMN16");
  std::string bytes = Build(named);
  ASSERT_EQ(bytes[16], '!');
  bytes[16] = '\0';  // a 16-character name needs no terminator
  ChipParams chip = Load("T16");
  EXPECT_TRUE(ReadBytes(chip, bytes));
  EXPECT_EQ(chip.Name, "ABCDEFGHIJKLMN16");

  ChipParams t16 = Load("T16");
  struct Case {
    std::string name;
    const char* model;  // nullptr: refused
  } cases[] = {{"T 16!", "T16"}, {" T16 !", "T16"}, {"NOPE!", nullptr}, {"!", nullptr},
               {"T16\x01!", nullptr}};
  for (const auto& c : cases) {
    std::string file = Build(t16);
    std::fill_n(file.begin(), 16, '\0');
    file.replace(0, c.name.size(), c.name);
    chip = Load("NOEE");
    EXPECT_EQ(ReadBytes(chip, file), c.model != nullptr) << c.name;
    EXPECT_EQ(chip.Name, c.model ? c.model : "NOEE");
  }

  // QVM75FH86 files load the QVM75FH88 record.
  ChipParams fh = Load("QVM75FH88");
  std::string fh86 = Build(fh);
  fh86[8] = '6';
  ASSERT_EQ(fh86.substr(0, 10), "QVM75FH86!");
  EXPECT_TRUE(ReadBytes(chip, fh86));
  EXPECT_EQ(chip.Name, "QVM75FH88");
}

TEST_F(ProjectFileTest, EedataFlagOnlyForModelsWithEedata) {
  for (const char* model : {"NOEE", "EEZERO"}) {
    ChipParams chip = Load(model);
    chip.EeFlag = kEeFlagPresent;
    const std::string bytes = Build(chip);
    EXPECT_EQ(bytes[128], '\0') << model;
    EXPECT_EQ(bytes.size(), 256u + 16u) << model;
  }
}

TEST_F(ProjectFileTest, ProgramWordsComeFromTheDocumentText) {
  ChipParams chip = Load("NOEE");  // 8 words, one line
  // Fields at columns 9, 14, ... 44; a short line yields zero bytes for missing fields.
  std::string bytes = BuildProjectBytes(chip, "000000: 1234 ABCD");
  EXPECT_EQ(bytes.substr(256, 4), "\x34\x12\xCD\xAB");
  EXPECT_EQ(bytes.substr(260), std::string(12, '\0'));
  // A trailing line break adds a line of eight zero words: that file would not reopen,
  // which is why the document text never ends in one.
  bytes = BuildProjectBytes(chip, HexText(chip) + "\r\n");
  EXPECT_EQ(bytes.size(), 256u + 32u);
  EXPECT_FALSE(ReadBytes(chip, bytes));
}

TEST_F(ProjectFileTest, SavePathGetsOneExtension) {
  EXPECT_EQ(ProjectSavePath("board"), "board.lkx");
  EXPECT_EQ(ProjectSavePath("board.lkx"), "board.lkx");
  EXPECT_EQ(ProjectSavePath("BOARD.LKX"), "BOARD.LKX");
  EXPECT_EQ(ProjectSavePath("board.hex"), "board.hex.lkx");
  EXPECT_EQ(ProjectSavePath(""), "");
}

TEST_F(ProjectFileTest, SaveWritesAndReopens) {
  Project project = ProjectOf("T16");
  project.Chip.RomWords[3] = 0x0ABC;
  const SaveResult result = SaveProject(host, home, project, PathOf("board"));
  ASSERT_TRUE(result.Saved);
  EXPECT_EQ(result.Path, PathOf("board.lkx"));
  EXPECT_TRUE(result.Reopened.Opened);
  EXPECT_EQ(project.ProjectPath, PathOf("board.lkx"));
  EXPECT_EQ(project.RecentFiles[0], PathOf("board.lkx"));
  EXPECT_EQ(project.Chip.RomWords[3], 0x0ABC);
  EXPECT_EQ(dir.Read("board.lkx").size(), 256u + 32u);

  EXPECT_FALSE(SaveProject(host, home, project, "").Saved);
}

TEST_F(ProjectFileTest, FailedSaveReportsAndLosesNothing) {
  // The target name is taken by a folder with a file in it: the rename must fail.
  dir.Write("taken.lkx/keep.txt", "keep");
  Project project = ProjectOf("T16");
  project.Chip.RomWords[0] = 0x0111;
  project.ProjectPath = "before";
  const SaveResult result = SaveProject(host, home, project, PathOf("taken.lkx"));
  EXPECT_FALSE(result.Saved);
  ASSERT_EQ(host.messages.size(), 1u);
  EXPECT_EQ(host.messages[0].text.rfind("Save File Error!", 0), 0u);
  EXPECT_EQ(dir.Read("taken.lkx/keep.txt"), "keep");
  EXPECT_EQ(project.ProjectPath, "before") << "no reopen after a failed write";
  EXPECT_EQ(project.Chip.RomWords[0], 0x0111);
  for (const auto& entry : std::filesystem::directory_iterator(dir.Path())) {
    EXPECT_EQ(entry.path().string().find(".tmp"), std::string::npos) << "temp file left";
  }

  // A folder that does not exist fails the same way.
  EXPECT_FALSE(SaveProject(host, home, project, PathOf("no/such/folder/x.lkx")).Saved);
  EXPECT_EQ(host.messages.size(), 2u);
}

}  // namespace
}  // namespace lk::test
