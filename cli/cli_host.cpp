#include "cli/cli_host.h"

#include <unistd.h>

#include <cstdio>
#include <iostream>

namespace lk::cli {
namespace {

// The lines of a message box: CR LF, CR or LF end a line.
std::vector<std::string> BoxLines(const std::string& text) {
  std::vector<std::string> lines(1);
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '\r' || text[i] == '\n') {
      if (text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n') ++i;
      lines.emplace_back();
    } else {
      lines.back() += text[i];
    }
  }
  return lines;
}

}  // namespace

CliHost::CliHost(bool quiet, bool verbose, bool json)
    : quiet_(quiet), verbose_(verbose), json_(json), progressTty_(::isatty(STDERR_FILENO) != 0) {}

CliHost::~CliHost() { Flush(); }

void CliHost::EndProgressLine() {
  if (!progressShown_) return;
  std::fprintf(stderr, "\r    \r");
  progressShown_ = false;
}

void CliHost::Message(Icon, const std::string& text, const std::string&) {
  messages_.push_back(text);
  if (json_) return;
  EndProgressLine();
  for (const std::string& line : BoxLines(text)) std::cerr << "message: " << line << "\n";
  std::cerr.flush();
}

bool CliHost::Ask(const std::string& text, const std::string&) {
  // A command line has nobody to ask: the question is shown and answered OK.
  messages_.push_back(text);
  if (!json_) {
    EndProgressLine();
    for (const std::string& line : BoxLines(text)) std::cerr << "question: " << line << "\n";
    std::cerr << "question: [OK]" << std::endl;
  }
  return true;
}

void CliHost::Log(const std::string& line) {
  Flush();
  log_.push_back(line);
}

void CliHost::ReplaceLastLog(const std::string& line) {
  if (log_.size() > printed_) {
    log_.back() = line;
  } else {
    // The log is empty (or its last line already went out): the line is added.
    Log(line);
  }
}

void CliHost::ClearLog() {
  Flush();
  log_.clear();
  printed_ = 0;
}

void CliHost::Flush() {
  // The JSON record takes the log as it finally is: nothing is printed, nothing fixed.
  if (json_ || printed_ == log_.size()) return;
  EndProgressLine();
  for (; printed_ < log_.size(); ++printed_) std::cout << log_[printed_] << "\n";
  std::cout.flush();
}

void CliHost::Error(const std::string& text) {
  errors_.push_back(text);
  EndProgressLine();
  std::cerr << "error: " << text << std::endl;
}

void CliHost::Progress(long value, long maximum) {
  if (quiet_ || json_ || !progressTty_ || maximum <= 0) return;
  const long percent = value >= maximum ? 100 : value * 100 / maximum;
  std::fprintf(stderr, "\r%3ld%%", percent);
  progressShown_ = true;
  if (percent >= 100) EndProgressLine();
}

void CliHost::Status(int panel, const std::string& text) {
  if (verbose_ && !json_) std::cerr << "status[" << panel << "]: " << text << std::endl;
}

void CliHost::FileUnreadable(const std::string& text) {
  unreadable_ = true;
  Message(Icon::Critical, text, kAppTitle);
}

void CliHost::FileUnwritable(const std::string& text) {
  unreadable_ = true;  // the run fails the same way: exit 2 after the command
  Message(Icon::Critical, text, kAppTitle);
}

void CliHost::Diagnostic(const std::string& line) {
  if (verbose_ && !quiet_) std::cerr << "diag: " << line << std::endl;
}

}  // namespace lk::cli
