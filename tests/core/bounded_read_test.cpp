#include "core/bounded_read.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <chrono>

#include "tests/support/temp_dir.h"

namespace lk {
namespace {

using test::TempDir;

// Everything a hostile path can name. Each must come back at once: a FIFO that blocked
// or a device that was read would hang or exhaust the test instead.
TEST(BoundedReadTest, OnlyRegularFilesWithinTheLimitAreRead) {
  TempDir dir;
  dir.Write("limit", std::string(100, 'y'));
  dir.Write("big", std::string(101, 'x'));
  ASSERT_EQ(::mkfifo((dir / "fifo").c_str(), 0600), 0);
  std::filesystem::create_symlink("/dev/zero", dir / "zero");
  std::filesystem::create_symlink(dir / "limit", dir / "link");
  std::filesystem::create_symlink(dir / "nowhere", dir / "dangling");
  std::filesystem::create_directory(dir / "folder");

  struct Case {
    const char* name;
    ReadProblem problem;
    const char* reason;
  } cases[] = {
      {"limit", ReadProblem::None, ""},  // exactly at the limit
      {"link", ReadProblem::None, ""},   // a link is followed to its file
      {"fifo", ReadProblem::NotRegular, "it is a FIFO, not a regular file"},
      {"zero", ReadProblem::NotRegular, "it is a device, not a regular file"},
      {"big", ReadProblem::TooLarge, "it is larger than 100 bytes"},
      {"missing", ReadProblem::Missing, "it does not exist"},
      {"dangling", ReadProblem::Missing, "it does not exist"},
      {"folder", ReadProblem::Folder, "it is a folder"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    std::string bytes = "untouched";
    const auto start = std::chrono::steady_clock::now();
    const ReadOutcome outcome = ReadRegularFile(dir / c.name, 100, bytes);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));
    EXPECT_EQ(outcome.problem, c.problem);
    EXPECT_EQ(outcome.reason, c.reason);
    EXPECT_EQ(bytes, outcome.Ok() ? std::string(100, 'y') : "untouched");
  }
}

}  // namespace
}  // namespace lk
