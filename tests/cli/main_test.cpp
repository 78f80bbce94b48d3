// lkwriter-cli's global options and the exit status main() gives, through the real binary.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <string>

#include "tests/support/run_cli.h"

namespace lk::test {
namespace {

// A value outside its documented range is refused before any command runs: exit 2,
// nothing on stdout, one line on stderr naming the option and the range.
TEST(CliOptionsTest, ValuesOutsideTheirRangeAreRefused) {
  struct Case {
    const char* option;
    const char* range;
  } cases[] = {
      {"--sim-version 256", "0 to 255"},
      {"--sim-version -1", "0 to 255"},
      {"--sim-version 65535", "0 to 255"},
      {"--timeout 0", "1 to 60000"},
      {"--timeout -5", "1 to 60000"},
      {"--timeout 999999999", "1 to 60000"},
      {"--sim-fault noanswer@99999999999", "1..1000000"},
      {"--sim-fault noanswer@0", "1..1000000"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.option);
    const CliResult r = RunCli(LK_PROGRAM_DIR, std::string("--device sim ") + c.option + " probe");
    EXPECT_EQ(r.exitCode, 2);
    EXPECT_EQ(r.out, "");
    const std::string name = std::string(c.option).substr(0, std::string(c.option).find(' '));
    EXPECT_EQ(r.err.rfind("error: " + name + ": ", 0), 0u) << r.err;
    EXPECT_NE(r.err.find(c.range), std::string::npos) << r.err;
    EXPECT_EQ(SplitLines(r.err).size(), 1u) << r.err;
  }

  // The edges themselves are taken, and --help states every range.
  const CliResult edges = RunCli(
      LK_PROGRAM_DIR,
      "--device sim --sim-version 255 --timeout 60000 --sim-fault badsum@1000000 probe");
  EXPECT_EQ(edges.exitCode, 0) << edges.err;
  EXPECT_NE(edges.out.find(" v255."), std::string::npos) << edges.out;
  const CliResult help = RunCli(LK_PROGRAM_DIR, "--help");
  for (const char* range : {"[0 - 255]", "[1 - 60000]", "(1..1000000)"}) {
    EXPECT_NE(help.out.find(range), std::string::npos) << range << "\n" << help.out;
  }
}

// A data file that is there but cannot be read is named, never waited for, and fails the
// run (exit 2) although the command goes on as if it were missing.
TEST(CliExitTest, AnUnreadableDataFileFailsTheRun) {
  for (const char* file : {"data.dat", "cfg.ini"}) {
    SCOPED_TRACE(file);
    TempDir dir;
    dir.Write("dat/qvmc.ini", "[MCULIST]\nTINY=1\n[TINY]\nROMSIZE=7\nHEXMCU=3FFF\n");
    dir.Write("dat/cfg.ini", "");
    dir.Write("dat/data.dat", "[Data]\nMcuType=TINY\n");
    const std::filesystem::path path = dir / "dat" / file;
    std::filesystem::remove(path);
    std::string why = "message: Cannot read \"" + path.string() + "\": ";
    if (std::string(file) == "data.dat") {
      ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
      why += "it is a FIFO, not a regular file.";
    } else {
      std::filesystem::create_symlink("/dev/zero", path);
      why += "it is a device, not a regular file.";
    }
    const CliResult r = RunCli(dir.Path(), "chip");
    EXPECT_EQ(r.exitCode, 2);
    EXPECT_NE(r.out.find("Name=TINY\n"), std::string::npos) << r.out;
    EXPECT_NE(r.err.find(why), std::string::npos) << r.err;
  }
}

// A trace that cannot be written fails the run that asked for it, saying why; a FIFO
// nobody reads is refused at once rather than waited for.
TEST(CliTraceTest, ATraceThatCannotBeWrittenIsAnError) {
  TempDir dir;
  ASSERT_EQ(::mkfifo((dir / "fifo").c_str(), 0600), 0);
  struct Case {
    std::string file;
    std::string why;
  } cases[] = {
      {"/dev/full", "message: The trace file \"/dev/full\" could not be written (No space left "
                    "on device); the trace is incomplete.\n"},
      {(dir / "fifo").string(), "message: Cannot write the trace file \"" +
                                    (dir / "fifo").string() +
                                    "\": it is a FIFO that nobody reads.\n"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.file);
    const CliResult r = RunCli(LK_PROGRAM_DIR, "--device sim --trace " + ShellQuote(c.file) + " probe");
    EXPECT_EQ(r.exitCode, 2);
    EXPECT_EQ(r.err, c.why);
  }
}

}  // namespace
}  // namespace lk::test
