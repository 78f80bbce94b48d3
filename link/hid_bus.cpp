#include "link/hid_bus.h"

#include <hidapi/hidapi.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <filesystem>
#include <mutex>
#include <set>
#include <thread>

#include "link/protocol.h"
#include "link/report_id.h"

namespace lk {
namespace {

std::string Narrow(const wchar_t* text) {
  std::string out;
  if (text == nullptr) return out;
  for (; *text != 0; ++text) out.push_back(*text < 128 ? static_cast<char>(*text) : '?');
  return out;
}

// True when this user may not read and write the device node (the kernel would refuse
// hid_open_path); other failures are left to the open itself.
bool NodePermissionDenied(const std::string& path) {
  return ::access(path.c_str(), R_OK | W_OK) != 0 && (errno == EACCES || errno == EPERM);
}

HidApi MakeRealHidApi() {
  HidApi api;
  api.Init = [] {
    static std::once_flag once;
    static int result = 0;
    std::call_once(once, [] { result = hid_init(); });
    return result;
  };
  api.Enumerate = [](std::uint16_t vendor, std::uint16_t product) {
    std::vector<std::string> paths;
    hid_device_info* list = hid_enumerate(vendor, product);
    for (hid_device_info* d = list; d != nullptr; d = d->next) {
      if (d->path != nullptr) paths.emplace_back(d->path);
    }
    hid_free_enumeration(list);
    return paths;
  };
  api.OpenPath = [](const std::string& path) -> HidHandle { return hid_open_path(path.c_str()); };
  api.Write = [](HidHandle d, const std::uint8_t* data, std::size_t length) {
    return hid_write(static_cast<hid_device*>(d), data, length);
  };
  api.ReadTimeout = [](HidHandle d, std::uint8_t* data, std::size_t length, int timeoutMs) {
    return hid_read_timeout(static_cast<hid_device*>(d), data, length, timeoutMs);
  };
  api.Close = [](HidHandle d) { hid_close(static_cast<hid_device*>(d)); };
  api.Error = [](HidHandle d) { return Narrow(hid_error(static_cast<hid_device*>(d))); };
  api.PermissionDenied = NodePermissionDenied;
  return api;
}

// Whether the HID layer can be used at all.
bool HidReady(Host& host, const HidApi& api) {
  if (api.Init() == 0) return true;
  host.Diagnostic("hid_init: " + api.Error(nullptr));
  return false;
}

// hid_write has no timeout of its own and a wedged device can hold it forever, so
// every write runs on a helper thread and the caller waits with a deadline. The state is
// shared with the helper so that, after a write that never returned, the helper can
// outlive the transport: it closes the device itself once the write comes back.
struct WriteWorker {
  explicit WriteWorker(const HidApi& hid) : api(hid) {}
  const HidApi api;  // a copy: the helper may outlive the bus that made the transport
  std::mutex mutex;
  std::condition_variable wake;
  HidHandle device = nullptr;
  Report pending{};
  bool hasJob = false;
  bool jobDone = false;
  int jobResult = 0;
  bool stop = false;
  bool abandoned = false;  // the owner gave up on a write; the helper closes the device

  void Run() {
    std::unique_lock lock(mutex);
    for (;;) {
      wake.wait(lock, [&] { return hasJob || stop; });
      if (hasJob) {
        const Report bytes = pending;
        lock.unlock();
        const int result = api.Write(device, bytes.data(), bytes.size());
        lock.lock();
        hasJob = false;
        jobDone = true;
        jobResult = result;
        wake.notify_all();
        continue;
      }
      if (stop) break;
    }
    if (abandoned && device != nullptr) {
      api.Close(device);
      device = nullptr;
    }
  }
};

class HidTransport : public Transport {
 public:
  HidTransport(const HidApi& api, HidHandle device) : worker_(std::make_shared<WriteWorker>(api)) {
    worker_->device = device;
    thread_ = std::thread([w = worker_] { w->Run(); });
  }

  ~HidTransport() override {
    {
      std::lock_guard lock(worker_->mutex);
      worker_->stop = true;
      worker_->abandoned = dead_;
      worker_->wake.notify_all();
    }
    if (dead_) {
      thread_.detach();  // still inside hid_write; it closes the device when it returns
    } else {
      thread_.join();
      worker_->api.Close(worker_->device);
    }
  }

  bool Send(const Report& report, int timeoutMs) override {
    if (dead_) return Fail("the writer stopped taking reports");
    std::unique_lock lock(worker_->mutex);
    worker_->pending = OutputReportBytes(report);
    worker_->hasJob = true;
    worker_->jobDone = false;
    worker_->wake.notify_all();
    const bool finished = worker_->wake.wait_for(
        lock, std::chrono::milliseconds(std::max(timeoutMs, 1)), [&] { return worker_->jobDone; });
    if (!finished) {
      dead_ = true;
      return Fail("hid_write did not return within " + std::to_string(timeoutMs) + " ms");
    }
    if (worker_->jobResult != proto::kReportLength) {
      lock.unlock();
      return Fail("hid_write: " + DeviceError());
    }
    return true;
  }

  bool Receive(Report& report, int timeoutMs) override {
    if (dead_) return Fail("the writer stopped taking reports");
    std::uint8_t buffer[proto::kReportLength + 1] = {};
    const int got =
        worker_->api.ReadTimeout(worker_->device, buffer, sizeof buffer, std::max(timeoutMs, 0));
    if (got == 0) return Fail("no answer within " + std::to_string(timeoutMs) + " ms");
    if (got < 0) return Fail("hid_read_timeout: " + DeviceError());
    if (!InputReportFromRead(buffer, got, report)) {
      return Fail("input report of " + std::to_string(got) + " bytes");
    }
    return true;
  }

  std::string LastError() const override { return lastError_; }

 private:
  bool Fail(std::string text) {
    lastError_ = std::move(text);
    return false;
  }
  // Only called while no write is in flight.
  std::string DeviceError() const { return worker_->api.Error(worker_->device); }

  std::shared_ptr<WriteWorker> worker_;
  std::thread thread_;
  bool dead_ = false;
  std::string lastError_;
};

// The udev rule that gives the user at the local desktop access to the writer, and the
// place the installed package keeps it.
#ifndef LK_UDEV_RULE
#define LK_UDEV_RULE "/usr/lib/udev/rules.d/70-lkwriter.rules"
#endif

// Where the rule is installed, searched where udev reads rules; empty when nowhere.
std::string InstalledRule() {
  const std::filesystem::path name = std::filesystem::path(LK_UDEV_RULE).filename();
  std::error_code ec;
  for (const char* folder : {"/etc/udev/rules.d", "/run/udev/rules.d", "/usr/local/lib/udev/rules.d",
                             "/usr/lib/udev/rules.d", "/lib/udev/rules.d"}) {
    const std::filesystem::path rule = std::filesystem::path(folder) / name;
    if (std::filesystem::exists(rule, ec)) return rule.string();
  }
  if (std::filesystem::exists(LK_UDEV_RULE, ec)) return LK_UDEV_RULE;
  return "";
}

// The message for a writer this user may not open.
void TellNoPermission(Host& host, const std::string& path) {
  const std::string rule = InstalledRule();
  const std::string name = std::filesystem::path(LK_UDEV_RULE).filename().string();
  std::string text = "The writer is attached (" + path + ") but this user may not open it";
  if (rule.empty()) {
    text += ": the udev rule " + name +
            " that gives access to it is not installed. Install the lkwriter package (it "
            "installs " LK_UDEV_RULE "), or as root copy packaging/" + name +
            " of the source tree to /etc/udev/rules.d/ and run \"udevadm control --reload && "
            "udevadm trigger\"; then unplug and replug the writer.";
  } else {
    text += ", although the udev rule " + rule +
            " is installed. The rule gives access to the user of the active local desktop "
            "session only (not over ssh, not to a second seat). If it was installed while the "
            "writer was plugged in, unplug and replug the writer.";
  }
  host.Message(Icon::Exclamation, text, kAppTitle);
}

class HidBus : public WriterBus {
 public:
  HidBus(Host& host, std::string path, const HidApi& api)
      : host_(host), wanted_(std::move(path)), api_(api) {}

  // The first writer this user may open. A writer the kernel would refuse is passed
  // over like any interface that cannot be opened, and said once.
  bool Present() override {
    found_.clear();
    denied_ = false;
    std::string refused;
    for (const std::string& path : EnumerateWriters(host_, api_)) {
      if (!wanted_.empty() && path != wanted_) continue;
      if (api_.PermissionDenied(path)) {
        if (refused.empty()) refused = path;
        continue;
      }
      found_ = path;
      return true;
    }
    if (!refused.empty()) {
      denied_ = true;
      Tell(refused);
    }
    return false;
  }

  std::unique_ptr<Transport> Open() override {
    if (found_.empty()) return nullptr;
    HidHandle device = api_.OpenPath(found_);
    if (device == nullptr) {
      host_.Diagnostic("hid_open_path " + found_ + ": " + api_.Error(nullptr));
      if (api_.PermissionDenied(found_)) {
        denied_ = true;
        Tell(found_);
      }
      return nullptr;
    }
    return std::make_unique<HidTransport>(api_, device);
  }

  std::string Describe() const override {
    return "usb:" + (found_.empty() ? wanted_ : found_);
  }

  bool Denied() const override { return denied_; }

 private:
  // Once per device node for the life of the bus: the connection monitor asks every second.
  void Tell(const std::string& path) {
    if (told_.insert(path).second) TellNoPermission(host_, path);
  }

  Host& host_;
  std::string wanted_;
  const HidApi& api_;
  std::string found_;
  bool denied_ = false;
  std::set<std::string> told_;
};

}  // namespace

const HidApi& RealHidApi() {
  static const HidApi api = MakeRealHidApi();
  return api;
}

std::vector<std::string> EnumerateWriters(Host& host, const HidApi& api) {
  if (!HidReady(host, api)) return {};
  return api.Enumerate(proto::kVendorId, proto::kProductId);
}

std::unique_ptr<WriterBus> MakeHidBus(Host& host, const std::string& path, const HidApi& api) {
  return std::make_unique<HidBus>(host, path, api);
}

}  // namespace lk
