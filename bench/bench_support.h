// What the benchmarks share: a bus that counts the reports crossing the link, both ways
// (to compare a run with the bound of the simulator's timing model), and a program image
// that is not blank.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

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

// `count` pseudo-random 16-bit words, the same on every run.
inline std::vector<std::int32_t> RandomWords(std::size_t count) {
  std::vector<std::int32_t> words(count);
  std::uint32_t x = 12345;
  for (auto& w : words) {
    x = x * 1103515245u + 12345u;
    w = static_cast<std::int32_t>((x >> 8) & 0xFFFF);
  }
  return words;
}

}  // namespace lk::bench
