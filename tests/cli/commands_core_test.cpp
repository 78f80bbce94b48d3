// lkwriter-cli chips / chip / options, run as a process on a program folder that each
// test writes itself.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/run_cli.h"
#include "tests/support/temp_dir.h"

namespace {

using lk::test::CliResult;
using lk::test::ShellQuote;
using lk::test::TempDir;

CliResult RunCli(const TempDir& dir, const std::string& args) {
  return lk::test::RunCli(dir.Path(), args);
}

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

// Whole outputs and exit codes of the listing commands.
TEST_F(CliCoreTest, ContractOutputs) {
  const std::string note = ShellQuote(dir.Write("notes.txt", "nothing").string());
  struct Case {
    std::string args;
    int exitCode;
    std::string out;
    std::string errContains;
  } cases[] = {
      {"chips", 0, "BETA\nALPHA\nBAD\n", ""},
      {"--json chips", 0, "[\"BETA\",\"ALPHA\",\"BAD\"]\n", ""},
      {"options", 0, "WDT 看门狗=On\nCAL=01\n", ""},
      {"--json options", 0,
       "[{\"option\":\"WDT 看门狗\",\"value\":\"On\"},{\"option\":\"CAL\",\"value\":\"01\"}]\n", ""},
      // A file whose ending no reader knows is opened without loading anything.
      {"options " + note, 0, "WDT 看门狗=On\nCAL=01\n", ""},
      {"--chip BETA options", 2, "", "BETA.cfg\" Not Found!"},  // no definitions for BETA
      {"options " + ShellQuote((dir / "missing.hex").string()), 2, "", "missing.hex\" Not Found!"},
      {"chip NOPE", 2, "", "NOPE"},
      {"chip BAD", 2, "", "INS=40000"},  // refused with a message, not a crash
  };
  for (const auto& c : cases) {
    const CliResult r = RunCli(dir, c.args);
    EXPECT_EQ(r.exitCode, c.exitCode) << c.args << ": " << r.err;
    EXPECT_EQ(r.out, c.out) << c.args;
    EXPECT_NE(r.err.find(c.errContains), std::string::npos) << c.args << ": " << r.err;
  }
}

TEST_F(CliCoreTest, ChipPrintsEveryFieldInDeclaredOrder) {
  const char* kAlpha =
      "Name=ALPHA\nType=23041\nProd=1234\nArch=RISC14\nCrafts=OTP\nRomSize=2047\n"
      "ConfigLength=1\nEeSize=15\nEeFlag=0\nHexMcu=16383\nIns=14\nFst=20\nVppMode=2\n"
      "VppProg=12.5\nVppErase=0.1\nVppRead=0\nVppKeep=0\nVppSel=-1\nErase0=0\nErase1=0\n"
      "EraseRom=0\nEraseConfig=0\nProgTime=0\nSpcAdd=0\nSpcDat=-32768\nProPin=1,2,3\n"
      "ChipInfo1=\nChipInfo2=\nBlankRom=16383\nBlankConfig=16383\nConfigWords=3FFF 0010\n";
  CliResult r = RunCli(dir, "chip ALPHA");
  EXPECT_EQ(r.exitCode, 0) << r.err;
  EXPECT_EQ(r.out, kAlpha);
  r = RunCli(dir, "chip");  // the selected model
  EXPECT_EQ(r.out, kAlpha);
  r = RunCli(dir, "--chip BETA chip");
  EXPECT_EQ(r.out.rfind("Name=BETA\n", 0), 0u) << r.out;
  EXPECT_NE(r.out.find("\nConfigWords=FFFF\n"), std::string::npos) << r.out;
  // A model the user typed is never replaced by the first listed one, as a stale
  // "McuType" is: every command that uses the chip refuses it.
  for (const char* command : {"chip", "options", "show x.hex", "convert x.hex y.lkx"}) {
    r = RunCli(dir, std::string("--chip NOPE ") + command);
    EXPECT_EQ(r.exitCode, 2) << command;
    EXPECT_EQ(r.out, "") << command;
    EXPECT_NE(r.err.find("unknown chip model \"NOPE\""), std::string::npos) << command << r.err;
  }

  r = RunCli(dir, "--json chip ALPHA");
  ASSERT_EQ(r.exitCode, 0) << r.err;
  EXPECT_EQ(r.out.rfind("{\"Name\":\"ALPHA\",\"Type\":23041,", 0), 0u) << r.out;
  EXPECT_NE(r.out.find("\"ProPin\":\"1,2,3\""), std::string::npos) << r.out;
  EXPECT_NE(r.out.find("\"ConfigWords\":[\"3FFF\",\"0010\"]}"), std::string::npos) << r.out;
}

TEST(CliCoreMissingDatabaseTest, ChipsIsAFileError) {
  TempDir dir;
  const CliResult r = RunCli(dir, "chips");
  EXPECT_EQ(r.exitCode, 2);
  EXPECT_NE(r.err.find("qvmc.ini\" Not Found!"), std::string::npos) << r.err;
}

}  // namespace
