// Runs lkwriter-cli as a process (the binary the build made) and collects its exit
// status, stdout and stderr.
#pragma once

#include <sys/wait.h>

#include <cstdio>
#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include "tests/support/temp_dir.h"

namespace lk::test {

struct CliResult {
  int exitCode = -1;
  std::string out;
  std::string err;
};

inline std::string ShellQuote(const std::string& s) {
  std::string q = "'";
  for (char c : s) q += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return q + "'";
}

// Runs `lkwriter-cli --home HOME ARGS`; ARGS is shell text (quote paths with ShellQuote).
inline CliResult RunCli(const std::filesystem::path& home, const std::string& args) {
  TempDir scratch;
  const std::string errFile = (scratch / "stderr.txt").string();
  const std::string command = ShellQuote(LK_CLI_PATH) + " --home " + ShellQuote(home.string()) +
                              " " + args + " 2>" + ShellQuote(errFile) + " </dev/null";
  CliResult r;
  FILE* pipe = ::popen(command.c_str(), "r");
  if (pipe == nullptr) return r;
  char buffer[4096];
  std::size_t n;
  while ((n = std::fread(buffer, 1, sizeof buffer, pipe)) > 0) r.out.append(buffer, n);
  const int status = ::pclose(pipe);
  r.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  r.err = scratch.Read("stderr.txt");
  return r;
}

inline std::vector<std::string> SplitLines(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

}  // namespace lk::test
