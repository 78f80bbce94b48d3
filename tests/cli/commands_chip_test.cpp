// The chip commands through the real lkwriter-cli binary on the simulated writer: the
// contract of lines, messages and exit statuses, the state kept between runs, and the
// safety rules (no traffic for a refused file, bounded waits).
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>

#include "tests/support/run_cli.h"
#include "tests/support/temp_dir.h"

namespace lk::test {
namespace {

class CliChipTest : public ::testing::Test {
 protected:
  void SetUp() override {
    std::filesystem::copy(std::filesystem::path(LK_PROGRAM_DIR) / "dat", dir / "dat");
    std::filesystem::copy(std::filesystem::path(LK_PROGRAM_DIR) / "examples", dir / "examples",
                          std::filesystem::copy_options::recursive);
  }
  // Runs on the simulated writer whose state (chip, store, ID) lives in the test folder.
  CliResult Sim(const std::string& args) {
    return RunCli(dir.Path(), "--device sim --sim-state " + ShellQuote((dir / "w.state").string()) +
                                  " " + args);
  }
  std::string Path(const std::string& name) { return ShellQuote((dir / name).string()); }

  TempDir dir;
};

TEST_F(CliChipTest, ConsecutiveRunsSeeTheSameChip) {
  struct Step {
    std::string args;
    int exit;
    std::string out;
  };
  const std::string project = Path("examples/qvm75p89.qvm");
  const Step steps[] = {
      {"blank", 0, "Blank Check OK!\n"},
      {"program " + project, 0, "Program OK!\nConfig OK!\n"},
      {"verify " + project, 0, "Verify OK!\n"},
      {"blank", 1, "Blank Check Fail!\n"},
      {"read -o " + Path("back.lkx"), 0, "Read OK!\nCheckSum In IC is 1752\n"},
      {"config-read", 0, "Read Config OK!\n"},
      {"download " + project, 0, "Download OK!\n"},
  };
  for (const Step& s : steps) {
    const CliResult r = Sim("--chip QVM75P89 " + s.args);
    EXPECT_EQ(r.exitCode, s.exit) << s.args << "\n" << r.err;
    EXPECT_EQ(r.out, s.out) << s.args;
  }
  // What was read back is what was programmed.
  EXPECT_EQ(RunCli(dir.Path(), "show " + Path("back.lkx")).out,
            RunCli(dir.Path(), "show " + project).out);
}

TEST_F(CliChipTest, ContractOfFailures) {
  dir.Write("ee.hex", ":02420000010000BB\r\n");     // EEDATA byte 0 (word address 0x2100)
  dir.Write("below.hex", ":020000000100FD\r\n");  // word address 0: not EEDATA
  struct Case {
    std::string args;
    int exit;
    std::string out;
    std::string err;  // a text stderr must hold
  };
  const Case cases[] = {
      {"--device usb:/nonexistent program " + Path("examples/qvm50p99.lkx"), 3,
       "The Writer for \"QVM50P99\" not Found!\n", ""},
      {"--device sim --chip NOPE blank", 2, "", "unknown chip model"},
      {"--device bogus chips", 2, "", "unknown device \"bogus\""},
      {"--device sim program " + Path("missing.hex"), 2, "", "Not Found!"},
      {"--device sim --chip QVM50P99 program " + Path("notes.txt"), 2, "", "not a program image"},
      {"--device sim id-set 12a", 2, "", "not a writer identifier"},
      {"--device sim id-set 4294967296", 2, "", "not a writer identifier"},
      {"--device sim --chip QVM50F77B eedata-write " + Path("below.hex"), 2, "",
       "message: 不是有效的EEDATA文件！"},
      {"--device sim --chip QVM75P89 eedata-write " + Path("ee.hex"), 1, "",
       "message: 该芯片没有内部Eedata！"},
      {"--device sim --sim-fault noanswer@1 --timeout 100 probe", 1,
       "烧录器ID：123456\n", "did not give its version"},
      {"--device sim --chip QVM50P99 --sim-fault unplug@9 program " +
           Path("examples/qvm50p99.lkx"),
       1, "Program Fail!\n", "error: the writer is gone"},
      // Each says what is wrong with the file, not only that something failed.
      {"--chip QVM50P99 show " + Path("fifo.hex"), 2, "", "fifo.hex: it is a FIFO"},
      {"--chip QVM50P99 convert " + Path("fifo.hex") + " " + Path("out.lkx"), 2, "",
       "fifo.hex: it is a FIFO"},
      {"--device sim --chip QVM50F77B eedata-write " + Path("dir.hex"), 2, "",
       "dir.hex\": it is a folder"},
      {"--device sim --chip QVM50F77B eedata-write " + Path("fifo.hex"), 2, "", "FIFO"},
      {"--device sim id-set 4294967295 --increment", 2, "", "已是最大值"},
      // A simulated writer that cannot keep its state says so, and the run fails.
      {"--device sim --chip QVM50P99 --sim-state " + Path("notes.txt/w.state") + " program " +
           Path("examples/qvm50p99.lkx"),
       2, "Program OK!\nConfig OK!\n", "state could not be saved"},
  };
  dir.Write("notes.txt", "hello");
  ASSERT_EQ(::mkfifo((dir / "fifo.hex").c_str(), 0644), 0);
  std::filesystem::create_directories(dir / "dir.hex");
  for (const Case& c : cases) {
    const CliResult r = RunCli(dir.Path(), c.args);
    EXPECT_EQ(r.exitCode, c.exit) << c.args << "\n" << r.err;
    EXPECT_EQ(r.out, c.out) << c.args;
    EXPECT_NE(r.err.find(c.err), std::string::npos) << c.args << "\n" << r.err;
  }
  // --json sends nothing more before the command: the fault strikes the same packet (the
  // chip parameter block) and the run fails as it does without it.
  const CliResult json =
      RunCli(dir.Path(), "--device sim --chip QVM50P99 --json --sim-fault badcode@2 blank");
  EXPECT_EQ(json.exitCode, 1) << json.out;
  EXPECT_NE(json.out.find("\"MCU Type Error!\""), std::string::npos) << json.out;
}

TEST_F(CliChipTest, RefusedFileNeverReachesTheWriter) {
  // Words 0x7FD/0x7FE of a QVM50P99 program are reserved: the open wipes the image.
  dir.Write("reserved.hex", ":040FFA000000000000F3\r\n");
  const CliResult r = Sim("--chip QVM50P99 --trace " + Path("t.txt") + " program " +
                          Path("reserved.hex"));
  EXPECT_EQ(r.exitCode, 2) << r.err;
  EXPECT_EQ(r.out, "");
  EXPECT_NE(r.err.find("wiped"), std::string::npos) << r.err;
  EXPECT_EQ(dir.Read("t.txt"), "");
}

TEST_F(CliChipTest, RollingProjectAutoAsJsonAndTheCodeAdvancesOnlyOnSuccess) {
  const std::string project = Path("examples/rolling/project.lkx");
  const CliResult first = Sim("--json auto " + project);
  EXPECT_EQ(first.exitCode, 0) << first.err;
  EXPECT_NE(first.out.find("\"log\":[\"Blank Check OK!\",\"Program OK!\",\"Config OK!\","
                           "\"Verify OK!\",\"Rolling Code:1 2 3 4\",\"Next Rolling Code:1 2 3 5\"]"),
            std::string::npos)
      << first.out;
  EXPECT_NE(first.out.find("\"rolling\":{\"used\":\"1 2 3 4\",\"next\":\"1 2 3 5\"}"),
            std::string::npos);
  EXPECT_NE(first.out.find("\"writer\":{\"version\":\"3.1\",\"id\":123456}"), std::string::npos);
  EXPECT_EQ(std::count(first.out.begin(), first.out.end(), '\n'), 1);

  // The same OTP chip again: not blank, and the code stays where it was.
  const CliResult second = Sim("auto " + project);
  EXPECT_EQ(second.exitCode, 1);
  EXPECT_EQ(second.out, "Blank Check Fail!\n");
  EXPECT_NE(dir.Read("examples/rolling/project.ini").find("Count=1 2 3 5"), std::string::npos);
}

}  // namespace
}  // namespace lk::test
