#include <gtest/gtest.h>

#include "files/image_writers.h"
#include "files/readers.h"
#include "tests/files/files_fixture.h"

namespace lk::test {
namespace {

class FtcReaderTest : public FilesTest {};

TEST_F(FtcReaderTest, OnlyThe3PS86NameIsAccepted) {
  struct Case {
    std::string name;
    bool accepted;
  } cases[] = {{"DW3PS86", true}, {" DW3PS8", false}, {"DW3PS87", false}, {"dw3ps86", false},
               {"", false}};
  for (const auto& c : cases) {
    host.messages.clear();
    ChipParams chip = Load("FT30D1");
    chip.RomWords[3] = 0x0333;
    const std::string bytes = MakeFtcImage(Pattern(16), c.name);
    EXPECT_EQ(ReadFtcFile(host, home, chip, dir.Write("a.ftc", bytes)), c.accepted) << c.name;
    if (c.accepted) {
      EXPECT_EQ(chip.RomWords, Pattern(16));
      EXPECT_TRUE(host.messages.empty());
    } else {
      EXPECT_EQ(chip.RomWords[3], 0x0333);
      EXPECT_EQ(host.MessageTexts(), std::vector<std::string>{"Only for 3PS86 is Enabled!"});
    }
  }
}

TEST_F(FtcReaderTest, ShortFilesAreRefused) {
  ChipParams chip = Load("FT30D1");
  // Shorter than the name field: no model named, so the 3PS86 message too.
  EXPECT_FALSE(ReadFtcFile(host, home, chip, dir.Write("b.ftc", "DW3PS")));
  EXPECT_EQ(host.MessageTexts(), std::vector<std::string>{"Only for 3PS86 is Enabled!"});
  EXPECT_FALSE(ReadFtcFile(host, home, chip, dir.Write("c.ftc", MakeFtcImage(Pattern(15)))));
  EXPECT_TRUE(ReadFtcFile(host, home, chip, dir.Write("d.ftc", MakeFtcImage(Pattern(17)))));
}

}  // namespace
}  // namespace lk::test
