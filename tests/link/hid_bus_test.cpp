#include "link/hid_bus.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <map>
#include <mutex>
#include <thread>

#include "link/protocol.h"
#include "tests/support/recording_host.h"

namespace lk {
namespace {

using namespace std::chrono_literals;

// Writers that no machine here has, played through the hidapi table: attached at the
// paths given, each answering from its script, one that may be refused to this user,
// one whose write never returns.
struct FakeHid {
  std::vector<std::string> attached;
  std::string denied;              // the node this user may not open
  std::vector<int> reads;          // per read: 64 (a report), 0 (timeout) or -1 (unplugged)
  bool writeHangs = false;
  std::vector<std::vector<std::uint8_t>> written;
  std::atomic<int> opened{0}, closed{0};
  std::mutex mutex;
  std::condition_variable release;
  bool released = false;

  HidApi Api() {
    HidApi api;
    api.Init = [] { return 0; };
    api.Enumerate = [this](std::uint16_t vendor, std::uint16_t product) {
      EXPECT_EQ(vendor, proto::kVendorId);
      EXPECT_EQ(product, proto::kProductId);
      return attached;
    };
    api.OpenPath = [this](const std::string& path) -> HidHandle {
      if (path == denied) return nullptr;
      ++opened;
      return this;
    };
    api.Write = [this](HidHandle, const std::uint8_t* data, std::size_t length) {
      std::unique_lock lock(mutex);
      written.emplace_back(data, data + length);
      if (writeHangs) release.wait(lock, [this] { return released; });
      return static_cast<int>(length);
    };
    api.ReadTimeout = [this](HidHandle, std::uint8_t* data, std::size_t length, int) {
      std::lock_guard lock(mutex);
      if (reads.empty()) return 0;
      const int got = reads.front();
      reads.erase(reads.begin());
      // hidapi hands back an unnumbered report without its ID: the payload only.
      for (int i = 0; i < got && i < static_cast<int>(length); ++i) data[i] = static_cast<std::uint8_t>(0xA0 + i);
      return got;
    };
    api.Close = [this](HidHandle) { ++closed; };
    api.Error = [](HidHandle d) { return std::string(d == nullptr ? "open failed" : "No such device"); };
    api.PermissionDenied = [this](const std::string& path) { return path == denied; };
    return api;
  }
  void Release() {
    std::lock_guard lock(mutex);
    released = true;
    release.notify_all();
  }
};

TEST(HidBusTest, FindsTheWriterAUserMayOpenAndSaysOnceWhyNot) {
  struct Case {
    std::vector<std::string> attached;
    std::string wanted, denied;
    bool present;
    std::string describe;
    int messages;
  };
  const Case cases[] = {
      {{}, "", "", false, "usb:", 0},
      {{"/dev/hidraw1", "/dev/hidraw2"}, "", "", true, "usb:/dev/hidraw1", 0},  // the first
      {{"/dev/hidraw1", "/dev/hidraw2"}, "/dev/hidraw2", "", true, "usb:/dev/hidraw2", 0},
      {{"/dev/hidraw1", "/dev/hidraw2"}, "", "/dev/hidraw1", true, "usb:/dev/hidraw2", 0},
      {{"/dev/hidraw1"}, "", "/dev/hidraw1", false, "usb:", 1},  // EACCES: the udev message
      {{"/dev/hidraw1"}, "/dev/hidraw9", "", false, "usb:/dev/hidraw9", 0},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.describe + " " + c.denied);
    test::RecordingHost host;
    FakeHid hid;
    hid.attached = c.attached;
    hid.denied = c.denied;
    const HidApi api = hid.Api();
    auto bus = MakeHidBus(host, c.wanted, api);
    for (int tick = 0; tick < 3; ++tick) EXPECT_EQ(bus->Present(), c.present);
    EXPECT_EQ(bus->Describe(), c.describe);
    EXPECT_EQ(bus->Denied(), !c.present && !c.denied.empty());
    ASSERT_EQ(static_cast<int>(host.messages.size()), c.messages) << "once, not every tick";
    if (c.messages > 0) {
      EXPECT_NE(host.messages[0].text.find("(/dev/hidraw1) but this user may not open it"),
                std::string::npos);
      EXPECT_NE(host.messages[0].text.find("70-lkwriter.rules"), std::string::npos);
    }
    EXPECT_EQ(EnumerateWriters(host, api), c.attached);
  }
}

TEST(HidBusTest, ReportsGoOutNumberedAndComeBackWithTheirIdPutBack) {
  test::RecordingHost host;
  FakeHid hid;
  hid.attached = {"/dev/hidraw1"};
  hid.reads = {64, 0, -1};
  const HidApi api = hid.Api();
  auto bus = MakeHidBus(host, "", api);
  ASSERT_TRUE(bus->Present());
  {
    auto link = bus->Open();
    ASSERT_NE(link, nullptr);
    Report out{};
    out[0] = 0x55;  // a wrong ID is corrected: the writer has no numbered reports
    out[1] = 0xA0;
    ASSERT_TRUE(link->Send(out, 100));
    ASSERT_EQ(hid.written.size(), 1u);
    EXPECT_EQ(hid.written[0].size(), proto::kReportLength);  // ID and 64 bytes
    EXPECT_EQ(hid.written[0][0], 0);
    EXPECT_EQ(hid.written[0][1], 0xA0);

    Report in{};
    ASSERT_TRUE(link->Receive(in, 100));
    EXPECT_EQ(in[0], 0);     // the report ID hidapi left out
    EXPECT_EQ(in[1], 0xA0);  // the writer's first byte at index 1
    EXPECT_EQ(in[64], 0xA0 + 63);
    EXPECT_FALSE(link->Receive(in, 100));
    EXPECT_EQ(link->LastError(), "no answer within 100 ms");
    EXPECT_FALSE(link->Receive(in, 100));  // unplugged mid-read
    EXPECT_EQ(link->LastError(), "hid_read_timeout: No such device");
  }
  EXPECT_EQ(hid.closed, 1);
}

// A write that never returns: the send gives up at its deadline, the transport goes
// without waiting for it, and the helper thread closes the device once the write ends.
TEST(HidBusTest, AWriteThatNeverReturnsIsLeftBehind) {
  test::RecordingHost host;
  FakeHid hid;
  hid.attached = {"/dev/hidraw1"};
  hid.writeHangs = true;
  const HidApi api = hid.Api();
  auto bus = MakeHidBus(host, "", api);
  ASSERT_TRUE(bus->Present());
  auto link = bus->Open();
  ASSERT_NE(link, nullptr);
  const auto start = std::chrono::steady_clock::now();
  EXPECT_FALSE(link->Send(Report{}, 50));
  EXPECT_EQ(link->LastError(), "hid_write did not return within 50 ms");
  EXPECT_FALSE(link->Send(Report{}, 50));
  EXPECT_EQ(link->LastError(), "the writer stopped taking reports");
  link.reset();
  EXPECT_LT(std::chrono::steady_clock::now() - start, 2s);
  EXPECT_EQ(hid.closed, 0) << "closed under a write still in flight";
  hid.Release();
  for (int i = 0; i < 200 && hid.closed == 0; ++i) std::this_thread::sleep_for(5ms);
  EXPECT_EQ(hid.closed, 1);
}

// The build machines have no writer attached: discovery through hidapi says so quietly.
TEST(HidBusTest, NoWriterOnThisMachineIsNotAnError) {
  test::RecordingHost host;
  EXPECT_TRUE(EnumerateWriters(host).empty());
  auto bus = MakeHidBus(host);
  EXPECT_FALSE(bus->Present());
  EXPECT_EQ(bus->Open(), nullptr);
  EXPECT_TRUE(host.messages.empty());
}

}  // namespace
}  // namespace lk
