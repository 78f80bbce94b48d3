// A scripted writer for the link tests: records every report the host sends and answers
// from a script (exact answers, silence) or, when the script is empty, from a responder.
#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "core/chip_params.h"
#include "link/protocol.h"
#include "link/transport.h"
#include "link/writer.h"
#include "rolling/roll_settings.h"
#include "tests/support/recording_host.h"

namespace lk::test {

// A checked answer: [1] n, [2] code, data, [n] checksum.
inline Report Checked(std::uint8_t code, std::vector<std::uint8_t> data = {}) {
  Report r{};
  const int n = 3 + static_cast<int>(data.size());
  r[1] = static_cast<std::uint8_t>(n);
  r[2] = code;
  for (std::size_t i = 0; i < data.size(); ++i) r[3 + i] = data[i];
  r[n] = proto::Checksum(r.data() + 1, n - 1);
  return r;
}

// A raw answer: 16-bit words from index 1, low byte first.
inline Report RawWords(const std::vector<std::uint16_t>& words) {
  Report r{};
  for (std::size_t k = 0; k < words.size() && k < 32; ++k) {
    r[1 + 2 * k] = words[k] & 0xFF;
    r[2 + 2 * k] = words[k] >> 8;
  }
  return r;
}

struct FakeWire {
  std::vector<Report> sent;
  // Answers given in order before the responder is asked; nullopt = the writer is silent.
  std::deque<std::optional<Report>> script;
  // Answer to a sent report (index 0 = report ID); nullopt = no answer.
  std::function<std::optional<Report>(const Report&)> responder;
  std::deque<Report> inbox;
  bool present = true;
  bool unplugged = false;
  int unplugAfterSends = -1;  // unplug once this many reports went out

  // Packet bytes (without the report ID) of sent report i.
  std::vector<std::uint8_t> Packet(std::size_t i) const {
    const Report& r = sent.at(i);
    return std::vector<std::uint8_t>(r.begin() + 1, r.begin() + 1 + r[1]);
  }
  std::vector<std::uint8_t> Codes() const {
    std::vector<std::uint8_t> codes;
    for (const Report& r : sent) codes.push_back(r[2]);
    return codes;
  }
  std::size_t CountCode(std::uint8_t code) const {
    std::size_t n = 0;
    for (const Report& r : sent) n += r[2] == code;
    return n;
  }
};

class FakeTransport : public Transport {
 public:
  explicit FakeTransport(std::shared_ptr<FakeWire> wire) : wire_(std::move(wire)) {}
  bool Send(const Report& report, int) override {
    if (wire_->unplugged) return false;
    wire_->sent.push_back(report);
    if (wire_->unplugAfterSends >= 0 &&
        static_cast<int>(wire_->sent.size()) >= wire_->unplugAfterSends) {
      wire_->unplugged = true;
    }
    if (wire_->responder) {
      if (auto answer = wire_->responder(report)) wire_->inbox.push_back(*answer);
    }
    return true;
  }
  bool Receive(Report& report, int) override {
    if (!wire_->script.empty()) {
      auto next = wire_->script.front();
      wire_->script.pop_front();
      if (!next) return false;
      report = *next;
      return true;
    }
    if (wire_->unplugged || wire_->inbox.empty()) return false;
    report = wire_->inbox.front();
    wire_->inbox.pop_front();
    return true;
  }
  std::string LastError() const override { return "fake"; }

 private:
  std::shared_ptr<FakeWire> wire_;
};

class FakeBus : public WriterBus {
 public:
  explicit FakeBus(std::shared_ptr<FakeWire> wire) : wire_(std::move(wire)) {}
  bool Present() override { return wire_->present; }
  std::unique_ptr<Transport> Open() override {
    if (!wire_->present) return nullptr;
    return std::make_unique<FakeTransport>(wire_);
  }
  std::string Describe() const override { return "fake"; }

 private:
  std::shared_ptr<FakeWire> wire_;
};

// A responder that behaves like a cooperative writer: 0xE1 to every checked command,
// raw words from `rom` / `config` for reads (second generation addresses honoured),
// EEDATA bytes from `ee`, and no answer to 0xE1/0xE4/0xE5/0xE6.
struct FakeMemory {
  std::vector<std::uint16_t> rom;
  std::vector<std::uint16_t> config = std::vector<std::uint16_t>(16, 0);
  std::vector<std::uint8_t> ee;
  int readCursor = 0;  // first generation: the writer counts read addresses itself

  std::optional<Report> Answer(const Report& sent, bool firstGeneration) {
    const std::uint8_t code = sent[2];
    switch (code) {
      case proto::kIdle:
      case proto::kEnd:
      case proto::kPassed:
      case proto::kFailed:
        return std::nullopt;
      case proto::kReadRom:
      case proto::kReadConfig:
      case proto::kStoreReadRom:
      case proto::kStoreReadConfig: {
        const auto& source =
            (code == proto::kReadRom || code == proto::kStoreReadRom) ? rom : config;
        int address = firstGeneration ? readCursor : sent[3] | (sent[4] << 8);
        std::vector<std::uint16_t> words;
        for (int k = 0; k < 32; ++k) {
          const int a = address + k;
          words.push_back(a < static_cast<int>(source.size()) ? source[a] : 0xFFFF);
        }
        readCursor = address + 32;
        return RawWords(words);
      }
      case proto::kEeRead:
      case proto::kStoreEeRead: {
        Report r{};
        const int address = sent[3] | (sent[4] << 8);
        for (int k = 0; k < 64; ++k) {
          const int a = address + k;
          r[1 + k] = a < static_cast<int>(ee.size()) ? ee[a] : 0xFF;
        }
        return r;
      }
      default:
        readCursor = 0;
        return Checked(proto::kAnswerOk);
    }
  }
};

// A writer on a fake wire with waits switched off; diagnostics and progress go to host.
struct WriterFixture {
  std::shared_ptr<FakeWire> wire = std::make_shared<FakeWire>();
  RecordingHost host;
  Writer writer{std::make_unique<FakeBus>(wire)};
  FakeMemory memory;
  std::vector<int> waits;
  std::vector<Fault> notices;

  explicit WriterFixture(std::uint32_t version = 3) {
    writer.WriterVersion = version;
    writer.SetWaiter([this](int ms) { waits.push_back(ms); });
    writer.SetDiagnosticSink([this](const std::string& line) { host.Diagnostic(line); });
    writer.SetProgressSink([this](long value, long maximum) { host.Progress(value, maximum); });
    writer.SetNoticeSink([this](Fault fault) { notices.push_back(fault); });
    wire->responder = [this](const Report& r) {
      return memory.Answer(r, writer.FirstGeneration());
    };
    writer.FindWriter();
    writer.OpenWriterHandles();
  }
};

// A plain chip record that the tests adjust.
inline ChipParams TestChip(int romSize = 0x3FF) {
  ChipParams c;
  c.Name = "QVM50T01";
  c.Type = 0x1234;
  c.Prod = "1234";
  c.RomSize = romSize;
  c.HexMcu = 0x3FFF;
  c.RomWords.assign(romSize + 1, 0x3FFF);
  c.ConfigLength = 2;
  c.ConfigWords = {0x3FFF, 0x3FFF, 0x3FFF};
  return c;
}

// Rolling-code settings with the given addresses and code, byte 0 first.
inline RollSettings Rolling(std::vector<std::int32_t> addresses, std::vector<std::int32_t> codes,
                            std::vector<std::int32_t> steps = {}, bool mode2262 = false) {
  RollSettings s;
  s.Enabled = true;
  s.WordLength = static_cast<std::int32_t>(addresses.size());
  s.Addresses = std::move(addresses);
  s.Counts = std::move(codes);
  s.Steps = std::move(steps);
  s.Steps.resize(s.Addresses.size(), 0);
  s.Mode2262 = mode2262;
  return s;
}

}  // namespace lk::test
