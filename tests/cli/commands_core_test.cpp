// lkwriter-cli chips / chip / options, run as a process on a program folder that each
// test writes itself.
#include <sys/wait.h>

#include <gtest/gtest.h>

#include <cstdio>
#include <sstream>
#include <string>
#include <vector>

#include "tests/support/run_cli.h"
#include "tests/support/temp_dir.h"

namespace {

using lk::test::TempDir;

using lk::test::CliResult;
using lk::test::ShellQuote;

CliResult RunCli(const TempDir& dir, const std::string& args) {
  return lk::test::RunCli(dir.Path(), args);
}

std::vector<std::string> Lines(const std::string& text) { return lk::test::SplitLines(text); }

class CliCoreTest : public ::testing::Test {
 protected:
  void SetUp() override {
    dir.Write("dat/qvmc.ini",
              "[MCULIST]\r\nBETA=1\r\nALPHA=1\r\nBAD=1\r\n"
              "[ALPHA]\r\nTYPE=5A01\r\nPROD=1234\r\nARCH=RISC14\r\nCRAFTS=OTP\r\n"
              "ROMSIZE=7FF\r\nCONFIGLENTH=1\r\nEEDATA=F\r\nHEXMCU=3FFF\r\nINS=14\r\nFST=20\r\n"
              "VPPMODE=2\r\nVPPPROG=12.5\r\nVPPERASE=0.1\r\nVPPSEL=FFFF\r\nSPCDAT=8000\r\n"
              "PROPIN=1,2,3\r\nBLANKROM=3FFF\r\nBLANKCONFIG=3FFF\r\n"
              "[BETA]\r\nROMSIZE=F\r\nHEXMCU=FFFF\r\n"
              "[BAD]\r\nINS=40000\r\n");
    dir.Write("dat/cfg.ini", "[ALPHA]\r\nW1&=0010\r\n");
    dir.Write("dat/data.dat", "[Data]\r\nMcuType=ALPHA\r\n[RecentFile]\r\nFile0=\r\n");
    dir.Write("cfg/ALPHA.cfg",
              "[WDT 看门狗]\r\nLENTH=1\r\nOn=0,0,1\r\nOff=0,0,0\r\n"
              "[CAL]\r\nLENTH=2\r\nDAT=1,4:1,5\r\n");
  }
  TempDir dir;
};

TEST_F(CliCoreTest, ChipsInListOrder) {
  CliResult r = RunCli(dir, "chips");
  EXPECT_EQ(r.exitCode, 0) << r.err;
  EXPECT_EQ(r.out, "BETA\nALPHA\nBAD\n");
  r = RunCli(dir, "--json chips");
  EXPECT_EQ(r.out, "[\"BETA\",\"ALPHA\",\"BAD\"]\n");
}

TEST_F(CliCoreTest, ChipPrintsEveryFieldInDeclaredOrder) {
  const CliResult r = RunCli(dir, "chip ALPHA");
  ASSERT_EQ(r.exitCode, 0) << r.err;
  const std::vector<std::string> expected{"Name=ALPHA",
                                          "Type=23041",
                                          "Prod=1234",
                                          "Arch=RISC14",
                                          "Crafts=OTP",
                                          "RomSize=2047",
                                          "ConfigLength=1",
                                          "EeSize=15",
                                          "EeFlag=160",
                                          "HexMcu=16383",
                                          "Ins=14",
                                          "Fst=20",
                                          "VppMode=2",
                                          "VppProg=12.5",
                                          "VppErase=0.1",
                                          "VppRead=0",
                                          "VppKeep=0",
                                          "VppSel=-1",
                                          "Erase0=0",
                                          "Erase1=0",
                                          "EraseRom=0",
                                          "EraseConfig=0",
                                          "ProgTime=0",
                                          "SpcAdd=0",
                                          "SpcDat=-32768",
                                          "ProPin=1,2,3",
                                          "ChipInfo1=",
                                          "ChipInfo2=",
                                          "BlankRom=16383",
                                          "BlankConfig=16383",
                                          "ConfigWords=3FFF 0010"};
  EXPECT_EQ(Lines(r.out), expected);
}

TEST_F(CliCoreTest, ChipWithoutModelIsTheSelectedOne) {
  CliResult r = RunCli(dir, "chip");
  EXPECT_EQ(r.exitCode, 0) << r.err;
  EXPECT_EQ(Lines(r.out).front(), "Name=ALPHA");
  r = RunCli(dir, "--chip BETA chip");
  EXPECT_EQ(Lines(r.out).front(), "Name=BETA");
  EXPECT_EQ(Lines(r.out).back(), "ConfigWords=FFFF");
  // An unknown selection falls back to the first listed model.
  r = RunCli(dir, "--chip NOPE chip");
  EXPECT_EQ(r.exitCode, 0) << r.err;
  EXPECT_EQ(Lines(r.out).front(), "Name=BETA");
}

TEST_F(CliCoreTest, ChipErrors) {
  struct Case {
    const char* args;
    const char* errContains;
  } cases[] = {
      {"chip NOPE", "NOPE"}, {"chip BAD", "INS=40000"},  // refused with a message, not a crash
  };
  for (const auto& c : cases) {
    const CliResult r = RunCli(dir, c.args);
    EXPECT_EQ(r.exitCode, 2) << c.args;
    EXPECT_TRUE(r.out.empty()) << c.args;
    EXPECT_NE(r.err.find(c.errContains), std::string::npos) << c.args << ": " << r.err;
  }
}

TEST_F(CliCoreTest, ChipJson) {
  const CliResult r = RunCli(dir, "--json chip ALPHA");
  ASSERT_EQ(r.exitCode, 0) << r.err;
  EXPECT_EQ(r.out.rfind("{\"Name\":\"ALPHA\",\"Type\":23041,", 0), 0u) << r.out;
  EXPECT_NE(r.out.find("\"ProPin\":\"1,2,3\""), std::string::npos) << r.out;
  EXPECT_NE(r.out.find("\"ConfigWords\":[\"3FFF\",\"0010\"]}"), std::string::npos) << r.out;
}

TEST_F(CliCoreTest, OptionsOfTheSelectedChip) {
  CliResult r = RunCli(dir, "options");
  EXPECT_EQ(r.exitCode, 0) << r.err;
  EXPECT_EQ(r.out, "WDT 看门狗=On\nCAL=01\n");
  r = RunCli(dir, "--json options");
  EXPECT_EQ(
      r.out,
      "[{\"option\":\"WDT 看门狗\",\"value\":\"On\"},{\"option\":\"CAL\",\"value\":\"01\"}]\n");
}

TEST_F(CliCoreTest, OptionsErrors) {
  // No definitions for BETA: the not-found message, nothing printed.
  CliResult r = RunCli(dir, "--chip BETA options");
  EXPECT_EQ(r.exitCode, 2);
  EXPECT_TRUE(r.out.empty());
  EXPECT_NE(r.err.find("BETA.cfg\" Not Found!"), std::string::npos) << r.err;
  // A file to open that does not exist.
  r = RunCli(dir, "options " + ShellQuote((dir / "missing.hex").string()));
  EXPECT_EQ(r.exitCode, 2);
  EXPECT_NE(r.err.find("missing.hex\" Not Found!"), std::string::npos) << r.err;
}

TEST_F(CliCoreTest, OptionsAfterOpeningAFile) {
  // A file whose ending no reader knows is opened without loading anything.
  const auto note = dir.Write("notes.txt", "nothing");
  const CliResult r = RunCli(dir, "options " + ShellQuote(note.string()));
  EXPECT_EQ(r.exitCode, 0) << r.err;
  EXPECT_EQ(r.out, "WDT 看门狗=On\nCAL=01\n");
}

TEST(CliCoreMissingDatabaseTest, ChipsIsAFileError) {
  TempDir dir;
  const CliResult r = RunCli(dir, "chips");
  EXPECT_EQ(r.exitCode, 2);
  EXPECT_NE(r.err.find("qvmc.ini\" Not Found!"), std::string::npos) << r.err;
}

}  // namespace
