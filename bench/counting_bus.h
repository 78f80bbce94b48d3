// A bus that counts the reports crossing the link, both ways, for the benchmarks that
// compare a run with the bound of the simulator's timing model.
#pragma once

#include <memory>
#include <string>

#include "link/transport.h"

namespace lk::bench {

class CountingTransport : public Transport {
 public:
  CountingTransport(std::unique_ptr<Transport> inner, long& count)
      : inner_(std::move(inner)), count_(count) {}
  bool Send(const Report& r, int t) override { return inner_->Send(r, t) && ++count_; }
  bool Receive(Report& r, int t) override { return inner_->Receive(r, t) && ++count_; }
  std::string LastError() const override { return inner_->LastError(); }

 private:
  std::unique_ptr<Transport> inner_;
  long& count_;
};

class CountingBus : public WriterBus {
 public:
  CountingBus(std::unique_ptr<WriterBus> inner, long& count)
      : inner_(std::move(inner)), count_(count) {}
  bool Present() override { return inner_->Present(); }
  std::unique_ptr<Transport> Open() override {
    auto t = inner_->Open();
    return t ? std::make_unique<CountingTransport>(std::move(t), count_) : nullptr;
  }
  std::string Describe() const override { return inner_->Describe(); }

 private:
  std::unique_ptr<WriterBus> inner_;
  long& count_;
};

}  // namespace lk::bench
