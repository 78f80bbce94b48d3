#include "core/config_defs.h"

#include <gtest/gtest.h>

#include "core/chip_database.h"
#include "core/config_rules.h"
#include "core/session.h"
#include "tests/support/recording_host.h"
#include "tests/support/temp_dir.h"

namespace lk {
namespace {

using test::RecordingHost;
using test::TempDir;
using Words = std::vector<std::int32_t>;

TEST(ConfigDefsTest, CurrentChoiceLastMatchWins) {
  const ProfileList lines{"", "LENTH=1", "A=0,0,1", "B=0,1,1", "C=0,2,0", "D=0,0,1:0,1,0"};
  struct Case {
    std::int32_t word;
    const char* expected;
  } cases[] = {
      {0x0001, "D"},  // A, C and D match: D is last
      {0x0003, "C"},  // A, B, C match
      {0x0004, ""},   // nothing matches
      {0x0007, "B"},
  };
  for (const auto& c : cases) EXPECT_EQ(CurrentChoice(lines, {c.word}), c.expected) << c.word;
}

TEST(ConfigDefsTest, UnparsableOrOutOfRangeChoicesNeverMatch) {
  const ProfileList lines{"", "LENTH=1", "A=0,x,1", "B=1,0,1", "C=0,16,1",
                          "D=0,0", "F=0,0,2", "G=-1,0,1"};
  EXPECT_EQ(CurrentChoice(lines, {0xFFFF}), "");
  // A choice with no items at all matches every word.
  EXPECT_EQ(CurrentChoice({"", "LENTH=1", "E=", "A=0,x,1"}, {0x1234}), "E");
}

TEST(ConfigDefsTest, FieldBinaryMsbFirst) {
  EXPECT_EQ(FieldBinary("0,0:0,1:0,2", {0x0005}), "101");
  EXPECT_EQ(FieldBinary("0,0:0,1:0,2", {0x0006}), "110");
  EXPECT_EQ(FieldBinary("1,8:0,0", {0x0000, 0x0100}), "01");  // first item is the LSB
  EXPECT_EQ(FieldBinary("0,a", {0}), "");
  EXPECT_EQ(FieldBinary("2,0", {0}), "");
}

TEST(ConfigDefsTest, ApplyChoice) {
  struct Case {
    const char* items;
    Words before;
    Words after;
    bool ok;
  } cases[] = {
      {"0,3,1:0,4,0", {0x3FFF}, {0x3FEF}, true},
      {"0,3,1:0,4,0", {0x0000}, {0x0008}, true},
      {"1,0,0:1,1,1", {0x3FFF, 0x3FFD}, {0x3FFF, 0x3FFE}, true},
      {"0,0,2", {0x3FFF}, {0x3FFE}, true},  // any value but 1 clears
      {"0,0,1:0,z,1", {0x0000}, {0x0000}, false},
      {"1,0,1", {0x0000}, {0x0000}, false},  // the chip has no word 1
      {"", {0x0001}, {0x0001}, false},
  };
  for (const auto& c : cases) {
    Words w = c.before;
    EXPECT_EQ(ApplyChoiceItems(c.items, w), c.ok) << c.items;
    EXPECT_EQ(w, c.after) << c.items;
  }
}

// A typed field value goes back into exactly the field's bits, the last digit into the
// first item; it reads back as typed (short texts with their leading zeros).
TEST(ConfigDefsTest, ApplyFieldBinary) {
  struct Case {
    const char* items;
    const char* typed;
    Words before;
    Words after;
    const char* shown;  // FieldBinary afterwards; "" when refused
  } cases[] = {
      {"0,4:0,5:0,6", "011", {0x3FD1}, {0x3FB1}, "011"},
      {"0,4:0,5:0,6", "1", {0x3FFF}, {0x3F9F}, "001"},
      {"1,8:0,0", "10", {0x0000, 0x0100}, {0x0001, 0x0000}, "10"},
      {"0,4:0,5:0,6", "1111", {0x3FFF}, {0x3FFF}, ""},
      {"0,4:0,5:0,6", "102", {0x3FFF}, {0x3FFF}, ""},
      {"0,4:0,5:0,6", "", {0x3FFF}, {0x3FFF}, ""},
      {"1,0", "1", {0x0000}, {0x0000}, ""},  // the chip has no word 1
  };
  for (const auto& c : cases) {
    Words w = c.before;
    EXPECT_EQ(ApplyFieldBinary(c.items, c.typed, w), *c.shown != 0) << c.typed;
    EXPECT_EQ(w, c.after) << c.typed;
    if (*c.shown) {
      EXPECT_EQ(FieldBinary(c.items, w), c.shown);
    }
  }
}

TEST(ConfigDefsTest, DecodeFile) {
  TempDir dir;
  RecordingHost host;
  const auto file = dir.Write("cfg/M.cfg",
                              "; M\r\n[WDT 看门狗]\r\nLENTH=1\r\nOn=0,0,1\r\nOff=0,0,0\r\n"
                              "[TRIM]\r\nLENTH=3\r\nNAME=T\r\nDAT=0,4:0,5:0,6\r\n"
                              "[NO DAT]\r\nLENTH=2\r\nNAME=X\r\n"
                              "[SHORT]\r\nLENTH=1\r\n"
                              "[AFTER]\r\nLENTH=1\r\nA=0,0,1\r\n");
  const auto rows = DecodeConfigOptions(host, file, {0x0051});
  ASSERT_EQ(rows.size(), 3u);  // SHORT ends the list
  EXPECT_EQ(rows[0].Option, "WDT 看门狗");
  EXPECT_EQ(rows[0].Value, "On");
  EXPECT_EQ(rows[1].Option, "TRIM");
  EXPECT_EQ(rows[1].Value, "101");
  EXPECT_EQ(rows[2].Value, "");
  EXPECT_TRUE(host.messages.empty());

  // The same options as the dialog lists them.
  const auto options = ReadConfigOptions(host, file);
  ASSERT_EQ(options.size(), 3u);
  EXPECT_TRUE(options[0].Choice);
  EXPECT_EQ(options[0].Labels, (std::vector<std::string>{"On", "Off"}));
  EXPECT_FALSE(options[1].Choice);
  EXPECT_EQ(options[1].FieldName, "T");
  EXPECT_EQ(options[1].Dat, "0,4:0,5:0,6");

  Words w{0x0051};
  EXPECT_TRUE(ApplyConfigChoice(host, file, "WDT 看门狗", "Off", w));
  EXPECT_EQ(w, Words{0x0050});
  EXPECT_FALSE(ApplyConfigChoice(host, file, "WDT 看门狗", "Maybe", w));
}

TEST(ConfigDefsTest, MissingFileGivesMessageAndNoRows) {
  TempDir dir;
  RecordingHost host;
  ChipParams chip;
  chip.Name = "NOPE";
  chip.ConfigWords = {0};
  EXPECT_TRUE(ShowConfigOptions(host, Home(dir.Path()), chip).empty());
  ASSERT_EQ(host.messages.size(), 1u);
  EXPECT_EQ(host.messages[0].text,
            "File: \"" + (dir / "cfg" / "NOPE.cfg").string() + "\" Not Found!");
}

// Every model of the shipped chip database has definitions that fit its words. Each
// choice names bits inside the words and the word width, shared with no other choice
// option, and reads back as itself once applied; each field has LENTH bits inside the
// width; the default words (as loaded, as at start-up, as the default button makes
// them) decode to a choice of every option.
TEST(ShippedDefinitionsTest, EveryModelDecodesItsDefaults) {
  RecordingHost host;
  const Home home(LK_SOURCE_DIR);
  const std::vector<std::string> models = ListModels(host, home);
  ASSERT_FALSE(models.empty());
  for (const std::string& model : models) {
    SCOPED_TRACE(model);
    const ChipParams chip = LoadChipParams(host, home, model);
    ASSERT_EQ(chip.Name, model);
    const std::size_t n = chip.ConfigWords.size();
    const std::pair<const char*, Words> defaults[] = {
        {"loaded", chip.ConfigWords},
        {"start-up", LoadStartupChip(host, home, model).ConfigWords},
        {"default button", DefaultConfigWords(host, home, chip)}};
    const auto file = home.ConfigDefinitions(model);
    const ProfileList options = GetSections(host, file);
    EXPECT_GT(options.size(), 1u);
    for (const auto& [when, words] : defaults) {
      const auto rows = DecodeConfigOptions(host, file, words);
      ASSERT_EQ(rows.size() + 1, options.size());  // no section ends the list early
      for (const auto& row : rows) EXPECT_NE(row.Value, "") << row.Option << ", " << when;
    }
    EXPECT_TRUE(CheckConfigCombination(host, home, chip));
    Words used(n, 0);  // bits named by the choice options so far
    for (std::size_t s = 1; s < options.size(); ++s) {
      SCOPED_TRACE(options[s]);
      const ProfileList lines = GetSectionLines(host, file, options[s]);
      ASSERT_EQ(ProfileKey(lines[1]), "LENTH");
      const std::string width = ProfileValue(lines[1]);
      if (width != "1") {
        const std::string dat = GetValue(host, file, options[s], "DAT");
        EXPECT_EQ(FieldBinary(dat, Words(n, chip.HexMcu)), std::string(std::stoul(width), '1'));
        continue;
      }
      Words named(n, 0);  // the bits this option's choices name
      for (std::size_t i = 2; i < lines.size(); ++i) {
        const std::string label = ProfileKey(lines[i]);
        Words set(n, 0), cleared(n, 0xFFFF), chosen = chip.ConfigWords;
        ASSERT_TRUE(ApplyChoiceItems(ProfileValue(lines[i]), set)) << label;
        ApplyChoiceItems(ProfileValue(lines[i]), cleared);
        for (std::size_t w = 0; w < n; ++w) named[w] |= set[w] | (cleared[w] ^ 0xFFFF);
        ASSERT_TRUE(ApplyConfigChoice(host, file, options[s], label, chosen));
        EXPECT_EQ(CurrentChoice(lines, chosen), label);
      }
      for (std::size_t w = 0; w < n; ++w) {
        EXPECT_EQ(named[w] & ~chip.HexMcu, 0) << "word " << w;
        EXPECT_EQ(named[w] & used[w], 0) << "word " << w << " shared with another option";
        used[w] |= named[w];
      }
    }
  }
  EXPECT_TRUE(host.messages.empty());
}

}  // namespace
}  // namespace lk
