#include "core/home.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <sstream>
#include <system_error>
#include <vector>

#include "core/atomic_file.h"
#include "core/bounded_read.h"

#ifndef LK_INSTALLED_DATA
#define LK_INSTALLED_DATA "../share/lkwriter"
#endif

namespace fs = std::filesystem;

namespace lk {
namespace {

// The folders of the program folder that come from the installed copy.
constexpr const char* kSeededFolders[] = {"dat", "cfg", "doc"};
// Without these the program folder is not usable: the data, then the session files.
constexpr const char* kDataFiles[] = {"dat/qvmc.ini", "dat/cfg.ini"};
constexpr const char* kSessionFiles[] = {"dat/frm.dat", "dat/data.dat"};
// In the per-user folder: each file copied from the installed copy with the hash of
// what was copied, so that a later run can tell an untouched copy from a changed one.
constexpr const char* kSeedList = ".seeded";

std::string GetEnv(const char* name) {
  const char* value = std::getenv(name);
  return value != nullptr ? value : "";
}

// FNV-1a, 64 bits: stable across builds and runs, which std::hash is not.
std::uint64_t ContentHash(const std::string& bytes) {
  std::uint64_t h = 14695981039346656037ull;
  for (unsigned char c : bytes) {
    h ^= c;
    h *= 1099511628211ull;
  }
  return h;
}

using SeedList = std::map<std::string, std::uint64_t>;  // relative path -> hash

// A file of the installed copy that seeding takes (the chip documents under doc/ are the
// largest).
constexpr std::uintmax_t kMaxSeedFileBytes = 64u << 20;

SeedList ReadSeedList(const fs::path& file) {
  SeedList list;
  std::string text;
  if (!ReadRegularFile(file, kMaxDataFileBytes, text).Ok()) return list;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) {
    const std::size_t space = line.find(' ');
    if (space != 16 || line.size() <= 17) continue;
    char* end = nullptr;
    const std::uint64_t hash = std::strtoull(line.substr(0, 16).c_str(), &end, 16);
    if (end == nullptr || *end != '\0') continue;
    list[line.substr(17)] = hash;
  }
  return list;
}

std::string SeedListText(const SeedList& list) {
  std::string text;
  for (const auto& [path, hash] : list) {
    char digits[17];
    std::snprintf(digits, sizeof digits, "%016llx", static_cast<unsigned long long>(hash));
    text += std::string(digits) + " " + path + "\n";
  }
  return text;
}

// Brings the per-user folder up to the installed copy. Returns what went wrong, one
// short text per problem; `created` is false when the folder itself cannot be made.
std::vector<std::string> Seed(Host& host, const fs::path& installed, const fs::path& user,
                              bool& created) {
  std::vector<std::string> problems;
  std::error_code ec;
  fs::create_directories(user, ec);
  created = !ec && fs::is_directory(user, ec);
  if (!created) {
    problems.push_back(ec ? ec.message() : "not a folder");
    return problems;
  }
  const SeedList seeded = ReadSeedList(user / kSeedList);
  SeedList next = seeded;
  for (const char* folder : kSeededFolders) {
    if (!fs::is_directory(installed / folder, ec)) continue;
    fs::recursive_directory_iterator it(installed / folder, ec), end;
    if (ec) {
      problems.push_back("cannot list " + (installed / folder).string() + " (" + ec.message() + ")");
      continue;
    }
    for (; it != end; it.increment(ec)) {
      if (ec) {
        problems.push_back("cannot list " + (installed / folder).string() + " (" + ec.message() + ")");
        break;
      }
      if (!it->is_regular_file(ec) || it->path().filename().string().front() == '.') continue;
      const std::string relative = it->path().lexically_relative(installed).generic_string();
      std::string bytes;
      if (!ReadRegularFile(it->path(), kMaxSeedFileBytes, bytes).Ok()) {
        problems.push_back("cannot read " + it->path().string());
        continue;
      }
      const std::uint64_t hash = ContentHash(bytes);
      const fs::path target = user / relative;
      if (fs::exists(target, ec)) {
        // Replace only a copy that the installed copy has changed since and that still
        // holds exactly what was copied.
        const auto was = seeded.find(relative);
        if (was == seeded.end() || was->second == hash) continue;
        std::string current;
        if (!ReadRegularFile(target, kMaxSeedFileBytes, current).Ok() ||
            ContentHash(current) != was->second) {
          continue;
        }
      }
      std::string error;
      fs::create_directories(target.parent_path(), ec);
      if (!WriteFileAtomically(target, bytes, error)) {
        problems.push_back("cannot copy " + relative + " (" + error + ")");
        continue;
      }
      next[relative] = hash;
    }
  }
  if (next != seeded) {
    std::string error;
    if (!WriteFileAtomically(user / kSeedList, SeedListText(next), error)) {
      host.Diagnostic("seed list not written: " + error);
    }
  }
  return problems;
}

bool HasAll(const fs::path& root, const auto& files) {
  std::error_code ec;
  for (const char* f : files) {
    if (!fs::is_regular_file(root / f, ec)) return false;
  }
  return true;
}

std::string Join(const std::vector<std::string>& parts) {
  std::string text;
  for (const std::string& p : parts) text += (text.empty() ? "" : "; ") + p;
  return text;
}

}  // namespace

Home::Places Home::CurrentPlaces(const std::optional<std::string>& option) {
  Places places;
  places.option = option;
  places.environment = GetEnv("LKWRITER_HOME");
  std::error_code ec;
  const fs::path exe = fs::read_symlink("/proc/self/exe", ec);
  places.executableDir = !ec ? exe.parent_path() : fs::current_path(ec);
  places.installedCopy = (places.executableDir / LK_INSTALLED_DATA).lexically_normal();
  // The XDG rule: a relative $XDG_DATA_HOME is ignored.
  fs::path data = GetEnv("XDG_DATA_HOME");
  if (!data.is_absolute()) {
    std::string home = GetEnv("HOME");
    if (home.empty()) {
      if (const passwd* pw = ::getpwuid(::getuid()); pw != nullptr && pw->pw_dir != nullptr) {
        home = pw->pw_dir;
      }
    }
    data = home.empty() ? fs::path() : fs::path(home) / ".local" / "share";
  }
  if (!data.empty()) places.userFolder = data / "lkwriter";
  return places;
}

Home Home::Resolve(Host& host, const Places& places) {
  if (places.option && !places.option->empty()) return Home(*places.option);
  if (!places.environment.empty()) return Home(places.environment);
  std::error_code ec;
  if (fs::is_directory(places.executableDir / "dat", ec)) return Home(places.executableDir);

  const fs::path& installed = places.installedCopy;
  const fs::path& user = places.userFolder;
  const bool installedHasData = HasAll(installed, kDataFiles);
  if (user.empty()) {
    host.Message(Icon::Exclamation,
                 "No per-user program folder: neither $XDG_DATA_HOME nor $HOME names a folder. "
                 "The data is read from " + installed.string() +
                     "; window positions, the chosen chip and the recent files are not kept.",
                 kAppTitle);
    return Home(installed);
  }

  bool created = true;
  std::vector<std::string> problems;
  if (fs::is_directory(installed, ec)) {
    problems = Seed(host, installed, user, created);
  } else if (!fs::is_directory(user, ec)) {
    problems.push_back("no installed copy at " + installed.string());
  }
  if (!created) {
    host.Message(Icon::Exclamation,
                 "The program folder " + user.string() + " cannot be created (" + Join(problems) +
                     "). The data is read from " + installed.string() +
                     "; window positions, the chosen chip and the recent files start from their "
                     "defaults and are not kept.",
                 kAppTitle);
    return Home(installed, user);
  }
  const bool userHasData = HasAll(user, kDataFiles);
  for (const auto* list : {&kDataFiles, &kSessionFiles}) {
    for (const char* f : *list) {
      if (!fs::is_regular_file(user / f, ec)) problems.push_back(std::string(f) + " is missing");
    }
  }
  if (!problems.empty()) {
    host.Message(Icon::Exclamation,
                 "The program folder " + user.string() + " is incomplete: " + Join(problems) +
                     "." + (!userHasData && installedHasData
                                ? " The data is read from " + installed.string() + "."
                                : std::string()) +
                     " Missing session files start from their defaults.",
                 kAppTitle);
  }
  return Home(userHasData || !installedHasData ? user : installed, user);
}

}  // namespace lk
