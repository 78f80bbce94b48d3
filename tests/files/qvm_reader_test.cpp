#include <gtest/gtest.h>

#include "files/image_writers.h"
#include "files/readers.h"
#include "tests/files/files_fixture.h"

namespace lk::test {
namespace {

class QvmReaderTest : public FilesTest {
 protected:
  bool ReadQvm(ChipParams& chip, const std::string& text) {
    return ReadQvmFile(host, home, chip, dir.Write("in.qvm", text));
  }
};

TEST_F(QvmReaderTest, ModelConfigurationEedataAndProgramAreRead) {
  ChipParams source = Load("QVM75P89");
  source.RomWords = Pattern(16);
  source.ConfigWords = {0x1234, 0x0567};
  source.EeFlag = kEeFlagPresent;
  for (std::size_t i = 0; i < source.EeBytes.size(); ++i) source.EeBytes[i] = std::uint8_t(i * 3);

  ChipParams chip = Load("T16");
  ASSERT_TRUE(ReadQvm(chip, MakeQvmText(1, source)));
  EXPECT_EQ(chip.Name, "QVM75P89") << "the file's model replaces the selected one";
  EXPECT_EQ(chip.RomWords, source.RomWords);
  EXPECT_EQ(chip.ConfigWords, source.ConfigWords);
  EXPECT_EQ(chip.EeBytes, source.EeBytes);
  EXPECT_EQ(chip.EeFlag, kEeFlagPresent);
  EXPECT_TRUE(host.messages.empty());

  // Without a 10 record the project carries no EEDATA: the fresh record's empty flag.
  source.EeFlag = kEeFlagAbsent;
  ASSERT_TRUE(ReadQvm(chip, MakeQvmText(1, source)));
  EXPECT_EQ(chip.EeFlag, 0);
}

TEST_F(QvmReaderTest, UnknownModelsShowTheQvmMessageAndKeepTheImage) {
  const char* files[] = {
      ":0200000034121200\n",                  // no model record
      ":000000QV00000B\n:0200000034121200\n",  // QVM53P64: not in our database
      ":000000QV000020\n",                     // 32: not in the model table
      ":000000QV0000\n",                       // no number
      ":000000QV0000XY\n",                     // not hexadecimal
  };
  for (const char* text : files) {
    host.messages.clear();
    ChipParams chip = Load("T16");
    chip.RomWords[0] = 0x0AAA;
    EXPECT_FALSE(ReadQvm(chip, text)) << text;
    EXPECT_EQ(host.MessageTexts(), std::vector<std::string>{"QVM File Error!"}) << text;
    EXPECT_EQ(chip.Name, "T16");
    EXPECT_EQ(chip.RomWords[0], 0x0AAA);
  }
}

TEST_F(QvmReaderTest, BrokenOrUnknownRecordsRefuseTheFile) {
  const std::string model = ":000000QV000001\n";
  const std::string bad[] = {
      model + ":0400000812345678DB\n",   // bad checksum
      model + ":06000008010203040506DD\n",  // three words, the chip has two
      model + ":020001080102F2\n",        // odd word address
      model + ":020000080102\n",          // cut short
      model + ":080000100102030405060708C4\n:080008100102030405060708BC\n",  // EEDATA past 7
      model + ":0100000700F8\n",          // unknown record type
      model + "garbage\n",
      model + ":02000000GG1200\n",        // non-hex program data
  };
  for (const auto& text : bad) {
    ChipParams chip = Load("T16");
    EXPECT_FALSE(ReadQvm(chip, text)) << text;
    EXPECT_EQ(chip.Name, "T16");
  }
  ChipParams chip = Load("T16");
  EXPECT_TRUE(ReadQvm(chip, model + ":0400000801020304EA\n:00000001FF\n\n"));
  EXPECT_EQ(chip.ConfigWords, (std::vector<std::int32_t>{0x0201, 0x0403}));
  // Program records beyond memory are skipped, later ones still count.
  EXPECT_TRUE(ReadQvm(chip, model + ":02100000AAAA00\n:0200000034121200\n"));
  EXPECT_EQ(chip.RomWords[0], 0x1234);
}

TEST_F(QvmReaderTest, AliasModelsAreRotatedAndAdapted) {
  // 16 = QVM50P49D, stored in the QVM50F775 record: program rotated right by one,
  // configuration translated (external RC is replaced with a message).
  ChipParams source = Load("QVM50F775");
  source.RomWords = Pattern(16);
  source.ConfigWords = {0x3FFF, 0x3FFF};
  ChipParams chip = Load("T16");
  ASSERT_TRUE(ReadQvm(chip, MakeQvmText(16, source)));
  EXPECT_EQ(chip.Name, "QVM50F775");
  EXPECT_EQ(chip.RomWords[0], 0x10F);
  EXPECT_EQ(chip.RomWords[1], 0x100);
  EXPECT_EQ(chip.ConfigWords[0], 0x3FFF);
  ASSERT_EQ(host.messages.size(), 1u);
  EXPECT_NE(host.messages[0].text.find("外部RC振荡"), std::string::npos);
}

}  // namespace
}  // namespace lk::test
