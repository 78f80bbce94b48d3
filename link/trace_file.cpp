#include "link/trace_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace lk {

std::unique_ptr<TraceFile> TraceFile::Open(const std::string& path, std::string& error) {
  const int fd =
      ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_NONBLOCK | O_NOCTTY | O_CLOEXEC, 0644);
  if (fd < 0) {
    error = "Cannot write the trace file \"" + path + "\": " +
            (errno == ENXIO ? "it is a FIFO that nobody reads" : std::strerror(errno)) + ".";
    return nullptr;
  }
  // Opened; from now on a pipe's slow reader is waited for like any file.
  ::fcntl(fd, F_SETFL, ::fcntl(fd, F_GETFL) & ~O_NONBLOCK);
  return std::unique_ptr<TraceFile>(new TraceFile(fd));
}

TraceFile::TraceFile(int fd) : fd_(fd), buffer_(fd), stream_(&buffer_) {}

TraceFile::~TraceFile() {
  stream_.flush();
  ::close(fd_);
}

std::string TraceFile::Failure() {
  stream_.flush();
  return buffer_.Error() == 0 ? std::string() : std::strerror(buffer_.Error());
}

TraceFile::Buffer::int_type TraceFile::Buffer::overflow(int_type c) {
  if (traits_type::eq_int_type(c, traits_type::eof())) return traits_type::not_eof(c);
  pending_.push_back(traits_type::to_char_type(c));
  return c;
}

std::streamsize TraceFile::Buffer::xsputn(const char* s, std::streamsize n) {
  pending_.append(s, static_cast<std::size_t>(n));
  return n;
}

int TraceFile::Buffer::sync() {
  std::size_t done = 0;
  while (done < pending_.size()) {
    const ssize_t n = ::write(fd_, pending_.data() + done, pending_.size() - done);
    if (n < 0 && errno == EINTR) continue;
    if (n < 0) {
      if (error_ == 0) error_ = errno;
      break;
    }
    done += static_cast<std::size_t>(n);
  }
  pending_.clear();
  return error_ == 0 ? 0 : -1;
}

}  // namespace lk
