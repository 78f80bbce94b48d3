#include "core/bounded_read.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace lk {
namespace {

ReadOutcome Problem(ReadProblem problem, std::string reason) {
  return {problem, std::move(reason)};
}

ReadOutcome SystemError(int error) {
  if (error == ENOENT || error == ENOTDIR) return Problem(ReadProblem::Missing, "it does not exist");
  return Problem(ReadProblem::Unreadable, std::strerror(error));
}

// What kind of thing stands at the path, for everything but a regular file.
ReadOutcome Classify(const struct stat& st, std::uintmax_t maxBytes) {
  const mode_t type = st.st_mode & S_IFMT;
  switch (type) {
    case S_IFREG:
      break;
    case S_IFDIR:
      return Problem(ReadProblem::Folder, "it is a folder");
    case S_IFIFO:
      return Problem(ReadProblem::NotRegular, "it is a FIFO, not a regular file");
    case S_IFCHR:
    case S_IFBLK:
      return Problem(ReadProblem::NotRegular, "it is a device, not a regular file");
    case S_IFSOCK:
      return Problem(ReadProblem::NotRegular, "it is a socket, not a regular file");
    default:
      return Problem(ReadProblem::NotRegular, "it is not a regular file");
  }
  if (static_cast<std::uintmax_t>(st.st_size) > maxBytes) {
    const std::string limit = maxBytes % (1u << 20) == 0
                                  ? std::to_string(maxBytes >> 20) + " MiB"
                                  : std::to_string(maxBytes) + " bytes";
    return Problem(ReadProblem::TooLarge, "it is larger than " + limit);
  }
  return {};
}

}  // namespace

ReadOutcome ReadRegularFile(const std::filesystem::path& path, std::uintmax_t maxBytes,
                            std::string& bytes) {
  // Looked at before it is opened: opening a device can itself do something (a tape
  // rewinds, a serial line raises its modem lines).
  struct stat st {};
  if (::stat(path.c_str(), &st) != 0) return SystemError(errno);
  if (ReadOutcome kind = Classify(st, maxBytes); !kind.Ok()) return kind;

  // Opened without blocking and looked at again through the descriptor, so that a FIFO
  // put in place after the first look can neither block the open nor be read.
  const int fd = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
  if (fd < 0) return SystemError(errno);
  ReadOutcome outcome;
  std::string data;
  if (::fstat(fd, &st) != 0) {
    outcome = SystemError(errno);
  } else {
    outcome = Classify(st, maxBytes);
  }
  if (outcome.Ok()) {
    // One byte beyond the expected size shows a file that grew since fstat.
    data.resize(static_cast<std::size_t>(st.st_size) + 1);
    std::size_t got = 0;
    while (got < data.size()) {
      const ssize_t n = ::read(fd, data.data() + got, data.size() - got);
      if (n < 0 && errno == EINTR) continue;
      if (n < 0) {
        outcome = SystemError(errno);
        break;
      }
      if (n == 0) break;
      got += static_cast<std::size_t>(n);
    }
    if (outcome.Ok() && got > static_cast<std::size_t>(st.st_size)) {
      outcome = Problem(ReadProblem::Unreadable, "it grew while it was read");
    }
    data.resize(got);
  }
  ::close(fd);
  if (outcome.Ok()) bytes = std::move(data);
  return outcome;
}

std::string CannotReadText(const std::filesystem::path& path, const ReadOutcome& outcome) {
  return "Cannot read \"" + path.string() + "\": " + outcome.reason + ".";
}

}  // namespace lk
