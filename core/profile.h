// The profile text reader and writer used for every data file of the program
// (qvmc.ini, cfg/<model>.cfg, frm.dat, data.dat, rolling-code settings).
//
// Reading rules: a line ends at CR or CR LF; everything from the first ";" is cut,
// then blanks are trimmed; "[name]" opens a section (exact, case-sensitive match;
// a section may be split over the file); "*" lines are comments; a data line is split
// at every "=": key = first piece, value = second piece ("KEY=a=b" gives "a").
// There is no quoting: a value can never hold a ";" (a path with one is cut there).
// Nothing is cached: every call reads the file again.
//
// Result lists are 0-based with entry 0 always "" (entries found start at index 1).
// Files are GBK unless they are valid UTF-8; texts are UTF-8 inside the program.
// A file is read only when it is a regular file of at most kMaxDataFileBytes.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "core/bounded_read.h"
#include "core/host.h"
#include "core/text_lines.h"

namespace lk {

using ProfileList = std::vector<std::string>;

// One reading of a profile file: read and decoded once, its lines walked again for each
// question without being kept. An operation that needs several values of one file (a
// dialog's settings, a chip record, the option definitions) reads the file once through
// this rather than once per value.
class ProfileText {
 public:
  explicit ProfileText(std::string utf8Text) : text_(std::move(utf8Text)) {}

  // Reads and decodes path, showing nothing; outcome says what went wrong.
  static std::optional<ProfileText> Load(const std::filesystem::path& path, ReadOutcome& outcome);
  // Reads and decodes path. A missing file (or a folder) shows "File: "…" Not Found!",
  // a file that cannot be read (a FIFO, a device, too large, refused by the system) a
  // message naming the path and why; both give nothing. `values` is how many values the
  // caller takes from this one reading: a missing file is reported once for each, as if
  // each had been read on its own (the user sees the messages the file's readers give).
  static std::optional<ProfileText> Read(Host& host, const std::filesystem::path& path,
                                         int values = 1);

  ProfileList Sections() const;
  ProfileList SectionLines(const std::string& section) const;
  ProfileList SectionKeys(const std::string& section) const;
  std::string Value(const std::string& section, const std::string& key) const;

  // Calls visit(const ProfileLine&) for every line, in file order, as the readers
  // classify it; visit returns false to stop.
  template <typename Visit>
  void ForEachLine(Visit visit) const;

 private:
  std::string text_;
};

// Each of these reads the file afresh; a missing or unreadable file shows its message
// (see ProfileText::Read) and gives the empty result.
ProfileList GetSections(Host& host, const std::filesystem::path& path);
ProfileList GetSectionLines(Host& host, const std::filesystem::path& path,
                            const std::string& section);
ProfileList GetSectionKeys(Host& host, const std::filesystem::path& path,
                           const std::string& section);
std::string GetValue(Host& host, const std::filesystem::path& path, const std::string& section,
                     const std::string& key);

// Writes one value with the semantics of the Windows profile writer: section and key
// matched case-insensitively, value replaced in place, key appended to its section or
// section appended to the file when missing. Never creates a file: a missing file shows
// path + " not found." and returns false. Written atomically (temp file, fsync, rename)
// in the file's own encoding; the other lines are left byte for byte as they were.
bool WriteValue(Host& host, const std::filesystem::path& path, const std::string& section,
                const std::string& key, const std::string& value);

// Several values of one section in a single atomic rewrite, each with the semantics of
// WriteValue (applied in order; a missing file says so once for each value). An
// unchanged file is not rewritten.
bool WriteValues(Host& host, const std::filesystem::path& path, const std::string& section,
                 const std::vector<std::pair<std::string, std::string>>& entries);

// Kind 1: "File: "<path>" Not Found!"; kind 2: "QVM File Unrecognized!"; others: nothing.
void ShowFileMessage(Host& host, int kind, const std::filesystem::path& path);

// The key of a data line: the text before the first "=" (the whole line without one).
std::string ProfileKey(std::string_view line);

// The value of a data line: the text between the first and the second "="
// ("KEY=a=b" gives "a"); "" when the line has no "=".
std::string ProfileValue(std::string_view line);

// A line as every reader sees it, cut at ";" and trimmed of blanks: nothing (empty or a
// "*" comment), a "[name]" section header (text: the name) or a data line (text: the
// trimmed line). The text points into the line it was made from.
enum class ProfileLineKind { Ignored, Header, Data };
struct ProfileLine {
  ProfileLineKind kind = ProfileLineKind::Ignored;
  std::string_view text;
};
ProfileLine ClassifyProfileLine(std::string_view raw);

template <typename Visit>
void ProfileText::ForEachLine(Visit visit) const {
  TextLines lines(text_);
  for (std::string_view raw; lines.Next(raw);) {
    if (!visit(ClassifyProfileLine(raw))) return;
  }
}

}  // namespace lk
