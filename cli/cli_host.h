// The CLI's Host: log lines on stdout, message boxes on stderr as "message: TEXT" (one
// such line per line of a multi-line box), progress on stderr only when it is a
// terminal, diagnostics on stderr with -v. With --json nothing is printed: the lines
// and messages are kept for the run's JSON record.
//
// The last log line is held back until the next one (or the end of the command), so
// that a line the command writes over ("Verify Fail!" in place of "Config OK!") is
// printed as the log finally holds it.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "core/host.h"

namespace lk::cli {

class CliHost : public Host {
 public:
  CliHost(bool quiet, bool verbose, bool json = false);
  ~CliHost() override;

  void Message(Icon icon, const std::string& text, const std::string& caption) override;
  bool Ask(const std::string& text, const std::string& caption) override;
  void Log(const std::string& line) override;
  void ReplaceLastLog(const std::string& line) override;
  void ClearLog() override;
  void Progress(long value, long maximum) override;
  void Status(int panel, const std::string& text) override;
  void Diagnostic(const std::string& line) override;
  void FileUnreadable(const std::string& text) override;
  void FileUnwritable(const std::string& text) override;

  // Prints the line held back, if any.
  void Flush();

  // Why a command failed where no log line or message box says it: "error: TEXT" on
  // stderr (kept for the JSON record too).
  void Error(const std::string& text);

  // --json: keep the lines and messages for the record instead of printing them.
  void SetJson(bool json) { json_ = json; }

  // Counts the message boxes shown so far (commands use it to pick exit codes).
  int MessageCount() const { return static_cast<int>(messages_.size()); }
  bool Json() const { return json_; }
  // What the log holds since it was last cleared, and every message box of the run.
  const std::vector<std::string>& LogLines() const { return log_; }
  const std::vector<std::string>& Messages() const { return messages_; }
  const std::vector<std::string>& Errors() const { return errors_; }
  // Whether a data file that is there could not be read: the run then fails.
  bool SawUnreadableFile() const { return unreadable_; }

 private:
  void EndProgressLine();

  bool quiet_;
  bool verbose_;
  bool json_;
  bool progressTty_;
  bool progressShown_ = false;
  std::vector<std::string> log_;
  std::size_t printed_ = 0;  // lines of log_ already on stdout
  std::vector<std::string> messages_;
  std::vector<std::string> errors_;
  bool unreadable_ = false;
};

}  // namespace lk::cli
