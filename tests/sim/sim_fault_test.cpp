#include "sim/sim_fault.h"

#include <gtest/gtest.h>

#include "tests/sim/sim_rig.h"

namespace lk::sim::test {
namespace {

using namespace lk::proto;

ChipParams Otp() {
  return MakeParams("QVM55P47", 0x5547, "5547", true);
}

TEST(SimFaultTest, ParsesKindAndPacket) {
  struct Case {
    std::string text;
    FaultKind kind;
    long packet;
  } cases[] = {
      {"", FaultKind::None, 0},           {"noanswer@3", FaultKind::NoAnswer, 3},
      {"badsum@1", FaultKind::BadSum, 1},  {"badcode@12", FaultKind::BadCode, 12},
      {"unplug@2", FaultKind::Unplug, 2},  {"busy", FaultKind::Busy, 1},
      {"wrongchip@7", FaultKind::WrongChip, 7},  {"badsum@1000000", FaultKind::BadSum, kMaxFaultPacket},
  };
  for (const char* bad : {"explode@2", "BUSY@2", "busy@0", "busy@-1", "busy@", "busy@2x", "@3",
                          "noanswer@1000001", "noanswer@99999999999", "noanswer@999999999999999999999"}) {
    std::string error;
    EXPECT_FALSE(ParseFault(bad, error).has_value()) << bad;
    EXPECT_FALSE(error.empty()) << bad;
  }
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    std::string error;
    auto fault = ParseFault(c.text, error);
    ASSERT_TRUE(fault.has_value());
    EXPECT_EQ(fault->kind, c.kind);
    EXPECT_EQ(fault->packet, c.packet);
    EXPECT_TRUE(error.empty());
  }
}

enum class Seen { Answer, Silent, BadSum, BadCode, SendFails };

// What the host sees of one version query.
Seen Query(SimRig& rig) {
  if (!rig.link->Send(Packet(kGetVersion), 100)) return Seen::SendFails;
  Report r{};
  if (!rig.link->Receive(r, 100)) return Seen::Silent;
  if (!GoodFrame(r)) return Seen::BadSum;
  if (r[2] == kFaultAnswerCode) return Seen::BadCode;
  return r[2] == 0xA0 ? Seen::Answer : Seen::BadCode;
}

TEST(SimFaultTest, EachKindStrikesAtPacketN) {
  const Seen A = Seen::Answer;
  struct Case {
    FaultKind kind;
    std::vector<Seen> expected;  // five version queries, fault at packet 3
  } cases[] = {
      {FaultKind::None, {A, A, A, A, A}},
      {FaultKind::NoAnswer, {A, A, Seen::Silent, A, A}},
      {FaultKind::BadSum, {A, A, Seen::BadSum, A, A}},
      {FaultKind::BadCode, {A, A, Seen::BadCode, A, A}},
      {FaultKind::Unplug, {A, A, Seen::SendFails, Seen::SendFails, Seen::SendFails}},
      {FaultKind::Busy, {A, A, A, A, A}},       // only the blank check feels it
      {FaultKind::WrongChip, {A, A, A, A, A}},  // only the chip commands feel it
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(static_cast<int>(c.kind));
    SimRig rig(Otp(), SimConfig{}, SimFault{c.kind, 3});
    std::vector<Seen> seen;
    for (int i = 0; i < 5; ++i) seen.push_back(Query(rig));
    EXPECT_EQ(seen, c.expected);
    EXPECT_EQ(rig.writer->Log().size(), c.kind == FaultKind::Unplug ? 2u : 5u);
  }
}

TEST(SimFaultTest, SwallowedAndRefusedPacketsChangeNothing) {
  for (FaultKind kind : {FaultKind::NoAnswer, FaultKind::BadCode}) {
    SimRig rig(Otp(), SimConfig{}, SimFault{kind, 1});
    rig.Exchange(ProgramAt(kProgramRom, 0, {0x0000}));
    EXPECT_EQ(rig.Chip().program[0], 0x3FFF);
    EXPECT_EQ(rig.writer->Log().size(), 1u);
  }
  // A spoiled checksum is only on the wire: the packet did its work.
  SimRig rig(Otp(), SimConfig{}, SimFault{FaultKind::BadSum, 1});
  auto a = rig.Exchange(ProgramAt(kProgramRom, 0, {0x0000}));
  ASSERT_TRUE(a);
  EXPECT_FALSE(GoodFrame(*a));
  EXPECT_EQ(rig.Chip().program[0], 0);
  // Raw read answers are spoiled too.
  SimRig reads(Otp(), SimConfig{}, SimFault{FaultKind::BadSum, 2});
  auto good = reads.Exchange(ReadAt(kReadRom, 0)), bad = reads.Exchange(ReadAt(kReadRom, 0));
  ASSERT_TRUE(good && bad);
  EXPECT_NE(*good, *bad);
}

TEST(SimFaultTest, UnplugTakesTheWriterOffTheBus) {
  SimRig rig(Otp(), SimConfig{}, SimFault{FaultKind::Unplug, 2});
  EXPECT_TRUE(rig.bus->Present());
  EXPECT_EQ(rig.Code(Packet(kGetVersion)), 0xA0);  // packet 1 goes through
  EXPECT_FALSE(rig.bus->Present()) << "the next packet would be packet 2";
  EXPECT_FALSE(rig.link->Send(Packet(kGetVersion), 100));
  Report r{};
  EXPECT_FALSE(rig.link->Receive(r, 100)) << "an answer of a gone writer never arrives";
  EXPECT_FALSE(rig.link->LastError().empty());
  EXPECT_EQ(rig.bus->Open(), nullptr);
  EXPECT_EQ(rig.writer->PacketCount(), 1);
}

TEST(SimFaultTest, BusyNeverEndsFromPacketN) {
  SimConfig config;
  config.busyAnswers = 1;
  SimRig rig(Otp(), config, SimFault{FaultKind::Busy, 3});
  EXPECT_EQ(rig.Code(Packet(kReady)), kAnswerBusy);
  EXPECT_EQ(rig.Code(Packet(kReady)), kAnswerOk);
  for (int i = 0; i < 50; ++i) ASSERT_EQ(rig.Code(Packet(kReady)), kAnswerBusy) << i;
  // A writer busy for minutes: the log keeps only the last packets, and the timing
  // model still charges every packet and answer.
  const long more = static_cast<long>(SimWriter::kLogCapacity) + 100;
  for (long i = 0; i < more; ++i) rig.Code(Packet(kReady));
  const long packets = rig.writer->PacketCount();
  EXPECT_EQ(rig.writer->Log().size(), SimWriter::kLogCapacity);
  EXPECT_EQ(rig.writer->TimeCharged(), TimingBound(2 * packets, 0));
}

TEST(SimFaultTest, WrongChipFromPacketN) {
  SimRig rig(Otp(), SimConfig{}, SimFault{FaultKind::WrongChip, 2});
  Report block = ParamBlock(kChipType, 0x5547, "QVM55P47");
  EXPECT_EQ(rig.Code(block), kAnswerOk);
  EXPECT_EQ(rig.Code(block), kAnswerRefused);
  auto config = RawWords(*rig.Exchange(ReadAt(kReadConfig, 0)), 16);
  EXPECT_NE(config[13], 0x5547);
  EXPECT_EQ(rig.Chip().config[13], 0x5547) << "the fault is in the socket, not in the state";
}

TEST(SimFaultTest, TimingModelSleepsPerReportAndWord) {
  EXPECT_EQ(TimingBound(4, 100), std::chrono::microseconds(4 * 1000 + 100 * 50));
  SimConfig config;
  config.timing = true;
  SimRig rig(Otp(), config);
  auto start = std::chrono::steady_clock::now();
  for (int i = 0; i < 5; ++i)
    ASSERT_EQ(rig.Code(ProgramAt(kProgramRom, 24 * i, std::vector<std::uint16_t>(24, 0))),
              kAnswerOk);
  auto spent = std::chrono::steady_clock::now() - start;
  EXPECT_EQ(rig.writer->TimeCharged(), TimingBound(10, 120));
  EXPECT_GE(spent, rig.writer->TimeCharged());
  EXPECT_EQ(rig.writer->WordsProgrammed(), 120);
}

}  // namespace
}  // namespace lk::sim::test
