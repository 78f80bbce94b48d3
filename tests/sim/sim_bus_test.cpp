#include "sim/sim_bus.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "core/chip_database.h"
#include "tests/sim/sim_rig.h"
#include "tests/support/temp_dir.h"

namespace lk::sim::test {
namespace {

using namespace lk::proto;

class SimBusTest : public ::testing::Test {
 protected:
  SimConfig Config(const std::string& model) {
    SimConfig c;
    c.chipModel = model;
    c.stateFile = (dir / "writer.state").string();
    return c;
  }
  std::shared_ptr<SimWriter> Make(const SimConfig& c) { return MakeSimWriter(host, home, c); }

  lk::test::TempDir dir;
  lk::test::RecordingHost host;
  Home home{LK_SOURCE_DIR};
};

TEST_F(SimBusTest, SeparateRunsSeeTheSameChipStoreAndId) {
  {
    auto writer = Make(Config("QVM55P47"));
    ASSERT_TRUE(writer);
    auto link = MakeSimBusFor(writer)->Open();
    ASSERT_TRUE(link->Send(Packet(kGetVersion), 100));
    EXPECT_FALSE(std::filesystem::exists(dir / "writer.state")) << "a query changes nothing";
    ASSERT_TRUE(link->Send(ProgramAt(kProgramRom, 2, {0x0AAA}), 100));
    EXPECT_TRUE(std::filesystem::exists(dir / "writer.state")) << "saved after the change";
    ASSERT_TRUE(link->Send(ProgramAt(kStoreRom, 0, {0x0BBB}), 100));
    ASSERT_TRUE(link->Send(Packet(kSetId, {9, 8, 7, 6}), 100));
  }
  SimState first;
  {
    auto writer = Make(Config(""));  // no model given: the socket keeps its chip
    ASSERT_TRUE(writer);
    first = writer->State();
    ASSERT_TRUE(first.chip);
    EXPECT_EQ(first.chip->name, "QVM55P47");
    EXPECT_EQ(first.chip->program[2], 0x0AAA);
    EXPECT_TRUE(first.chip->programmed);
    EXPECT_EQ(first.store.program, std::vector<std::uint16_t>{0x0BBB});
    EXPECT_EQ(first.id, (std::array<std::uint8_t, 4>{9, 8, 7, 6}));
    // A read-back through a new run answers what the earlier run programmed.
    auto link = MakeSimBusFor(writer)->Open();
    ASSERT_TRUE(link->Send(ReadAt(kReadRom, 0), 100));
    Report r{};
    ASSERT_TRUE(link->Receive(r, 100));
    EXPECT_EQ(RawWords(r, 3)[2], 0x0AAA);
  }
  {
    auto writer = Make(Config("QVM55P47"));  // the same model keeps the programmed chip
    ASSERT_TRUE(writer);
    EXPECT_EQ(writer->State(), first);
  }
  {
    auto writer = Make(Config("QVM55P49"));  // another model: a fresh chip, same store and ID
    ASSERT_TRUE(writer);
    SimState state = writer->State();
    ASSERT_TRUE(state.chip);
    EXPECT_EQ(state.chip->name, "QVM55P49");
    EXPECT_FALSE(state.chip->programmed);
    EXPECT_EQ(state.store, first.store);
    EXPECT_EQ(state.id, first.id);
  }
  EXPECT_TRUE(host.messages.empty());
}

TEST_F(SimBusTest, ConfigurationErrorsGiveNoWriterAndAMessage) {
  enum class Place { Text, Fifo, Device };  // what stands at the state file's path
  struct Case {
    const char* what;
    std::string stateText;  // written first when not empty
    std::string model;
    std::string fault;
    std::string inMessage;
    Place place = Place::Text;
  } cases[] = {
      {"corrupt state file", "LKWRITER-SIM-STATE 1\nid=zz\n", "QVM55P47", "", "corrupt"},
      {"not a state file", "hello", "", "", "corrupt"},
      {"unknown fault", "", "QVM55P47", "explode@3", "explode"},
      {"bad fault number", "", "QVM55P47", "busy@zero", "busy@zero"},
      {"unknown model", "", "NO_SUCH_CHIP", "", "NO_SUCH_CHIP"},
      // Neither may be read: a FIFO blocks for ever, /dev/zero never ends.
      {"FIFO", "", "QVM55P47", "", "writer.state\": it is a FIFO", Place::Fifo},
      {"device", "", "QVM55P47", "", "writer.state\": it is a device", Place::Device},
  };
  auto bus = MakeSimBus(host, home, Config("QVM55P47"));  // a good configuration for contrast
  ASSERT_TRUE(bus);
  EXPECT_TRUE(bus->Present());
  EXPECT_NE(bus->Describe().find("QVM55P47"), std::string::npos);
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    host.messages.clear();
    std::filesystem::remove(dir / "writer.state");
    if (!c.stateText.empty()) dir.Write("writer.state", c.stateText);
    if (c.place == Place::Fifo) {
      ASSERT_EQ(::mkfifo((dir / "writer.state").c_str(), 0600), 0);
    }
    if (c.place == Place::Device) std::filesystem::create_symlink("/dev/zero", dir / "writer.state");
    SimConfig config = Config(c.model);
    config.fault = c.fault;
    EXPECT_EQ(MakeSimBus(host, home, config), nullptr);
    ASSERT_EQ(host.messages.size(), 1u);
    EXPECT_NE(host.messages[0].text.find(c.inMessage), std::string::npos) << host.messages[0].text;
    if (!c.stateText.empty()) {
      EXPECT_EQ(dir.Read("writer.state"), c.stateText) << "a corrupt file is left as it was";
    }
  }
}

}  // namespace
}  // namespace lk::sim::test
