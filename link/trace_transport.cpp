#include "link/trace_transport.h"

namespace lk {
namespace {

class TraceTransport : public Transport {
 public:
  TraceTransport(std::unique_ptr<Transport> inner, std::ostream& out)
      : inner_(std::move(inner)), out_(out) {}

  bool Send(const Report& report, int timeoutMs) override {
    const bool sent = inner_->Send(report, timeoutMs);
    // A report that could not be sent never reached the writer: not traced.
    if (sent) out_ << TraceLine(true, report) << '\n' << std::flush;
    return sent;
  }

  bool Receive(Report& report, int timeoutMs) override {
    const bool received = inner_->Receive(report, timeoutMs);
    if (received) out_ << TraceLine(false, report) << '\n' << std::flush;
    return received;
  }

  std::string LastError() const override { return inner_->LastError(); }

 private:
  std::unique_ptr<Transport> inner_;
  std::ostream& out_;
};

class TraceBus : public WriterBus {
 public:
  TraceBus(std::unique_ptr<WriterBus> inner, std::ostream& out)
      : inner_(std::move(inner)), out_(out) {}

  bool Present() override { return inner_->Present(); }
  std::unique_ptr<Transport> Open() override {
    std::unique_ptr<Transport> transport = inner_->Open();
    if (!transport) return nullptr;
    return std::make_unique<TraceTransport>(std::move(transport), out_);
  }
  std::string Describe() const override { return inner_->Describe(); }
  bool Denied() const override { return inner_->Denied(); }

 private:
  std::unique_ptr<WriterBus> inner_;
  std::ostream& out_;
};

}  // namespace

std::string TraceLine(bool outgoing, const Report& report) {
  static const char kDigits[] = "0123456789abcdef";
  std::string line = outgoing ? ">" : "<";
  line.reserve(2 + report.size() * 3);
  for (std::uint8_t byte : report) {
    line.push_back(' ');
    line.push_back(kDigits[byte >> 4]);
    line.push_back(kDigits[byte & 0x0F]);
  }
  return line;
}

std::unique_ptr<WriterBus> MakeTraceBus(std::unique_ptr<WriterBus> inner, std::ostream& out) {
  return std::make_unique<TraceBus>(std::move(inner), out);
}

}  // namespace lk
