// The profile text reader and writer used for every data file of the program
// (qvmc.ini, cfg/<model>.cfg, frm.dat, data.dat, rolling-code settings).
//
// Reading rules: a line ends at CR or CR LF; everything from the first ";" is cut,
// then blanks are trimmed; "[name]" opens a section (exact, case-sensitive match;
// a section may be split over the file); "*" lines are comments; a data line is split
// at every "=": key = first piece, value = second piece ("KEY=a=b" gives "a").
// Nothing is cached: every call reads the file again. A file is read only when it is a
// regular file of at most kMaxDataFileBytes.
//
// Result lists are 0-based with entry 0 always "" (entries found start at index 1).
// Files are GBK unless they are valid UTF-8; texts are UTF-8 inside the program.
#pragma once

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "core/bounded_read.h"
#include "core/host.h"

namespace lk {

using ProfileList = std::vector<std::string>;

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
// in the file's own encoding.
bool WriteValue(Host& host, const std::filesystem::path& path, const std::string& section,
                const std::string& key, const std::string& value);

// Several values of one section in a single atomic rewrite, each with the semantics of
// WriteValue (applied in order). An unchanged file is not rewritten.
bool WriteValues(Host& host, const std::filesystem::path& path, const std::string& section,
                 const std::vector<std::pair<std::string, std::string>>& entries);

// Kind 1: "File: "<path>" Not Found!"; kind 2: "QVM File Unrecognized!"; others: nothing.
void ShowFileMessage(Host& host, int kind, const std::filesystem::path& path);

// The key of a data line: the text before the first "=" (the whole line without one).
std::string ProfileKey(const std::string& line);

// The value of a data line: the text between the first and the second "="
// ("KEY=a=b" gives "a"); "" when the line has no "=".
std::string ProfileValue(const std::string& line);

// A line as every reader sees it, cut at ";" and trimmed of blanks: nothing (empty or a
// "*" comment), a "[name]" section header (text: the name) or a data line (text: the
// trimmed line).
enum class ProfileLineKind { Ignored, Header, Data };
struct ProfileLine {
  ProfileLineKind kind = ProfileLineKind::Ignored;
  std::string text;
};
ProfileLine ClassifyProfileLine(const std::string& raw);

// Splits file text into lines at CR or CR LF (a lone LF also ends a line).
std::vector<std::string> SplitProfileLines(const std::string& text);

// Reads a whole data file and decodes it to UTF-8 (GBK unless valid UTF-8): only a
// regular file of at most kMaxDataFileBytes is read (see core/bounded_read.h).
ReadOutcome ReadTextFile(const std::filesystem::path& path, std::string& utf8Text);

}  // namespace lk
