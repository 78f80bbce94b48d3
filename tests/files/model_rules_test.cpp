#include "files/model_rules.h"

#include <gtest/gtest.h>

#include "tests/support/recording_host.h"

namespace lk::test {
namespace {

TEST(ModelRulesTest, Aliases) {
  const std::pair<const char*, const char*> cases[] = {
      {"QVM50P49D", "QVM50F775"},  {"QVM50F49D", "QVM50F775"},  {"QVM50P79D", "QVM50F776"},
      {"QVM50F79D", "QVM50F776"},  {"QVM50F77A", "QVM50F77B"},  {"QVM50T43", "QVM50F5759"},
      {"QVM50T43F", "QVM50F5759"}, {"QVM50FT43", "QVM50F5759"}, {"QVM50FT75", "QVM50F5759"},
      {"QVM50FT45", "QVM50F576"},  {"QVM3T41B", "QVM50F576"},   {"QVM3T41BF", "QVM50F576"},
      {"QVM50F775", "QVM50F775"},  {"qvm50p49d", "qvm50p49d"},  {"", ""},
  };
  for (auto [model, record] : cases) EXPECT_EQ(ResolveModelAlias(model), record) << model;
}

TEST(ModelRulesTest, OscillatorAdaptation) {
  const std::string rc = "所打开文件的振荡方式设置为外部RC振荡，而当前芯片不支持此振荡方式，"
                         "将自动设置成内部RC振荡。";
  const std::string xt = "所打开文件的振荡方式设置为外部XT振荡，而当前芯片不支持此振荡方式，"
                         "将自动设置成内部RC振荡。";
  struct Case {
    const char* model;
    std::vector<std::int32_t> in, out;
    std::string message;
  } cases[] = {
      {"QVM50P49D", {0x3FFF, 0x3FFF}, {0x3FFF, 0x3FFF}, rc},
      {"QVM50F49D", {0x3FFF, 0x3FFF}, {0x3F6F, 0x3FFF}, rc},  // group 2 clears 0x90
      {"QVM50P79D", {0x0000, 0x0000}, {0x3D72, 0x3FFF}, ""},  // word 1 bit 8 clear
      {"QVM50F79D", {0x0000, 0x0000}, {0x3D73, 0x3FFF}, ""},
      {"QVM3T41B", {0x0012, 0x0100}, {0x3DE3, 0x3FFF}, xt},
      {"QVM50T43", {0x028D, 0x0000}, {0x3FFE, 0x3FFF}, ""},  // 0x80 keeps bits 7 and 4
      {"QVM50T43F", {0x021D}, {0x3FEF}, ""},             // 0x10 clears bit 4, 1 word
      {"QVM50FT43", {0x1000, 0x1234}, {0x0400, 0x1234}, ""},  // group 3 in place
      {"QVM50FT45", {0x3BFF}, {0x2FFF}, ""},
      {"QVM50F775", {0x0003, 0x0000}, {0x0003, 0x0000}, ""},  // not an alias model
      {"QVM50P49D", {}, {}, ""},
  };
  for (const auto& c : cases) {
    RecordingHost host;
    EXPECT_EQ(AdaptOscillatorConfig(host, c.model, c.in), c.out) << c.model;
    if (c.message.empty()) {
      EXPECT_TRUE(host.messages.empty()) << c.model;
    } else {
      ASSERT_EQ(host.messages.size(), 1u) << c.model;
      EXPECT_EQ(host.messages[0].text, c.message);
      EXPECT_EQ(host.messages[0].caption, kAppTitle);
    }
  }
}

TEST(ModelRulesTest, RotationSets) {
  for (const char* model : {"QVM50FT99", "QVM50F96B", "QVM50P99", "QVM3T41BF", "QVM50F77A"}) {
    EXPECT_TRUE(IsHexRotatedModel(model)) << model;
  }
  for (const char* model : {"QVM50P49C", "QVM50F96A", "QVM50F775", "T16", ""}) {
    EXPECT_FALSE(IsHexRotatedModel(model)) << model;
  }
  std::vector<std::int32_t> words{1, 2, 3};
  RotateWordsRight(words);
  EXPECT_EQ(words, (std::vector<std::int32_t>{3, 1, 2}));
  RotateWordsLeft(words);
  EXPECT_EQ(words, (std::vector<std::int32_t>{1, 2, 3}));
}

}  // namespace
}  // namespace lk::test
