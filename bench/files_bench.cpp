// The file cycle against a reference tool: open a 65,536-word Intel HEX image, compute the
// checksum and the hex document text, save it as a project file (which reopens it), and
// in the same run convert the same file with `objcopy -I ihex -O binary`. Prints the
// medians and the ratio ours / objcopy (goal: no slower).
//
// The chip model with RomSize 0xFFFF lives in a temporary program folder of its own.
// Our HEX reader takes the 16-bit record addresses as they are (extended address records
// are skipped, as the format rules of the writer's files want), so the upper half of
// this image lands on the lower half: the work done is the same, the image differs.
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

#include "bench/bench_support.h"
#include "core/chip_database.h"
#include "core/quiet_host.h"
#include "core/image.h"
#include "files/image_writers.h"
#include "files/open_path.h"
#include "files/project_file.h"

extern char** environ;

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

void Write(const fs::path& path, const std::string& text) {
  std::ofstream(path, std::ios::binary) << text;
}

double Median(std::vector<double> v) {
  std::sort(v.begin(), v.end());
  return v[v.size() / 2];
}

bool RunObjcopy(const fs::path& in, const fs::path& out) {
  std::string a0 = "objcopy", a1 = "-I", a2 = "ihex", a3 = "-O", a4 = "binary";
  std::string a5 = in.string(), a6 = out.string();
  char* argv[] = {a0.data(), a1.data(), a2.data(), a3.data(), a4.data(), a5.data(), a6.data(),
                  nullptr};
  pid_t pid = 0;
  if (posix_spawnp(&pid, "objcopy", nullptr, nullptr, argv, environ) != 0) return false;
  int status = 0;
  if (waitpid(pid, &status, 0) < 0) return false;
  return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

}  // namespace

int main(int argc, char** argv) {
  const int rounds = argc > 1 ? std::max(1, std::atoi(argv[1])) : 15;
  std::string tmpl = (fs::temp_directory_path() / "lkbench-XXXXXX").string();
  if (::mkdtemp(tmpl.data()) == nullptr) return 2;
  const fs::path dir = tmpl;
  fs::create_directories(dir / "dat");
  Write(dir / "dat" / "qvmc.ini",
        "[MCULIST]\nBENCH64K=1\n[BENCH64K]\nPROD=FFFF\nROMSIZE=FFFF\nCONFIGLENTH=1\n"
        "HEXMCU=FFFF\n");
  Write(dir / "dat" / "cfg.ini", "");
  Write(dir / "dat" / "data.dat",
        "[Data]\nMcuType=BENCH64K\n[RecentFile]\nFile0=\nFile1=\nFile2=\nFile3=\nFile4=\n");
  const lk::Home home(dir);
  lk::QuietHost host(stderr);

  const std::vector<std::int32_t> words = lk::bench::RandomWords(65536);
  const fs::path hex = dir / "image.hex";
  Write(hex, lk::MakeIntelHex(words, 16));

  lk::Project project;
  project.Chip = lk::LoadChipParams(host, home, "BENCH64K");
  if (!project.Chip.Loaded()) {
    std::cerr << "bench model did not load\n";
    return 2;
  }

  std::vector<double> ours, theirs;
  for (int r = 0; r < rounds; ++r) {
    auto t0 = Clock::now();
    const lk::OpenResult opened = lk::OpenPath(host, home, project, hex.string());
    // What the hex document window shows after the open.
    const std::string shown = lk::HexText(project.Chip);
    const lk::SaveResult saved =
        lk::SaveProject(host, home, project, (dir / "image.lkx").string());
    auto t1 = Clock::now();
    if (!opened.Opened || shown.empty() || !saved.Saved || !saved.Reopened.Opened) {
      std::cerr << "our cycle failed\n";
      return 1;
    }
    ours.push_back(std::chrono::duration<double, std::milli>(t1 - t0).count());

    t0 = Clock::now();
    const bool ok = RunObjcopy(hex, dir / "image.bin");
    t1 = Clock::now();
    if (!ok) {
      std::cerr << "objcopy failed\n";
      return 1;
    }
    theirs.push_back(std::chrono::duration<double, std::milli>(t1 - t0).count());
  }
  const double a = Median(ours), b = Median(theirs);
  std::printf("files: 65536-word HEX, %d rounds\n", rounds);
  std::printf("  ours (open + checksum + hex text + save + reopen): %.2f ms (median)\n", a);
  std::printf("  objcopy -I ihex -O binary:                          %.2f ms (median)\n", b);
  std::printf("  ratio ours/objcopy: %.2f\n", a / b);
  std::error_code ec;
  fs::remove_all(dir, ec);
  return 0;
}
