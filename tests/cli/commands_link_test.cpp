// probe through the real lkwriter-cli binary, against the simulated writer.
#include <gtest/gtest.h>

#include <string>

#include "tests/support/run_cli.h"
#include "tests/support/temp_dir.h"

namespace lk::test {
namespace {

// Both streams together: the monitor lines go to stdout, the failures to stderr.
struct CliRun {
  int status;
  std::string out;
};

CliRun RunProbe(const std::string& args) {
  const CliResult r = RunCli(LK_PROGRAM_DIR, args);
  return {r.exitCode, r.out + r.err};
}

TEST(ProbeCommandTest, PrintsTheMonitorLinesAndTracesTheExchange) {
  TempDir dir;
  const std::string trace = (dir / "trace.txt").string();
  const CliRun run = RunProbe("--device sim --trace " + trace + " probe");
  EXPECT_EQ(run.status, 0) << run.out;
  EXPECT_NE(run.out.find("烧录器已经连接！版本号： v3."), std::string::npos) << run.out;
  EXPECT_NE(run.out.find("烧录器ID："), std::string::npos) << run.out;

  // Version, identity, then the end of the exchange (0xE5, 0xE4: no answers).
  const std::vector<std::string> got = SplitLines(dir.Read("trace.txt"));
  ASSERT_EQ(got.size(), 6u);
  EXPECT_EQ(got[0].substr(0, 14), "> 00 03 a0 a3 ");
  EXPECT_EQ(got[1].substr(0, 10), "< 00 05 a0");
  EXPECT_EQ(got[2].substr(0, 14), "> 00 03 a2 a5 ");
  EXPECT_EQ(got[3].substr(0, 10), "< 00 09 a2");
  EXPECT_EQ(got[4].substr(0, 14), "> 00 03 e5 e8 ");
  EXPECT_EQ(got[5].substr(0, 14), "> 00 03 e4 e7 ");
  for (const std::string& line : got) EXPECT_EQ(line.size(), 2u + 65 * 3 - 1);
}

TEST(WatchCommandTest, OneTickPrintsTheMessageListLinesOnly) {
  CliResult r = RunCli(LK_PROGRAM_DIR, "--device sim watch --once");
  EXPECT_EQ(r.exitCode, 0) << r.err;
  EXPECT_EQ(r.out, "烧录器已经连接！版本号： v3.1\n烧录器ID：123456\n");
  r = RunCli(LK_PROGRAM_DIR, "--device sim --sim-fault unplug@1 watch --once");
  EXPECT_EQ(r.exitCode, 3) << r.err;
  EXPECT_EQ(r.out, "");
}

TEST(ProbeCommandTest, ExitStatusOfTheFailures) {
  struct Case {
    std::string args;
    int status;
    std::string text;
  };
  const Case cases[] = {
      {"--device usb probe", 3, "No Device Connected"},
      {"--device sim --sim-fault unplug@1 probe", 3, "No Device Connected"},
      {"--device sim --sim-fault badcode@2 --timeout 300 probe", 1, "读取错误！"},
      {"--device sim --sim-fault noanswer@2 --timeout 300 probe", 1, "读取错误！"},
      {"--device floppy probe", 2, "floppy"},
  };
  for (const Case& c : cases) {
    const CliRun run = RunProbe(c.args);
    EXPECT_EQ(run.status, c.status) << c.args << "\n" << run.out;
    EXPECT_NE(run.out.find(c.text), std::string::npos) << c.args << "\n" << run.out;
  }
}

}  // namespace
}  // namespace lk::test
