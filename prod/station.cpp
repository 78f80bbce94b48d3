#include "prod/station.h"

#include <signal.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <fstream>
#include <sstream>

namespace lk::prod {
namespace {

// Field 22 of /proc/PID/stat: the start time. The command name (field 2) may hold
// spaces and parentheses, so counting starts after its last ')'.
std::string StartTicks(long pid) {
  std::ifstream in("/proc/" + std::to_string(pid) + "/stat");
  std::string stat;
  if (!std::getline(in, stat)) return {};
  const auto close = stat.rfind(')');
  if (close == std::string::npos) return {};
  std::istringstream fields(stat.substr(close + 2));
  std::string field;
  for (int i = 3; i <= 22 && (fields >> field); ++i) {
    if (i == 22) return field;
  }
  return {};
}

}  // namespace

std::string StationName() {
  char name[256] = {};
  if (gethostname(name, sizeof name - 1) != 0 || name[0] == '\0') return "localhost";
  return name;
}

std::string UtcNow() {
  const auto now = std::chrono::system_clock::now();
  const std::time_t secs = std::chrono::system_clock::to_time_t(now);
  const auto ms = std::chrono::duration_cast<std::chrono::milliseconds>(now.time_since_epoch()) % 1000;
  std::tm utc{};
  gmtime_r(&secs, &utc);
  char text[96];
  std::snprintf(text, sizeof text, "%04d-%02d-%02dT%02d:%02d:%02d.%03dZ", utc.tm_year + 1900,
                utc.tm_mon + 1, utc.tm_mday, utc.tm_hour, utc.tm_min, utc.tm_sec,
                static_cast<int>(ms.count()));
  return text;
}

std::string ProcessIdentity() {
  const long pid = static_cast<long>(getpid());
  return std::to_string(pid) + ":" + StartTicks(pid);
}

bool ProcessAlive(const std::string& identity) {
  const auto colon = identity.find(':');
  if (colon == std::string::npos) return false;
  long pid = 0;
  try {
    pid = std::stol(identity.substr(0, colon));
  } catch (const std::exception&) {
    return false;
  }
  if (pid <= 0) return false;
  if (kill(static_cast<pid_t>(pid), 0) != 0 && errno == ESRCH) return false;
  return StartTicks(pid) == identity.substr(colon + 1);
}

}  // namespace lk::prod
