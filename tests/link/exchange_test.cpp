#include "link/exchange.h"

#include <gtest/gtest.h>

#include <chrono>

#include "link/identity_commands.h"
#include "tests/link/fake_wire.h"

namespace lk::test {
namespace {

using Bytes = std::vector<std::uint8_t>;

TEST(CheckAnswerTest, JudgesLengthBeforeChecksum) {
  struct Case {
    const char* what;
    Report answer;
    bool good;
  };
  Report len2{};
  len2[1] = 2;
  len2[2] = 2;  // the matching "checksum" of [1..1] if the length were trusted
  Report len65{};
  len65[1] = 65;
  Report badSum = Checked(0xE1, {1, 2});
  badSum[5] ^= 0x01;
  Report full{};
  full[1] = 64;
  unsigned sum = 64;
  for (int i = 2; i <= 63; ++i) sum += (full[i] = static_cast<std::uint8_t>(i));
  full[64] = sum & 0xFF;
  Report three{};
  three[1] = 3;
  three[2] = 0xE1;
  three[3] = 0xE4;  // 3 + 0xE1
  const Case cases[] = {
      {"length 2", len2, false},
      {"length 65", len65, false},
      {"bad checksum", badSum, false},
      {"length 3, no data", three, true},
      {"length 64", full, true},
      {"with data", Checked(0xA0, {3, 1}), true},
  };
  for (const Case& c : cases) EXPECT_EQ(CheckAnswer(c.answer), c.good) << c.what;
}

TEST(ExchangeTest, VersionQueryStoresTheWordOrLeavesItOnABadAnswer) {
  WriterFixture f(0);
  f.wire->script.push_back(Checked(0xA0, {2, 7}));
  ASSERT_EQ(GetWriterVersion(f.writer), Fault::None);
  EXPECT_EQ(f.wire->Packet(0), (Bytes{3, 0xA0, 0xA3}));  // the checksum is a literal
  EXPECT_EQ(f.wire->sent[0][0], 0);                      // report ID
  EXPECT_EQ(f.writer.WriterVersion, 0x0702u);
  EXPECT_TRUE(f.writer.FirstGeneration());

  Report corrupt = Checked(0xA0, {3, 1});
  corrupt[5] ^= 0xFF;
  const std::pair<std::optional<Report>, Fault> answers[] = {
      {std::nullopt, Fault::Timeout},
      {Checked(0xE1, {3, 1}), Fault::Refused},
      {corrupt, Fault::BadFrame}};
  for (const auto& [answer, fault] : answers) {
    WriterFixture g(0x0105);
    g.wire->script.push_back(answer);
    EXPECT_EQ(GetWriterVersion(g.writer), fault);
    EXPECT_EQ(g.writer.LastFault(), fault);
    EXPECT_EQ(g.writer.WriterVersion, 0x0105u);
  }
}

TEST(ExchangeTest, FinishOperationSendsResultWaitsAndEnds) {
  for (bool passed : {true, false}) {
    WriterFixture f;
    FinishOperation(f.writer, passed);
    ASSERT_EQ(f.wire->sent.size(), 2u);
    const std::uint8_t result = passed ? 0xE5 : 0xE6;
    EXPECT_EQ(f.wire->Packet(0), (Bytes{3, result, static_cast<std::uint8_t>(3 + result)}));
    EXPECT_EQ(f.wire->Packet(1), (Bytes{3, 0xE4, 0xE7}));
    EXPECT_EQ(f.waits, (std::vector<int>{100}));
  }
}

TEST(ExchangeTest, ReturnToIdleOnlyOnTheFirstGeneration) {
  struct Case {
    std::uint32_t version;
    std::size_t reports;
  };
  for (const Case c : {Case{0x0002, 1}, Case{0x0102, 1}, Case{0x0003, 0}, Case{0x0005, 0}}) {
    WriterFixture f(c.version);
    ReturnToIdle(f.writer);
    ASSERT_EQ(f.wire->sent.size(), c.reports) << c.version;
    if (c.reports == 1) {
      EXPECT_EQ(f.wire->Packet(0), (Bytes{3, 0xE1, 0xE4}));
      EXPECT_EQ(f.waits, (std::vector<int>{50}));
    }
  }
}

// Polls 0xF1 while the writer answers busy; only 0xE1 means ready.
TEST(ExchangeTest, WaitWriterReadyPollsWhileBusy) {
  const std::pair<std::optional<Report>, Fault> lastAnswers[] = {
      {Checked(0xE1), Fault::None},
      {Checked(0xE2), Fault::NotBlank},
      {Checked(0x00), Fault::Refused},
      {std::nullopt, Fault::Timeout}};
  for (const auto& [last, fault] : lastAnswers) {
    WriterFixture f;
    f.wire->script.assign(5, Checked(0xE3));
    f.wire->script.push_back(last);
    EXPECT_EQ(WaitWriterReady(f.writer), fault);
    ASSERT_EQ(f.wire->sent.size(), 6u);
    for (std::size_t i = 0; i < 6; ++i) EXPECT_EQ(f.wire->Packet(i), (Bytes{3, 0xF1, 0xF4}));
  }
}

TEST(ExchangeTest, WaitWriterReadyGivesUpAtItsDeadline) {
  WriterFixture f;
  f.wire->responder = [](const Report&) { return Checked(0xE3); };
  f.writer.SetReadyDeadlineMs(80);
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(WaitWriterReady(f.writer), Fault::StillBusy);
  const auto took = std::chrono::steady_clock::now() - start;
  EXPECT_GE(took, std::chrono::milliseconds(80));
  EXPECT_LT(took, std::chrono::seconds(2));
  EXPECT_FALSE(f.host.diagnostics.empty());
}

TEST(ExchangeTest, ReadPacketsByGeneration) {
  // 41 words: one full packet of 32 and a last one of 9.
  {
    WriterFixture f(3);
    f.memory.config.assign(41, 0);
    for (int i = 0; i < 41; ++i) f.memory.config[i] = 0x100 * i + 1;
    const auto words = ReadWords(f.writer, 40, 0xF5);
    ASSERT_TRUE(words);
    ASSERT_EQ(f.wire->sent.size(), 2u);
    EXPECT_EQ(f.wire->Packet(0), (Bytes{6, 0xF5, 0, 0, 64, 0x3B}));
    EXPECT_EQ(f.wire->Packet(1), (Bytes{6, 0xF5, 32, 0, 18, 0x2D}));
    ASSERT_EQ(words->size(), 41u);
    EXPECT_EQ((*words)[40], 0x2801);
  }
  {
    WriterFixture f(2);
    const auto words = ReadWords(f.writer, 40, 0xF2);
    ASSERT_TRUE(words);
    ASSERT_EQ(f.wire->sent.size(), 2u);
    EXPECT_EQ(f.wire->Packet(0), (Bytes{3, 0xF2, 0xF5}));
    EXPECT_EQ(f.wire->Packet(1), (Bytes{3, 0xF2, 0xF5}));
    EXPECT_EQ(words->size(), 41u);
  }
}

TEST(ExchangeTest, SilentUnpluggedOrClosedWriterFailsTheStep) {
  {
    WriterFixture f;
    f.wire->script = {Checked(0xE1), std::nullopt};
    EXPECT_EQ(ReadWords(f.writer, 63, 0xF2).Why(), Fault::Timeout);
    EXPECT_FALSE(f.host.diagnostics.empty());
  }
  {
    WriterFixture f;
    f.wire->unplugAfterSends = 1;
    EXPECT_FALSE(ReadWords(f.writer, 63, 0xF2));
    EXPECT_EQ(GetWriterVersion(f.writer), Fault::Unplugged);
    EXPECT_FALSE(GetWriterId(f.writer));
  }
  {
    // Nothing open: every step fails without touching a transport.
    auto wire = std::make_shared<FakeWire>();
    wire->present = false;
    Writer writer(std::make_unique<FakeBus>(wire));
    EXPECT_FALSE(writer.FindWriter());
    EXPECT_FALSE(writer.OpenWriterHandles());
    EXPECT_EQ(GetWriterVersion(writer), Fault::NotOpen);
    EXPECT_EQ(WaitWriterReady(writer), Fault::NotOpen);
    FinishOperation(writer, true);
    EXPECT_TRUE(wire->sent.empty());
  }
}

TEST(ExchangeTest, StopRequestFailsTheNextPacketButNotTheEndOfTheSession) {
  WriterFixture f;
  std::atomic<bool> stop{false};
  f.writer.SetStopFlag(&stop);
  ASSERT_TRUE(ReadWords(f.writer, 31, 0xF2));
  stop = true;
  EXPECT_EQ(ReadWords(f.writer, 31, 0xF2).Why(), Fault::Stopped);
  FinishOperation(f.writer, false);
  EXPECT_EQ(f.wire->Codes(), (Bytes{0xF2, 0xE6, 0xE4}));
}

TEST(ExchangeTest, CommandBufferIsSentWholeAndNeverCleared) {
  WriterFixture f;
  f.writer.OutputReportData.fill(0x77);
  FinishOperation(f.writer, true);
  const Report& r = f.wire->sent[0];
  EXPECT_EQ(r[0], 0);
  EXPECT_EQ(r[1], 3);
  EXPECT_EQ(r[4], 0x77);
  EXPECT_EQ(r[64], 0x77);
}

TEST(IdentityCommandsTest, PacketsAndTheDedicatedWriterMark) {
  WriterFixture f;
  f.wire->script = {Checked(0xE1), Checked(0xA2, {0x40, 0xE2, 0x01, 0x00, 6, '#'})};
  EXPECT_EQ(SetWriterId(f.writer, {0x12, 0x34, 0x56, 0x78}), Fault::None);
  EXPECT_EQ(f.wire->Packet(0), (Bytes{7, 0xA1, 0x12, 0x34, 0x56, 0x78, 0xBC}));
  const auto id = GetWriterId(f.writer);
  EXPECT_EQ(f.wire->Packet(1), (Bytes{3, 0xA2, 0xA5}));
  ASSERT_TRUE(id);
  ASSERT_EQ(id->size(), 9u);
  EXPECT_EQ((*id)[0], 9);
  const auto parsed = ParseWriterId(*id);
  ASSERT_TRUE(parsed);
  EXPECT_EQ(parsed->Number, 123456u);
  EXPECT_FALSE(parsed->Dedicated);
  for (const auto& [type, marker] : {std::pair<int, int>{5, '#'}, {6, '*'}}) {
    Bytes other = *id;
    other[6] = static_cast<std::uint8_t>(type);
    other[7] = static_cast<std::uint8_t>(marker);
    EXPECT_TRUE(ParseWriterId(other)->Dedicated) << type << " " << marker;
  }
  Bytes badStatus = *id;
  badStatus[1] = 0xE1;
  EXPECT_FALSE(ParseWriterId(badStatus));
}

}  // namespace
}  // namespace lk::test
