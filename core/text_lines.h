// Walking a text line by line without copying it. A line ends at CR LF, CR or LF; a last
// line without an ending counts, an empty text has no lines. Every reader of a line
// format walks its file this way, so that a file of millions of empty lines costs no
// more memory than the file itself.
#pragma once

#include <cstddef>
#include <string_view>

namespace lk {

class TextLines {
 public:
  explicit TextLines(std::string_view text) : text_(text) {}

  // The next line, without its ending; false at the end of the text.
  bool Next(std::string_view& line) {
    if (next_ >= text_.size()) return false;
    start_ = next_;
    std::size_t i = start_;
    while (i < text_.size() && text_[i] != '\r' && text_[i] != '\n') ++i;
    end_ = i;
    if (i < text_.size()) {
      ++i;
      if (text_[i - 1] == '\r' && i < text_.size() && text_[i] == '\n') ++i;
    }
    next_ = i;
    line = text_.substr(start_, end_ - start_);
    return true;
  }

  // Offsets in the text of the line last returned: where it starts, where its ending
  // starts, and where the line after it starts (end and next are equal for a last line
  // without an ending).
  std::size_t Start() const { return start_; }
  std::size_t End() const { return end_; }
  std::size_t NextStart() const { return next_; }

 private:
  std::string_view text_;
  std::size_t start_ = 0;
  std::size_t end_ = 0;
  std::size_t next_ = 0;
};

}  // namespace lk
