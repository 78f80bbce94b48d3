#include <gtest/gtest.h>

#include "files/image_writers.h"
#include "files/readers.h"
#include "tests/files/files_fixture.h"

namespace lk::test {
namespace {

class BctReaderTest : public FilesTest {};

TEST_F(BctReaderTest, ModelCodeSelectsTheRecord) {
  struct Case {
    std::uint16_t code;
    const char* model;  // nullptr: refused
  } cases[] = {
      {1029, "LK3P86E"}, {1030, "LK3P89E"}, {1033, "LK3PS89"},
      {1031, nullptr},   // never given to a part
      {1032, nullptr},   // LK3P48A: not in this database
      {0, nullptr},      {1028, nullptr}, {1034, nullptr},
  };
  for (const auto& c : cases) {
    ChipParams chip = Load("T16");
    const std::string bytes = MakeBctImage(c.code, {0x0111, 0x0222, 0x0333}, Pattern(128));
    const bool ok = ReadBctFile(host, home, chip, dir.Write("a.bct", bytes));
    EXPECT_EQ(ok, c.model != nullptr) << c.code;
    EXPECT_EQ(chip.Name, c.model ? c.model : "T16") << c.code;
    if (ok) {
      EXPECT_EQ(chip.ConfigWords, (std::vector<std::int32_t>{0x0111, 0x0222, 0x0333}));
      EXPECT_EQ(chip.RomWords[0], 0x100);
      EXPECT_EQ(chip.RomWords[chip.RomSize], 0x100 + chip.RomSize);
    }
  }
}

TEST_F(BctReaderTest, FileMustHoldTheWholeProgramArea) {
  // LK3P86E has 64 words: at least 256 + 128 bytes.
  for (auto [words, ok] : {std::pair{64, true}, {65, true}, {200, true}, {63, false}}) {
    ChipParams chip = Load("T16");
    const std::string bytes = MakeBctImage(1029, {}, Pattern(static_cast<std::size_t>(words)));
    EXPECT_EQ(ReadBctFile(host, home, chip, dir.Write("b.bct", bytes)), ok) << words;
  }
  ChipParams chip = Load("T16");
  EXPECT_FALSE(ReadBctFile(host, home, chip, dir.Write("c.bct", std::string(145, '\0'))));
  EXPECT_FALSE(ReadBctFile(host, home, chip, dir.Write("d.bct", "")));
  EXPECT_EQ(chip.Name, "T16");
}

}  // namespace
}  // namespace lk::test
