#include "core/atomic_file.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <set>

#include "tests/support/temp_dir.h"

namespace lk {
namespace {

using test::TempDir;

std::set<std::string> Names(const std::filesystem::path& dir) {
  std::set<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(dir)) {
    names.insert(entry.path().filename().string());
  }
  return names;
}

// A save killed half way (here by the file-size limit, which stops the process inside
// its write as SIGKILL would) leaves its temporary file and the old target as it was;
// the next write into the folder removes that file and nothing else.
TEST(AtomicFileTest, AKilledSaveLeavesNothingAfterTheNextWrite) {
  TempDir dir;
  dir.Write("out.lkx", "old");
  const pid_t child = ::fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    const rlimit limit{1024, 1024};
    ::setrlimit(RLIMIT_FSIZE, &limit);
    std::string error;
    WriteFileAtomically(dir / "out.lkx", std::string(1 << 16, 'x'), error);
    ::_exit(0);  // not reached: SIGXFSZ ends the process inside the write
  }
  int status = 0;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  ASSERT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGXFSZ) << status;
  std::string childPrefix = TempFileName(child, 0);  // ".lktmp-PID-" and a serial
  childPrefix.resize(childPrefix.size() - 8);
  const std::set<std::string> before = Names(dir.Path());
  ASSERT_EQ(before.size(), 2u);
  EXPECT_EQ(before.begin()->rfind(childPrefix, 0), 0u) << *before.begin();
  EXPECT_EQ(dir.Read("out.lkx"), "old");

  // What is not a stale file of ours stays: a running process's file (this one's and
  // init's), the naming of other programs, a folder, a serial that is not ours.
  const std::set<std::string> kept = {
      TempFileName(::getpid(), 7), TempFileName(1, 7), "out.lkx.tmp12345-678", "keep.txt",
      childPrefix + "zz", TempFileName(child, 9) + "x"};
  for (const std::string& name : kept) dir.Write(name, "not ours");
  std::filesystem::create_directory(dir / TempFileName(child, 8));

  std::string error;
  ASSERT_TRUE(WriteFileAtomically(dir / "other", "new", error)) << error;
  std::set<std::string> expected = kept;
  expected.insert({"out.lkx", "other", TempFileName(child, 8)});
  EXPECT_EQ(Names(dir.Path()), expected);
}

// The temporary name does not grow with the target's, so every name the file system
// takes can be written and replaced.
TEST(AtomicFileTest, AnyNameTheFileSystemTakesCanBeWritten) {
  TempDir dir;
  for (const std::size_t length : {1u, 200u, 243u, 255u}) {
    SCOPED_TRACE(length);
    const std::string name(length, 'n');
    std::string error;
    ASSERT_TRUE(WriteFileAtomically(dir / name, "first", error)) << error;
    ASSERT_TRUE(WriteFileAtomically(dir / name, "second", error)) << error;
    EXPECT_EQ(dir.Read(name), "second");
  }
  std::string error;
  EXPECT_FALSE(WriteFileAtomically(dir / std::string(256, 'n'), "x", error));
  EXPECT_NE(error.find("File name too long"), std::string::npos) << error;
  EXPECT_EQ(Names(dir.Path()).size(), 4u) << "nothing left beside the targets";
}

}  // namespace
}  // namespace lk
