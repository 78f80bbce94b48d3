// Runs every checked-in seed and every saved crash input through the fuzz targets, in
// the ordinary build, so that the corpus is exercised on each test run and a fixed
// crash can never come back unnoticed.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "fuzz/fuzz_targets.h"

namespace lk::fuzz {
namespace {

namespace fs = std::filesystem;

std::vector<std::string> TargetNames() {
  std::vector<std::string> names;
  for (const auto& t : FuzzTargets()) names.emplace_back(t.name);
  return names;
}

std::vector<fs::path> FilesIn(const fs::path& dir) {
  std::vector<fs::path> files;
  std::error_code ec;
  if (!fs::is_directory(dir, ec)) return files;
  for (const auto& entry : fs::directory_iterator(dir)) {
    if (entry.is_regular_file()) files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());
  return files;
}

std::string ReadAll(const fs::path& p) {
  std::ifstream in(p, std::ios::binary);
  return std::string((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
}

class FuzzReplay : public ::testing::TestWithParam<std::string> {};

TEST_P(FuzzReplay, SeedsAreJudgedAsNamedAndNothingCrashes) {
  const FuzzTarget* target = FindFuzzTarget(GetParam());
  ASSERT_NE(target, nullptr);
  const fs::path source = LK_SOURCE_DIR;
  const auto seeds = FilesIn(source / "fuzz" / "corpus" / GetParam());
  ASSERT_FALSE(seeds.empty()) << "no seeds for " << GetParam();
  int ok = 0;
  for (const fs::path& file : seeds) {
    const std::string bytes = ReadAll(file);
    EXPECT_LE(bytes.size(), target->maxLen) << file;
    const bool taken =
        target->run(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    const std::string name = file.filename().string();
    if (name.rfind("ok-", 0) == 0) {
      EXPECT_TRUE(taken) << file;
      ++ok;
    } else if (name.rfind("bad-", 0) == 0) {
      EXPECT_FALSE(taken) << file;
    }
  }
  EXPECT_GT(ok, 0) << "every target needs a seed its reader takes";
  // Inputs that once crashed a target: it is enough that they run through.
  for (const fs::path& file : FilesIn(source / "fuzz" / "regressions" / GetParam())) {
    const std::string bytes = ReadAll(file);
    target->run(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
  }
}

INSTANTIATE_TEST_SUITE_P(AllTargets, FuzzReplay, ::testing::ValuesIn(TargetNames()),
                         [](const auto& info) { return info.param; });

}  // namespace
}  // namespace lk::fuzz
