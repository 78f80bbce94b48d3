// A program folder of our own for the file tests: a small chip database with one model
// per rule the readers apply, an empty rules file and a session file with an empty
// recent list. Tests never depend on the shipped dat/.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "core/chip_database.h"
#include "core/home.h"
#include "core/project.h"
#include "tests/support/recording_host.h"
#include "tests/support/temp_dir.h"

namespace lk::test {

inline constexpr const char* kTestDatabase =
    "[MCULIST]\n"
    "T16=\nQVM50F96B=\nQVM50P99=\nLKR467=\nLK51A1=\nLK101E=\nQVM50F49E=\nQVM50P49C=\n"
    "QVM50F775=\nQVM50F5759=\nLK3P86E=\nLK3P89E=\nLK3PS89=\nSN32A3=\nFT30D1=\nQVM75P89=\n"
    "QVM75FH88=\nABCDEFGHIJKLMN16=\nNOEE=\nEEZERO=\n"
    "[T16]\nPROD=1234\nROMSIZE=F\nCONFIGLENTH=1\nHEXMCU=3FFF\nEEDATA=F\n"
    "[QVM50F96B]\nPROD=5096\nROMSIZE=FFF\nCONFIGLENTH=1\nHEXMCU=FFFF\n"
    "[QVM50P99]\nPROD=5099\nROMSIZE=7FF\nCONFIGLENTH=1\nHEXMCU=3FFF\n"
    "[LKR467]\nPROD=LK467\nROMSIZE=3FF\nCONFIGLENTH=0\nHEXMCU=3FFF\n"
    "[LK51A1]\nPROD=51A1\nROMSIZE=7FF\nCONFIGLENTH=0\nHEXMCU=3FFF\n"
    "[LK101E]\nPROD=101E\nROMSIZE=F\nCONFIGLENTH=1\nHEXMCU=3FFF\n"
    "[QVM50F49E]\nPROD=4949\nROMSIZE=F\nCONFIGLENTH=0\nHEXMCU=3FFF\n"
    "[QVM50P49C]\nPROD=4949\nROMSIZE=7FF\nCONFIGLENTH=0\nHEXMCU=3FFF\n"
    "[QVM50F775]\nPROD=0775\nROMSIZE=F\nCONFIGLENTH=1\nHEXMCU=3FFF\n"
    "[QVM50F5759]\nPROD=5759\nROMSIZE=F\nCONFIGLENTH=1\nHEXMCU=3FFF\n"
    "[LK3P86E]\nPROD=3086\nROMSIZE=3F\nCONFIGLENTH=2\nHEXMCU=3FFF\n"
    "[LK3P89E]\nPROD=3089\nROMSIZE=3F\nCONFIGLENTH=2\nHEXMCU=3FFF\n"
    "[LK3PS89]\nPROD=3189\nROMSIZE=7F\nCONFIGLENTH=2\nHEXMCU=3FFF\n"
    "[SN32A3]\nPROD=32A3\nROMSIZE=3FF\nCONFIGLENTH=1\nHEXMCU=FFFF\n"
    "[FT30D1]\nPROD=30D1\nROMSIZE=F\nCONFIGLENTH=1\nHEXMCU=3FFF\n"
    "[QVM75P89]\nPROD=7589\nROMSIZE=F\nCONFIGLENTH=1\nHEXMCU=3FFF\nEEDATA=7\n"
    "[QVM75FH88]\nPROD=7588\nROMSIZE=F\nCONFIGLENTH=0\nHEXMCU=3FFF\n"
    "[ABCDEFGHIJKLMN16]\nPROD=1616\nROMSIZE=7\nCONFIGLENTH=0\nHEXMCU=3FFF\n"
    "[NOEE]\nPROD=0000\nROMSIZE=7\nCONFIGLENTH=0\nHEXMCU=3FFF\n"
    "[EEZERO]\nPROD=0000\nROMSIZE=7\nCONFIGLENTH=0\nHEXMCU=3FFF\nEEDATA=0\n";

class FilesTest : public ::testing::Test {
 protected:
  FilesTest() : home(dir.Path()) {
    dir.Write("dat/qvmc.ini", kTestDatabase);
    dir.Write("dat/cfg.ini", "");
    dir.Write("dat/data.dat",
              "[Data]\nMcuType=T16\n[RecentFile]\nFile0=\nFile1=\nFile2=\nFile3=\nFile4=\n");
  }

  ChipParams Load(const std::string& model) {
    ChipParams chip = LoadChipParams(host, home, model);
    EXPECT_TRUE(chip.Loaded()) << model;
    return chip;
  }

  Project ProjectOf(const std::string& model) {
    Project project;
    project.Chip = Load(model);
    return project;
  }

  std::string PathOf(const std::string& name) const { return (dir / name).string(); }

  // Words 0..n-1 = base + i (masked to 14 bits), a recognisable pattern.
  static std::vector<std::int32_t> Pattern(std::size_t n, std::int32_t base = 0x100) {
    std::vector<std::int32_t> words(n);
    for (std::size_t i = 0; i < n; ++i) words[i] = (base + static_cast<std::int32_t>(i)) & 0x3FFF;
    return words;
  }

  TempDir dir;
  Home home;
  RecordingHost host;
};

}  // namespace lk::test
