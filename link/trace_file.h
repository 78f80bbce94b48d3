// The file of --trace. It is opened without blocking, so that a FIFO nobody reads is
// refused at once instead of hanging the run, and every line written is checked: a
// trace that cannot be written (a full disk, /dev/full) is an error of the run, never a
// silent loss.
#pragma once

#include <memory>
#include <ostream>
#include <streambuf>
#include <string>

namespace lk {

class TraceFile {
 public:
  // Creates or truncates path; nullptr with the reason in error when it cannot be opened.
  static std::unique_ptr<TraceFile> Open(const std::string& path, std::string& error);
  ~TraceFile();
  TraceFile(const TraceFile&) = delete;
  TraceFile& operator=(const TraceFile&) = delete;

  // Where the trace lines go; each flush writes them to the file.
  std::ostream& Stream() { return stream_; }

  // The reason of the first write that failed ("" while every line has been written).
  // Flushes what is pending first.
  std::string Failure();

 private:
  // Writes straight to the descriptor on every flush and keeps the first error.
  class Buffer : public std::streambuf {
   public:
    explicit Buffer(int fd) : fd_(fd) {}
    int Error() const { return error_; }

   protected:
    int_type overflow(int_type c) override;
    std::streamsize xsputn(const char* s, std::streamsize n) override;
    int sync() override;

   private:
    int fd_;
    int error_ = 0;
    std::string pending_;
  };

  explicit TraceFile(int fd);

  int fd_;
  Buffer buffer_;
  std::ostream stream_;
};

}  // namespace lk
