#include "core/atomic_file.h"

#include <dirent.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <random>

namespace lk {
namespace {

constexpr std::string_view kTempPrefix = ".lktmp-";

bool WriteAll(int fd, std::string_view bytes) {
  while (!bytes.empty()) {
    ssize_t n = ::write(fd, bytes.data(), bytes.size());
    if (n < 0) {
      if (errno == EINTR) continue;
      return false;
    }
    bytes.remove_prefix(static_cast<size_t>(n));
  }
  return true;
}

// The process that wrote a temporary file of ours; false for any other name.
bool TempFileOwner(std::string_view name, pid_t& pid) {
  if (name.substr(0, kTempPrefix.size()) != kTempPrefix) return false;
  name.remove_prefix(kTempPrefix.size());
  const auto [afterPid, ec] = std::from_chars(name.data(), name.data() + name.size(), pid);
  if (ec != std::errc() || pid <= 0 || afterPid == name.data() + name.size() || *afterPid != '-') {
    return false;
  }
  const std::string_view serial(afterPid + 1, name.data() + name.size() - afterPid - 1);
  return serial.size() == 8 && serial.find_first_not_of("0123456789abcdef") == std::string_view::npos;
}

// Removes the temporary files that killed processes left in dir. Only a regular file of
// our naming, owned by this user, whose process no longer exists is removed: a file of a
// running save (ours or another process's) is left alone. Failures are ignored; the
// files simply wait for the next write.
void RemoveStaleTempFiles(const std::filesystem::path& dir) {
  DIR* d = ::opendir(dir.c_str());
  if (d == nullptr) return;
  const int dfd = ::dirfd(d);
  const pid_t self = ::getpid();
  while (const dirent* entry = ::readdir(d)) {
    pid_t pid = 0;
    if (!TempFileOwner(entry->d_name, pid) || pid == self) continue;
    if (::kill(pid, 0) == 0 || errno != ESRCH) continue;  // running, or not ours to judge
    struct stat st {};
    if (::fstatat(dfd, entry->d_name, &st, AT_SYMLINK_NOFOLLOW) != 0) continue;
    if (!S_ISREG(st.st_mode) || st.st_uid != ::geteuid()) continue;
    ::unlinkat(dfd, entry->d_name, 0);
  }
  ::closedir(d);
}

std::string Failure(const std::filesystem::path& path, int error) {
  return path.string() + ": " + std::strerror(error);
}

}  // namespace

std::string TempFileName(pid_t pid, unsigned serial) {
  char hex[9];
  std::snprintf(hex, sizeof hex, "%08x", serial);
  return std::string(kTempPrefix) + std::to_string(pid) + "-" + hex;
}

bool WriteFileAtomically(const std::filesystem::path& path, std::string_view bytes,
                         std::string& error) {
  std::filesystem::path dir = path.parent_path();
  if (dir.empty()) dir = ".";
  RemoveStaleTempFiles(dir);

  std::random_device random;
  std::string temp;
  int fd = -1;
  for (int attempt = 0; fd < 0 && attempt < 16; ++attempt) {
    temp = (dir / TempFileName(::getpid(), random())).string();
    fd = ::open(temp.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644);
    if (fd < 0 && errno != EEXIST) break;
  }
  if (fd < 0) {
    error = Failure(path, errno);
    return false;
  }
  // Keep the old file's permissions when there is one.
  struct stat st {};
  if (::stat(path.c_str(), &st) == 0) ::fchmod(fd, st.st_mode & 07777);

  if (!WriteAll(fd, bytes) || ::fsync(fd) != 0) {
    error = Failure(path, errno);
    ::close(fd);
    ::unlink(temp.c_str());
    return false;
  }
  if (::close(fd) != 0) {
    error = Failure(path, errno);
    ::unlink(temp.c_str());
    return false;
  }
  if (::rename(temp.c_str(), path.c_str()) != 0) {
    error = Failure(path, errno);
    ::unlink(temp.c_str());
    return false;
  }
  // Make the rename itself durable.
  int dfd = ::open(dir.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (dfd >= 0) {
    ::fsync(dfd);
    ::close(dfd);
  }
  return true;
}

}  // namespace lk
