// A Host for programs without a user (tools, benchmarks, fuzzing): the log, progress and
// status are dropped, questions are answered OK, and message boxes (and, if asked,
// diagnostics) go to a stream as "message: TEXT" lines, or nowhere.
#pragma once

#include <cstdio>
#include <string>

#include "core/host.h"

namespace lk {

class QuietHost : public Host {
 public:
  explicit QuietHost(std::FILE* sink = nullptr, bool diagnostics = false)
      : sink_(sink), diagnostics_(diagnostics) {}

  void Message(Icon, const std::string& text, const std::string&) override {
    ++messages_;
    if (sink_ != nullptr) std::fprintf(sink_, "message: %s\n", text.c_str());
  }
  bool Ask(const std::string&, const std::string&) override { return true; }
  void Log(const std::string&) override {}
  void ReplaceLastLog(const std::string&) override {}
  void ClearLog() override {}
  void Progress(long, long) override {}
  void Status(int, const std::string&) override {}
  void Diagnostic(const std::string& line) override {
    if (sink_ != nullptr && diagnostics_) std::fprintf(sink_, "diag: %s\n", line.c_str());
  }

  int MessageCount() const { return messages_; }

 private:
  std::FILE* sink_;
  bool diagnostics_;
  int messages_ = 0;
};

}  // namespace lk
