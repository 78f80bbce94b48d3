// The simulated writer's Transport and WriterBus.
#include <chrono>
#include <deque>
#include <thread>

#include "sim/sim_writer.h"

namespace lk::sim {
namespace {

// The writer's clock for the timing model. A sleep oversleeps by the scheduler's
// wake-up latency (often 100 us or more, a tenth of a report); the excess is taken off
// the next sleep, so that over an exchange the writer spends the modelled time, not
// more. Only the clock's own oversleeping is carried: time the host spends between
// reports is never absorbed.
class ModelClock {
 public:
  void Spend(std::chrono::microseconds time) {
    auto target = std::chrono::duration_cast<std::chrono::nanoseconds>(time) - excess_;
    if (target <= std::chrono::nanoseconds::zero()) {
      excess_ = -target;
      return;
    }
    auto start = std::chrono::steady_clock::now();
    std::this_thread::sleep_for(target);
    excess_ = std::chrono::steady_clock::now() - start - target;
  }

 private:
  std::chrono::nanoseconds excess_{0};
};

class SimTransport : public Transport {
 public:
  explicit SimTransport(std::shared_ptr<SimWriter> writer) : writer_(std::move(writer)) {}

  bool Send(const Report& report, int /*timeoutMs*/) override {
    std::optional<Report> answer;
    long words = 0;
    if (!writer_->Accept(report, answer, words, error_)) return false;
    if (writer_->Config().timing) clock_.Spend(TimingBound(1, words));
    if (answer) pending_.push_back(*answer);
    return true;
  }

  bool Receive(Report& report, int timeoutMs) override {
    if (writer_->Gone()) {
      error_ = "the simulated writer is unplugged";
      return false;
    }
    // Nothing can arrive later: answers are made while the packet is sent, so an
    // empty queue is a timeout at once rather than after timeoutMs.
    if (pending_.empty()) {
      error_ = "no answer from the simulated writer within " + std::to_string(timeoutMs) + " ms";
      return false;
    }
    if (writer_->Config().timing) clock_.Spend(kReportTime);
    report = pending_.front();
    pending_.pop_front();
    return true;
  }

  std::string LastError() const override { return error_; }

 private:
  std::shared_ptr<SimWriter> writer_;
  std::deque<Report> pending_;
  std::string error_;
  ModelClock clock_;
};

class SimBus : public WriterBus {
 public:
  explicit SimBus(std::shared_ptr<SimWriter> writer) : writer_(std::move(writer)) {}

  bool Present() override { return writer_->Present(); }

  std::unique_ptr<Transport> Open() override {
    if (!writer_->Present()) return nullptr;
    return std::make_unique<SimTransport>(writer_);
  }

  std::string Describe() const override {
    const SimConfig& c = writer_->Config();
    return "simulated writer v" + std::to_string(c.version & 0xFF) + "." +
           std::to_string(kSimVersionHigh) +
           (c.chipModel.empty() ? std::string() : ", chip " + c.chipModel);
  }

 private:
  std::shared_ptr<SimWriter> writer_;
};

}  // namespace

std::unique_ptr<WriterBus> MakeSimBusFor(std::shared_ptr<SimWriter> writer) {
  if (!writer) return nullptr;
  return std::make_unique<SimBus>(std::move(writer));
}

}  // namespace lk::sim
