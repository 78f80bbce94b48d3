#include "cli/cli_host.h"

#include <unistd.h>

#include <cstdio>
#include <iostream>

namespace lk::cli {

CliHost::CliHost(bool quiet, bool verbose)
    : quiet_(quiet), verbose_(verbose), progressTty_(::isatty(STDERR_FILENO) != 0) {}

void CliHost::Message(Icon, const std::string& text, const std::string&) {
  ++messages_;
  if (progressShown_) {
    std::cerr << "\n";
    progressShown_ = false;
  }
  std::cerr << "message: " << text << std::endl;
}

bool CliHost::Ask(const std::string& text, const std::string&) {
  // A command line has nobody to ask: the question is shown and answered OK.
  std::cerr << "question: " << text << " [OK]" << std::endl;
  return true;
}

void CliHost::Log(const std::string& line) { std::cout << line << std::endl; }

// Stdout cannot take a line back; the replacement is printed as the next line.
void CliHost::ReplaceLastLog(const std::string& line) { std::cout << line << std::endl; }

void CliHost::Progress(long value, long maximum) {
  if (quiet_ || !progressTty_ || maximum <= 0) return;
  const long percent = value >= maximum ? 100 : value * 100 / maximum;
  std::fprintf(stderr, "\r%3ld%%", percent);
  progressShown_ = percent < 100;
  if (!progressShown_) std::fprintf(stderr, "\r    \r");
}

void CliHost::Status(int panel, const std::string& text) {
  if (verbose_) std::cerr << "status[" << panel << "]: " << text << std::endl;
}

void CliHost::FileUnreadable(const std::string& text) {
  unreadable_ = true;
  Message(Icon::Critical, text, kAppTitle);
}

void CliHost::Diagnostic(const std::string& line) {
  if (verbose_) std::cerr << "diag: " << line << std::endl;
}

}  // namespace lk::cli
