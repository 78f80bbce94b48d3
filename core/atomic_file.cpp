#include "core/atomic_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <random>

namespace lk {
namespace {

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

std::string TempName(const std::filesystem::path& path) {
  std::random_device rd;
  return path.string() + ".tmp" + std::to_string(::getpid()) + "-" + std::to_string(rd() % 100000);
}

}  // namespace

bool WriteFileAtomically(const std::filesystem::path& path, std::string_view bytes,
                         std::string& error) {
  const std::string temp = TempName(path);
  int fd = ::open(temp.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644);
  if (fd < 0) {
    error = path.string() + ": " + std::strerror(errno);
    return false;
  }
  // Keep the old file's permissions when there is one.
  struct stat st {};
  if (::stat(path.c_str(), &st) == 0) ::fchmod(fd, st.st_mode & 07777);

  if (!WriteAll(fd, bytes) || ::fsync(fd) != 0) {
    error = path.string() + ": " + std::strerror(errno);
    ::close(fd);
    ::unlink(temp.c_str());
    return false;
  }
  if (::close(fd) != 0) {
    error = path.string() + ": " + std::strerror(errno);
    ::unlink(temp.c_str());
    return false;
  }
  if (::rename(temp.c_str(), path.c_str()) != 0) {
    error = path.string() + ": " + std::strerror(errno);
    ::unlink(temp.c_str());
    return false;
  }
  // Make the rename itself durable.
  std::filesystem::path dir = path.parent_path();
  if (dir.empty()) dir = ".";
  int dfd = ::open(dir.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (dfd >= 0) {
    ::fsync(dfd);
    ::close(dfd);
  }
  return true;
}

}  // namespace lk
