// lkwriter-cli show / convert, run as a process on a program folder and image files
// that each test writes itself.
#include <gtest/gtest.h>

#include <string>

#include "tests/support/run_cli.h"
#include "tests/support/temp_dir.h"

namespace {

using lk::test::CliResult;
using lk::test::ShellQuote;
using lk::test::TempDir;

class CliFileTest : public ::testing::Test {
 protected:
  void SetUp() override {
    dir.Write("dat/qvmc.ini",
              "[MCULIST]\nTINY=1\n[TINY]\nPROD=1234\nROMSIZE=7\nCONFIGLENTH=1\nHEXMCU=3FFF\n");
    dir.Write("dat/cfg.ini", "");
    dir.Write("dat/data.dat",
              "[Data]\nMcuType=TINY\n[RecentFile]\nFile0=\nFile1=\nFile2=\nFile3=\nFile4=\n");
    // Words 0 = 0x1234 and 1 = 0x0ABC, the rest blank.
    dir.Write("img.hex", ":040000003412BC0A00\r\n:00000001FF\r\n");
  }

  CliResult Run(const std::string& args) { return lk::test::RunCli(dir.Path(), args); }

  std::string PathOf(const std::string& name) { return ShellQuote((dir / name).string()); }

  TempDir dir;
};

// 0x12+0x34 + 0x0A+0xBC + 6 x (0x3F+0xFF) words + 2 x (0x3F+0xFF) configuration = 0x0AFC
constexpr const char* kShown =
    "Model:TINY\n"
    "Checksum:0AFC\n"
    "Config:3FFF 3FFF\n"
    "000000: 1234 0ABC 3FFF 3FFF 3FFF 3FFF 3FFF 3FFF\n";

TEST_F(CliFileTest, ShowPrintsModelChecksumConfigAndText) {
  const CliResult r = Run("show " + PathOf("img.hex"));
  EXPECT_EQ(r.exitCode, 0) << r.err;
  EXPECT_EQ(r.out, kShown);
  EXPECT_EQ(r.err, "");
}

TEST_F(CliFileTest, ShowReportsFileErrors) {
  CliResult r = Run("show " + PathOf("none.hex"));
  EXPECT_EQ(r.exitCode, 2);
  EXPECT_EQ(r.err, "message: File: \"" + (dir / "none.hex").string() + "\" Not Found!\n");
  EXPECT_EQ(r.out, "");

  dir.Write("bad.lkx", "TINY!");
  r = Run("show " + PathOf("bad.lkx"));
  EXPECT_EQ(r.exitCode, 2);
  EXPECT_EQ(r.err, "message: Open File Error!\nerror: " + (dir / "bad.lkx").string() +
                       ": not a program image or project of a kind this program reads\n");

  EXPECT_EQ(Run("show").exitCode, 2) << "FILE is required";
}

TEST_F(CliFileTest, ConvertWritesAProjectThatShowsTheSame) {
  CliResult r = Run("convert " + PathOf("img.hex") + " " + PathOf("out"));
  EXPECT_EQ(r.exitCode, 0) << r.err;
  const std::string bytes = dir.Read("out.lkx");
  ASSERT_EQ(bytes.size(), 256u + 16u);
  EXPECT_EQ(bytes.substr(0, 5), "TINY!");
  EXPECT_EQ(bytes.substr(256, 4), "\x34\x12\xBC\x0A");

  r = Run("show " + PathOf("out.lkx"));
  EXPECT_EQ(r.exitCode, 0);
  EXPECT_EQ(r.out, kShown);

  r = Run("convert " + PathOf("img.hex") + " " + PathOf("no/such/folder/x.lkx"));
  EXPECT_EQ(r.exitCode, 2);
  EXPECT_NE(r.err.find("message: Save File Error!"), std::string::npos) << r.err;

  // An empty OUT is a mistake, said as such, not a silent cancel.
  r = Run("convert " + PathOf("img.hex") + " ''");
  EXPECT_EQ(r.exitCode, 2);
  EXPECT_EQ(r.err, "error: OUT: an empty name names no file (see --help)\n");
}

}  // namespace
