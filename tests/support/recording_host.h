// A Host that records everything, for tests.
#pragma once

#include <deque>
#include <string>
#include <vector>

#include "core/host.h"

namespace lk::test {

struct RecordedMessage {
  Icon icon;
  std::string text;
  std::string caption;
};

class RecordingHost : public Host {
 public:
  void Message(Icon icon, const std::string& text, const std::string& caption) override {
    messages.push_back({icon, text, caption});
  }
  bool Ask(const std::string& text, const std::string& caption) override {
    questions.push_back({Icon::Question, text, caption});
    if (answers.empty()) return true;
    bool a = answers.front();
    answers.pop_front();
    return a;
  }
  void Log(const std::string& line) override { log.push_back(line); }
  void ReplaceLastLog(const std::string& line) override {
    if (log.empty()) {
      log.push_back(line);
    } else {
      log.back() = line;
    }
  }
  void ClearLog() override { log.clear(); }
  void Progress(long value, long maximum) override {
    lastProgress = value;
    progressMaximum = maximum;
  }
  void Status(int panel, const std::string& text) override {
    if (panel >= 0 && panel < 8) status[panel] = text;
  }
  void Diagnostic(const std::string& line) override { diagnostics.push_back(line); }

  std::vector<std::string> MessageTexts() const {
    std::vector<std::string> out;
    for (const auto& m : messages) out.push_back(m.text);
    return out;
  }

  std::vector<RecordedMessage> messages;
  std::vector<RecordedMessage> questions;
  std::deque<bool> answers;  // answers to give to Ask, OK when empty
  std::vector<std::string> log;
  std::vector<std::string> diagnostics;
  std::string status[8];
  long lastProgress = 0;
  long progressMaximum = 0;
};

}  // namespace lk::test
