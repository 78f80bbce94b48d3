// The CLI's Host: log lines on stdout, message boxes on stderr as "message: TEXT",
// progress on stderr only when it is a terminal, diagnostics on stderr with -v.
#pragma once

#include <string>

#include "core/host.h"

namespace lk::cli {

class CliHost : public Host {
 public:
  CliHost(bool quiet, bool verbose);

  void Message(Icon icon, const std::string& text, const std::string& caption) override;
  bool Ask(const std::string& text, const std::string& caption) override;
  void Log(const std::string& line) override;
  void ReplaceLastLog(const std::string& line) override;
  void ClearLog() override {}
  void Progress(long value, long maximum) override;
  void Status(int panel, const std::string& text) override;
  void Diagnostic(const std::string& line) override;
  void FileUnreadable(const std::string& text) override;

  // Counts the message boxes shown so far (commands use it to pick exit codes).
  int MessageCount() const { return messages_; }
  // Whether a data file that is there could not be read: the run then fails.
  bool SawUnreadableFile() const { return unreadable_; }

 private:
  bool quiet_;
  bool verbose_;
  bool progressTty_;
  bool progressShown_ = false;
  int messages_ = 0;
  bool unreadable_ = false;
};

}  // namespace lk::cli
