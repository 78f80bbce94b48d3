// The production database through the real lkwriter-cli on the simulated writer: each
// chip its own serial, a failed chip's code given again, the chain and the counts, and
// every refusal before the first packet.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>

#include "tests/support/run_cli.h"
#include "tests/support/temp_dir.h"

namespace lk::test {
namespace {

class CliProductionTest : public ::testing::Test {
 protected:
  void SetUp() override {
    std::filesystem::copy(std::filesystem::path(LK_PROGRAM_DIR) / "dat", dir / "dat");
    std::filesystem::copy(std::filesystem::path(LK_PROGRAM_DIR) / "examples", dir / "examples",
                          std::filesystem::copy_options::recursive);
  }
  // A run on a fresh simulated chip (state file `chip`), traced to `chip`.trace.
  CliResult Run(const std::string& chip, const std::string& args) {
    return RunCli(dir.Path(), "--device sim --sim-state " + Q(chip + ".state") + " --trace " +
                                  Q(chip + ".trace") + " " + args);
  }
  std::string Q(const std::string& name) { return ShellQuote((dir / name).string()); }
  std::string Project() { return Q("examples/rolling/project.lkx"); }

  TempDir dir;
};

TEST_F(CliProductionTest, SerialsAreGivenOnceAndEveryCommandIsRecorded) {
  auto code = [](const CliResult& r) {
    const auto at = r.out.find("Rolling Code:");
    return at == std::string::npos ? std::string() : r.out.substr(at, r.out.find('\n', at) - at);
  };
  const CliResult first = Run("a", "-q auto " + Project());
  ASSERT_EQ(first.exitCode, 0) << first.out << first.err;
  EXPECT_EQ(code(first), "Rolling Code:1 2 3 4");

  // A chip that fails gives its code back: the next chip gets it.
  const CliResult failed = Run("b", "-q --sim-fault badcode@20 auto " + Project());
  ASSERT_EQ(failed.exitCode, 1) << failed.out << failed.err;
  const CliResult second = Run("c", "-q auto " + Project());
  ASSERT_EQ(second.exitCode, 0);
  EXPECT_EQ(code(second), "Rolling Code:1 2 3 5");

  // An old copy of the settings file (Count back at 1 2 3 4): the database moves past
  // the codes already given, and says so.
  std::filesystem::copy_file(std::filesystem::path(LK_PROGRAM_DIR) / "examples/rolling/project.ini",
                             dir / "examples/rolling/project.ini",
                             std::filesystem::copy_options::overwrite_existing);
  const CliResult old = Run("d", "-q auto " + Project());
  ASSERT_EQ(old.exitCode, 0);
  EXPECT_EQ(code(old), "Rolling Code:1 2 3 6");
  EXPECT_NE(old.err.find("Rolling Code 1 2 3 4 was given before"), std::string::npos) << old.err;

  const CliResult verify = RunCli(dir.Path(), "log verify");
  EXPECT_EQ(verify.exitCode, 0);
  EXPECT_EQ(verify.out, "chain verified: 4 records\n");
  const CliResult stats = RunCli(dir.Path(), "stats --series project");
  EXPECT_NE(stats.out.find("series project passed 3 failed 1 total 4\n"), std::string::npos)
      << stats.out;
  EXPECT_NE(stats.out.find("serials project committed 3 released 1 void 0 reserved 0\n"),
            std::string::npos)
      << stats.out;
  const CliResult csv = RunCli(dir.Path(), "log export --csv -o " + Q("records.csv"));
  EXPECT_EQ(csv.exitCode, 0);
  const std::string records = dir.Read("records.csv");
  EXPECT_EQ(std::count(records.begin(), records.end(), '\n'), 5) << records;  // a header, 4 rows
}

// Nothing reaches the writer when the serial or the record could not be kept: a
// database that cannot be used, a series of another layout, or a settings file that is
// there but cannot be read.
TEST_F(CliProductionTest, RefusalsComeBeforeTheFirstPacket) {
  dir.Write("junk.sqlite", std::string(2048, 'j'));
  ASSERT_EQ(Run("x", "-q --series other auto " + Project()).exitCode, 0);
  std::string moved = dir.Read("examples/rolling/project.ini");
  moved.replace(moved.find("7F0"), 3, "7E0");
  dir.Write("examples/moved.ini", moved);
  dir.Write("examples/moved.lkx", dir.Read("examples/rolling/project.lkx"));
  dir.Write("examples/fifo.lkx", dir.Read("examples/rolling/project.lkx"));
  ASSERT_EQ(::mkfifo((dir / "examples/fifo.ini").c_str(), 0644), 0);
  dir.Write("examples/folder.lkx", dir.Read("examples/rolling/project.lkx"));
  std::filesystem::create_directories(dir / "examples/folder.ini");

  struct Case {
    std::string Args, Says;
  };
  const Case cases[] = {
      {"--db sqlite:" + Q("junk.sqlite") + " program " + Project(), "file is not a database"},
      {"--db sqlite:" + Q("no/folder/p.sqlite") + " auto " + Project(), "unable to open"},
      {"--db 'postgresql://x@/db?host=" + (dir / "nothing").string() + "' blank", "production database"},
      {"--series other auto " + Q("examples/moved.lkx"), "differs from series \"other\""},
      {"auto " + Q("examples/fifo.lkx"), "it is a FIFO"},
      {"--db none program " + Q("examples/folder.lkx"), "it is a folder"},
  };
  int n = 0;
  for (const Case& c : cases) {
    SCOPED_TRACE(c.Args);
    const std::string chip = "r" + std::to_string(n++);
    const CliResult r = Run(chip, c.Args);
    EXPECT_EQ(r.exitCode, 2) << r.out << r.err;
    EXPECT_NE(r.err.find(c.Says), std::string::npos) << r.err;
    EXPECT_EQ(r.out.find("OK!"), std::string::npos) << r.out;
    // No chip packet: the trace holds at most the version query of the connection.
    const std::string trace = dir.Read(chip + ".trace");
    EXPECT_EQ(trace.find("F6"), std::string::npos) << trace;
  }
}

}  // namespace
}  // namespace lk::test
