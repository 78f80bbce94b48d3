#include "core/config_rules.h"

#include <gtest/gtest.h>

#include "tests/support/recording_host.h"
#include "tests/support/temp_dir.h"

namespace lk {
namespace {

using test::RecordingHost;
using test::TempDir;
using Words = std::vector<std::int32_t>;

struct RuleCase {
  const char* name;
  const char* rules;  // dat/cfg.ini
  const char* model;
  const char* prod;
  Words before;
  Words after;
};

class ConfigRulesTest : public ::testing::TestWithParam<RuleCase> {};

TEST_P(ConfigRulesTest, Applies) {
  const RuleCase& c = GetParam();
  TempDir dir;
  RecordingHost host;
  dir.Write("dat/cfg.ini", c.rules);
  EXPECT_EQ(ApplyConfigRules(host, Home(dir.Path()), c.model, c.prod, c.before), c.after);
  EXPECT_TRUE(host.messages.empty());
}

INSTANTIATE_TEST_SUITE_P(
    Cases, ConfigRulesTest,
    ::testing::Values(
        RuleCase{"OrAndByModel", "[M]\r\nW0&=3FF7\r\nW1|=0010\r\n", "M", "1234",
                 {0x3FEF, 0x0000}, {0x3FE7, 0x0010}},
        RuleCase{"ByProductCode", "[32A3]\r\nW1&=1FFF\r\n", "X", "32A3", {0xFFFF, 0xFFFF},
                 {0xFFFF, 0x1FFF}},
        RuleCase{"OtherSectionsIgnored", "[A]\r\nW0&=0\r\n[a]\r\nW0&=0\r\n", "B", "a0", {0x3FFF},
                 {0x3FFF}},
        RuleCase{"CommentsAndStarLines", "[M]\r\n*W0&=0\r\nW0&=00FF ; low byte\r\n", "M", "",
                 {0x3FFF}, {0x00FF}},
        RuleCase{"ConditionHolds", "[M]\r\nW0==3FFF\r\nW1&=0\r\n", "M", "", {0x3FFF, 0x3FFF},
                 {0x3FFF, 0x0000}},
        RuleCase{"ConditionFails", "[M]\r\nW0==1234\r\nW1&=0\r\nW0==3FFF\r\nW1|=1\r\n", "M", "",
                 {0x3FFF, 0x2000}, {0x3FFF, 0x2001}},
        RuleCase{"ConditionSeesEarlierEntries", "[M]\r\nW0&=00FF\r\nW0==00FF\r\nW1&=0\r\n", "M",
                 "", {0x3FFF, 0x3FFF}, {0x00FF, 0x0000}},
        RuleCase{"ConditionEndsWithSection", "[M]\r\nW0==0\r\n[M]\r\nW1&=0\r\n", "M", "",
                 {0x3FFF, 0x3FFF}, {0x3FFF, 0x0000}},
        RuleCase{"BadLinesSkipped",
                 "[M]\r\nW9|=1\r\nW0|=\r\nW0^=1\r\nW0|=XYZ\r\nX0|=1\r\nW0|=123456789\r\nW1|=2\r\n",
                 "M", "", {0, 0}, {0, 2}},
        RuleCase{"Fixed30D1", "", "LK8F30D1", "30D1", {0x3FFF, 0x3FFF, 0x3FFF},
                 {0x3FFF, 0x3FFC, 0x3FFF}},
        RuleCase{"Fixed2023", "", "LK8P2023", "2023", {0x3FFF}, {0x1FFF}},
        RuleCase{"FixedAfterFile", "[30D1]\r\nW1|=0007\r\n", "Y", "30D1", {0, 0x3FF8}, {0, 0x3FFC}},
        RuleCase{"Fixed30D1WithoutWordOne", "", "Z", "30D1", {0x3FFF}, {0x3FFF}}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(ConfigRulesMissingFileTest, NoRulesNoMessage) {
  TempDir dir;
  RecordingHost host;
  EXPECT_EQ(ApplyConfigRules(host, Home(dir.Path()), "M", "2023", {0x3FFF}), Words{0x1FFF});
  EXPECT_TRUE(host.messages.empty());
}

// The definitions used by the combination check: OSCD is bit 2 of word 1, LVDT bits 1..0.
const char kDefs[] =
    "[CONFIG LVDT]\r\nLENTH=1\r\n2.0V=1,0,0:1,1,0\r\n2.6V=1,0,1:1,1,0\r\n"
    "2.8V=1,0,0:1,1,1\r\n3.6V=1,0,1:1,1,1\r\n"
    "[CONFIG OSCD]\r\nLENTH=1\r\n2 oscillator periods=1,2,0\r\n4 oscillator periods=1,2,1\r\n";

TEST(ConfigCombinationTest, OscdTwoPeriodsNeedsTheModelsVoltage) {
  struct Case {
    const char* model;
    std::int32_t word1;
    bool accepted;
    const char* voltage;
  } cases[] = {
      {"LK3PW89", 0x3FFA, true, ""},                                     // 2 periods + 2.8V
      {"LK3PW89", 0x3FF9, false, "2.8V"},                                // 2 periods + 2.6V
      {"LK3PS89", 0x3FFB, false, "2.8V"},                                // 2 periods + 3.6V
      {"LK3PW89", 0x3FFD, true, ""},                                     // 4 periods: any voltage
      {"LK3P7674", 0x3FF9, true, ""},                                    // 2 periods + 2.6V
      {"LK3P7674", 0x3FFA, false, "2.6V"}, {"OTHER", 0x3FF9, true, ""},  // no rule for other models
  };
  for (const auto& c : cases) {
    TempDir dir;
    RecordingHost host;
    dir.Write(std::string("cfg/") + c.model + ".cfg", kDefs);
    ChipParams chip;
    chip.Name = c.model;
    chip.ConfigWords = {0x3FFF, c.word1};
    EXPECT_EQ(CheckConfigCombination(host, Home(dir.Path()), chip), c.accepted)
        << c.model << " " << c.word1;
    if (c.accepted) {
      EXPECT_TRUE(host.messages.empty());
    } else {
      ASSERT_EQ(host.messages.size(), 1u);
      EXPECT_EQ(host.messages[0].text, std::string("在CONFIG OSCD选项选择2 oscillator periods时，"
                                                   "CONFIG LVDT选项必须选择") +
                                           c.voltage + "。");
    }
  }
}

}  // namespace
}  // namespace lk
