// Writes the example images of examples/: one file per format the program opens, for
// models of the shipped chip database, and one project with rolling-code settings.
// Every file is made by our own encoders (or Save) and then opened again through the
// open dispatcher as a check.
//
//   make_examples PROGRAM_FOLDER OUT_FOLDER
//
// PROGRAM_FOLDER holds dat/qvmc.ini (the repository root or a build folder). The data
// files are copied to a temporary folder first, so the recent-file list of the program
// folder is not touched.
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

#include "core/chip_database.h"
#include "core/quiet_host.h"
#include "files/image_writers.h"
#include "files/open_path.h"
#include "files/project_file.h"

namespace {

namespace fs = std::filesystem;

// A recognisable program of count words, the rest of the area blank.
std::vector<std::int32_t> Program(const lk::ChipParams& chip, std::size_t count) {
  std::vector<std::int32_t> words = chip.RomWords;
  for (std::size_t i = 0; i < count && i < words.size(); ++i) {
    words[i] = static_cast<std::int32_t>((i * 0x0123 + 0x00A5) & 0xFFFF) & chip.HexMcu;
  }
  return words;
}

int gWriteFailures = 0;

// A failed write is counted: not every file written is opened again below.
void WriteFile(const fs::path& path, const std::string& bytes) {
  if (std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes) return;
  std::cerr << "cannot write " << path << "\n";
  ++gWriteFailures;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::cerr << "usage: make_examples PROGRAM_FOLDER OUT_FOLDER\n";
    return 2;
  }
  const fs::path out = argv[2];
  std::string tmpl = (fs::temp_directory_path() / "lkexamples-XXXXXX").string();
  if (::mkdtemp(tmpl.data()) == nullptr) return 2;
  const fs::path temp = tmpl;
  std::error_code ec;
  fs::create_directories(temp / "dat", ec);
  fs::create_directories(out / "rolling", ec);
  for (const char* name : {"qvmc.ini", "cfg.ini", "data.dat"}) {
    fs::copy_file(fs::path(argv[1]) / "dat" / name, temp / "dat" / name, ec);
    if (ec) {
      std::cerr << "cannot copy dat/" << name << ": " << ec.message() << "\n";
      return 2;
    }
  }
  const lk::Home home(temp);
  // Messages are printed: an example must open without any.
  lk::QuietHost host(stderr);
  auto load = [&](const std::string& model) {
    lk::ChipParams chip = lk::LoadChipParams(host, home, model);
    if (!chip.Loaded()) std::cerr << "model " << model << " is not in the database\n";
    return chip;
  };

  struct Made {
    fs::path path;
    std::string model;  // the model selected when it is opened
  };
  std::vector<Made> made;

  // HEX for QVM50P99 (a rotated model: file word i lands on image word i + 1).
  lk::ChipParams p99 = load("QVM50P99");
  WriteFile(out / "qvm50p99.hex", lk::MakeIntelHex(Program(p99, 96)));
  made.push_back({out / "qvm50p99.hex", "QVM50P99"});

  lk::ChipParams a1 = load("LK8P51A1");
  WriteFile(out / "lk8p51a1.bin", lk::MakeBinImage(Program(a1, 200)));
  made.push_back({out / "lk8p51a1.bin", "LK8P51A1"});

  // QVM model number 1 is QVM75P89.
  lk::ChipParams p89 = load("QVM75P89");
  p89.RomWords = Program(p89, 128);
  p89.ConfigWords[0] = 0x3F7C;
  WriteFile(out / "qvm75p89.qvm", lk::MakeQvmText(1, p89));
  made.push_back({out / "qvm75p89.qvm", "LK8P32A3"});

  lk::ChipParams a3 = load("LK8P32A3");
  WriteFile(out / "lk8p32a3.sn8", lk::MakeSn8Image(Program(a3, 300)));
  made.push_back({out / "lk8p32a3.sn8", "LK8P32A3"});

  // BCT model code 1029 is LK3P86E.
  lk::ChipParams p86 = load("LK3P86E");
  WriteFile(out / "lk3p86e.bct", lk::MakeBctImage(1029, p86.ConfigWords, Program(p86, 150)));
  made.push_back({out / "lk3p86e.bct", "LK8F30D1"});

  lk::ChipParams d1 = load("LK8F30D1");
  WriteFile(out / "lk8f30d1.ftc", lk::MakeFtcImage(Program(d1, 64)));
  made.push_back({out / "lk8f30d1.ftc", "LK8F30D1"});

  // Project files through Save itself: with and without EEDATA.
  auto save = [&](lk::ChipParams chip, const fs::path& path) {
    lk::Project project;
    project.Chip = std::move(chip);
    const lk::SaveResult saved = lk::SaveProject(host, home, project, path.string());
    if (!saved.Saved || !saved.Reopened.Opened) std::cerr << "cannot save " << path << "\n";
    made.push_back({path, "QVM50P99"});
  };
  lk::ChipParams f96a = load("QVM50F96A");
  f96a.RomWords = Program(f96a, 256);
  for (auto& w : f96a.RomWords) w &= 0xFEFF;
  f96a.EeFlag = lk::kEeFlagPresent;
  for (std::size_t i = 0; i < f96a.EeBytes.size(); ++i) f96a.EeBytes[i] = std::uint8_t(i ^ 0x5A);
  save(f96a, out / "qvm50f96a-eedata.lkx");
  p99.RomWords = Program(p99, 96);
  save(p99, out / "qvm50p99.lkx");

  // A project with rolling code: four bytes at 7F3..7F0 (highest byte first).
  p89.EeFlag = lk::kEeFlagAbsent;
  save(p89, out / "rolling" / "project.lkx");
  WriteFile(out / "rolling" / "project.ini",
            "[Rolling Code]\r\nAddress=7F3 7F2 7F1 7F0\r\nWorld_Lenth=4\r\nMode=False\r\n"
            "Count=1 2 3 4\r\nStep=0 0 0 1\r\nValue=True\r\n2262mode=0\r\nVersion=1.0\r\n");

  // Every example must open cleanly on its model.
  int failures = host.MessageCount() + gWriteFailures;
  for (const Made& m : made) {
    lk::Project project;
    project.Chip = load(m.model);
    const int before = host.MessageCount();
    const lk::OpenResult result = lk::OpenPath(host, home, project, m.path.string());
    const bool ok = result.Opened && result.ImageLoaded && host.MessageCount() == before;
    std::cout << (ok ? "ok   " : "FAIL ") << m.path.string() << "  " << project.Chip.Name << "  "
              << result.ChecksumText << "\n";
    failures += ok ? 0 : 1;
  }
  fs::remove_all(temp, ec);
  return failures == 0 ? 0 : 1;
}
